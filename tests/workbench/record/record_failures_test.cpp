#include <fcntl.h>
#include <fmt/format.h>
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
#include "tests/workbench/record/whole_rows_test.h"
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
    const std::string whole = runOn("record --quiet --until 30000").out;
    for (std::size_t at = 1;; ++at) {
        g_plan = {at, 0, false, nullptr, EINTR, "write"};
        EXPECT_EQ(runOn("record --quiet --until 30000 --replace -o " + path("run.csv")).code, kSuccess);
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
    const double kept = workbench::readRecordedRun(path("run.csv")).columns.at(0).times.back();
    EXPECT_TRUE(csv.err.ends_with(fmt::format("until t = {}\n", kept))) << csv.err;
    EXPECT_EQ(database.code, kBadFile);
    expectParts(database.err, {"run.db", "recorded"});
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

}  // namespace
}  // namespace kshmi
