/* The C interfaces of FMI 2.0 and 3.0, as far as the units here offer them, in own words. */
#ifndef KS_TEST_UNITS_FMI_H
#define KS_TEST_UNITS_FMI_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#define FMI_EXPORT __attribute__((visibility("default")))

enum { FMI_OK, FMI_WARNING, FMI_DISCARD, FMI_ERROR, FMI_FATAL };

typedef struct {
    void (*logger)(void* environment, const char* instance, int status, const char* category, const char* message, ...);
    void* (*allocate)(size_t count, size_t size);
    void (*release)(void* memory);
    void (*stepFinished)(void* environment, int status);
    void* environment;
} Fmi2Callbacks;

typedef void (*Fmi3Logger)(void* environment, int status, const char* category, const char* message);

#endif
