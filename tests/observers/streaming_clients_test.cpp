#include "observers/streaming_clients.h"

#include "tests/support/host_recorder.h"
#include "tests/support/host_test.h"

using namespace ks_test;
using ks_hmi::SignalClient;
using ks_hmi::StreamingClients;

namespace {

class StreamingClientsTest : public ModelTest {
protected:
    StreamingClientsTest() : m_clientsObject(call("Kestrel.HMI.StreamingClients", {})) {}

    const hvArray* clientsObject() const { return m_clientsObject.get(); }
    StreamingClients& clients() const { return *StreamingClients::getFromHvArray(m_clientsObject.get()); }
    static std::unique_ptr<SignalClient> client(const std::string& uuid, const std::string& signalUUID = "") {
        auto result = std::make_unique<SignalClient>();
        result->m_uuid = uuid;
        result->m_signalUUID = signalUUID;
        result->m_sourceModel = u"m1";
        result->m_modelPath = {u"Sub"};
        result->m_modelPathEID = {"2"};
        return result;
    }
    std::string uuids() const {
        std::string result;
        for (std::size_t i = 0; i < clients().getCount(); ++i) result += clients().get(i)->m_uuid + " ";
        return result;
    }

private:
    HvArrayPtr m_clientsObject;
};

TEST_F(StreamingClientsTest, positionsOutsideTheSetRaiseTheCountAndChangeNothing) {
    for (const char* const uuid : {"a", "b", "c"}) clients().add(client(uuid));
    for (const std::size_t index : {std::size_t{3}, SIZE_MAX}) {
        EXPECT_EQ(raisedBy([&] { clients().get(index); }), "InvalidElementIndex 3");
        EXPECT_EQ(raisedBy([&] { clients().set(index, client("x")); }), "InvalidElementIndex 3");
        EXPECT_EQ(raisedBy([&] { clients().set(index, nullptr); }), "NullRecord");
        EXPECT_EQ(raisedBy([&] { clients().remove(index); }), "InvalidElementIndex 3");
    }
    EXPECT_EQ(raisedBy([&] { clients().add(nullptr); }), "NullRecord");
    EXPECT_EQ(raisedBy([&] { clients().set(0, nullptr); }), "NullRecord");
    EXPECT_EQ(uuids(), "a b c ");
    clients().remove(0);
    clients().set(1, client("d"));
    EXPECT_EQ(uuids(), "b d ");
}

TEST_F(StreamingClientsTest, persistenceAppendsAndEqualityIsByOrder) {
    clients().add(client("a"));
    clients().add(client("b"));
    const auto saved = property(clientsObject(), "Persistence");
    EXPECT_EQ(hvGetNumberOfFields(saved.get()), 11);
    const auto other = call("Kestrel.HMI.StreamingClients", {text("m2").get()});
    hvSetProperty(other.get(), 0, "Persistence", saved.get());
    auto& loaded = *StreamingClients::getFromHvArray(other.get());
    EXPECT_TRUE(loaded.isEqual(&clients()));
    loaded.add(loaded.share(0));
    loaded.remove(0);
    EXPECT_FALSE(loaded.isEqual(&clients()));
    EXPECT_FALSE(loaded.isEqual(nullptr));
    loaded.setModelName(u"m2");
    hvSetProperty(other.get(), 0, "Persistence", saved.get());
    EXPECT_EQ(loaded.getCount(), 4U);
    hvReplaceField(saved.get(), 1, "UUID", nullptr);
    EXPECT_EQ(raisedBy([&] { loaded.setFromPersistenceData(saved.get()); }), "MissingField UUID 2");
    EXPECT_EQ(loaded.getCount(), 5U);
    const auto none = call("Kestrel.HMI.StreamingClients", {});
    EXPECT_EQ(hvGetNumberOfFields(property(none.get(), "Persistence").get()), SignalClient::getNumStructFields());
}

TEST_F(StreamingClientsTest, theHostComparesParametersLastAndInOrderAndItsFirstAnswerCounts) {
    std::string asked;
    const auto comparing = orvex::registerFunction("isequal", [&](orvex::Call& c) {
        for (const hvArray* const input : c.ins) asked += std::to_string(static_cast<int>(hvGetScalar(input)));
        c.outs[0] = numbers(hvLOGICAL_CLASS, {hvGetScalar(c.ins[0]) != 3.0, false});
    });
    const auto with = [&](const char* uuid, double parameter) {
        auto result = client(uuid);
        result->m_observerParams = number(parameter);
        return result;
    };
    StreamingClients other, third;
    for (int i = 1; i <= 4; ++i) {
        clients().add(with("u", i));
        other.add(with("u", i + 4));
        third.add(with(i == 2 ? "other" : "u", i + 4));
    }
    EXPECT_FALSE(clients().isEqual(&other));
    EXPECT_EQ(asked, "152637") << "until the first pair that differs";
    asked.clear();
    EXPECT_FALSE(clients().isEqual(&third));
    EXPECT_EQ(asked, "15") << "not where something else differs";
}

TEST_F(StreamingClientsTest, theManagerIsToldTheNameThatTheHostKnewEachTime) {
    clients().add(client("a"));
    StreamingClients::handleModelRename(clientsObject());
    clients().setModelName(u"a");
    StreamingClients::handleModelRename(clientsObject());
    EXPECT_TRUE(kestrel::recordedRenames().empty()) << "the first naming is known at once";
    clients().setModelName(u"b");
    clients().setModelName(u"c");
    StreamingClients::handleModelRename(clientsObject());
    StreamingClients::handleModelRename(clientsObject());
    ASSERT_EQ(kestrel::recordedRenames().size(), 2U);
    EXPECT_EQ(kestrel::recordedRenames()[1].oldName, u"a");
    EXPECT_EQ(kestrel::recordedRenames()[1].newName, u"c");
    EXPECT_EQ(clients().get(0)->m_sourceModel, u"m1");
    orvex::clearWarnings();
    const auto failing = orvex::registerFunction("validateAndRemoveUnused", [this](orvex::Call&) {
        StreamingClients::handleModelRename(clientsObject());
        orvex::raise("no", "no");
    });
    StreamingClients::validateAndRemoveUnused(clientsObject());
    StreamingClients::handleModelRename(clientsObject());
    EXPECT_EQ(kestrel::recordedRenames().size(), 2U) << "known from before the host sees the set, also when it fails";
    EXPECT_EQ(orvex::warnings().size(), 1U);
    clients().setModelName(u"");
    clients().setModelName(u"d");
    StreamingClients::handleModelRename(clientsObject());
    EXPECT_EQ(kestrel::recordedRenames().size(), 2U) << "a name after none is a first one";
    clients().add(client("b"));
    clients().get(1)->m_sourceModel = u"d";
    clients().setModelName(u"e");
    EXPECT_EQ(utf8(clients().get(0)->m_sourceModel + u" " + clients().get(1)->m_sourceModel), "m1 e");
}

TEST_F(StreamingClientsTest, refusalsOfTheHostEndQuietlyWithAWarning) {
    clients().setModelName(u"a");
    clients().setModelName(u"b");
    std::vector<StreamingClients::ClientPtr> out(2);
    struct Row {
        const char* function;
        std::function<void()> operation;
    };
    const Row rows[] = {
        {"Kestrel.HMI.InterfaceMgr.getInterfaceMgr", [&] { StreamingClients::handleModelRename(clientsObject()); }},
        {"renameModel", [&] { StreamingClients::handleModelRename(clientsObject()); }},
        {"validateAndRemoveUnused", [&] { StreamingClients::validateAndRemoveUnused(clientsObject()); }},
        {"getAlignedObservers", [&] { StreamingClients::getAlignedObservers(clientsObject(), out); }},
    };
    for (const Row& row : rows) {
        orvex::clearWarnings();
        const auto refusing = orvex::registerFunction(row.function, [](orvex::Call&) { orvex::raise("no", "no"); });
        EXPECT_EQ(raisedBy(row.operation), "") << row.function;
        EXPECT_EQ(orvex::warnings().size(), 1U) << row.function;
    }
    EXPECT_TRUE(out.empty());
    EXPECT_TRUE(kestrel::recordedRenames().empty());
    {
        clients().setModelName(u"c");
        const auto absent = orvex::registerFunction("Kestrel.HMI.InterfaceMgr.getInterfaceMgr", [](orvex::Call&) {});
        orvex::clearWarnings();
        StreamingClients::handleModelRename(clientsObject());
        EXPECT_TRUE(orvex::warnings().empty()) << "no manager, nobody to tell";
    }
    const auto refusing =
        orvex::registerFunction("Kestrel.HMI.StreamingClients", [](orvex::Call&) { orvex::raise("no", "no"); });
    EXPECT_EQ(raisedBy([&] { clients().copy(); }), "no no");
}

TEST_F(StreamingClientsTest, aValueWithoutASetIsNothingToDo) {
    EXPECT_TRUE(StreamingClients::isValidType(clientsObject()));
    const auto pair = objects({clientsObject(), call("Kestrel.HMI.StreamingClients", {}).get()});
    EXPECT_FALSE(StreamingClients::isValidType(pair.get()));
    EXPECT_EQ(StreamingClients::getFromHvArray(pair.get()), &clients());
    for (const HvArrayPtr& value :
         {HvArrayPtr(), emptyDouble(), number(1), call("Kestrel.HMI.InstrumentedSignals", {})}) {
        EXPECT_EQ(StreamingClients::isValidType(value.get()), hvIsEmpty(value.get()));
        EXPECT_EQ(StreamingClients::getFromHvArray(value.get()), nullptr);
        StreamingClients::validateAndRemoveUnused(value.get());
        StreamingClients::handleModelRename(value.get());
    }
    EXPECT_TRUE(orvex::warnings().empty());
}

TEST_F(StreamingClientsTest, alignedObserversAreNewClientsWithRelativePaths) {
    clients().setModelName(u"known before");
    clients().setModelName(u"m1");
    clients().add(client("a"));
    clients().add(client("b"));
    clients().get(1)->m_modelPath.push_back(u"other/Plant");
    clients().get(1)->m_modelPathEID.push_back("other:1");
    kestrel::loadedModels().find(u"m1")->model().move(u"Sub", u"Moved");
    std::vector<StreamingClients::ClientPtr> out(5);
    StreamingClients::getAlignedObservers(clientsObject(), out);
    ASSERT_EQ(out.size(), 2U);
    EXPECT_EQ(out[1]->m_uuid, "b");
    EXPECT_EQ(out[1]->m_modelPath, (std::vector<std::u16string>{u"Moved", u"other/Plant"}));
    EXPECT_EQ(clients().get(1)->m_modelPath[0], u"Sub");
    for (const hvArray* const other : {static_cast<const hvArray*>(nullptr), object()}) {
        out.resize(1);
        EXPECT_EQ(recorded({"kssvFEVAL_NoThrow"}, [&] { StreamingClients::getAlignedObservers(other, out); }), Lines{});
        EXPECT_TRUE(out.empty());
    }

    HvArrayPtr only = call("Kestrel.HMI.StreamingClients", {text("m1").get()});
    const auto releasing = orvex::registerFunction("getAlignedObservers", [&](orvex::Call& c) {
        StreamingClients::getFromHvArray(only.get())->setModelName(u"m2");
        only.reset();
        c.outs[0] = client("c")->getHOSObject(u"m2");
    });
    StreamingClients::getAlignedObservers(only.get(), out);
    ASSERT_EQ(out.size(), 1U) << "a script lets go of the caller's value";
    EXPECT_EQ(out[0]->m_modelPath[0], u"Sub") << "relative to the name that the set has by then";
}

TEST_F(StreamingClientsTest, copyIsDeepAndKeepsBothNames) {
    clients().setModelName(u"a");
    clients().setModelName(u"b");
    clients().add(client("x"));
    const auto copied = clients().copy();
    auto& copy = *StreamingClients::getFromHvArray(copied.get());
    EXPECT_TRUE(copy.isEqual(&clients()));
    EXPECT_NE(copy.get(0), clients().get(0));
    EXPECT_EQ(copy.getModelName(), u"b");
    StreamingClients::handleModelRename(copied.get());
    ASSERT_EQ(kestrel::recordedRenames().size(), 1U);
    EXPECT_EQ(kestrel::recordedRenames()[0].oldName, u"a");
    EXPECT_EQ(kestrel::recordedRenames()[0].newName, u"b");
}

TEST_F(StreamingClientsTest, scriptsRenameTheSetAndReachClientsByOneBasedPositions) {
    hvSetProperty(HvArrayPtr(hvCreateSharedDataCopy(clientsObject())).get(), 0, "Model", text("m1").get());
    EXPECT_EQ(clients().getModelName(), u"m1");
    call("add", {clientsObject(), client("x")->getHOSObject(u"m1").get()}, 0);
    EXPECT_EQ(clients().get(0)->m_modelPath[0], u"Sub") << "stored relative to the model";
    const auto read = call("get", {clientsObject(), number(1).get()});
    EXPECT_TRUE(hvIsA(read.get(), "Kestrel.HMI.SignalClient"));
    EXPECT_EQ(describe(property(read.get(), "ModelPath_").get()), "{'m1/Sub'}");
    call("set", {clientsObject(), number(1).get(), client("y")->getHOSObject(u"m1").get()}, 0);
    EXPECT_EQ(uuids(), "y ");
    for (const double position : {0.0, 2.0})
        EXPECT_EQ(raisedBy([&] { call("get", {clientsObject(), number(position).get()}); }), "InvalidElementIndex 1");
    call("remove", {clientsObject(), number(1).get()}, 0);
    EXPECT_EQ(describe(property(clientsObject(), "Count").get()), "uint32 0");
}

}  // namespace
