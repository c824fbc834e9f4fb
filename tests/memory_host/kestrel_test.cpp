#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "host/object_system.h"
#include "memory_host/kestrel/host_side.h"
#include "memory_host/kestrel/loaded_models.h"
#include "memory_host/orvex/objects/object_system.h"
#include "tests/memory_host/ledger_test_base.h"

namespace {

using kestrel::Block;
using kestrel::loadedModels;
using kestrel::Model;
using ks_test::call;
using ks_test::logical;
using ks_test::property;

Model engine() {
    Model model(u"engine");
    model.add({.path = u"Air", .eid = "1", .outputs = {u"flow"}});
    model.add({.path = u"Air/Throttle", .eid = "2", .outputs = {u"angle", u"rate"}});
    model.add({.path = u"Airbag", .eid = "3"});
    return model;
}

void put(const HvArrayPtr& object, const char* name, const HvArrayPtr& value) {
    hvSetProperty(object.get(), 0, name, value.get());
}
HvArrayPtr signal(const char* path, const char* eid) {
    HvArrayPtr object = call("Kestrel.HMI.SignalSpecification", {});
    put(object, "BlockPath_", text(path));
    put(object, "EID_", text(eid));
    return object;
}
std::string alignedPath(const hvArray* object) {
    return hvArrayToStdString(call("getAlignedBlockPath", {object}).get());
}
bool isEqual(const HvArrayPtr& left, const HvArrayPtr& right) {
    return hvIsLogicalScalarTrue(call("isequal", {left.get(), right.get()}).get());
}

class Kestrel : public LedgerTest {
protected:
    Kestrel() { kestrel::installHostSide(); }
    void TearDown() override {
        kestrel::releaseHostSide();
        orvex::releaseObjectSystem();
        LedgerTest::TearDown();
    }
};

TEST_F(Kestrel, blocksMoveToWhereOthersOfThemWere) {
    Model model(u"m");
    for (const char16_t* const path : {u"A/B", u"A/B/B"}) model.add({path, path[3] == u'/' ? "2" : "1", 0.0, {}, {}});
    EXPECT_EQ(model.move(u"A/B", u"A"), 2u);
    EXPECT_EQ(model.findByPath(u"A/B")->eid, "2");
}

TEST_F(Kestrel, moveTakesTheSubtreeAlongAndNoNeighbour) {
    Model model = engine();
    EXPECT_EQ(model.move(u"Air", u"Intake/Air"), 2u);
    EXPECT_EQ(model.findByEid("2")->path, u"Intake/Air/Throttle");
    EXPECT_EQ(model.findByPath(u"Intake/Air/Throttle")->eid, "2");
    EXPECT_EQ(model.findByPath(u"Air/Throttle"), nullptr);
    EXPECT_EQ(model.findByPath(u"Airbag")->eid, "3");
}

TEST_F(Kestrel, blocksAreFoundWhateverWasAskedForBefore) {
    Model& model = loadedModels().load(engine()).model();
    const auto expectAll = [&] {
        // Forwards, backwards, and one again.
        for (const std::size_t i : {0, 1, 2, 3, 3, 2, 1, 0, 2}) {
            if (i >= model.blocks().size()) continue;
            const Block& block = model.blocks()[i];
            EXPECT_EQ(model.findByPath(block.path), &block);
            EXPECT_EQ(model.findByEid(block.eid), &block);
            EXPECT_EQ(model.findByHandle(block.handle), &block);
            EXPECT_EQ(model.findByHandle(block.handle + 0.25), nullptr);
        }
        for (const double handle : {0.0, -1.0, 1e300, std::nan("")}) EXPECT_EQ(model.findByHandle(handle), nullptr);
    };
    model.add({.path = u"Cabin", .eid = "4"});
    expectAll();
    const double removed = model.findByEid("1")->handle;
    EXPECT_EQ(model.remove(u"Air"), 2u);
    EXPECT_EQ(model.findByHandle(removed), nullptr);
    EXPECT_EQ(model.findByEid("1"), nullptr);
    expectAll();
    model.add({.path = u"Air", .eid = "1"});
    model.move(u"Cabin", u"Air/Cabin");
    expectAll();
}

TEST_F(Kestrel, aRefusedBlockLeavesNothingBehind) {
    Model& model = loadedModels().load(engine()).model();
    for (const Block& taken : {Block{.path = u"Air", .eid = "9"}, Block{.path = u"New", .eid = "2"}})
        EXPECT_THROW(model.add(taken), kestrel::ModelError);
    EXPECT_EQ(model.blocks().size(), 3u);
    EXPECT_EQ(model.findByPath(u"New"), nullptr);
    EXPECT_EQ(model.findByEid("9"), nullptr);
    EXPECT_EQ(model.findByPath(u"Air")->eid, "1");
    EXPECT_EQ(model.findByEid("2")->path, u"Air/Throttle");
    const Block& added = model.add({.path = u"New", .eid = "9"});
    EXPECT_EQ(model.findByHandle(added.handle), &added);
    EXPECT_EQ(model.fullPath(*model.findByEid("9")), u"engine/New");
}

TEST_F(Kestrel, everyLoadGivesEveryBlockANewFractionalHandle) {
    std::set<double> handles;
    for (int load = 0; load < 2; ++load) {
        kestrel::LoadedModel& open = loadedModels().load(engine());
        EXPECT_THROW(loadedModels().load(engine()), kestrel::ModelError);
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
    const auto refusal = [](const hvArray* object) { return failureOf([&] { alignedPath(object); }); };
    EXPECT_TRUE(refusal(byPath.get()).starts_with("BlockNotFound:"));
    EXPECT_TRUE(refusal(signal("engine/Air", "engine:77").get()).starts_with("BlockNotFound:"));
    loadedModels().unload(u"engine");
    EXPECT_TRUE(refusal(byEid.get()).starts_with("ModelNotOpen:"));
}

// An object made from a struct shares what is in it, and neither sees what becomes of the other.
TEST_F(Kestrel, signalsMadeFromAStructTakeItsFieldsInAnyOrderAndKeepThem) {
    static constexpr std::array kOrdered{
        "UUID",        "BlockPath_",  "EID_",          "SubPath_",   "OutputPortIndex_",         "LogicalPortIndex_",
        "SignalName_", "SubSysPath_", "Decimation_",   "MaxPoints_", "TargetBufferedStreaming_", "IsFrameBased_",
        "HideInPLV_",  "DomainType_", "DomainParams_", "VisualType_"};
    std::vector<const char*> names(kOrdered.begin(), kOrdered.end());
    for (int order = 0; order < 3; ++order) {
        HvArrayPtr record = ks_test::structOf(1, names);
        for (const char* const name : names) hvReplaceField(record.get(), 0, name, text(name).release());
        const HvArrayPtr object = call("Kestrel.HMI.SignalSpecification", {record.get()});
        const HvArrayPtr read = property(object.get(), "DomainParams_");
        static_cast<char16_t*>(hvGetDataForWriting(read.get()))[0] = u'd';
        hvReplaceField(record.get(), 0, "UUID", text("another").release());
        put(object, "EID_", read);
        EXPECT_EQ(hvArrayToStdString(hvGetField(record.get(), 0, "EID_")), "EID_");
        record.reset();
        EXPECT_EQ(hvArrayToStdString(property(object.get(), "EID_").get()), "domainParams_");
        put(object, "EID_", text("EID_"));
        for (const char* const name : kOrdered)
            EXPECT_EQ(hvArrayToStdString(property(object.get(), name).get()), name) << order;
        std::rotate(names.begin(), names.begin() + 5, names.end());
    }
    names.pop_back();
    const HvArrayPtr lacking = ks_test::structOf(1, names);
    for (const HvArrayPtr& wrong : {ks_test::structOf(2, names), text("struct")})
        EXPECT_TRUE(failureOf([&] { call("Kestrel.HMI.SignalSpecification", {wrong.get()}); }).starts_with("TypeMis"));
    EXPECT_TRUE(failureOf([&] { call("Kestrel.HMI.SignalSpecification", {lacking.get()}); }).starts_with("MissingF"));
}

TEST_F(Kestrel, questionsOutliveTheModelThatAScriptUnloadsMeanwhile) {
    orvex::ScriptClass set;
    set.fullName = "Test.Set";
    set.properties = {{"Count", [] { return number(2.0); }}};
    set.methods["get"] = [](orvex::Call& get) {
        get.outs[0] = signal("engine/Air/Throttle", "engine:2");
        if (hvGetScalar(get.ins[1]) == 2.0) loadedModels().unload(u"engine");
    };
    set.methods["getUUID"] = [](orvex::Call& get) {
        get.outs[0] = text(hvGetScalar(get.ins[1]) == 1.0 ? "u" : "v");
        loadedModels().unload(u"engine");
    };
    orvex::defineScriptClass(set);
    const auto open = [] {
        kestrel::LoadedModel& loaded = loadedModels().load(engine());
        loaded.setSignals(call("Test.Set", {}));
        return std::pair(call("Kestrel.Model", {text("engine").get()}), loaded.model().findByEid("2")->handle);
    };
    const auto [badged, badgedHandle] = open();
    EXPECT_EQ(hvGetScalar(call("getPortsWithBadges", {badged.get()}).get()), badgedHandle);
    const auto [model, handle] = open();
    const HvArrayPtr all = text("");
    const HvArrayPtr yes = logical(true);
    const hvArray* ins[] = {model.get(), all.get(), all.get(), yes.get(), yes.get()};
    const auto ports = orvex::callByName("getObservedPorts", ins, 10);
    EXPECT_EQ(hvGetNumberOfElements(ports[1].get()), 1u);
    EXPECT_EQ(hvGetScalar(ports[1].get()), handle);
    EXPECT_EQ(hvArrayToStdString(hvGetCell(ports[9].get(), 0)), "engine/Air/Throttle");
    open();
    const HvArrayPtr client = call("Kestrel.HMI.SignalClient", {});
    put(client, "SourceModel_", text("engine"));
    put(client, "SignalUUID_", text("v"));
    EXPECT_TRUE(hvIsA(property(client.get(), "SignalInfo").get(), "Kestrel.HMI.SignalSpecification"));
}

TEST_F(Kestrel, rebindingReadsASignalBeforeItLooksForTheBlock) {
    static HvArrayPtr only;
    orvex::ScriptClass leaving;
    leaving.fullName = "Test.Leaving";
    leaving.superclass = "Kestrel.HMI.SignalSpecification";
    leaving.properties = {{"OutputPortIndex_", {}, false, [](const orvex::ScriptObject&) {
                               loadedModels().unload(u"engine");
                               return number(1.0);
                           }}};
    orvex::defineScriptClass(leaving);
    orvex::ScriptClass set;
    set.fullName = "Test.One";
    set.properties = {{"Count", [] { return number(1.0); }}};
    set.methods["get"] = [](orvex::Call& get) { get.outs[0].reset(hvCreateSharedDataCopy(only.get())); };
    orvex::defineScriptClass(set);
    only = call("Test.Leaving", {});
    put(only, "EID_", text("engine:2"));
    loadedModels().load(engine());
    call("applyRebindingRules", {call("Test.One", {}).get(), logical(true).get()}, 0);
    EXPECT_EQ(hvArrayToStdString(property(only.get(), "BindingRule_").get()), "");
    only.reset();
}

TEST_F(Kestrel, isEqualLooksAtValuesNotAtTheirClassOrFieldOrder) {
    const auto record = [&](const char* first, const char* second) {
        HvArrayPtr value = ks_test::structOf(1, std::array{first, second});
        hvReplaceField(value.get(), 0, "a", hvCreateDoubleScalar(1.0));
        return value;
    };
    EXPECT_TRUE(isEqual(number(1.0), logical(true)));
    EXPECT_TRUE(isEqual(record("a", "b"), record("b", "a")));
    EXPECT_FALSE(isEqual(record("a", "b"), record("a", "c")));
    EXPECT_FALSE(isEqual(number(std::stod("nan")), number(std::stod("nan"))));
    EXPECT_FALSE(isEqual(text("ab"), text("ac")));
    EXPECT_FALSE(isEqual(number(97.0), text("a")));
    EXPECT_FALSE(isEqual(number(0.0), HvArrayPtr(hvCreateNumericMatrix(1, 2, hvDOUBLE_CLASS, hvREAL))));
    EXPECT_TRUE(isEqual(signal("m/a", "m:1"), signal("m/a", "m:1")));
    EXPECT_FALSE(isEqual(signal("m/a", "m:1"), signal("m/b", "m:1")));
    EXPECT_NE(failureOf([&] { call("Kestrel.HMI.SignalSpecification", {record("a", "UUID").get()}); }), "");
}

TEST_F(Kestrel, theManagerIsOneAndFollowsAModelThroughSeveralRenames) {
    loadedModels().load(engine());
    const HvArrayPtr manager = call("Kestrel.HMI.InterfaceMgr.getInterfaceMgr", {});
    const HvArrayPtr again = call("Kestrel.HMI.InterfaceMgr.getInterfaceMgr", {});
    EXPECT_EQ(omGetArrayElement(manager.get(), 0), omGetArrayElement(again.get(), 0));
    const auto tell = [&](const char* oldName, const char* newName) {
        call("renameModel", {manager.get(), text(oldName).get(), text(newName).get()}, 0);
    };
    tell("engine", "motor");
    tell("engine", "drive");
    EXPECT_NE(loadedModels().find(u"drive"), nullptr);
    loadedModels().load(Model(u"other"));
    for (const char* const refused : {"a/b", "other"}) EXPECT_NE(failureOf([&] { tell("drive", refused); }), "");
    tell("drive", "drive");
    EXPECT_EQ(kestrel::recordedRenames().size(), 5u);
    EXPECT_EQ(kestrel::recordedRenames()[1].oldName, u"engine");
}

}  // namespace
