#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "benchmarks/suite.h"

// The library as it is shipped, and the tool, each in a process of its own.
namespace ks_bench {

namespace {

constexpr int kRuns = 10;

// Nanoseconds that a fresh process took to load and initialise the library, as it says itself.
double startOfLibrary() {
    std::FILE* const answer = ::popen("'" KS_HMI_LIBRARY_START "' '" KS_HMI_STRIPPED_LIBRARY "'", "re");
    double nanoseconds = 0.0;
    const int count = answer ? std::fscanf(answer, "%lf", &nanoseconds) : 0;
    const bool isFine = answer && ::pclose(answer) == 0 && count == 1;
    return isFine ? nanoseconds : -1.0;
}

void start(benchmark::State& state) {
    constexpr double kNanosecond = 1e-9;
    for ([[maybe_unused]] auto _ : state) {
        const double nanoseconds = startOfLibrary();
        if (nanoseconds < 0) return state.SkipWithError("the library did not start");
        state.SetIterationTime(nanoseconds * kNanosecond);
    }
}

bool showExample() {
    static char tool[] = KS_HMI_TOOL;
    static char command[] = "show";
    static char example[] = KS_HMI_EXAMPLE;
    char* const arguments[] = {tool, command, example, nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", 1, 0);
    pid_t child = 0;
    int status = -1;
    const bool isRunning = posix_spawn(&child, tool, &actions, nullptr, arguments, environ) == 0;
    if (isRunning) waitpid(child, &status, 0);
    posix_spawn_file_actions_destroy(&actions);
    return isRunning && status == 0;
}

void show(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state)
        if (!showExample()) return state.SkipWithError("kshmi show failed");
}

}  // namespace

void addStart(Suite& suite) {
    Suite::time("start: library", start)->UseManualTime()->Iterations(kRuns)->Unit(benchmark::kMillisecond);
    Suite::time("start: kshmi show", show)->UseRealTime()->Iterations(kRuns)->Unit(benchmark::kMillisecond);
    suite.figure(
        8, "library, stripped", "KiB",
        [] {
            constexpr double kKibibyte = 1024.0;
            return static_cast<double>(std::filesystem::file_size(KS_HMI_STRIPPED_LIBRARY)) / kKibibyte;
        },
        Limit{});
    suite.milliseconds(8, "library loaded and initialised", "start: library", Limit::atMost(2));
    suite.milliseconds(8, "kshmi show of the example", "start: kshmi show", Limit::atMost(20));
}

}  // namespace ks_bench
