#include "tests/support/failure_sweep.h"

using namespace ks_test;
using ks_hmi::InstrumentedSignals;
using ks_hmi::SignalSpecification;

namespace {

class HostFailures : public ModelTest {
protected:
    HostFailures() {
        set().add(resolvedPort(u"Gain", 1, handleOf(u"Gain")));
        set().add(port(u"Sub/Switch", 2, "3"));
        set().add(chartItem(u"cw_state", u"7", u"Self"));
        set().get(1)->m_domainParams = {{u"Unit", u"V"}};
    }

    /// The two ports and the chart state of the constructor are there, once, and answer.
    void expectIntact(const std::string& where) {
        ASSERT_EQ(set().getCount(), 3U) << where;
        EXPECT_TRUE(set().isPortObserved(handleOf(u"Gain"), 1)) << where;
        EXPECT_TRUE(set().isPortObserved(0.0, u"Sub/Switch", u"", 2, 0, 0)) << where;
        EXPECT_TRUE(set().isCWActivityObserved(u"m1:4", 7.0, u"Self")) << where;
        EXPECT_FALSE(set().isPortObserved(0.0, u"Sub/Switch", u"", 3, 0, 0)) << where;
    }
    void dropAdded() {
        while (set().getCount() > 3) set().remove(set().getCount() - 1);
    }
};

TEST_F(HostFailures, leaveTheSetIntactWhateverFails) {
    const auto spec = port(u"Sub/Switch", 3, "3");
    const auto specObject = spec->getHOSObject(u"m1", false);
    const auto saved = set().getPersistenceData();
    const auto one = number(1);
    const auto name = text("m1");
    HvArrayPtr target(hvCreateSharedDataCopy(object()));
    struct Row {
        const char* name;
        std::function<void()> action;
    };
    const Row rows[] = {
        {"getHOSObject", [&] { spec->getHOSObject(u"m1", false); }},
        {"getHOSObject as struct", [&] { spec->getHOSObject(u"m1", true); }},
        {"getAlignedBlockPath", [&] { spec->getAlignedBlockPath(u"m1"); }},
        {"read an object", [&] { SignalSpecification(specObject.get(), 0, u"m1"); }},
        {"read an element", [&] { SignalSpecification(saved.get(), 1, u""); }},
        {"getPersistenceData", [&] { set().getPersistenceData(); }},
        {"copy", [&] { set().copy(true); }},
        {"applyRebindingRules", [&] { InstrumentedSignals::applyRebindingRules(target.get(), false); }},
        {"host get",
         [&] {
             call("get", {object(), one.get()});
         }},
        {"host getUUID",
         [&] {
             call("getUUID", {object(), one.get()});
         }},
        {"host isPortObserved",
         [&] {
             call("isPortObserved", {object(), specObject.get()});
         }},
        {"host Persistence", [&] { property(object(), "Persistence"); }},
        {"host constructor", [&] { call("Kestrel.HMI.InstrumentedSignals", {name.get()}); }},
    };
    const orvex::LedgerCounts before = orvex::liveCounts();
    for (const Row& row : rows) {
        const std::size_t points = sweepHostFailures(row.name, row.action, [&](const std::string& where) {
            expectIntact(where);
            EXPECT_EQ(orvex::liveCounts(), before) << where << "\n" << orvex::describeLive();
        });
        RecordProperty(row.name, static_cast<int>(points));
    }
}

TEST_F(HostFailures, replaceAllOrNothing) {
    const auto replaceByChartSignal = [] {
        InstrumentedSignals signals;
        signals.add(resolvedPort(u"Gain", 1, 12.5));
        const auto observesGain = [&] { return signals.isPortObserved(12.5, 1); };
        try {
            signals.set(0, chartItem(u"cw_state", u"8", u"Self"));
        } catch (...) {
            EXPECT_TRUE(observesGain());
            throw;
        }
        EXPECT_FALSE(observesGain());
    };
    EXPECT_GT(sweepHostFailures("set", replaceByChartSignal, [](const std::string&) {}), 0U);
}

TEST_F(HostFailures, addAllOrNothing) {
    const auto specObject = port(u"Sub/Switch", 3, "3")->getHOSObject(u"m1", false);
    sweepHostFailures(
        "host add",
        [&] {
            call("add", {object(), specObject.get()}, 0);
        },
        [&](const std::string& where) {
            dropAdded();
            expectIntact(where);
        });
}

TEST_F(HostFailures, loadingKeepsTheElementsBeforeTheOneThatFails) {
    const auto saved = set().getPersistenceData();
    HvArrayPtr target(hvCreateSharedDataCopy(object()));
    sweepHostFailures(
        "host Persistence", [&] { hvSetProperty(target.get(), 0, "Persistence", saved.get()); },
        [&](const std::string& where) {
            for (std::size_t i = 3; i < set().getCount(); ++i) {
                EXPECT_TRUE(set().get(i)->isEqual(SignalSpecification(saved.get(), i - 3, u"").clone().get())) << where;
            }
            dropAdded();
            set().updateObservedPortMap();
            expectIntact(where);
        });
}

}  // namespace
