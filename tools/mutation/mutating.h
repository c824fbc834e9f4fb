#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <type_traits>

// Goes into the copy of the tree that has all changes compiled in, and chooses one of them at run time:
// KS_MUTATION=N makes change N, KS_MUTATION_RECORD=FILE changes nothing and appends the number of each change that
// the program comes across. Allocates nothing, so that tests which count allocations see none more.
namespace mutation {

inline constexpr int kMost = 1 << 16;
inline constexpr int kUnread = -1;
inline constexpr int kRecording = -2;

inline std::atomic<int> chosen{kUnread};

[[gnu::noinline]] inline int readChoice() noexcept {
    const char* const number = std::getenv("KS_MUTATION");
    const int choice = std::getenv("KS_MUTATION_RECORD") ? kRecording : number ? std::atoi(number) : 0;
    chosen.store(choice, std::memory_order_relaxed);
    return choice;
}

[[gnu::noinline]] inline void record(int number) noexcept {
    static std::atomic<bool> seen[kMost];
    if (seen[number].exchange(true)) return;
    const int earlierErrno = errno;
    const int file = ::open(std::getenv("KS_MUTATION_RECORD"), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (file < 0 || ::write(file, &number, sizeof number) != sizeof number) std::abort();
    ::close(file);
    errno = earlierErrno;
}

inline bool isOn(int number) noexcept {
    int choice = chosen.load(std::memory_order_relaxed);
    if (choice == kUnread) choice = readChoice();
    if (choice == kRecording) record(number);
    return choice == number;
}

/// The same inside of `constexpr` functions, which stay as they are where the compiler evaluates them.
constexpr bool isOnAtRunTime(int number) noexcept { return !std::is_constant_evaluated() && isOn(number); }

}  // namespace mutation
