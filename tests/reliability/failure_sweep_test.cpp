#include <iostream>

#include "tests/reliability/swept_operations.h"
#include "tests/support/failing_allocations.h"

using namespace ks_test;

namespace {

using Row = SweptRow;

// All kinds of host failures, and the words for them.
constexpr std::pair<orvex::FaultKind, const char*> kHostFailures[] = {
    {orvex::FaultKind::refusal, "refusal"},        {orvex::FaultKind::exception, "exception"},
    {orvex::FaultKind::outOfMemory, "no memory"},  {orvex::FaultKind::emptyResult, "empty result"},
    {orvex::FaultKind::nullResult, "null result"}, {orvex::FaultKind::wrongClass, "result of another class"},
};

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

    // The documented state, the index in step with the list, nothing lost in the ledger; and the same call succeeds.
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

    // Makes failure 1, 2, 3, ... of the operation until it completes untouched, each once alone and once with all
    // that comes after it. `makeFailure(n, andEverythingAfter)` gives an object that fails things while it lives
    // and counts them in `fired()`. Returns how many failures were made.
    template <class MakeFailure>
    static std::size_t sweep(const Row& row, const std::string& kind, MakeFailure makeFailure) {
        const Before reference(row);
        std::size_t points = 0;
        for (const bool andEverythingAfter : {false, true}) {
            for (std::size_t n = 1;; ++n, ++points) {
                World world;
                Ending ending = Ending::completed;
                std::size_t fired = 0;
                {
                    const auto failure = makeFailure(n, andEverythingAfter);
                    ending = endingOf([&] { row.action(world); });
                    fired = failure.fired();
                }
                if (fired == 0) break;
                checkAfter(row, reference, world, ending,
                           row.name + ", " + kind + ' ' + std::to_string(n) + (andEverythingAfter ? " and after" : ""));
            }
        }
        return points;
    }
    // `sweepOne` gives how many failures of a row were made.
    template <class Sweep>
    static void sweepAll(const std::vector<Row>& rows, std::size_t floor, Sweep sweepOne) {
        const orvex::LedgerCounts before = orvex::liveCounts();
        std::size_t total = 0;
        for (const Row& row : rows) {
            total += sweepOne(row);
            if (HasFailure()) return;
        }
        std::cout << total << " points, " << rows.size() << " operations\n";
        EXPECT_GE(total, floor) << "most points were not met";
        EXPECT_EQ(orvex::liveCounts(), before) << orvex::describeLive();
    }
    static void sweepHost(const std::vector<Row>& rows, std::size_t floor) {
        sweepAll(rows, floor, [](const Row& row) {
            std::size_t points = 0;
            for (const auto& [kind, name] : kHostFailures)
                points += sweep(row, name, [kind = kind](std::size_t n, bool andEverythingAfter) {
                    return orvex::FaultInjection(orvex::FaultPlan{n, andEverythingAfter, kind});
                });
            return points;
        });
    }
    static void sweepMemory(const std::vector<Row>& rows, std::size_t floor) {
        if (!FailingAllocations::arePossible()) GTEST_SKIP() << "the checks' own allocator stays";
        sweepAll(rows, floor, [](const Row& row) {
            return sweep(row, "allocation", [](std::size_t n, bool andEverythingAfter) {
                return FailingAllocations(n, andEverythingAfter);
            });
        });
    }
};

TEST_F(FailureSweep, recordsWhenTheHostFails) { sweepHost(recordRows(), 10000); }
TEST_F(FailureSweep, setsAndQueriesWhenTheHostFails) { sweepHost(setRows(), 11000); }
TEST_F(FailureSweep, observersWhenTheHostFails) { sweepHost(observerRows(), 4200); }
TEST_F(FailureSweep, hostMethodsWhenTheHostFails) { sweepHost(hostRows(), 7700); }
TEST_F(FailureSweep, recordsWhenMemoryRunsOut) { sweepMemory(recordRows(), 1400); }
TEST_F(FailureSweep, setsAndQueriesWhenMemoryRunsOut) { sweepMemory(setRows(), 1500); }
TEST_F(FailureSweep, observersWhenMemoryRunsOut) { sweepMemory(observerRows(), 750); }
TEST_F(FailureSweep, hostMethodsWhenMemoryRunsOut) { sweepMemory(hostRows(), 1150); }

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
            other->m_logicalPortIndex = 40;  // all under one path key
            other->setCachedInfo(1e6 + i, 1);
            const Ending replaced = attempt([&] { set.set(position, other); });
            const int number = set.get(position)->m_outputPortIndex;
            EXPECT_EQ(number == other->m_outputPortIndex, replaced == Ending::completed) << more << " more signals";
            const int logical = set.get(position)->m_logicalPortIndex;
            EXPECT_TRUE(set.isPortObserved(0.0, path, u"", number, 0, logical)) << more << " more signals";
            replacementsFailed += static_cast<int>(replaced != Ending::completed);
            set.set(position, other);
        }
        EXPECT_EQ(world.answers(), world.plainAnswers()) << more << " more signals";
    }
    EXPECT_GT(replacementsFailed, 0);
    EXPECT_GT(bindingsFailed, 0);
}

}  // namespace
