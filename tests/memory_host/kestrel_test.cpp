#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "host/messages.h"
#include "host/object_system.h"
#include "memory_host/kestrel/host_side.h"
#include "memory_host/kestrel/loaded_models.h"
#include "memory_host/orvex/class_members.h"
#include "memory_host/orvex/functions.h"
#include "memory_host/orvex/ledger.h"
#include "memory_host/orvex/script_class.h"

namespace {

using kestrel::Block;
using kestrel::loadedModels;
using kestrel::Model;

std::string failureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const kestrel::ModelError& failure) {
        return failure.subject();
    } catch (const kssvIException& failure) {
        return failure.what();
    }
    return "(no failure)";
}

Model engine() {
    Model model(u"engine");
    model.add({.path = u"Air", .eid = "1", .outputs = {u"flow"}});
    model.add({.path = u"Air/Throttle", .eid = "2", .outputs = {u"angle", u"rate"}});
    model.add({.path = u"Airbag", .eid = "3"});
    return model;
}

class Kestrel : public testing::Test {
protected:
    void SetUp() override { kestrel::installHostSide(); }
    void TearDown() override {
        kestrel::releaseHostSide();
        orvex::releaseObjectSystem();
        EXPECT_EQ(orvex::liveCounts(), m_before) << orvex::describeLive();
    }

    HvArrayPtr call(const char* name, std::vector<const hvArray*> ins, int nOut = 1) {
        return std::move(orvex::callByName(name, ins, nOut).front());
    }
    HvArrayPtr signal(const char* path, const char* eid) {
        HvArrayPtr object = call("Kestrel.HMI.SignalSpecification", {});
        hvSetProperty(object.get(), 0, "BlockPath_", HvArrayPtr(hvCreateString(path)).get());
        hvSetProperty(object.get(), 0, "EID_", HvArrayPtr(hvCreateString(eid)).get());
        return object;
    }
    std::string alignedPath(const hvArray* object) {
        return hvArrayToStdString(call("getAlignedBlockPath", {object}).get());
    }
    bool isEqual(HvArrayPtr left, HvArrayPtr right) {
        return hvIsLogicalScalarTrue(call("isequal", {left.get(), right.get()}).get());
    }

private:
    orvex::LedgerCounts m_before = orvex::liveCounts();
};

TEST_F(Kestrel, modelsRefuseWhatWouldMakeAReferenceAmbiguous) {
    Model model = engine();
    EXPECT_EQ(failureOf([] { Model(u"a/b"); }), "a/b");
    EXPECT_EQ(failureOf([&] { model.rename(u"a:b"); }), "a:b");
    EXPECT_EQ(failureOf([&] { model.add({.path = u"Air", .eid = "9"}); }), "Air");
    EXPECT_EQ(failureOf([&] { model.add({.path = u"Fuel", .eid = "2"}); }), "2");
    EXPECT_EQ(failureOf([&] { model.move(u"Air", u"Air/Inner"); }), "Air/Inner");
    EXPECT_EQ(failureOf([&] { model.move(u"Air", u"Airbag"); }), "Airbag");
    EXPECT_EQ(failureOf([&] { model.move(u"Fuel", u"Oil"); }), "Fuel");
    EXPECT_EQ(failureOf([&] { model.move(u"Air", u"Oil/"); }), "Oil/");
    for (const char16_t* const path : {u"", u"/Oil", u"Oil/", u"Oil//Filter"})
        EXPECT_NE(failureOf([&] { model.add({.path = path, .eid = "9"}); }), "(no failure)");
    EXPECT_EQ(model.blocks().size(), 3u);
    EXPECT_EQ(model.name(), u"engine");
}

TEST_F(Kestrel, moveTakesTheSubtreeAlongAndNoNeighbour) {
    Model model = engine();
    EXPECT_EQ(model.move(u"Air", u"Intake/Air"), 2u);
    EXPECT_EQ(model.findByEid("2")->path, u"Intake/Air/Throttle");
    EXPECT_EQ(model.findByPath(u"Intake/Air/Throttle")->eid, "2");
    EXPECT_EQ(model.findByPath(u"Air/Throttle"), nullptr);
    EXPECT_EQ(model.findByPath(u"Airbag")->eid, "3");
}

TEST_F(Kestrel, everyLoadGivesEveryBlockANewFractionalHandle) {
    std::set<double> handles;
    for (int load = 0; load < 2; ++load) {
        kestrel::LoadedModel& open = loadedModels().load(engine());
        EXPECT_EQ(failureOf([] { loadedModels().load(engine()); }), "engine");
        for (const Block& block : open.model().blocks()) {
            EXPECT_TRUE(handles.insert(block.handle).second);
            EXPECT_NE(block.handle, static_cast<double>(static_cast<long>(block.handle)));
            EXPECT_EQ(loadedModels().findByHandle(block.handle).block, &block);
        }
        EXPECT_TRUE(loadedModels().unload(u"engine"));
    }
    EXPECT_EQ(handles.size(), 6u);
    EXPECT_FALSE(loadedModels().findByHandle(*handles.begin()));
}

TEST_F(Kestrel, signalsAlignByIdentifierWhereverTheBlockMovedAndByPathWithoutOne) {
    Model& model = loadedModels().load(engine()).model();
    const HvArrayPtr byEid = signal("engine/Air/Throttle", "engine:2");
    const HvArrayPtr byPath = signal("engine/Air/Throttle", "");
    EXPECT_EQ(alignedPath(byEid.get()), "engine/Air/Throttle");
    EXPECT_EQ(alignedPath(byPath.get()), "engine/Air/Throttle");
    model.move(u"Air", u"Intake");
    EXPECT_EQ(alignedPath(byEid.get()), "engine/Intake/Throttle");
    EXPECT_EQ(failureOf([&] { alignedPath(byPath.get()); }),
              "The block \"engine/Air/Throttle\" cannot be found: the model \"engine\" has no such block.");
    EXPECT_EQ(failureOf([&] { alignedPath(signal("engine/Air", "engine:77").get()); }),
              "The block \"engine:77\" cannot be found: the model \"engine\" has no such block.");
    loadedModels().unload(u"engine");
    EXPECT_EQ(failureOf([&] { alignedPath(byEid.get()); }),
              "The block \"engine:2\" cannot be found: no model named \"engine\" is open.");
}

TEST_F(Kestrel, theSignalClassTakesACompleteStructOnly) {
    const char* const names[] = {"UUID"};
    const std::size_t dims[] = {1, 1};
    const HvArrayPtr data(hvCreateStructArray(2, dims, 1, names));
    hvReplaceField(data.get(), 0, "UUID", hvCreateString("u"));
    EXPECT_EQ(failureOf([&] { call("Kestrel.HMI.SignalSpecification", {data.get()}); }),
              "The struct for an object of class Kestrel.HMI.SignalSpecification has no value in the field "
              "\"BlockPath_\".");
    const HvArrayPtr object = call("Kestrel.HMI.SignalSpecification", {});
    EXPECT_EQ(hvGetScalar(HvArrayPtr(hvGetProperty(object.get(), 0, "Decimation_")).get()), 1.0);
    EXPECT_TRUE(hvIsEmpty(HvArrayPtr(hvGetProperty(object.get(), 0, "CachedBlockHandle_")).get()));
    EXPECT_EQ(hvGetClassID(HvArrayPtr(hvGetProperty(object.get(), 0, "ExcludeForSave_")).get()), hvLOGICAL_CLASS);
}

TEST_F(Kestrel, isEqualLooksAtValuesNotAtTheirClassOrFieldOrder) {
    const auto number = [](double value) { return HvArrayPtr(hvCreateDoubleScalar(value)); };
    const auto text = [](const char* value) { return HvArrayPtr(hvCreateString(value)); };
    const auto record = [&](const char* first, const char* second) {
        const char* const names[] = {first, second};
        const std::size_t dims[] = {1, 1};
        HvArrayPtr value(hvCreateStructArray(2, dims, 2, names));
        hvReplaceField(value.get(), 0, "a", hvCreateDoubleScalar(1.0));
        return value;
    };
    EXPECT_TRUE(isEqual(number(1.0), HvArrayPtr(hvCreateLogicalScalar(true))));
    EXPECT_TRUE(isEqual(record("a", "b"), record("b", "a")));
    EXPECT_FALSE(isEqual(record("a", "b"), record("a", "c")));
    EXPECT_FALSE(isEqual(number(std::stod("nan")), number(std::stod("nan"))));
    EXPECT_FALSE(isEqual(text("ab"), text("ac")));
    EXPECT_FALSE(isEqual(number(97.0), text("a")));
    EXPECT_FALSE(isEqual(number(0.0), HvArrayPtr(hvCreateNumericMatrix(1, 2, hvDOUBLE_CLASS, hvREAL))));
    EXPECT_TRUE(isEqual(signal("m/a", "m:1"), signal("m/a", "m:1")));
    EXPECT_FALSE(isEqual(signal("m/a", "m:1"), signal("m/b", "m:1")));
}

constexpr const char* kSetClass = "Kestrel.HMI.InstrumentedSignals";

/// Stands in for the sets that a library brings: the methods that the modelling side uses.
class ListOfObjects {
public:
    explicit ListOfObjects(const char* className) {
        orvex::ScriptClass list;
        list.fullName = className;
        list.properties = {{"Count", {}, false, [this](const orvex::ScriptObject&) { return number(m_items.size()); }}};
        list.methods["get"] = [this](orvex::Call& call) { call.outs[0] = copyOf(item(call)); };
        list.methods["set"] = [this](orvex::Call& call) { item(call) = copyOf(call.ins[2]); };
        list.methods["remove"] = [this](orvex::Call& call) {
            m_items.erase(m_items.begin() + (&item(call) - &m_items[0]));
        };
        list.methods["getUUID"] = [this](orvex::Call& call) {
            call.outs[0] = HvArrayPtr(hvGetProperty(item(call).get(), 0, "UUID"));
        };
        orvex::defineScriptClass(std::move(list));
        m_object = std::move(orvex::callByName(className, {}, 1).front());
    }
    hvArray* object() { return m_object.get(); }
    HvArrayPtr handle() { return copyOf(m_object); }
    std::vector<HvArrayPtr>& items() { return m_items; }

private:
    static HvArrayPtr number(std::size_t value) { return HvArrayPtr(hvCreateDoubleScalar(static_cast<double>(value))); }
    static HvArrayPtr copyOf(const hvArray* value) { return HvArrayPtr(hvCreateSharedDataCopy(value)); }
    static HvArrayPtr copyOf(const HvArrayPtr& value) { return copyOf(value.get()); }
    HvArrayPtr& item(const orvex::Call& call) {
        return m_items.at(static_cast<std::size_t>(hvGetScalar(call.ins[1])) - 1);
    }

    HvArrayPtr m_object;
    std::vector<HvArrayPtr> m_items;
};

void put(const HvArrayPtr& object, const char* property, const char* text) {
    hvSetProperty(object.get(), 0, property, HvArrayPtr(hvCreateString(text)).get());
}
void put(const HvArrayPtr& object, const char* property, double number) {
    hvSetProperty(object.get(), 0, property, HvArrayPtr(hvCreateDoubleScalar(number)).get());
}
HvArrayPtr read(const hvArray* object, const char* property) { return HvArrayPtr(hvGetProperty(object, 0, property)); }
std::string readText(const hvArray* object, const char* property) {
    return hvArrayToStdString(read(object, property).get());
}

TEST_F(Kestrel, rebindingFindsPortsByIdentifierThenByPathAndForgetsTheRest) {
    ListOfObjects set(kSetClass);
    const Model& model = loadedModels().load(engine()).model();
    set.items().push_back(signal("engine/Old/Throttle", "engine:2"));
    set.items().push_back(signal("engine/Air", "engine:88"));
    set.items().push_back(signal("engine/Gone", "engine:99"));
    set.items().push_back(signal("engine/Air", "engine:1"));
    for (const HvArrayPtr& item : set.items()) put(item, "OutputPortIndex_", 1.0);
    put(set.items()[2], "CachedBlockHandle_", 123456.5);
    put(set.items()[3], "OutputPortIndex_", 2.0);
    for (const double port : {0.0, 1.5, 0.0}) {
        set.items().push_back(signal("engine/Air/Throttle", "engine:2"));
        put(set.items().back(), "OutputPortIndex_", port);
    }
    put(set.items()[5], "DomainType_", "cw_unheard_of");
    put(set.items()[6], "DomainType_", "cw_state");

    const HvArrayPtr all(hvCreateDoubleScalar(1.0));
    const HvArrayPtr staleOnly(hvCreateLogicalScalar(false));
    EXPECT_NE(failureOf([&] {
                  call("applyRebindingRules", {set.object(), set.object()}, 0);
              }).find("Argument 2 of"),
              std::string::npos);
    call("applyRebindingRules", {set.object(), all.get()}, 0);
    const char* const rules[] = {"eid", "path", "", "", "", "", "eid"};
    const double throttle = model.findByEid("2")->handle;
    const double handles[] = {throttle, model.findByEid("1")->handle, 0.0, 0.0, 0.0, 0.0, throttle};
    for (std::size_t i = 0; i < set.items().size(); ++i) {
        const HvArrayPtr handle = read(set.items()[i].get(), "CachedBlockHandle_");
        EXPECT_EQ(readText(set.items()[i].get(), "BindingRule_"), rules[i]);
        EXPECT_EQ(hvIsEmpty(handle.get()) ? 0.0 : hvGetScalar(handle.get()), handles[i]);
    }
    put(set.items()[1], "CachedBlockHandle_", 123456.5);
    call("applyRebindingRules", {set.object(), staleOnly.get()}, 0);
    EXPECT_EQ(hvGetScalar(read(set.items()[0].get(), "CachedBlockHandle_").get()), handles[0]);
    EXPECT_TRUE(hvIsEmpty(read(set.items()[1].get(), "CachedBlockHandle_").get()));
}

TEST_F(Kestrel, clientsFindTheirSignalUntilItIsGoneAndAreThenRemoved) {
    ListOfObjects signals(kSetClass);
    loadedModels().load(engine()).setSignals(signals.handle());
    signals.items().push_back(signal("engine/Air", "engine:1"));
    put(signals.items()[0], "UUID", "u1");
    const auto client = [&](const char* uuid, const char* model, const char* type) {
        HvArrayPtr object = call("Kestrel.HMI.SignalClient", {});
        put(object, "SignalUUID_", uuid);
        put(object, "SourceModel_", model);
        put(object, "ObserverType_", type);
        return object;
    };
    const HvArrayPtr watching = client("u1", "engine", "gauge");
    EXPECT_EQ(readText(read(watching.get(), "SignalInfo").get(), "EID_"), "engine:1");
    EXPECT_TRUE(hvIsEmpty(read(client("u2", "engine", "gauge").get(), "SignalInfo").get()));

    ListOfObjects clients("Kestrel.HMI.StreamingClients");
    clients.items().push_back(client("u1", "engine", "hmi_web_widget_observer"));
    clients.items().push_back(client("u1", "engine", "hmi_web_widget_observer "));
    clients.items().push_back(client("u2", "engine", "gauge"));
    clients.items().push_back(client("u2", "not open", "gauge"));
    call("validateAndRemoveUnused", {clients.object()}, 0);
    ASSERT_EQ(clients.items().size(), 2u);
    EXPECT_EQ(readText(clients.items()[0].get(), "SignalUUID_"), "u1");
    EXPECT_EQ(readText(clients.items()[1].get(), "SourceModel_"), "not open");
}

TEST_F(Kestrel, alignedObserversFollowTheBlocksOfTheirModelPath) {
    ListOfObjects clients("Kestrel.HMI.StreamingClients");
    Model& model = loadedModels().load(engine()).model();
    const auto cells = [](const char* first, const char* second) {
        const std::size_t count = 2;
        HvArrayPtr list(hvCreateCellArray(1, &count));
        hvSetCell(list.get(), 0, hvCreateString(first));
        hvSetCell(list.get(), 1, hvCreateString(second));
        return list;
    };
    const HvArrayPtr client = call("Kestrel.HMI.SignalClient", {});
    hvSetProperty(client.get(), 0, "ModelPath_", cells("engine/Air/Throttle", "other/Plant").get());
    hvSetProperty(client.get(), 0, "ModelPathEID_", cells("engine:2", "other:1").get());
    clients.items().push_back(HvArrayPtr(hvCreateSharedDataCopy(client.get())));
    model.move(u"Air", u"Intake");
    const HvArrayPtr aligned = call("getAlignedObservers", {clients.object()});
    ASSERT_EQ(hvGetNumberOfElements(aligned.get()), 1u);
    const HvArrayPtr path = read(aligned.get(), "ModelPath_");
    EXPECT_EQ(hvArrayToStdString(hvGetCell(path.get(), 0)), "engine/Intake/Throttle");
    EXPECT_EQ(hvArrayToStdString(hvGetCell(path.get(), 1)), "other/Plant");
}

TEST_F(Kestrel, theManagerIsOneAndFollowsAModelThroughSeveralRenames) {
    loadedModels().load(engine());
    const HvArrayPtr manager = call("Kestrel.HMI.InterfaceMgr.getInterfaceMgr", {});
    const HvArrayPtr again = call("Kestrel.HMI.InterfaceMgr.getInterfaceMgr", {});
    EXPECT_EQ(omGetArrayElement(manager.get(), 0), omGetArrayElement(again.get(), 0));
    const auto tell = [&](const char* oldName, const char* newName) {
        const HvArrayPtr from(hvCreateString(oldName));
        const HvArrayPtr to(hvCreateString(newName));
        call("renameModel", {manager.get(), from.get(), to.get()}, 0);
    };
    tell("engine", "motor");
    tell("engine", "drive");
    EXPECT_NE(loadedModels().find(u"drive"), nullptr);
    EXPECT_NE(failureOf([&] { tell("drive", "a/b"); }).find("\"a/b\""), std::string::npos);
    loadedModels().load(Model(u"other"));
    EXPECT_NE(failureOf([&] { tell("drive", "other"); }).find("\"other\" is open"), std::string::npos);
    tell("drive", "drive");
    EXPECT_EQ(kestrel::recordedRenames().size(), 5u);
    EXPECT_EQ(kestrel::recordedRenames()[1].oldName, u"engine");
}

TEST_F(Kestrel, portListsHoldThePortsThatExistAndPassTheFilters) {
    ListOfObjects set(kSetClass);
    kestrel::LoadedModel& open = loadedModels().load(engine());
    open.setSignals(set.handle());
    set.items().push_back(signal("engine/Air", "engine:1"));
    set.items().push_back(signal("engine/Air/Throttle", "engine:2"));
    set.items().push_back(signal("engine/Air/Throttle", ""));
    set.items().push_back(signal("engine/Gone", "engine:9"));
    set.items().push_back(signal("engine/Air", "engine:1"));
    put(set.items()[2], "HideInPLV_", 1.0);
    put(set.items()[4], "DomainType_", "cw_state");

    const HvArrayPtr name(hvCreateString("engine"));
    const HvArrayPtr model = call("Kestrel.Model", {name.get()});
    const HvArrayPtr yes(hvCreateLogicalScalar(true));
    const HvArrayPtr no(hvCreateLogicalScalar(false));
    const HvArrayPtr any(hvCreateString(""));
    const auto ports = [&](const char* below, const HvArrayPtr& withHidden) {
        const HvArrayPtr scope(hvCreateString(below));
        const hvArray* ins[] = {model.get(), scope.get(), any.get(), withHidden.get(), yes.get()};
        return orvex::callByName("getObservedPorts", ins, 10);
    };
    const std::vector<HvArrayPtr> all = ports("", yes);
    EXPECT_EQ(hvGetNumberOfElements(all[0].get()), 3u);
    EXPECT_EQ(hvGetDoubles(all[1].get())[2], open.model().findByEid("2")->handle);
    EXPECT_EQ(hvArrayToStdString(hvGetCell(all[9].get(), 1)), "engine/Air/Throttle");
    EXPECT_EQ(hvGetNumberOfElements(ports("engine/Air/Throttle", no)[1].get()), 1u);
    EXPECT_EQ(hvGetNumberOfElements(ports("engine/Ai", yes)[1].get()), 0u);

    const HvArrayPtr badges = call("getPortsWithBadges", {model.get()});
    ASSERT_EQ(hvGetNumberOfElements(badges.get()), 2u);
    EXPECT_EQ(hvGetDoubles(badges.get())[0], open.model().findByEid("1")->handle);
}

}  // namespace
