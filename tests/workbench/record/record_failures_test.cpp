#include <fcntl.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <set>
#include <string_view>
#include <thread>
#include <type_traits>

#include "tests/support/sanitized.h"
#include "tests/workbench/record/record_test.h"
#include "workbench/record/recorded_run.h"
#include "workbench/run_file/sqlite.h"

// Recordings whose system calls fail, one after the other, and which are asked to stop. The tool's calls are linked to
// the functions below, which make them unless it is their turn to fail.

namespace {

struct Plan {
    std::size_t at = 0;  // which call, 1-based; 0 for none
    std::size_t calls = 0;
    bool isFromThenOn = false;
    const char* reached = nullptr;
    int error = ENOSPC;
    std::string_view only = {};
} g_plan;

bool isToFail(const char* name) {
    if (g_plan.at == 0 || (!g_plan.only.empty() && g_plan.only != name)) return false;
    ++g_plan.calls;
    if (g_plan.isFromThenOn ? g_plan.calls < g_plan.at : g_plan.calls != g_plan.at) return false;
    g_plan.reached = name;
    errno = g_plan.error;
    return true;
}

}  // namespace

#define KS_HMI_WRAPPED(type, name, parameters, arguments, failed) \
    type __real_##name parameters;                                \
    type __wrap_##name parameters;                                \
    type __wrap_##name parameters { return isToFail(#name) ? failed : __real_##name arguments; }

extern "C" {
KS_HMI_WRAPPED(char*, mkdtemp, (char* path), (path), nullptr)
KS_HMI_WRAPPED(ssize_t, write, (int file, const void* data, size_t size), (file, data, size), -1)
KS_HMI_WRAPPED(int, fsync, (int file), (file), -1)
KS_HMI_WRAPPED(int, ftruncate, (int file, off_t size), (file, size), -1)
KS_HMI_WRAPPED(int, fstat, (int file, struct stat* status), (file, status), -1)
KS_HMI_WRAPPED(int, flock, (int file, int operation), (file, operation), -1)
KS_HMI_WRAPPED(pid_t, fork, (), (), -1)
KS_HMI_WRAPPED(void*, mmap, (void* at, size_t size, int protection, int flags, int file, off_t offset),
               (at, size, protection, flags, file, offset), MAP_FAILED)

int __real_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return isToFail("open") ? -1 : __real_open(path, flags, mode);
}

// A descriptor that cannot be closed is closed.
int __real_close(int file);
int __wrap_close(int file);
int __wrap_close(int file) {
    const bool fails = isToFail("close");
    const int result = __real_close(file);
    return fails ? -1 : result;
}
}

namespace kshmi {
namespace {

using namespace testing;

class RecordFailures : public RecordTest {
protected:
    RecordFailures() {
        import(probe2());
        mark("state:count wave:sine");
    }
    // Whole rows only, each of them as it should be.
    void expectWholeRows(const std::string& csv) const {
        if (csv.empty()) return;
        EXPECT_TRUE(csv.starts_with("time,count,sine\r\n")) << csv.substr(0, 40);
        EXPECT_TRUE(csv.ends_with("\r\n")) << csv.substr(csv.size() - 40);
        for (std::size_t at = 0, end = 0; (end = csv.find('\n', at)) != std::string::npos; at = end + 1)
            if (const std::string row = csv.substr(at, end - at); std::count(row.begin(), row.end(), ',') != 2)
                FAIL() << row;
    }
    static std::size_t openDescriptors() {
        const std::filesystem::directory_iterator files("/proc/self/fd");
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }
    static void expectNoChildren() { EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a process is left"; }
};

TEST_F(RecordFailures, eachCallThatFailsIsToldAndLeavesWholeRows) {
    const std::size_t descriptors = openDescriptors();
    std::set<std::string> failed;
    for (const bool isFromThenOn : {false, true}) {
        for (std::size_t at = 1;; ++at) {
            std::filesystem::remove(path("run.csv"));
            g_plan = {at, 0, isFromThenOn, nullptr};
            const Finished finished = runOn("record --quiet --until 600 -o " + path("run.csv"));
            const Plan plan = std::exchange(g_plan, {});
            expectWholeRows(read("run.csv"));
            expectNoChildren();
            if (plan.reached == nullptr) break;
            failed.insert(plan.reached);
            EXPECT_TRUE(finished.code == kBadFile || finished.code == kHostRefused || finished.code == kSuccess)
                << plan.reached << ": " << finished.code << finished.err;
            EXPECT_TRUE(finished.code == kSuccess || !finished.err.empty()) << plan.reached;
        }
    }
    const std::set<std::string> all{"close", "flock", "fork", "fstat", "fsync", "mkdtemp", "mmap", "open", "write"};
    EXPECT_EQ(failed, all);
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(RecordFailures, aWriteThatIsInterruptedIsMadeAgain) {
    const std::string whole = runOn("record --quiet --until 6000").out;
    for (std::size_t at = 1;; ++at) {
        g_plan = {at, 0, false, nullptr, EINTR, "write"};
        EXPECT_EQ(runOn("record --quiet --until 6000 --replace -o " + path("run.csv")).code, kSuccess);
        EXPECT_TRUE(read("run.csv") == whole) << at;
        if (std::exchange(g_plan, {}).reached == nullptr) break;
    }
}

// SQLite makes its calls through a table of its own.
class FailingDatabase {
public:
    FailingDatabase() : m_files(::sqlite3_vfs_find(nullptr)) {
        replace("open", g_open, [](const char* path, int flags, int mode) {
            return isToFail("open") ? -1 : g_open(path, flags, mode);
        });
        for (const char* const name : {"pwrite64", "pwrite"})
            replace(name, g_pwrite, [](int file, const void* data, std::size_t size, off_t at) {
                return isToFail("pwrite") ? ssize_t{-1} : g_pwrite(file, data, size, at);
            });
        replace("write", g_write, [](int file, const void* data, std::size_t size) {
            return isToFail("write") ? ssize_t{-1} : g_write(file, data, size);
        });
        replace("ftruncate", g_ftruncate,
                [](int file, off_t size) { return isToFail("ftruncate") ? -1 : g_ftruncate(file, size); });
    }
    FailingDatabase(const FailingDatabase&) = delete;
    FailingDatabase& operator=(const FailingDatabase&) = delete;
    ~FailingDatabase() { m_files->xSetSystemCall(m_files, nullptr, nullptr); }

private:
    template <class Function>
    void replace(const char* name, Function*& original, std::type_identity_t<Function>* ours) {
        const auto found = m_files->xGetSystemCall(m_files, name);
        if (found == nullptr) return;
        original = reinterpret_cast<Function*>(found);
        m_files->xSetSystemCall(m_files, name, reinterpret_cast<sqlite3_syscall_ptr>(ours));
    }

    inline static int (*g_open)(const char*, int, int);
    inline static ssize_t (*g_pwrite)(int, const void*, std::size_t, off_t);
    inline static ssize_t (*g_write)(int, const void*, std::size_t);
    inline static int (*g_ftruncate)(int, off_t);
    sqlite3_vfs* m_files;
};

TEST_F(RecordFailures, eachCallOfTheDatabaseThatFailsLeavesAWholeOne) {
    ASSERT_EQ(runOn("record --quiet --until 3 -o " + path("earlier.db")).code, 0);
    const std::size_t descriptors = openDescriptors();
    for (const bool isFromThenOn : {false, true}) {
        std::size_t failures = 0;
        for (std::size_t at = 1;; ++at) {
            std::filesystem::copy_file(path("earlier.db"), path("run.db"),
                                       std::filesystem::copy_options::overwrite_existing);
            Plan plan;
            Finished finished;
            {
                const FailingDatabase database;
                g_plan = {at, 0, isFromThenOn, nullptr};
                finished = runOn("record --quiet --until 300 -o " + path("run.db"));
                plan = std::exchange(g_plan, {});
            }
            if (plan.reached == nullptr) break;
            ++failures;
            EXPECT_TRUE(finished.code == kSuccess || !finished.err.empty()) << plan.reached;
            const workbench::RecordedRun earlier = workbench::readRecordedRun(path("run.db"), 1);
            EXPECT_EQ(earlier.outcome, "done") << plan.reached;
            EXPECT_TRUE(earlier.runCount == 1 || workbench::readRecordedRun(path("run.db")).columns.size() == 2)
                << "half a run: " << plan.reached;
            EXPECT_EQ(earlier.columns.at(0).values, (std::vector<double>{0, -1, -2, -3, -4, -5, -6})) << plan.reached;
            expectNoChildren();
        }
        EXPECT_GE(failures, 6U);
    }
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(RecordFailures, aFullDiskKeepsTheRowsThatFit) {
    expectSaid("record --replace -o /dev/full", kBadFile, "/dev/full: cannot be written: No space left on device");
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{100'000, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    const Finished csv = runOn("record --until 1e6 -o " + path("run.csv"));
    const Finished database = runOn("record --until 1e6 -o " + path("run.db"));
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(csv.code, kBadFile);
    expectParts(csv.err, {"run.csv: cannot be written: File too large; recorded until t = "});
    EXPECT_FALSE(contains(csv.err, "until t = 0\n"));
    expectWholeRows(read("run.csv"));
    EXPECT_GT(read("run.csv").size(), 99'900U);
    EXPECT_EQ(database.code, kBadFile);
    expectParts(database.err, {"run.db", "recorded until t = "});
    // A text has a line break, which ends no row.
    mark("state:text");
    for (rlim_t size = 100'000; size < 100'050; size += 6) {
        const rlimit tiny{size, before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &tiny);
        EXPECT_EQ(runOn("record --replace --until 1e6 -o " + path("run.csv")).code, kBadFile);
        ::setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_GT(read("run.csv").size(), size - 100);
        EXPECT_EQ(workbench::readRecordedRun(path("run.csv")).columns.at(2).texts.at(1), "step \"1\",\nnext");
    }
    expectNoChildren();
}

// Another program that writes to the database is waited for, for some seconds.
TEST_F(RecordFailures, oneWriterAfterTheOther) {
    using workbench::SqliteDatabase;
    const std::string record = "record --quiet -o " + path("run.db");
    ASSERT_EQ(runOn(record).code, 0);
    SqliteDatabase other(path("run.db"), SqliteDatabase::Mode::write);
    other.execute("BEGIN IMMEDIATE");
    const Finished refused = runOn(record);
    EXPECT_EQ(refused.code, kFileInUse);
    expectParts(refused.err, {"run.db: another program is writing to the database; wait until it is done"});
    std::thread ending([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        other.execute("COMMIT");
    });
    EXPECT_EQ(runOn(record).code, 0);
    ending.join();
    EXPECT_EQ(workbench::readRecordedRun(path("run.db")).runCount, 2);
}

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
    std::size_t memory, descriptors, mappings, sharedMemory;

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
                static_cast<std::size_t>(lines), entries("/dev/shm")};
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
    EXPECT_EQ(after.sharedMemory, before.sharedMemory);
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
