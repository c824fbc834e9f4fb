#include "telling.h"

#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

enum { MOST_FILES = 1024 };

void tell(const char* format, ...) {
    const char* const path = getenv("KS_PROBE_CALLS");
    FILE* const file = path != NULL ? fopen(path, "a") : NULL;
    if (file == NULL) return;
    va_list arguments;
    va_start(arguments, format);
    vfprintf(file, format, arguments);
    va_end(arguments);
    fputc('\n', file);
    fclose(file);
}

static int isSame(const char* one, const char* other) {
    struct stat a, b;
    return stat(one, &a) == 0 && stat(other, &b) == 0 && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

void tellOfProcess(void) {
    int files = 0, handlers = 0;
    struct sigaction action;
    for (int file = STDERR_FILENO + 1; file < MOST_FILES; ++file) files += fcntl(file, F_GETFD) >= 0;
    for (int number = 1; number < 32; ++number)
        handlers += sigaction(number, NULL, &action) == 0 && action.sa_handler != SIG_DFL;
    tell("%d files, %d handlers, %s input, %s output", files, handlers,
         isSame("/dev/stdin", "/dev/null") ? "no" : "its", isSame("/dev/stdout", "/dev/stderr") ? "error" : "its");
}
