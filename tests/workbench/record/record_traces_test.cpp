#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "tests/support/sanitized.h"
#include "tests/workbench/record/whole_rows_test.h"

// Recordings that are asked to stop, seen while they run, or killed, and what they leave.

namespace kshmi {
namespace {

using namespace testing;

TEST_F(RecordFailures, stopsWhenItIsAskedTo) {
    const auto interrupted = [&](const std::string& options, int times) {
        std::thread asking([times] {
            for (int i = 0; i < times; ++i) {
                std::this_thread::sleep_for(std::chrono::milliseconds(300));
                ::kill(::getpid(), SIGINT);
            }
        });
        const Finished finished = runOn("record " + options + " --replace -o " + path("run.csv"));
        asking.join();
        EXPECT_EQ(finished.code, kStoppedEarly);
        expectParts(finished.err, {"somebody asked to stop; what was recorded until then is kept"});
        expectWholeRows(read("run.csv"));
        expectNoChildren();
    };
    interrupted("--until 1e12", 1);
    EXPECT_GT(read("run.csv").size(), 1000U);
    interrupted(setTo(kHang), 2);
    EXPECT_EQ(plain(read("run.csv")).substr(0, 40), "time count sine\n0 0 0\n0.5 -1 0.479425538");
}

TEST_F(RecordFailures, othersSeeTheRowsOfAUnitThatHangs) {
    std::atomic<bool> hasEnded{false};
    std::thread tool([&] {
        runOn("record --quiet " + setTo(kHang) + "-o " + path("run.csv"));
        hasEnded = true;
    });
    for (int i = 0; i < 500 && !read("run.csv").ends_with("\r\n1,-2,0.8414709848078965\r\n"); ++i) ::usleep(20'000);
    EXPECT_TRUE(read("run.csv").ends_with("\r\n1,-2,0.8414709848078965\r\n") && !hasEnded);
    for (int i = 0; i < 2; ++i) ::kill(::getpid(), SIGINT);
    tool.join();
}

// What a process has, as the system counts it.
struct Holdings {
    std::size_t memory, descriptors, mappings;

    static Holdings now() {
        const auto entries = [](const char* folder) {
            const std::filesystem::directory_iterator files(folder);
            return static_cast<std::size_t>(std::distance(begin(files), end(files)));
        };
        std::ifstream statm("/proc/self/statm");
        std::size_t pages = 0;
        statm >> pages >> pages;
        std::ifstream maps("/proc/self/maps");
        const auto lines = std::count(std::istreambuf_iterator<char>(maps), {}, '\n');
        return {pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)), entries("/proc/self/fd"),
                static_cast<std::size_t>(lines)};
    }
};

TEST_F(RecordFailures, manyRunsLeaveNothing) {
    const char* const wanted = std::getenv("KS_HMI_RECORDINGS");
    const int runs = wanted != nullptr ? std::atoi(wanted) : 200;
    constexpr std::array kMishaps{kCrash, kFail, kLeave, kDiscard, kLeaveProcesses};
    const auto runSome = [&](int count) {
        for (int i = 0; i < count; ++i) {
            const bool isMishap = i % 10 == 0;
            const std::string options = isMishap ? setTo(kMishaps.at(static_cast<std::size_t>(i / 10) % 5)) : "";
            const int code = runOn("record --quiet " + options).code;
            ASSERT_TRUE(code == 0 || (isMishap && code == kStoppedEarly)) << i;
        }
    };
    runSome(100);
    const Holdings before = Holdings::now();
    runSome(runs);
    const Holdings after = Holdings::now();
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_LT(after.mappings, before.mappings + 20);
    // A sanitizer's allocator holds on to what was freed.
    EXPECT_TRUE(KS_HMI_SANITIZED || after.memory < before.memory + (std::size_t{4} << 20U))
        << before.memory << ", " << after.memory;
    expectNoChildren();
}

TEST_F(RecordFailures, whatAKilledToolLeavesGoesWithTheNextRun) {
    const std::string left = path("tmp/kshmi-unit-left");
    std::filesystem::create_directories(left + "/resources");
    const std::string young = path("tmp/kshmi-unit-young");
    std::filesystem::create_directory(young);
    // Another run's, and another user's where there can be one.
    const std::string locked = path("tmp/kshmi-unit-locked");
    const std::string others = path("tmp/kshmi-unit-others");
    for (const std::string& folder : {locked, others}) std::filesystem::create_directory(folder);
    const int lock = ::open(locked.c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_EQ(::flock(lock, LOCK_EX), 0);
    const bool isOthers = ::chown(others.c_str(), 12345, 12345) == 0;
    const timespec old[2] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
    for (const std::string& folder : {left, locked, others})
        ASSERT_EQ(::utimensat(AT_FDCWD, folder.c_str(), old, 0), 0);
    EXPECT_EQ(runOn("record --quiet").code, 0);
    EXPECT_FALSE(std::filesystem::exists(left));
    EXPECT_TRUE(std::filesystem::remove(locked));
    EXPECT_EQ(std::filesystem::remove(others), isOthers);
    ::close(lock);
    EXPECT_TRUE(std::filesystem::remove(young));
}

}  // namespace
}  // namespace kshmi
