#include "signals/instrumented_signals.h"

#include <array>
#include <functional>
#include <span>

#include "tests/support/host_test.h"

using namespace ks_test;
using ks_hmi::InstrumentedSignals;
using ks_hmi::SignalSpecification;

namespace {

class InstrumentedSignalsTest : public ModelTest {
protected:
    std::vector<std::u16string> paths(const InstrumentedSignals& signals) const {
        std::vector<std::u16string> result;
        for (std::size_t i = 0; i < signals.getCount(); ++i) result.push_back(signals.get(i)->m_blockPath);
        return result;
    }
    using Paths = std::vector<std::u16string>;
};

TEST_F(InstrumentedSignalsTest, positionsOutsideTheSetRaiseTheCountAndChangeNothing) {
    for (const std::size_t count : {0U, 3U}) {
        while (set().getCount() < count) set().add(port(u"Gain", 1));
        for (const std::size_t index : {count, count + 1, SIZE_MAX}) {
            const std::function<void()> uses[] = {
                [&] { set().get(index); }, [&] { set().set(index, port(u"Other", 1)); }, [&] { set().remove(index); },
                [&] { set().insert(index == count ? index + 1 : index, port(u"Other", 1)); }};
            for (const auto& use : uses) EXPECT_EQ(raisedBy(use), "InvalidElementIndex " + std::to_string(count));
        }
        EXPECT_EQ(set().getCount(), count);
    }
    set().insert(3, port(u"End", 1));
    set().insert(0, port(u"Front", 1));
    EXPECT_EQ(paths(set()), (Paths{u"Front", u"Gain", u"Gain", u"Gain", u"End"}));
}

TEST_F(InstrumentedSignalsTest, nullRecordsAreRefused) {
    set().add(port(u"Gain", 1));
    EXPECT_EQ(raisedBy([&] { set().add(nullptr); }), "NullRecord");
    for (const std::size_t index : {0U, 9U}) {
        EXPECT_EQ(raisedBy([&] { set().insert(index, nullptr); }), "NullRecord");
        EXPECT_EQ(raisedBy([&] { set().set(index, nullptr); }), "NullRecord");
    }
    EXPECT_EQ(raisedBy([&] { set().addToObservedPortMap(nullptr); }), "NullRecord");
    EXPECT_EQ(raisedBy([&] { set().removeFromObservedPortMap(nullptr); }), "NullRecord");
    EXPECT_EQ(raisedBy([&] { set().addToObservedCWObjectCache(nullptr); }), "NullRecord");
    EXPECT_EQ(raisedBy([&] { set().removeFromObservedCWObject(nullptr); }), "NullRecord");
    EXPECT_EQ(paths(set()), (Paths{u"Gain"}));
    EXPECT_FALSE(set().isPortObserved(nullptr));
    EXPECT_FALSE(set().isEqual(nullptr));
}

TEST_F(InstrumentedSignalsTest, persistenceKeepsOrderAndAppends) {
    set().add(port(u"Gain", 1, "1"));
    set().add(resolvedPort(u"Sub/Switch", 2, 7.5));
    set().get(1)->m_excludeForSave = true;
    const auto saved = set().getPersistenceData();
    ASSERT_EQ(hvGetNumberOfElements(saved.get()), 2U);
    EXPECT_EQ(hvGetDimensions(saved.get())[0], 2U);
    EXPECT_EQ(hvGetNumberOfFields(saved.get()), 16);
    set().setFromPersistenceData(saved.get());
    EXPECT_EQ(paths(set()), (Paths{u"Gain", u"Sub/Switch", u"Gain", u"Sub/Switch"}));
    EXPECT_TRUE(set().get(2)->isEqual(set().get(0)));
    EXPECT_EQ(set().get(3)->m_cachedPortIdx, 0);
    EXPECT_EQ(set().getModelName(), u"m1");

    const auto empty = InstrumentedSignals().getPersistenceData();
    EXPECT_TRUE(hvIsEmpty(empty.get()));
    EXPECT_EQ(hvGetNumberOfFields(empty.get()), 16);
    set().setFromPersistenceData(empty.get());
    set().setFromPersistenceData(nullptr);
    hvReplaceField(saved.get(), 1, "Decimation_", nullptr);
    EXPECT_EQ(raisedBy([&] { set().setFromPersistenceData(saved.get()); }), "MissingField Decimation_ 2");
    EXPECT_EQ(set().getCount(), 5U) << "the ones before it are there";
}

TEST_F(InstrumentedSignalsTest, loadingReadsEveryElementWhateverTheDimensions) {
    const std::span fields(SignalSpecification::getStructFields(), 16);
    for (const auto& dimensions : {std::array<std::size_t, 2>{1, 2}, std::array<std::size_t, 2>{2, 3}}) {
        const HvArrayPtr data(matrix::create_struct(dimensions, fields));
        const std::size_t count = dimensions[0] * dimensions[1];
        for (std::size_t i = 0; i < count; ++i)
            port(u"Gain", static_cast<int>(i))->createStructData(data.get(), i, u"");
        InstrumentedSignals loaded;
        loaded.setFromPersistenceData(data.get());
        ASSERT_EQ(loaded.getCount(), count);
        EXPECT_EQ(loaded.get(count - 1)->m_outputPortIndex, static_cast<int>(count) - 1);
    }
}

TEST_F(InstrumentedSignalsTest, copyClonesTheListAndSharesTheIndexUntilItIsRebuilt) {
    set().add(port(u"Gain", 1));
    set().add(port(u"Sub/Switch", 1));
    set().get(1)->m_excludeForSave = true;
    set().setRebindingPending(true);
    const auto all = set().copy(false);
    const auto saved = set().copy(true);
    auto& copied = *InstrumentedSignals::getFromHvArray(all.get());
    EXPECT_TRUE(copied.isEqual(&set()));
    EXPECT_EQ(copied.getModelName(), u"m1");
    EXPECT_FALSE(copied.isRebindingPending());
    EXPECT_EQ(paths(*InstrumentedSignals::getFromHvArray(saved.get())), (Paths{u"Gain"}));

    EXPECT_TRUE(copied.isPortObserved(4.5, u"Gain", u"", 1, 1, 0));
    EXPECT_EQ(set().get(0)->m_cachedBlockHandle, 4.5) << "the copied index resolves the original";
    EXPECT_EQ(copied.get(0)->m_cachedPortIdx, 0);
    copied.updateObservedPortMap();
    EXPECT_TRUE(copied.isPortObserved(5.5, u"Gain", u"", 1, 1, 0));
    EXPECT_EQ(copied.get(0)->m_cachedBlockHandle, 5.5);
}

TEST_F(InstrumentedSignalsTest, copyOntoItselfEndsAndAForeignResultIsRefused) {
    set().add(port(u"Gain", 1));
    {
        const orvex::FunctionRegistration same =
            orvex::registerFunction("Kestrel.HMI.InstrumentedSignals",
                                    [&](orvex::Call& c) { c.outs[0].reset(hvCreateSharedDataCopy(object())); });
        EXPECT_EQ(InstrumentedSignals::getFromHvArray(set().copy(false).get()), &set());
        EXPECT_EQ(set().getCount(), 2U);
    }
    const orvex::FunctionRegistration foreign =
        orvex::registerFunction("Kestrel.HMI.InstrumentedSignals", [&](orvex::Call& c) { c.outs[0] = number(1); });
    EXPECT_EQ(raisedBy([&] { set().copy(false); }), "InvalidObject Kestrel.HMI.InstrumentedSignals");
}

TEST_F(InstrumentedSignalsTest, chartContainersAreCopiedOnlyWhileAnActivityIsObserved) {
    const auto observedInCopy = [&] {
        const auto copy = set().copy(false);
        return InstrumentedSignals::getFromHvArray(copy.get())->isAnyCWActivityObserved(u"m1:4", 7);
    };
    set().add(chartItem(u"cw_state", u"7", u"Self"));
    EXPECT_TRUE(observedInCopy());
    set().removeObservedCWActivity("4", "7", "Self");
    EXPECT_TRUE(set().isAnyCWActivityObserved(u"m1:4", 7));
    EXPECT_FALSE(observedInCopy());
}

TEST_F(InstrumentedSignalsTest, chartObjectsMatchByTheTextsOfTheirIdentifiers) {
    for (const char16_t* const ssid : {u"0.10000000000000001", u"-0"}) set().add(chartItem(u"cw_state", ssid, u"Self"));
    for (const auto& [ssid, expected] : {std::pair(0.1, true), {-0.0, true}, {0.0, false}}) {
        EXPECT_EQ(set().isCWActivityObserved(u"m1:4", ssid, u"Self"), expected) << ssid;
        EXPECT_EQ(set().isAnyCWActivityObserved(u"m1:4", ssid), expected) << ssid;
    }
    std::vector<std::string> list = {"kept"};
    set().constructCWLookupStrUsingActivity(list, "4", "7", "Self");
    EXPECT_EQ(list, (std::vector<std::string>{"kept", "m1", "4", "7", "Self"}));
}

TEST_F(InstrumentedSignalsTest, typeTestAndLookupAcceptNothingOrOneObjectOfTheClass) {
    const HvArrayPtr pair = objects({object(), call("Kestrel.HMI.InstrumentedSignals", {}).get()});
    EXPECT_FALSE(InstrumentedSignals::isValidType(pair.get()));
    EXPECT_EQ(InstrumentedSignals::getFromHvArray(pair.get()), &set());
    EXPECT_TRUE(InstrumentedSignals::isValidType(object()));
    const HvArrayPtr others[] = {nullptr, emptyDouble(), number(1), text("m1"),
                                 port(u"Gain", 1)->getHOSObject(u"m1", false)};
    for (const HvArrayPtr& value : others) {
        EXPECT_EQ(InstrumentedSignals::isValidType(value.get()), hvIsEmpty(value.get())) << &value - others;
        EXPECT_EQ(InstrumentedSignals::getFromHvArray(value.get()), nullptr) << &value - others;
    }
}

TEST_F(InstrumentedSignalsTest, scriptsGetObjectsUnlessTheyAskForStructsAndPositionZeroIsRefusedFirst) {
    set().add(port(u"Gain", 1));
    const auto shown = call("get", {object(), number(1).get(), logical(false).get()});
    EXPECT_TRUE(hvIsA(shown.get(), "Kestrel.HMI.SignalSpecification"));
    hvSetProperty(shown.get(), 0, "Decimation_", text("unreadable").get());
    const auto errorAt = [&](double position) {
        return raisedBy([&] { call("set", {object(), number(position).get(), shown.get()}, 0); });
    };
    EXPECT_EQ(errorAt(0), "InvalidElementIndex 1");
    EXPECT_EQ(errorAt(1), "InvalidFieldValue Decimation_ 1");
}

TEST_F(InstrumentedSignalsTest, rebindingFindsPortsByIdentifierThenByPathAndForgetsTheRest) {
    struct Row {
        const char16_t* path;
        const char* eid;
        int port;
        const char16_t* domain;
        const char* rule;
        double handle;
    };
    const Row rows[] = {
        {u"Old/Switch", "3", 1, u"", "eid", handleOf(u"Sub/Switch")},
        {u"Gain", "88", 1, u"", "path", handleOf(u"Gain")},
        {u"Gone", "99", 1, u"", "", 0.0},
        {u"Gain", "1", 2, u"", "", 0.0},
        {u"Sub/Switch", "3", 0, u"cw_unheard_of", "", 0.0},
        {u"Sub/Chart", "4", 0, u"cw_state", "eid", handleOf(u"Sub/Chart")},
    };
    const HvArrayPtr target(hvCreateSharedDataCopy(object()));
    for (const Row& row : rows) {
        set().add(port(row.path, row.port, row.eid));
        set().get(set().getCount() - 1)->m_domainType = row.domain;
        set().get(set().getCount() - 1)->setCachedInfo(123456.5, 1);
    }
    set().applyRebindingRules(target.get(), false);
    EXPECT_EQ(set().get(0)->m_cachedBlockHandle, 0.0) << "stale";
    for (const bool isForced : {true, false}) {
        set().applyRebindingRules(target.get(), isForced);
        for (std::size_t i = 0; i < std::size(rows); ++i) {
            EXPECT_EQ(set().get(i)->m_bindingRule, rows[i].rule) << i;
            EXPECT_EQ(set().get(i)->m_cachedBlockHandle, rows[i].handle) << i;
        }
    }
    EXPECT_TRUE(orvex::warnings().empty());
}

TEST_F(InstrumentedSignalsTest, rebindingIsNoLongerPendingWhateverTheHostDoes) {
    bool flag = false;
    HvArrayPtr target(hvCreateSharedDataCopy(object()));
    const auto pendingAfter = [&](orvex::HostFunction function) {
        const auto registration = orvex::registerFunction("applyRebindingRules", std::move(function));
        set().setRebindingPending(true);
        set().applyRebindingRules(target.get(), true);
        return set().isRebindingPending();
    };
    EXPECT_FALSE(pendingAfter([&](orvex::Call& c) { flag = hvIsLogicalScalarTrue(c.ins[1]); }));
    EXPECT_TRUE(flag);
    EXPECT_TRUE(orvex::warnings().empty());
    EXPECT_FALSE(pendingAfter([](orvex::Call&) { orvex::raise("no", "no"); }));
    EXPECT_EQ(orvex::warnings().size(), 1U);
    EXPECT_FALSE(pendingAfter([&](orvex::Call&) { target.reset(); })) << "a script lets go of the caller's value";
    set().applyRebindingRules(nullptr, true);
    const auto notASet = number(1);
    const auto accepting = orvex::registerFunction("applyRebindingRules", [](orvex::Call&) {});
    set().applyRebindingRules(notASet.get(), false);
}

}  // namespace
