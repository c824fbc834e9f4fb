/* A unit of FMI 2.0 that has an output of each type, counts what is read of it, and misbehaves as it is told. */
#include <math.h>
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <unistd.h>

#include "fmi.h"
#include "hostile.h"
#include "telling.h"

enum { SINE, FED, FETCHED_REALS, GAIN = 10, INPUT = 11, WIDE = 100 }; /* reals; from WIDE on any number of them */
enum { COUNT, MODE, BEHAVIOUR, FETCHED, WISH };                       /* integers */
enum { WELL, CRASH, HANG, FAIL, DISCARD, FINISH, LEAVE, SPAM, ABORT_AT_END, CHATTER, HANG_AT_END, FAIL_AT_START };
enum {
    CLOSE_FILES = FAIL_AT_START + 1,
    LEAVE_PROCESSES,
    STAND_STILL,
    COMPLAIN,
    LOSE_TRACK,
    DIE,
    WARN,
    THREAD,
    TALK,
    WRITE_OVER = 1000
};
enum { COMPLAINTS = 1000, LONG = 20000 };

typedef struct {
    const Fmi2Callbacks* callbacks;
    double time, gain, input;
    int steps, behaviour, fetched, wish;
    char text[64], name[64], words[LONG + 1];
    int log;
} Unit;

FMI_EXPORT void* fmi2Instantiate(const char* name, int type, const char* guid, const char* resources,
                                 const Fmi2Callbacks* callbacks, int visible, int log) {
    (void)visible;
    tell("instantiate, log %d, %s", log, strstr(resources, "%25%20a/") != NULL ? "escaped" : "as it is");
    tellOfProcess();
    if (type != 1 || strcmp(guid, "probe") != 0 || strncmp(resources, "file:///", 8) != 0) {
        callbacks->logger(callbacks->environment, name, FMI_ERROR, "logStatusError", "guid %s is not mine", guid);
        return NULL;
    }
    Unit* unit = callbacks->allocate(1, sizeof *unit);
    unit->callbacks = callbacks;
    unit->gain = 1;
    unit->log = log;
    snprintf(unit->name, sizeof unit->name, "%s", name);
    return unit;
}

FMI_EXPORT void fmi2FreeInstance(void* any) {
    Unit* unit = any;
    static int count;
    tell("free");
    if (++count == 1) unit->callbacks->release(unit);
}

FMI_EXPORT int fmi2SetupExperiment(void* unit, int hasTolerance, double tolerance, double start, int hasStop,
                                   double stop) {
    tell("setup, tolerance %d %g, start %g, stop %d %g", hasTolerance, tolerance, start, hasStop, stop);
    ((Unit*)unit)->time = start;
    return FMI_OK;
}

FMI_EXPORT int fmi2EnterInitializationMode(void* unit) {
    tell("enter initialization");
    return ((Unit*)unit)->behaviour == FAIL_AT_START ? FMI_ERROR : FMI_OK;
}
FMI_EXPORT int fmi2ExitInitializationMode(void* unit) {
    (void)unit;
    tell("exit initialization");
    return FMI_OK;
}

FMI_EXPORT int fmi2Terminate(void* any) {
    Unit* unit = any;
    tell("terminate");
    if (unit->behaviour == ABORT_AT_END) abort();
    while (unit->behaviour == HANG_AT_END) pause();
    return FMI_OK;
}

static void say(Unit* unit, int status, const char* text) {
    unit->callbacks->logger(unit->callbacks->environment, unit->name, status, "probe", "%s at %g", text, unit->time);
}

static void* saySo(void* unit) {
    say(unit, FMI_ERROR, "from a thread");
    return NULL;
}

static int misbehave(Unit* unit) {
    pthread_t thread;
    switch (unit->behaviour) {
        case CRASH:
            say(unit, FMI_ERROR, "about to crash");
            raise(SIGSEGV);
            return FMI_OK;
        case HANG:
            prctl(PR_SET_NAME, "kshmi-hung");
            for (;;) pause();
        case FAIL:
            say(unit, FMI_ERROR, "too hot");
            return FMI_ERROR;
        case DISCARD:
            unit->time += 0.2;
            return FMI_DISCARD;
        case LOSE_TRACK:
        case FINISH:
            return FMI_DISCARD;
        case LEAVE:
            exit(3);
        case CLOSE_FILES:
            closeAllFiles();
            return FMI_OK;
        case LEAVE_PROCESSES:
            leaveProcesses();
            unit->behaviour = WELL;
            return FMI_OK;
        case STAND_STILL:
            raise(SIGSTOP);
            return FMI_OK;
        case COMPLAIN:
            for (int i = 0; i < COMPLAINTS; ++i) say(unit, FMI_ERROR, "\xC3\x28 \x1B[31m %s %n");
            return FMI_OK;
        case DIE:
            return FMI_FATAL;
        case WARN:
            return FMI_WARNING;
        case TALK:
            say(unit, FMI_OK, memset(unit->words, 'w', LONG));
            return FMI_OK;
        case THREAD:
            if (pthread_create(&thread, NULL, saySo, unit) == 0) pthread_join(thread, NULL);
            return FMI_OK;
        default:
            return FMI_OK;
    }
}

FMI_EXPORT int fmi2DoStep(void* any, double time, double size, int final) {
    Unit* unit = any;
    int status = FMI_OK;
    tell("step %g + %g, final %d", time, size, final);
    if (time > 1 - 1e-9) status = misbehave(unit);
    if (status > FMI_WARNING) return status;
    unit->time = time + size;
    ++unit->steps;
    if (unit->behaviour >= WRITE_OVER) writeOverSharedMemory((unsigned)unit->behaviour);
    if (unit->behaviour == CHATTER) say(unit, FMI_OK, "stepped");
    if (unit->behaviour == SPAM) puts("spam on standard output"), raise(SIGKILL);
    return status;
}

FMI_EXPORT int fmi2GetRealStatus(void* unit, int kind, double* value) {
    *value = ((Unit*)unit)->behaviour == LOSE_TRACK ? -1 : ((Unit*)unit)->time;
    return ((Unit*)unit)->behaviour == LOSE_TRACK ? FMI_DISCARD : kind == 2 ? FMI_OK : FMI_ERROR;
}
FMI_EXPORT int fmi2GetBooleanStatus(void* unit, int kind, int* value) {
    *value = ((Unit*)unit)->behaviour == FINISH;
    return kind == 3 && ((Unit*)unit)->behaviour != LOSE_TRACK ? FMI_OK : FMI_ERROR;
}

FMI_EXPORT int fmi2GetReal(void* any, const unsigned* references, size_t count, double* values) {
    Unit* unit = any;
    unit->fetched += (int)count;
    for (size_t i = 0; i < count; ++i) switch (references[i]) {
            case SINE:
                values[i] = sin(unit->time);
                break;
            case FED:
                values[i] = unit->gain * unit->input;
                break;
            default:
                values[i] = unit->time * 1.1 + references[i];
        }
    return FMI_OK;
}

FMI_EXPORT int fmi2GetInteger(void* any, const unsigned* references, size_t count, int* values) {
    Unit* unit = any;
    for (size_t i = 0; i < count; ++i)
        values[i] = references[i] == COUNT     ? -unit->steps
                    : references[i] == MODE    ? unit->steps % 3 + 1
                    : references[i] == FETCHED ? unit->fetched
                    : references[i] == WISH    ? unit->wish
                                               : unit->behaviour;
    return FMI_OK;
}

FMI_EXPORT int fmi2GetBoolean(void* any, const unsigned* references, size_t count, int* values) {
    (void)references;
    for (size_t i = 0; i < count; ++i) values[i] = ((Unit*)any)->steps % 2 == 0;
    return FMI_OK;
}

FMI_EXPORT int fmi2GetString(void* any, const unsigned* references, size_t count, const char** values) {
    Unit* unit = any;
    snprintf(unit->text, sizeof unit->text, unit->behaviour == COMPLAIN ? "\xC3\x28 %d" : "step \"%d\",\nnext",
             unit->steps);
    for (size_t i = 0; i < count; ++i) values[i] = references[i] == 0 ? unit->text : NULL;
    return FMI_OK;
}

FMI_EXPORT int fmi2SetReal(void* any, const unsigned* references, size_t count, const double* values) {
    Unit* unit = any;
    tell("set real %u to %g", references[0], values[0]);
    for (size_t i = 0; i < count; ++i) *(references[i] == GAIN ? &unit->gain : &unit->input) = values[i];
    return FMI_OK;
}

FMI_EXPORT int fmi2SetInteger(void* any, const unsigned* references, size_t count, const int* values) {
    tell("set integer %u to %d", references[0], values[0]);
    for (size_t i = 0; i < count; ++i)
        *(references[i] == WISH ? &((Unit*)any)->wish : &((Unit*)any)->behaviour) = values[i];
    return FMI_OK;
}

/* What has no variable to set has no function: fmi2SetBoolean, fmi2SetString. */

/* A state is when it was taken. */
FMI_EXPORT int fmi2GetFMUstate(void* unit, void** state) {
    tell("get state, %s", *state == NULL ? "new" : "again");
    if (*state == NULL) *state = malloc(sizeof(Unit));
    memcpy(*state, unit, sizeof(Unit));
    return FMI_OK;
}
FMI_EXPORT int fmi2SetFMUstate(void* unit, void* state) {
    tell("set state");
    memcpy(unit, state, sizeof(Unit));
    /* What was too much for it is not any more. */
    ((Unit*)unit)->behaviour = WELL;
    return FMI_OK;
}
FMI_EXPORT int fmi2FreeFMUstate(void* unit, void** state) {
    (void)unit;
    tell("free state");
    free(*state);
    *state = NULL;
    return FMI_OK;
}
