#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>

#include "tests/workbench/record/record_test.h"
#include "workbench/record/recorded_run.h"

// Units that mean no good. Whatever one does to its own process and to what it shares with its parent, the tool ends in
// time, says what happened, and leaves whole rows.

namespace kshmi {
namespace {

using namespace testing;

class HostileUnit : public RecordTest {
protected:
    HostileUnit() {
        import(probe2());
        mark("state:count wave:sine");
    }
    ~HostileUnit() override { EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a process is left"; }

    // Processes of that name, of whatever parent, that run a unit of this test: others run beside it.
    int countProcesses(const std::string& name) const {
        int count = 0;
        for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
            std::ifstream file(entry.path() / "comm");
            std::string its;
            if (!std::getline(file, its) || its != name) continue;
            std::ifstream maps(entry.path() / "maps");
            const std::string mapped{std::istreambuf_iterator<char>(maps), {}};
            if (contains(mapped, path("tmp"))) ++count;
        }
        return count;
    }
};

TEST_F(HostileUnit, goesWithAToolThatIsKilled) {
    const auto waitFor = [&](int processes) {
        for (int i = 0; i < 500 && countProcesses("kshmi-hung") != processes; ++i) ::usleep(20'000);
        EXPECT_EQ(countProcesses("kshmi-hung"), processes);
    };
    const pid_t tool = ::fork();
    if (tool == 0) ::_exit(runOn("record --quiet " + setTo(kHang)).code);
    waitFor(1);
    ::kill(tool, SIGKILL);
    EXPECT_EQ(::waitpid(tool, nullptr, 0), tool);
    waitFor(0);
    for (const auto& left : std::filesystem::directory_iterator(path("tmp"))) std::filesystem::remove_all(left);
}

const char* const kWhole = "time count sine\n0 0 0\n0.5 -1 0.479425538604203\n1 -2 0.8414709848078965\n1.5 -3 ";

TEST_F(HostileUnit, isFollowedToTheEndWhateverItDoesToItsOwnProcess) {
    for (const Behaviour behaviour : {kCloseFiles, kLeaveProcesses}) {
        const Finished finished = runOn("record --quiet " + setTo(behaviour));
        EXPECT_EQ(finished.code, 0) << behaviour << finished.err;
        EXPECT_TRUE(plain(finished.out).starts_with(kWhole)) << behaviour << finished.out;
    }
    // Killed processes take a moment to go.
    for (int i = 0; i < 100 && countProcesses("kshmi-left") > 0; ++i) ::usleep(20'000);
    EXPECT_EQ(countProcesses("kshmi-left"), 0);
    expectSaid("record --timeout 0.3 " + setTo(kStandStill), kStoppedEarly,
               "stopped at t = 1: the unit did not come back within 0.3 s");
}

TEST_F(HostileUnit, doesNotDriveTheTerminalWithItsMessages) {
    const Finished finished = runOn("record --quiet --log --until 50 --step 1 " + setTo(kComplain));
    EXPECT_EQ(finished.code, 0);
    EXPECT_EQ(finished.err.find('\x1B'), std::string::npos);
    expectParts(finished.err, {"t = 1 [error] probe: \uFFFD( \\x1b[31m %s %n at 1\n"});
    EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 49'000);
}

TEST_F(HostileUnit, textsThatAreNoUtf8AreMended) {
    mark("state:text");
    EXPECT_TRUE(runOn("record --quiet --until 0 " + setTo(kComplain)).out.ends_with("\r\n0,0,0,\"\uFFFD( 0\"\r\n"));
    EXPECT_EQ(runOn("record --quiet --until 0 -o " + path("run.db") + " " + setTo(kComplain)).code, 0);
    const workbench::RecordedRun run = workbench::readRecordedRun(path("run.db"));
    EXPECT_EQ(run.columns.at(2).texts, std::vector<std::string>{"\uFFFD( 0"});
}

TEST_F(HostileUnit, mayWriteOverAllThatItShares) {
    const char* const wanted = std::getenv("KS_HMI_HOSTILE_RUNS");
    const int runs = wanted != nullptr ? std::atoi(wanted) : 60;
    int stopped = 0;
    for (int seed = 0; seed < runs; ++seed) {
        const auto start = std::chrono::steady_clock::now();
        const Finished finished = runOn("record --quiet --timeout 1 --until 2e4 --step 1 " + setTo(kWriteOver + seed));
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20)) << seed;
        EXPECT_TRUE(finished.code == 0 || finished.code == kStoppedEarly) << seed << ": " << finished.err;
        stopped += finished.code == 0 ? 0 : 1;
        EXPECT_TRUE(finished.out.starts_with("time,count,sine\r\n")) << seed;
        EXPECT_TRUE(finished.out.ends_with("\r\n")) << seed;
    }
    EXPECT_GT(stopped, runs / 2);
}

}  // namespace
}  // namespace kshmi
