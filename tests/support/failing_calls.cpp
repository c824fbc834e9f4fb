#include "tests/support/failing_calls.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

namespace {

using ks_test::g_plan;
using ks_test::Turn;

bool isToFail(const char* name) {
    if (g_plan.at == 0 || ++g_plan.calls != g_plan.at) return false;
    g_plan.reached = name;
    constexpr int kCrashed = 77;
    if (g_plan.turn == Turn::endsTheProgram) ::_exit(kCrashed);
    if (g_plan.turn == Turn::isInterrupted) return ::kill(::getpid(), g_plan.error) != 0;
    errno = g_plan.error;
    return true;
}

}  // namespace

#define KS_HMI_WRAPPED(type, name, parameters, arguments) \
    type __real_##name parameters;                        \
    type __wrap_##name parameters;                        \
    type __wrap_##name parameters { return isToFail(#name) ? -1 : __real_##name arguments; }

extern "C" {
KS_HMI_WRAPPED(int, mkostemp, (char* path, int flags), (path, flags))
KS_HMI_WRAPPED(ssize_t, write, (int file, const void* data, size_t size), (file, data, size))
KS_HMI_WRAPPED(int, fsync, (int file), (file))
KS_HMI_WRAPPED(int, close, (int file), (file))
KS_HMI_WRAPPED(int, rename, (const char* from, const char* to), (from, to))
KS_HMI_WRAPPED(int, fchmod, (int file, mode_t mode), (file, mode))
KS_HMI_WRAPPED(int, fstat, (int file, struct stat* status), (file, status))
KS_HMI_WRAPPED(int, stat, (const char* path, struct stat* status), (path, status))
KS_HMI_WRAPPED(int, faccessat, (int folder, const char* path, int mode, int flags), (folder, path, mode, flags))
KS_HMI_WRAPPED(int, flock, (int file, int operation), (file, operation))
KS_HMI_WRAPPED(ssize_t, listxattr, (const char* path, char* names, size_t size), (path, names, size))
KS_HMI_WRAPPED(int, fremovexattr, (int file, const char* name), (file, name))
KS_HMI_WRAPPED(int, fsetxattr, (int file, const char* name, const void* value, size_t size, int flags),
               (file, name, value, size, flags))
int __real_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...) { return isToFail("open") ? -1 : __real_open(path, flags); }
}
