#include <fcntl.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <iostream>
#include <thread>

#include "tests/kshmi/kshmi_test.h"
#include "tests/support/failing_calls.h"
#include "workbench/files/atomic_file.h"
#include "workbench/session/session.h"
#include "workbench/text/error.h"

// Saving when each of its system calls fails once, and when the program ends at each of them.
namespace kshmi {

using namespace workbench;
namespace {

using namespace ks_test;
using testing::contains;
using testing::kModel;

class Saving : public testing::KshmiTest {
protected:
    Saving() {
        write(kModel);
        EXPECT_EQ(run({"query", path(), "A:1"}).code, 0);  // enters the host
        EXPECT_EQ(run({"unmark", path(), "Logic/On/Fast"}).code, 0);
        m_unmarked = read();
        write(kModel);
    }
    ~Saving() override { g_plan = {}; }

    // Unmarks a state in the model as it was, with that plan for the calls of the save.
    testing::Finished unmarkWith(const CallPlan& plan) {
        write(kModel);
        ::chmod(path().c_str(), 0640);
        ::setxattr(path().c_str(), "user.note", "kept", 4, 0);
        g_plan = plan;
        const testing::Finished finished = run({"unmark", path(), "Logic/On/Fast"});
        g_plan.at = 0;
        return finished;
    }
    const std::string& unmarked() const { return m_unmarked; }
    std::string folder() const { return path("."); }

    // In a process of its own, where `prepare` has done what it says: a save fails for that reason and leaves no
    // trace. False where the machine does not permit what `prepare` does.
    bool failsIn(const std::function<bool()>& prepare, const char* reason) {
        constexpr int kNotPermitted = 75;
        std::fflush(nullptr);
        const pid_t child = ::fork();
        if (child == 0) {
            if (!prepare()) ::_exit(kNotPermitted);
            expectFailure(reason);
            std::fflush(nullptr);
            ::_exit(HasFailure() ? 1 : 0);
        }
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        const bool isPermitted = !WIFEXITED(status) || WEXITSTATUS(status) != kNotPermitted;
        EXPECT_TRUE(!isPermitted || status == 0) << "see above";
        return isPermitted;
    }
    // A disk of its own for this process at the folder of the test, with a model that takes more than half of it.
    bool mountSmallDisk() const {
        const bool isDone = ::unshare(CLONE_NEWNS) == 0 &&
                            ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                            ::mount("disk", folder().c_str(), "tmpfs", 0, "size=256k") == 0;
        if (isDone) write(testing::replaced(kModel, "scope", std::string(180'000, 's')));
        return isDone;
    }

private:
    void expectFailure(const char* reason) const {
        const std::string old = read();
        const testing::Finished finished = run({"unmark", path(), "Logic/On/Fast"});
        EXPECT_EQ(finished.code, kBadFile);
        EXPECT_TRUE(contains(finished.err, path() + ": not saved, the file is as it was: ")) << finished.err;
        EXPECT_TRUE(contains(finished.err, reason)) << finished.err;
        EXPECT_TRUE(read() == old);
        EXPECT_EQ(fileCount(), 1U);
    }

    std::string m_unmarked;
};

TEST_F(Saving, isDoneOrNotWhicheverCallFails) {
    std::string names;
    for (std::size_t at = 1;; ++at) {
        const testing::Finished finished = unmarkWith({at, Turn::fails, EIO, 0, nullptr});
        if (g_plan.reached == nullptr) break;
        const std::string where = std::to_string(at) + ": " + g_plan.reached;
        names += std::string(" ") + g_plan.reached;
        EXPECT_TRUE(read() == (finished.code == 0 ? unmarked() : kModel)) << where;
        EXPECT_EQ(finished.code != 0, contains(finished.err, "kshmi: ")) << where << '\n' << finished.err;
        struct stat status {};
        ASSERT_EQ(::stat(path().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777U, 0640U) << where;
        EXPECT_EQ(fileCount(), 1U) << where;
    }
    std::cout << "each failed once:" << names << '\n';
    for (const char* const call : {"open", "flock", "fstat", "mkostemp", "write", "fchmod", "fsync", "close", "rename"})
        EXPECT_TRUE(contains(names + ' ', std::string(" ") + call + ' ')) << call << " was not met";
}

TEST_F(Saving, leavesTheOldOrTheNewFileWhereverTheProgramEnds) {
    bool isOver = false;
    std::size_t at = 1;
    for (; !isOver; ++at) {
        write(kModel);
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            g_plan = {at, Turn::endsTheProgram, 0, 0, nullptr};
            run({"unmark", path(), "Logic/On/Fast"});
            ::_exit(0);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFEXITED(status)) << at;
        isOver = WEXITSTATUS(status) == 0;
        EXPECT_TRUE(read() == kModel || read() == unmarked()) << at;
    }
    EXPECT_TRUE(read() == unmarked());
    EXPECT_GT(at, 9U) << "most calls were not met";
}

// The thread that tells of progress must not take the signal.
TEST_F(Saving, isWholeWhenItIsInterruptedOnATerminal) {
    for (const int signal : {SIGINT, SIGTERM}) {
        std::size_t at = 1;
        for (bool isOver = false; !isOver; ++at) {
            write(kModel);
            const pid_t child = ::fork();
            ASSERT_GE(child, 0);
            if (child == 0) {
                g_plan = {at, Turn::isInterrupted, signal, 0, nullptr};
                std::ostringstream out;
                runCommandLine({"unmark", path(), "Logic/On/Fast"}, {.out = out, .err = out, .isWatched = true});
                ::_exit(0);
            }
            int status = 0;
            ASSERT_EQ(::waitpid(child, &status, 0), child);
            isOver = WIFEXITED(status);
            EXPECT_TRUE(isOver || WTERMSIG(status) == signal) << at;
            EXPECT_TRUE(read() == unmarked() || read() == kModel) << at;
            EXPECT_EQ(fileCount(), 1U) << at;
        }
        EXPECT_GT(at, 9U) << "most calls were not met";
    }
}

TEST_F(Saving, aDiskThatIsFullIsToldAndInterruptedWritesGoOn) {
    std::size_t at = 1;
    while (unmarkWith({at, Turn::fails, ENOSPC, 0, nullptr}).code == 0 || std::string(g_plan.reached) != "write") ++at;
    EXPECT_TRUE(read() == kModel);
    EXPECT_EQ(unmarkWith({at, Turn::fails, EINTR, 0, nullptr}).code, 0);
    EXPECT_TRUE(read() == unmarked());
}

TEST_F(Saving, aDiskThatFillsUpOrIsReadOnlyLeavesTheOldFile) {
    const auto fill = [this] { return mountSmallDisk(); };
    const auto protect = [this] {
        return mountSmallDisk() && ::mount("disk", folder().c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, nullptr) == 0;
    };
    if (!failsIn(fill, "writing failed: No space left on device") ||
        !failsIn(protect, "it cannot be written to: Read-only file system"))
        GTEST_SKIP() << "this user may not mount a disk of its own here";
}

TEST_F(Saving, aFolderThatMustNotBeWrittenLeavesTheOldFile) {
    ::chmod(path().c_str(), 0666);
    ::chmod(folder().c_str(), 0555);
    const auto becomeOrdinary = [this] {
        constexpr uid_t kNobody = 65534;
        if (::geteuid() == 0 && ::setresuid(kNobody, kNobody, kNobody) != 0) return false;
        return ::access(path().c_str(), R_OK) == 0 && ::access(folder().c_str(), W_OK) != 0;
    };
    const bool isPermitted = failsIn(becomeOrdinary, "no file can be made beside it: Permission denied");
    ::chmod(folder().c_str(), 0700);
    if (!isPermitted) GTEST_SKIP() << "no user to be found here from whom the folder is protected";
}

// An access control list in the form that the kernel keeps: the owner and one named user may write, others nothing.
std::string accessListFor(std::uint32_t user) {
    struct Entry {
        std::uint16_t tag, permissions;
        std::uint32_t id;
    };
    constexpr std::uint32_t kNone = ~0U;
    const Entry entries[] = {{1, 6, kNone}, {2, 6, user}, {4, 4, kNone}, {16, 6, kNone}, {32, 0, kNone}};
    const std::uint32_t version = 2;
    std::string list(sizeof version + sizeof entries, '\0');
    std::memcpy(list.data(), &version, sizeof version);
    std::memcpy(list.data() + sizeof version, entries, sizeof entries);
    return list;
}

TEST_F(Saving, accessListsAndUserAttributesStayWithTheFile) {
    constexpr std::uint32_t kNamed = 65533;
    const std::string list = accessListFor(kNamed);
    const auto listOf = [](const std::string& file) {
        char value[256];
        const ssize_t size = ::getxattr(file.c_str(), "system.posix_acl_access", value, sizeof value);
        return size < 0 ? std::string() : std::string(value, static_cast<std::size_t>(size));
    };
    if (::setxattr(path().c_str(), "user.note", "kept", 4, 0) != 0 ||
        ::setxattr(path().c_str(), "system.posix_acl_access", list.data(), list.size(), 0) != 0)
        GTEST_SKIP() << "this file system has no access control lists or no user attributes";
    EXPECT_EQ(run({"unmark", path(), "Logic/On/Fast"}).code, 0);
    char note[8] = {};
    EXPECT_EQ(::getxattr(path().c_str(), "user.note", note, sizeof note), 4);
    EXPECT_STREQ(note, "kept");
    EXPECT_EQ(listOf(path()), list);

    // What the folder gives new files is not the old file's.
    ASSERT_EQ(::setxattr(folder().c_str(), "system.posix_acl_default", list.data(), list.size(), 0), 0);
    ASSERT_EQ(::removexattr(path().c_str(), "system.posix_acl_access"), 0);
    write(kModel, "model.json");
    EXPECT_EQ(run({"unmark", path(), "Logic/On/Fast"}).code, 0);
    EXPECT_EQ(listOf(path()), "");
}

TEST_F(Saving, aSaveByAnotherUserSaysSo) {
    constexpr uid_t kOther = 65533;
    if (::geteuid() != 0 || ::chown(path().c_str(), kOther, 65534) != 0) GTEST_SKIP() << "needs another user's file";
    ::chmod(path().c_str(), 0660);
    ::chmod(folder().c_str(), 0777);
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        if (::setresgid(65534, 65534, 65534) != 0 || ::setresuid(65534, 65534, 65534) != 0) ::_exit(2);
        AtomicFile file(path());
        file.write("saved");
        file.commit();
        ::_exit(file.warnings() == std::vector<std::string>{"the file belonged to user 65533 and now belongs to user "
                                                            "65534, who saved it"}
                    ? 0
                    : 1);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(read(), "saved");
}

TEST_F(Saving, aSecondWriterIsRefusedWhileTheFirstSaves) {
    const int first = ::open(path().c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(first, LOCK_EX), 0);
    const testing::Finished second = run({"unmark", path(), "Logic/On/Fast"});
    EXPECT_EQ(second.code, kFileInUse);
    EXPECT_TRUE(contains(second.err, "somebody else is saving it")) << second.err;
    EXPECT_TRUE(read() == kModel);
    EXPECT_EQ(run({"unmark", path(), "Logic/On/Fast", "--wait", "1"}).code, kFileInUse);
    // What the first saves meanwhile is what the second works on.
    std::thread saving([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        write(testing::replaced(kModel, "scope", "gauge"), "next");
        std::filesystem::rename(path("next"), path());
        ::close(first);
    });
    const testing::Finished waited = run({"unmark", path(), "Logic/On/Fast", "--wait", "60"});
    saving.join();
    EXPECT_EQ(waited.code, kSuccess) << waited.err;
    EXPECT_TRUE(contains(read(), "gauge") && !contains(read(), "u-2"));
    EXPECT_EQ(fileCount(), 1U);
}

TEST_F(Saving, aFileThatChangedWhileItWasOpenIsLeftAlone) {
    for (const bool isReplaced : {false, true}) {
        write(kModel);
        Session session(path());
        const std::string changed = kModel + "\n";
        write(changed, isReplaced ? "other" : "model.json");
        if (isReplaced) std::filesystem::rename(path("other"), path());
        EXPECT_THROW(session.save(), Error);
        EXPECT_TRUE(read() == changed);
        EXPECT_EQ(fileCount(), 1U);
    }
    write(kModel);
    Session session(path());
    session.save();
    session.save();
    EXPECT_TRUE(read() == kModel) << "one's own save is no change";
}

}  // namespace
}  // namespace kshmi
