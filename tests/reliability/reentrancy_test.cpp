#include <iostream>
#include <optional>

#include "tests/reliability/swept_operations.h"
#include "tests/support/host_recorder.h"

using namespace ks_test;

namespace {

// What a script may do to the sets while the library waits for the host.
struct Act {
    const char* name;
    void (*carryOut)(SweptWorld&);
};

template <class Set>
void clear(Set& set) {
    while (set.getCount() > 0) set.remove(std::size_t{0});
}

constexpr Act kActs[] = {
    {"removes the first ones",
     [](SweptWorld& w) {
         if (w.signals().getCount() > 0) w.signals().remove(std::size_t{0});
         if (w.clients().getCount() > 0) w.clients().remove(0);
     }},
    {"clears the sets",
     [](SweptWorld& w) {
         clear(w.signals());
         clear(w.clients());
     }},
    {"lets the sets grow",
     [](SweptWorld& w) {
         for (int i = 0; i < 20; ++i) w.signals().add(SweptWorld::port(u"Sub/Other", 4, "5", "s-9"));
         for (int i = 0; i < 20; ++i) w.clients().add(SweptWorld::client("c-9", "s-9"));
     }},
    {"renames the model",
     [](SweptWorld& w) {
         w.signals().setModelName(u"a name that is not short at all");
         w.clients().setModelName(u"a name that is not short at all");
     }},
    {"unloads the model and deletes the sets",
     [](SweptWorld& w) {
         kestrel::loadedModels().unloadAll();
         for (HvArrayPtr* const value : {&w.signalsObject, &w.clientsObject, &w.modelObject, &w.bundle}) value->reset();
     }},
};

enum class Way { returns, throws, refuses };

// Carries an act out at host operation number `at` (1-based): after it, or in its stead where it throws.
class Meddler {
public:
    Meddler(SweptWorld& world, const Act& act, Way way, std::size_t at)
        : m_recorder(way == Way::returns ? Operations{"kssvFEVAL", "kssvFEVAL_NoThrow", "hvGetProperty",
                                                      "hvGetPropertyShared", "hvSetProperty", "hvCreateDeepCopy",
                                                      "hvCreateSharedDataCopy", "hvReplaceField", "destroy"}
                                         : Operations{"kssvFEVAL", "kssvFEVAL_NoThrow"}) {
        m_recorder.setHook([&world, &act, way, at, this](HostRecorder::Moment moment, std::string_view) {
            if (moment == HostRecorder::Moment::before) return before(world, act, way, at);
            m_refusal.reset();
            if (m_count == at && way != Way::throws && !m_hasMeddled) meddle(world, act);
        });
    }
    bool hasMeddled() const { return m_hasMeddled; }

private:
    void before(SweptWorld& world, const Act& act, Way way, std::size_t at) {
        if (++m_count != at) return;
        if (way == Way::refuses) m_refusal.emplace(orvex::FaultPlan{1, false, orvex::FaultKind::refusal});
        if (way != Way::throws) return;
        meddle(world, act);
        orvex::raise("meddled", "The script was not in the mood.");
    }
    void meddle(SweptWorld& world, const Act& act) {
        m_hasMeddled = true;
        act.carryOut(world);
    }

    HostRecorder m_recorder;
    std::optional<orvex::FaultInjection> m_refusal;
    std::size_t m_count = 0;
    bool m_hasMeddled = false;
};

class Reentrancy : public HostTest {
protected:
    // Host methods keep their inputs themselves, and so does what takes a host object; a set is kept by its caller.
    static bool needsItsSets(const SweptRow& row) {
        static const std::set<std::string> none{"rebind", "clients validate", "tell of a rename",
                                                "list aligned observers", "bundle"};
        return !row.name.starts_with("host ") && !none.contains(row.name);
    }
    static std::size_t sweep(const SweptRow& row, const Act& act, Way way) {
        for (std::size_t at = 1;; ++at) {
            SweptWorld world;
            world.isMeddledWith = true;
            std::vector<HvArrayPtr> kept;
            for (const HvArrayPtr* const object : {&world.signalsObject, &world.clientsObject})
                if (needsItsSets(row)) kept.push_back(SweptWorld::shared(*object));
            const std::string where = row.name + ", operation " + std::to_string(at) + ": the host " + act.name;
            std::string raised;
            bool hasMeddled = false;
            {
                const Meddler meddler(world, act, way, at);
                // Garbage that is read as a text's length ends in one of these.
                EXPECT_NE(endingOf([&] { raised = raisedBy([&] { row.action(world); }); }), Ending::threwNoMemory)
                    << where;
                EXPECT_EQ(raised.find("UnexpectedException"), std::string::npos) << where << ": " << raised;
                hasMeddled = meddler.hasMeddled();
            }
            if (!hasMeddled) return at - 1;
            if (!world.signalsObject) continue;
            world.signals().updateObservedPortMap();
            EXPECT_EQ(world.answers(), world.plainAnswers()) << where;
        }
    }
    static void sweepAll(const std::vector<SweptRow>& rows, std::size_t floor) {
        std::size_t points = 0;
        for (const SweptRow& row : rows)
            for (const Act& act : kActs)
                for (const Way way : {Way::returns, Way::throws, Way::refuses}) points += sweep(row, act, way);
        std::cout << points << " host operations met with an act, in " << rows.size() << " operations\n";
        EXPECT_GE(points, floor);
    }
};

TEST_F(Reentrancy, aSaveIsRelativeToTheNameItBeganWith) {
    SweptWorld world;
    const Act rename{"", [](SweptWorld& w) { w.signals().setModelName(u"m2"); }};
    const Meddler meddler(world, rename, Way::returns, 1);
    const HvArrayPtr saved = world.signals().getPersistenceData();
    EXPECT_TRUE(meddler.hasMeddled());
    EXPECT_EQ(hvArrayToStdString(hvGetField(saved.get(), 1, "BlockPath_")), "Sub/Switch");
}

TEST_F(Reentrancy, recordsBearAHostThatChangesTheirSets) { sweepAll(recordRows(), 1000); }
TEST_F(Reentrancy, setsBearAHostThatChangesThem) { sweepAll(setRows(), 700); }
TEST_F(Reentrancy, observersBearAHostThatChangesThem) { sweepAll(observerRows(), 500); }
TEST_F(Reentrancy, hostMethodsBearAHostThatChangesTheirSets) { sweepAll(hostRows(), 1500); }

}  // namespace
