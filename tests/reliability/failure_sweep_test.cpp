#include "tests/support/failure_sweep.h"

#include <iostream>

#include "bindings/entry_points.h"
#include "observers/hmi_engine_utils.h"
#include "tests/reliability/swept_world.h"

using namespace ks_test;
using ks_hmi::InstrumentedSignals;
using ks_hmi::ModelObservers;
using ks_hmi::SignalClient;
using ks_hmi::SignalSpecification;
using ks_hmi::StreamingClients;

namespace {

/// What an operation that threw leaves.
enum class Leaves {
    stateAsItWas,
    beginning,  ///< what it did before the failure stays, and the index may be due for a rebuild
};

struct Row : SweptOperation<SweptWorld> {
    Row(const char* rowName, std::function<void(SweptWorld&)> rowAction, Leaves rowLeaves = Leaves::stateAsItWas)
        : SweptOperation{rowName, std::move(rowAction)}, leaves(rowLeaves) {}
    Leaves leaves;
};
using World = SweptWorld;

using Value = HvArrayPtr World::*;
constexpr Value kSignals = &World::signalsObject;
constexpr Value kClients = &World::clientsObject;
constexpr Value kOne = &World::one;

/// The host's function or method of that name, called with members of the world.
std::function<void(World&)> calls(const char* name, std::initializer_list<Value> inputs, int results = 1) {
    return [name, values = std::vector<Value>(inputs), results](World& w) {
        std::vector<const hvArray*> given;
        for (const Value value : values) given.push_back((w.*value).get());
        orvex::callByName(name, given, results);
    };
}
std::function<void(World&)> gets(Value object, const char* name) {
    return [=](World& w) { property((w.*object).get(), name); };
}
std::function<void(World&)> sets(Value object, const char* name, Value value) {
    return [=](World& w) {
        const HvArrayPtr target = World::shared(w.*object);
        hvSetProperty(target.get(), 0, name, (w.*value).get());
    };
}

/// What a list that is filled holds when that fails.
template <class List, class Fill>
void fill(List list, std::size_t countAfterFailure, Fill fillList) {
    try {
        fillList(list);
    } catch (...) {
        EXPECT_EQ(list.size(), countAfterFailure);
        throw;
    }
}

/// Loads the set's own records behind themselves; when that fails, the ones before the failure must be there.
template <class Set>
void loadAgain(Set& set, const hvArray* saved) {
    const std::size_t count = set.getCount();
    try {
        set.setFromPersistenceData(saved);
    } catch (...) {
        for (std::size_t i = count; i < set.getCount(); ++i) EXPECT_EQ(set.get(i)->m_uuid, set.get(i - count)->m_uuid);
        throw;
    }
}

const std::vector<Row>& recordRows() {
    static const std::vector<Row> rows{
        {"signal to object", [](World& w) { w.signals().get(1)->getHOSObject(u"m1", false); }},
        {"signal to struct", [](World& w) { w.signals().get(1)->getHOSObject(u"m1", true); }},
        {"signal from object", [](World& w) { SignalSpecification(w.specObject.get(), 0, u"m1"); }},
        {"signal from element", [](World& w) { SignalSpecification(w.saved.get(), 1, u""); }},
        {"signal clone", [](World& w) { w.signals().get(1)->clone(); }},
        {"signal aligned path", [](World& w) { w.signals().get(1)->getAlignedBlockPath(u"m1"); }},
        {"signal parameters", [](World& w) { w.signals().get(1)->getDomainParamsAsHvArray(); }},
        {"signal stripped", [](World& w) { w.signals().get(1)->clone()->stripModelName(u"Sub"); }},
        {"signal from port",
         [](World&) { SignalSpecification::createSigSpecFromPort(u"m1/A", "m1:1", 1, 0, 2.0, u"m1", true); }},
        {"UUID minted", [](World&) { SignalSpecification::getUUIDFromBlockHandle(1, 2.0, true); }},
        {"UUID entered",
         [](World&) { SignalSpecification::addToBlockHandleUUIDmap(1, 2.0, "a UUID of thirty-six characters......"); }},
        {"UUID looked up", [](World&) { SignalSpecification::isInBlockHandleUUIDmap(1, 2.0); }},
        {"client to object", [](World& w) { w.clients().get(0)->getHOSObject(u"m1"); }},
        {"client from object", [](World& w) { SignalClient(w.clientObject.get(), 0, u"m1"); }},
        {"client from element", [](World& w) { SignalClient(w.savedClients.get(), 1, u""); }},
        {"client clone", [](World& w) { w.clients().get(0)->clone(); }},
        {"client's signal", [](World& w) { w.clients().get(1)->clone()->getSignalSpecification(u"m1"); }},
        {"client's port", [](World& w) { w.clients().get(1)->clone()->getAlignedPortIndex(u"m1"); }},
        {"client's decimation", [](World& w) { w.clients().get(1)->clone()->getDecimation(u"m1"); }},
        {"client's points", [](World& w) { w.clients().get(1)->clone()->getMaxPoints(u"m1"); }},
        {"client's aligned path",
         [](World& w) {
             std::vector<std::u16string> path;
             std::u16string subPath;
             w.clients().get(0)->getAlignedBlockPath(u"m1", path, subPath);
         }},
        {"client renamed", [](World& w) { w.clients().get(0)->clone()->renameModel(u"m1", u"m2"); }},
    };
    return rows;
}

const std::vector<Row>& setRows() {
    static const std::vector<Row> rows{
        {"add", [](World& w) { w.signals().add(World::port(u"Sub/Switch", 3, "3", "s-4")); }},
        {"insert a bound port",
         [](World& w) {
             auto spec = World::port(u"Sub/Other", 1, "5", "s-4");
             spec->setCachedInfo(w.gain + 1, 1);
             w.signals().insert(0, std::move(spec));
         }},
        {"add a chart's signal", [](World& w) { w.signals().add(World::state(u"8", u"Child", "s-4")); }},
        {"set a chart's signal", [](World& w) { w.signals().set(0, World::state(u"8", u"Child", "s-4")); }},
        {"set", [](World& w) { w.signals().set(0, World::port(u"Sub/Other", 1, "5", "s-4")); }},
        {"remove by position", [](World& w) { w.signals().remove(0); }},
        {"remove a chart's signal", [](World& w) { w.signals().remove(2); }},
        {"remove by value", [](World& w) { w.signals().remove(*World::port(u"Sub/Switch", 2, "3", "")); }},
        {"rename", [](World& w) { w.signals().setModelName(u"a name that is not short at all"); }, Leaves::beginning},
        {"signals equal", [](World& w) { w.signals().isEqual(&w.signals()); }},
        {"copy", [](World& w) { w.signals().copy(true); }},
        {"save", [](World& w) { w.signals().getPersistenceData(); }},
        {"load", [](World& w) { loadAgain(w.signals(), w.saved.get()); }, Leaves::beginning},
        {"rebind",
         [](World& w) {
             w.signals().setRebindingPending(true);
             w.signals().applyRebindingRules(w.signalsObject.get(), false);
         },
         Leaves::beginning},
        {"rebuild the index", [](World& w) { w.signals().updateObservedPortMap(); }},
        {"cache engine ports",
         [](World& w) {
             w.signals().cacheKSPorts({&w.engine, &w.otherEngine});
         }},
        {"is a port observed", [](World& w) { w.signals().isPortObserved(w.gain + 1, u"Sub/Switch", u"", 2, 2, 0); }},
        {"is a chart's item observed", [](World& w) { w.signals().isAnyCWActivityObserved(u"m1:4", 12.0); }},
        {"chart difference", [](World& w) { w.signals().setDifference_cw(nullptr); }},
        {"renumber",
         [](World& w) {
             w.signals().renumberPorts(-1, u"m1/Sub/Switch", "m1:3", {2, 3, 1});
         },
         Leaves::beginning},
        {"renumber with a deleted port", [](World& w) { w.signals().renumberPorts(w.gain, u"m1/Gain", "m1:1", {0}); },
         Leaves::beginning},
        {"list observed ports",
         [](World& w) {
             fill(std::vector<InstrumentedSignals::Source>(1), 1, [&](auto& out) {
                 InstrumentedSignals::getObservedPorts(w.modelObject.get(), "", "", out, true, true);
             });
         }},
        {"list badges",
         [](World& w) {
             fill(std::set<double>{1.0}, 1,
                  [&](auto& out) { InstrumentedSignals::getPortsWithBadges(w.modelObject.get(), out); });
         }},
    };
    return rows;
}

const std::vector<Row>& observerRows() {
    static const std::vector<Row> rows{
        {"clients add", [](World& w) { w.clients().add(World::client("c-3", "s-1")); }},
        {"clients set", [](World& w) { w.clients().set(0, World::client("c-3", "s-1")); }},
        {"clients remove", [](World& w) { w.clients().remove(0); }},
        {"clients rename", [](World& w) { w.clients().setModelName(u"m2"); }, Leaves::beginning},
        {"clients equal", [](World& w) { w.clients().isEqual(&w.clients()); }},
        {"clients copy", [](World& w) { w.clients().copy(); }},
        {"clients save", [](World& w) { w.clients().getPersistenceData(); }},
        {"clients load", [](World& w) { loadAgain(w.clients(), w.savedClients.get()); }, Leaves::beginning},
        {"clients validate", [](World& w) { StreamingClients::validateAndRemoveUnused(w.clientsObject.get()); },
         Leaves::beginning},
        {"tell of a rename",
         [](World& w) {
             w.clients().setModelName(u"m2");
             StreamingClients::handleModelRename(w.clientsObject.get());
         },
         Leaves::beginning},
        {"list aligned observers",
         [](World& w) {
             fill(std::vector<StreamingClients::ClientPtr>(1), 0,
                  [&](auto& out) { StreamingClients::getAlignedObservers(w.clientsObject.get(), out); });
         }},
        {"bundle",
         [](World& w) { ModelObservers::createFromSignalsAndClients(w.signalsObject.get(), w.clientsObject.get()); }},
        {"unbundle",
         [](World& w) {
             HvArrayPtr signals;
             HvArrayPtr clients;
             ModelObservers(w.bundle.get()).getSignalsAndClients(signals, clients);
             EXPECT_EQ(!signals, !clients);
         }},
        {"notice",
         [](World&) {
             ks_hmi::HMIEngineUtils::updateParamsForBlock(u"m1/Gain");
             EXPECT_TRUE(orvex::warnings().empty());
         }},
    };
    return rows;
}

const std::vector<Row>& hostRows() {
    static const std::vector<Row> rows{
        {"host new signals", calls("Kestrel.HMI.InstrumentedSignals", {&World::name})},
        {"host add", calls("add", {kSignals, &World::specObject}, 0)},
        {"host set", calls("set", {kSignals, kOne, &World::specObject}, 0)},
        {"host remove", calls("remove", {kSignals, kOne}, 0)},
        {"host get", calls("get", {kSignals, kOne})},
        {"host isPortObserved", calls("isPortObserved", {kSignals, &World::specObject})},
        {"host isGivenPortObserved", calls("isGivenPortObserved", {kSignals, kOne, kOne})},
        {"host isGivenCWActivityObserved",
         calls("isGivenCWActivityObserved", {kSignals, &World::name, kOne, &World::name})},
        {"host isAnyCWActivityObserved", calls("isAnyCWActivityObserved", {kSignals, &World::name, kOne})},
        {"host getUUID", calls("getUUID", {kSignals, kOne})},
        {"host setUUIDForBlock",
         calls("Kestrel.HMI.InstrumentedSignals.setUUIDForBlock", {kOne, kOne, &World::name}, 0)},
        {"host getUUIDForBlock", calls("Kestrel.HMI.InstrumentedSignals.getUUIDForBlock", {kOne, kOne, &World::yes}),
         Leaves::beginning},
        {"host Model", gets(kSignals, "Model")},
        {"host Count", gets(kSignals, "Count")},
        {"host Persistence", gets(kSignals, "Persistence")},
        {"host Persistence set", sets(kSignals, "Persistence", &World::saved), Leaves::beginning},
        {"host new clients", calls("Kestrel.HMI.StreamingClients", {&World::name})},
        {"host clients add", calls("add", {kClients, &World::clientObject}, 0)},
        {"host clients set", calls("set", {kClients, kOne, &World::clientObject}, 0)},
        {"host clients remove", calls("remove", {kClients, kOne}, 0)},
        {"host clients get", calls("get", {kClients, kOne})},
        {"host clients Model", gets(kClients, "Model")},
        {"host clients Model set", sets(kClients, "Model", &World::newName), Leaves::beginning},
        {"host clients Persistence", gets(kClients, "Persistence")},
        {"host clients Persistence set", sets(kClients, "Persistence", &World::savedClients), Leaves::beginning},
    };
    return rows;
}

class FailureSweep : public HostTest {
protected:
    struct Before {
        explicit Before(const Row& row) {
            World world;
            state = world.state();
            live = orvex::liveCounts();
            row.action(world);
            after = world.state();
            orvex::clearWarnings();
        }
        std::string state, after;
        orvex::LedgerCounts live;
    };

    /// The documented state, the index in step with the list, nothing lost in the ledger; and the same call succeeds.
    static void checkAfter(const Row& row, const Before& before, World& world, Ending ending,
                           const std::string& where) {
        orvex::clearWarnings();
        const bool isUndone = row.leaves == Leaves::stateAsItWas && ending != Ending::completed;
        if (isUndone) {
            EXPECT_EQ(world.state(), before.state) << where;
            EXPECT_EQ(orvex::liveCounts(), before.live) << where << '\n' << orvex::describeLive();
        }
        expectInStep(row, world, where);
        EXPECT_EQ(endingOf([&] { row.action(world); }), Ending::completed) << where << ": the same call again";
        if (isUndone) {
            EXPECT_EQ(world.state(), before.after) << where << ": after the same call again";
        }
        expectInStep(row, world, where);
    }
    static void expectInStep(const Row& row, World& world, const std::string& where) {
        if (row.leaves != Leaves::stateAsItWas) world.signals().updateObservedPortMap();
        EXPECT_EQ(world.answers(), world.plainAnswers()) << where;
    }

    template <class Sweep>
    static void sweepAll(const std::vector<Row>& rows, const char* what, Sweep sweepOne) {
        const orvex::LedgerCounts before = orvex::liveCounts();
        std::size_t total = 0;
        for (const Row& row : rows) {
            const Before reference(row);
            const std::size_t points = sweepOne(row, [&](World& world, Ending ending, const std::string& where) {
                checkAfter(row, reference, world, ending, where);
            });
            std::cout << what << ' ' << row.name << ": " << points << '\n';
            total += points;
            if (HasFailure()) break;
        }
        std::cout << what << " in all: " << total << " points, " << rows.size() << " operations\n";
        EXPECT_EQ(orvex::liveCounts(), before) << orvex::describeLive();
    }
    static void sweepHost(const std::vector<Row>& rows) {
        sweepAll(rows, "host failures", [](const Row& row, auto check) { return sweepHostFailures(row, check); });
    }
    static void sweepMemory(const std::vector<Row>& rows) {
        if (!FailingAllocations::arePossible()) GTEST_SKIP() << "the checks' own allocator stays";
        sweepAll(rows, "allocations", [](const Row& row, auto check) { return sweepAllocations(row, check); });
    }
};

TEST_F(FailureSweep, recordsWhenTheHostFails) { sweepHost(recordRows()); }
TEST_F(FailureSweep, setsAndQueriesWhenTheHostFails) { sweepHost(setRows()); }
TEST_F(FailureSweep, observersWhenTheHostFails) { sweepHost(observerRows()); }
TEST_F(FailureSweep, hostMethodsWhenTheHostFails) { sweepHost(hostRows()); }
TEST_F(FailureSweep, recordsWhenMemoryRunsOut) { sweepMemory(recordRows()); }
TEST_F(FailureSweep, setsAndQueriesWhenMemoryRunsOut) { sweepMemory(setRows()); }
TEST_F(FailureSweep, observersWhenMemoryRunsOut) { sweepMemory(observerRows()); }
TEST_F(FailureSweep, hostMethodsWhenMemoryRunsOut) { sweepMemory(hostRows()); }

// The index grows at sizes that the swept operations do not reach, and sooner when much was erased from it.
TEST_F(FailureSweep, theIndexStaysInStepWhereverItHasToGrow) {
    if (!FailingAllocations::arePossible()) GTEST_SKIP() << "the checks' own allocator stays";
    const std::u16string path = u"Sub/Switch";  // made here: only the library's own allocations are to fail
    int replacementsFailed = 0;
    int bindingsFailed = 0;
    for (int more = 0; more < 60; ++more) {
        const World world;
        ks_hmi::InstrumentedSignals& set = world.signals();
        auto next = [&path, number = 3]() mutable { return World::port(path, ++number, "3", "more"); };
        for (int i = 0; i < more; ++i) set.add(next());
        for (int i = 0; i < 4 * more; ++i) {
            set.remove(set.getCount() - 1);
            set.add(next());
        }
        const auto attempt = [&](auto action) {
            const FailingAllocations failures(1, true);
            return endingOf([&] { action(); });
        };
        const Ending bound = attempt([&] { set.isPortObserved(world.gain + 1, path, u"", 2, 2, 0); });
        EXPECT_EQ(set.get(1)->m_cachedPortIdx == 2, bound == Ending::completed) << more << " more signals";
        bindingsFailed += static_cast<int>(bound != Ending::completed);
        for (int i = 0; i < 2 * more; ++i) {
            const std::size_t position = 3 + static_cast<std::size_t>(i % more);
            const InstrumentedSignals::SignalPtr other(next().release());
            const Ending replaced = attempt([&] { set.set(position, other); });
            const int number = set.get(position)->m_outputPortIndex;
            EXPECT_EQ(number == other->m_outputPortIndex, replaced == Ending::completed) << more << " more signals";
            EXPECT_TRUE(set.isPortObserved(0.0, path, u"", number, 0, 0)) << more << " more signals";
            replacementsFailed += static_cast<int>(replaced != Ending::completed);
            set.set(position, other);
        }
        EXPECT_EQ(world.answers(), world.plainAnswers()) << more << " more signals";
    }
    EXPECT_GT(replacementsFailed, 0);
    EXPECT_GT(bindingsFailed, 0);
}

}  // namespace
