#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "host/messages.h"
#include "host/services.h"
#include "memory_host/kestrel/host_side.h"
#include "memory_host/kestrel/loaded_models.h"
#include "memory_host/orvex/class_members.h"
#include "memory_host/orvex/functions.h"
#include "memory_host/orvex/ledger.h"

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

    HvArrayPtr call(const char* name, std::vector<const hvArray*> ins) {
        return std::move(orvex::callByName(name, ins, 1).front());
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

}  // namespace
