/* A unit of FMI 3.0 with outputs of all types, arrays among them, which has events and returns early when it is told.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "fmi.h"
#include "telling.h"

enum { ARRAY = 20, MATRIX = 21, TIME = 22, FED = 23, INPUT = 24, GEAR = 25, EVENTS = 30, SIZE = 40 };
enum { WELL, EARLY, EVENT, FINISH, STAND_STILL, DISCARD, DIE };
enum { MOST = 16 };

typedef struct {
    Fmi3Logger logger;
    void* environment;
    double time, input[MOST];
    uint64_t size;
    int64_t behaviour;
    int32_t events, steps, gear;
    bool usesEvents, isInEventMode, isConfiguring, isInitializing;
    char text[32];
    uint8_t bytes[2];
} Unit;

FMI_EXPORT void* fmi3InstantiateCoSimulation(const char* name, const char* token, const char* resources, bool visible,
                                             bool logs, bool usesEvents, bool mayReturnEarly, const uint32_t* wanted,
                                             size_t wantedCount, void* environment, Fmi3Logger logger, void* update) {
    (void)name, (void)visible, (void)wanted, (void)wantedCount, (void)update;
    tell("instantiate, log %d, events %d, early %d, %s", logs, usesEvents, mayReturnEarly,
         access(resources, R_OK) == 0 ? "resources" : "none");
    if (strcmp(token, "probe") != 0 || resources[strlen(resources) - 1] != '/') return NULL;
    Unit* unit = calloc(1, sizeof *unit);
    unit->logger = logger;
    unit->environment = environment;
    unit->size = 3;
    unit->usesEvents = usesEvents;
    return unit;
}
FMI_EXPORT void fmi3FreeInstance(void* unit) {
    tell("free");
    free(unit);
}

/* Calls out of order are errors. */
static int expect(Unit* unit, bool holds, const char* call) {
    if (!holds) unit->logger(unit->environment, FMI_ERROR, "order", call);
    return holds ? FMI_OK : FMI_ERROR;
}

FMI_EXPORT int fmi3EnterConfigurationMode(void* any) {
    tell("enter configuration");
    ((Unit*)any)->isConfiguring = true;
    return FMI_OK;
}
FMI_EXPORT int fmi3ExitConfigurationMode(void* any) {
    tell("exit configuration");
    ((Unit*)any)->isConfiguring = false;
    return FMI_OK;
}
FMI_EXPORT int fmi3EnterInitializationMode(void* any, bool hasTolerance, double tolerance, double start, bool hasStop,
                                           double stop) {
    Unit* unit = any;
    tell("enter initialization, tolerance %d %g, start %g, stop %d %g", hasTolerance, tolerance, start, hasStop, stop);
    unit->time = start;
    unit->isInitializing = true;
    return expect(unit, !unit->isConfiguring, "configuration is not over");
}
FMI_EXPORT int fmi3ExitInitializationMode(void* any) {
    tell("exit initialization");
    Unit* unit = any;
    unit->isInitializing = false;
    unit->isInEventMode = unit->usesEvents;
    return FMI_OK;
}
FMI_EXPORT int fmi3EnterEventMode(void* any) {
    tell("enter events");
    Unit* unit = any;
    const int status = expect(unit, unit->usesEvents && !unit->isInEventMode, "no event mode now");
    unit->isInEventMode = true;
    return status;
}
FMI_EXPORT int fmi3EnterStepMode(void* any) {
    tell("enter steps");
    Unit* unit = any;
    const int status = expect(unit, unit->isInEventMode, "not in event mode");
    unit->isInEventMode = false;
    return status;
}
FMI_EXPORT int fmi3UpdateDiscreteStates(void* any, bool* again, bool* terminate, bool* nominals, bool* states,
                                        bool* hasNext, double* next) {
    Unit* unit = any;
    *again = unit->time > 0 && unit->events % 2 == 0;
    *terminate = *nominals = *states = false;
    *hasNext = true;
    *next = 0.25;
    if (unit->time > 0) ++unit->events;
    return expect(unit, unit->isInEventMode, "not in event mode");
}
FMI_EXPORT int fmi3Terminate(void* unit) {
    tell("terminate");
    return expect(unit, !((Unit*)unit)->isInEventMode, "still in event mode");
}

FMI_EXPORT int fmi3DoStep(void* any, double time, double size, bool final, bool* needsEvent, bool* terminate,
                          bool* early, double* reached) {
    Unit* unit = any;
    tell("step %g + %g, final %d", time, size, final);
    *reached = time + size;
    if (unit->behaviour == DIE) return FMI_FATAL;
    if (unit->behaviour == DISCARD && time >= 1) return FMI_DISCARD;
    *terminate = unit->behaviour == FINISH && time >= 1;
    *early = unit->behaviour == STAND_STILL;
    if (*early) *reached = time;
    if (unit->behaviour == EARLY && time < 0.75 && time + size > 0.75) {
        *early = true;
        *reached = 0.75;
    }
    *needsEvent = unit->behaviour == EVENT && unit->usesEvents;
    unit->time = *reached;
    ++unit->steps;
    return expect(unit, !unit->isInEventMode, "not in step mode");
}

FMI_EXPORT int fmi3GetFloat64(void* any, const uint32_t* references, size_t count, double* values, size_t valueCount) {
    Unit* unit = any;
    size_t at = 0;
    for (size_t i = 0; i < count; ++i) switch (references[i]) {
            case ARRAY:
            case FED:
                for (uint64_t k = 0; k < unit->size && at < valueCount; ++k)
                    values[at++] = references[i] == FED ? unit->input[k] : (double)k + unit->time;
                break;
            case MATRIX:
                for (int k = 0; k < 4; ++k) values[at++] = k;
                break;
            default:
                values[at++] = unit->time;
        }
    return at == valueCount ? FMI_OK : FMI_ERROR;
}

#define NUMBERS(Name, Type, value)                                                                                  \
    FMI_EXPORT int fmi3Get##Name(void* any, const uint32_t* references, size_t count, Type* values, size_t total) { \
        Unit* unit = any;                                                                                           \
        (void)unit, (void)references, (void)count;                                                                  \
        for (size_t i = 0; i < total; ++i) values[i] = (Type)(value);                                               \
        return FMI_OK;                                                                                              \
    }
NUMBERS(Float32, float, 0.1)
NUMBERS(Int8, int8_t, -8)
NUMBERS(UInt8, uint8_t, 200)
NUMBERS(Int16, int16_t, -16000)
NUMBERS(UInt16, uint16_t, 60000)
NUMBERS(Int32, int32_t, references[i] == EVENTS ? unit->events : references[i] == GEAR ? unit->gear : -unit->steps)
NUMBERS(UInt32, uint32_t, 4000000000U)
NUMBERS(Int64, int64_t, INT64_MIN + unit->steps)
NUMBERS(UInt64, uint64_t, UINT64_MAX)
NUMBERS(Boolean, bool, unit->steps % 2 == 0)

FMI_EXPORT int fmi3GetString(void* any, const uint32_t* references, size_t count, const char** values, size_t total) {
    Unit* unit = any;
    (void)references, (void)count;
    snprintf(unit->text, sizeof unit->text, "s%d", unit->steps);
    for (size_t i = 0; i < total; ++i) values[i] = unit->text;
    return FMI_OK;
}
FMI_EXPORT int fmi3GetBinary(void* any, const uint32_t* references, size_t count, size_t* sizes, const uint8_t** values,
                             size_t total) {
    Unit* unit = any;
    (void)references, (void)count;
    unit->bytes[0] = 0xFF;
    unit->bytes[1] = (uint8_t)unit->steps;
    for (size_t i = 0; i < total; ++i) values[i] = unit->bytes, sizes[i] = 2;
    return FMI_OK;
}

FMI_EXPORT int fmi3SetFloat64(void* any, const uint32_t* references, size_t count, const double* values, size_t total) {
    (void)count;
    for (size_t i = 0; i < total; ++i) tell("set %u[%zu] to %g", references[0], i, values[i]);
    for (size_t i = 0; i < total && i < MOST; ++i) ((Unit*)any)->input[i] = values[i];
    return FMI_OK;
}
FMI_EXPORT int fmi3SetInt32(void* any, const uint32_t* references, size_t count, const int32_t* values, size_t total) {
    Unit* unit = any;
    (void)references, (void)count, (void)total;
    unit->gear = values[0];
    return expect(unit, unit->isInitializing || unit->isInEventMode || !unit->usesEvents,
                  "an input jumps in step mode");
}
FMI_EXPORT int fmi3SetInt64(void* any, const uint32_t* references, size_t count, const int64_t* values, size_t total) {
    (void)count;
    tell("set %u, %zu values to %lld", references[0], total, (long long)values[0]);
    ((Unit*)any)->behaviour = values[0];
    return FMI_OK;
}
FMI_EXPORT int fmi3SetUInt64(void* any, const uint32_t* references, size_t count, const uint64_t* values,
                             size_t total) {
    Unit* unit = any;
    (void)count;
    tell("set %u, %zu values to %llu", references[0], total, (unsigned long long)values[0]);
    unit->size = values[0];
    return expect(unit, unit->isConfiguring && unit->size <= MOST, "not in configuration mode");
}

FMI_EXPORT int fmi3GetFMUState(void* unit, void** state) {
    tell("get state, %s", *state == NULL ? "new" : "again");
    if (*state == NULL) *state = malloc(sizeof(Unit));
    memcpy(*state, unit, sizeof(Unit));
    return FMI_OK;
}
FMI_EXPORT int fmi3SetFMUState(void* unit, void* state) {
    tell("set state");
    memcpy(unit, state, sizeof(Unit));
    /* What was too much for it is not any more. */
    ((Unit*)unit)->behaviour = WELL;
    return FMI_OK;
}
FMI_EXPORT int fmi3FreeFMUState(void* unit, void** state) {
    (void)unit;
    tell("free state");
    free(*state);
    *state = NULL;
    return FMI_OK;
}

FMI_EXPORT int fmi3SetBoolean(void* unit, const uint32_t* references, size_t count, const bool* values, size_t total) {
    (void)unit, (void)count, (void)total;
    tell("set %u to %d", references[0], values[0]);
    return FMI_OK;
}
FMI_EXPORT int fmi3SetString(void* unit, const uint32_t* references, size_t count, const char* const* values,
                             size_t total) {
    (void)unit, (void)count, (void)total;
    tell("set %u to %s", references[0], values[0]);
    return FMI_OK;
}
