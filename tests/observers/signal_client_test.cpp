#include "observers/signal_client.h"

#include <cmath>
#include <functional>
#include <set>

#include "tests/support/host_recorder.h"
#include "tests/support/host_test.h"

using namespace ks_test;
using ks_hmi::SignalClient;

namespace {

// With a null name the field holds nothing.
HvArrayPtr params(const char* modelName) {
    HvArrayPtr value = structOf(1, std::array{"ModelName", "Color"});
    if (modelName != nullptr) hvReplaceField(value.get(), 0, "ModelName", text(modelName).release());
    return value;
}

class SignalClientTest : public ModelTest {
protected:
    static HvArrayPtr emptyStruct(std::size_t elements = 1) {
        return structOf(elements, SignalClient::getStructFields());
    }
    static std::unique_ptr<SignalClient> filled() {
        auto client = std::make_unique<SignalClient>();
        client->m_uuid = "c1";
        client->m_sourceModel = u"sub";
        client->m_signalUUID = "s1";
        client->m_observerType = "scope";
        client->m_modelPath = {u"Sub/Model", u"m1/Block"};
        client->m_modelPathEID = {"2", "m1:7"};
        client->m_observerParams = params("m1");
        client->m_updateRate = 10;
        client->m_dimensionChannel = 3;
        client->m_observeImaginaryPart = true;
        client->m_busLeafPath = "a.b";
        return client;
    }
    static std::unique_ptr<SignalClient> reload(const SignalClient& client, const std::u16string& modelName = u"") {
        const auto data = emptyStruct();
        client.getPersistenceData(data.get(), 0);
        return std::make_unique<SignalClient>(data.get(), 0, modelName);
    }
    // What a client writes into the field when it was read from an element with that value there, or the error.
    static std::string readAndWritten(const char* field, HvArrayPtr value) {
        const auto data = emptyStruct(2);
        filled()->getPersistenceData(data.get(), 1);
        hvReplaceField(data.get(), 1, field, value.release());
        const std::string error = raisedBy([&] { SignalClient(data.get(), 1, u"").getPersistenceData(data.get(), 1); });
        return error.empty() ? describe(hvGetField(data.get(), 1, field)) : error;
    }
};

TEST_F(SignalClientTest, persistedElementAndHostObjectReadBackEqual) {
    const auto client = filled();
    EXPECT_TRUE(reload(*client)->isEqual(client.get()));
    const SignalClient fresh;
    EXPECT_EQ(fresh.m_updateRate, 1U);
    EXPECT_EQ(fresh.m_dimensionChannel, 1U);
    EXPECT_FALSE(fresh.m_observeImaginaryPart);
    EXPECT_TRUE(reload(fresh)->isEqual(&fresh));
    EXPECT_TRUE(fresh.isEqual(reload(fresh).get()));
    EXPECT_TRUE(SignalClient(client->getHOSObject(u"m1").get(), 0, u"m1").isEqual(client.get()));
    for (const char16_t* const path : {u"m1/Sub", u"/Sub"}) {
        client->m_modelPath[0] = path;
        client->m_modelPathEID[0] = path[0] == u'/' ? ":2" : "m1:2";
        for (const char16_t* const name : {u"", u"m1"})
            EXPECT_TRUE(reload(*client, name)->isEqual(client.get())) << "saved references are relative already";
    }
}

TEST_F(SignalClientTest, structCarriesTheModelsNameOnTheFirstPathOnly) {
    const auto data = emptyStruct();
    const auto client = filled();
    client->createStructData(data.get(), 0, u"m");
    const auto field = [&](const char* name) { return describe(hvGetField(data.get(), 0, name)); };
    EXPECT_EQ(field("ModelPath_"), "{'m/Sub/Model', 'm1/Block'}");
    EXPECT_EQ(field("ModelPathEID_"), "{'m:2', 'm1:7'}");
    EXPECT_EQ(field("SourceModel_"), "'sub'");
    EXPECT_EQ(hvGetDimensions(hvGetField(data.get(), 0, "ModelPath_"))[0], 2U);
    client->m_modelPath.clear();
    client->m_busLeafPath = std::string("a\0b", 3);
    client->createStructData(data.get(), 0, u"m");
    EXPECT_EQ(field("SourceModel_"), "'m'");
    EXPECT_EQ(field("BusLeafPath_"), "'a'");
    client->getPersistenceData(data.get(), 0);
    EXPECT_EQ(field("SourceModel_"), "''");
}

TEST_F(SignalClientTest, parametersAreItsOwnThroughAndThroughWhenReadWrittenAndCloned) {
    const auto client = filled();
    const auto data = emptyStruct();
    client->getPersistenceData(data.get(), 0);
    const SignalClient read(data.get(), 0, u"");
    const auto clone = client->clone();
    const auto nameIn = [](const hvArray* own) { return hvGetField(own, 0, "ModelName"); };
    const std::set<const hvArray*> names = {nameIn(client->m_observerParams.get()),
                                            nameIn(hvGetField(data.get(), 0, "ObserverParams_")),
                                            nameIn(read.m_observerParams.get()), nameIn(clone->m_observerParams.get())};
    EXPECT_EQ(names.size(), 4U);
}

TEST_F(SignalClientTest, readsWhatOlderAndForeignWritersLeaveOrRefusesItByFieldAndElement) {
    struct Row {
        const char* field;
        HvArrayPtr value;
        const char* becomes;
    };
    const std::size_t two = 2;
    Row rows[] = {
        {"UpdateRate_", nullptr, "uint32 0"},
        {"DimensionChannel_", nullptr, "uint32 0"},
        {"ObserveImaginaryPart_", nullptr, "false"},
        {"BusLeafPath_", nullptr, "''"},
        {"UpdateRate_", number(2.9), "uint32 2"},
        {"ObserveImaginaryPart_", number(2.0), "true"},
        {"ObserveImaginaryPart_", number(1.0), "true"},
        {"ObserveImaginaryPart_", number(-0.0), "false"},
        {"ObserveImaginaryPart_", number(NAN), "true"},
        {"ObserveImaginaryPart_", emptyDouble(), "false"},
        {"SourceModel_", number(1), "''"},
        {"BusLeafPath_", number(1), "''"},
        {"ModelPath_", HvArrayPtr(hvCreateCellArray(1, &two)), "{'', ''}"},
        {"ModelPath_", text("m/p"), "InvalidFieldValue ModelPath_ 2"},
        {"ModelPathEID_", emptyDouble(), "InvalidFieldValue ModelPathEID_ 2"},
        {"UpdateRate_", text("fast"), "InvalidFieldValue UpdateRate_ 2"},
        {"DimensionChannel_", emptyDouble(), "InvalidFieldValue DimensionChannel_ 2"},
    };
    for (Row& row : rows) EXPECT_EQ(readAndWritten(row.field, std::move(row.value)), row.becomes) << row.field;
    for (const char* const field : SignalClient::getStructFields().first(7))
        EXPECT_EQ(readAndWritten(field, nullptr), std::string("MissingField ") + field + " 2");
    SignalClient widened;
    widened.m_updateRate = UINT64_MAX;
    EXPECT_EQ(reload(widened)->m_updateRate, UINT64_MAX) << "the low 32 bits survive";
}

TEST_F(SignalClientTest, equalityComparesEveryPersistedMember) {
    const auto client = filled();
    for (const char* const field : SignalClient::getStructFields()) {
        const auto data = emptyStruct();
        client->getPersistenceData(data.get(), 0);
        const hvArray* const was = hvGetField(data.get(), 0, field);
        HvArrayPtr becomes = number(7);
        if (hvGetClassID(was) == hvCHAR_CLASS) becomes = text("x");
        if (hvGetClassID(was) == hvLOGICAL_CLASS) becomes = logical(false);
        if (hvGetClassID(was) == hvCELL_CLASS) becomes = HvArrayPtr(hvCreateCellArray(1, std::array{2UL}.data()));
        hvReplaceField(data.get(), 0, field, becomes.release());
        EXPECT_FALSE(client->isEqual(std::make_unique<SignalClient>(data.get(), 0, u"").get())) << field;
    }
    const auto other = client->clone();
    other->m_signalSpec = std::make_unique<ks_hmi::SignalSpecification>();
    EXPECT_TRUE(client->isEqual(other.get()));
    EXPECT_EQ(other->clone()->m_signalSpec, nullptr);
    EXPECT_FALSE(client->isEqual(nullptr));
    EXPECT_EQ(SignalClient().clone()->m_observerParams, nullptr);

    const auto failing = orvex::registerFunction("isequal", [](orvex::Call&) { orvex::raise("no", "no"); });
    EXPECT_EQ(raisedBy([&] { client->isEqual(client->clone().get()); }), "no no");

    std::vector<bool> isNone;
    const auto recording = orvex::registerFunction("isequal", [&](orvex::Call& c) {
        for (const hvArray* const value : c.ins)
            isNone.push_back(value != nullptr && hvGetClassID(value) == hvDOUBLE_CLASS && hvIsEmpty(value));
        c.outs[0] = logical(isNone.size() == 2);
    });
    EXPECT_TRUE(SignalClient().isEqual(SignalClient().clone().get())) << "the host decides also when there are none";
    other->m_observerParams.reset();
    EXPECT_FALSE(client->isEqual(other.get()));
    EXPECT_EQ(isNone, (std::vector{true, true, false, true}));

    HvArrayPtr answer = number(1.0);
    const auto answering = orvex::registerFunction("isequal", [&](orvex::Call& c) { c.outs[0] = std::move(answer); });
    EXPECT_FALSE(client->isEqual(client->clone().get())) << "a number is no answer";
    answer = numbers<bool>(hvLOGICAL_CLASS, {});
    EXPECT_FALSE(client->isEqual(client->clone().get())) << "nor is no truth value";
}

TEST_F(SignalClientTest, renamingFollowsTheSourceModelAndAlwaysTheParameters) {
    struct Row {
        const char16_t *source, *expected;
    };
    for (const Row& row : {Row{u"a", u"b"}, Row{u"", u"b"}, Row{u"c", u"c"}}) {
        const auto client = filled();
        client->m_sourceModel = row.source;
        client->renameModel(u"a", u"b");
        EXPECT_EQ(client->m_sourceModel, row.expected);
        EXPECT_EQ(hvArrayToStdString(hvGetField(client->m_observerParams.get(), 0, "ModelName")), "b");
        EXPECT_EQ(client->m_modelPath[0], u"Sub/Model");
    }
    const auto failing = filled();
    failing->m_sourceModel = u"a";
    EXPECT_NE(raisedBy([&] {
                  const orvex::FaultInjection faults({1, true});
                  failing->renameModel(u"a", u"b");
              }),
              "");
    EXPECT_EQ(failing->m_sourceModel, u"b") << "before the parameters";

    SignalClient without;
    without.renameModel(u"a", u"b");
    without.m_observerParams = number(1);
    without.renameModel(u"a", u"b");
    EXPECT_EQ(hvGetScalar(without.m_observerParams.get()), 1.0);
    without.m_observerParams = structOf(1, std::array{"Color"});
    without.renameModel(u"a", u"b");
    without.m_observerParams = params(nullptr);
    without.renameModel(u"a", u"b");
    EXPECT_EQ(hvGetField(without.m_observerParams.get(), 0, "ModelName"), nullptr) << "what names no model stays so";
}

TEST_F(SignalClientTest, deprecatedKindsMatchExactly) {
    SignalClient client;
    EXPECT_FALSE(client.isDeprecatedObserver());
    client.m_observerType = "hmi_web_widget_observer";
    EXPECT_TRUE(client.isDeprecatedObserver());
    client.m_observerType += " ";
    EXPECT_FALSE(client.isDeprecatedObserver());
}

}  // namespace
