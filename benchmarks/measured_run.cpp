#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

// usage: measured_run PROGRAM ARGUMENT...
// Prints the processor time in seconds that the program took, and the most memory that it held at once in KiB. A small
// process of its own: what a process held before it became the program counts as the program's.
int main(int argc, char** argv) {
    if (argc < 2) return 2;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", 1, 0);
    pid_t child = 0;
    int status = -1;
    rusage used{};
    if (posix_spawnp(&child, argv[1], &actions, nullptr, argv + 1, environ) != 0 || wait4(child, &status, 0, &used) < 0)
        return 1;
    constexpr double kMicrosecond = 1e-6;
    const auto seconds = static_cast<double>(used.ru_utime.tv_sec + used.ru_stime.tv_sec);
    const auto microseconds = static_cast<double>(used.ru_utime.tv_usec + used.ru_stime.tv_usec);
    std::printf("%.6f %ld\n", seconds + kMicrosecond * microseconds, used.ru_maxrss);
    return status == 0 ? 0 : 1;
}
