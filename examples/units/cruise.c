/* A car with cruise control, as a unit of FMI 3.0 for co-simulation: the example that "kshmi example --unit" gives out
 * and "kshmi tour" records. Its outputs are called like the ports of the example model. */
#include <math.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#define EXPORT __attribute__((visibility("default")))

enum { OK, ERROR = 3 };
enum {
    SPEED,
    SENSED_SPEED,
    PEDAL,
    SET_SPEED,
    TORQUE,
    SPEED_ERROR,
    PLANT_SPEED,
    ACCELERATION,
    ENGINE_TORQUE,
    REVOLUTIONS,
    BRAKE_FORCE,
    TARGET,
    MASS,
    REALS
};
enum { VALID = 20, SENSED_VALID, PEDAL_VALID, QUALITY, MODE };

static const double kStep = 0.01;

typedef struct {
    double time, speed, integral, values[REALS];
    int64_t mode;
    void* environment;
    void (*log)(void* environment, int status, const char* category, const char* message);
    bool logs;
} Car;

static double clamped(double value, double least, double most) { return fmin(fmax(value, least), most); }

/* Everything that follows from speed and time. */
static void compute(Car* car) {
    double* v = car->values;
    const int64_t mode = car->time < 2 ? 1 : fabs(v[TARGET] - car->speed) < 0.5 ? 3 : 2;
    if (car->logs && mode == 3 && car->mode != 3)
        car->log(car->environment, OK, "logEvents", "the set speed is reached");
    car->mode = mode;
    v[SET_SPEED] = mode == 1 ? 0 : v[TARGET];
    v[SPEED_ERROR] = mode == 1 ? 0 : v[TARGET] - car->speed;
    v[TORQUE] = mode == 1 ? 0 : clamped(60 * v[SPEED_ERROR] + 8 * car->integral, -200, 400);
    v[ENGINE_TORQUE] = fmax(v[TORQUE], 0);
    v[BRAKE_FORCE] = fmax(-v[TORQUE], 0) * 10;
    v[PEDAL] = v[ENGINE_TORQUE] / 400;
    v[ACCELERATION] = (v[ENGINE_TORQUE] * 10 - v[BRAKE_FORCE] - 0.4 * car->speed * car->speed - 120) / v[MASS];
    v[REVOLUTIONS] = 800 + car->speed * 90;
    v[SPEED] = v[SENSED_SPEED] = v[PLANT_SPEED] = car->speed;
}

EXPORT void* fmi3InstantiateCoSimulation(const char* name, const char* token, const char* resources, bool visible,
                                         bool logs, bool usesEvents, bool mayReturnEarly, const uint32_t* wanted,
                                         size_t wantedCount, void* environment,
                                         void (*log)(void*, int, const char*, const char*), void* update) {
    (void)name, (void)resources, (void)visible, (void)usesEvents, (void)mayReturnEarly, (void)wanted;
    (void)wantedCount, (void)update;
    if (strcmp(token, "cruise-1") != 0) return NULL;
    Car* car = calloc(1, sizeof *car);
    if (car == NULL) return NULL;
    car->environment = environment;
    car->log = log;
    car->logs = logs;
    car->speed = 15;
    car->values[TARGET] = 25;
    car->values[MASS] = 1400;
    return car;
}
EXPORT void fmi3FreeInstance(void* car) { free(car); }

EXPORT int fmi3EnterInitializationMode(void* any, bool hasTolerance, double tolerance, double start, bool hasStop,
                                       double stop) {
    (void)hasTolerance, (void)tolerance, (void)hasStop, (void)stop;
    ((Car*)any)->time = start;
    return OK;
}
EXPORT int fmi3ExitInitializationMode(void* car) {
    compute(car);
    return OK;
}
EXPORT int fmi3Terminate(void* car) {
    (void)car;
    return OK;
}

EXPORT int fmi3DoStep(void* any, double time, double size, bool isFinal, bool* needsEvent, bool* terminate,
                      bool* hasReturnedEarly, double* reached) {
    Car* car = any;
    (void)isFinal;
    const int count = (int)fmax(1, ceil(size / kStep - 1e-9));
    for (int i = 0; i < count; ++i) {
        car->time = time + size * i / count;
        compute(car);
        const double saturated = car->values[TORQUE] == 400 || car->values[TORQUE] == -200;
        if (!saturated) car->integral += car->values[SPEED_ERROR] * size / count;
        car->speed = fmax(0, car->speed + car->values[ACCELERATION] * size / count);
    }
    car->time = time + size;
    compute(car);
    *needsEvent = *terminate = *hasReturnedEarly = false;
    *reached = time + size;
    return OK;
}

EXPORT int fmi3GetFloat64(void* car, const uint32_t* references, size_t count, double* values, size_t valueCount) {
    if (count != valueCount) return ERROR;
    for (size_t i = 0; i < count; ++i) {
        if (references[i] >= REALS) return ERROR;
        values[i] = ((Car*)car)->values[references[i]];
    }
    return OK;
}
EXPORT int fmi3SetFloat64(void* car, const uint32_t* references, size_t count, const double* values,
                          size_t valueCount) {
    if (count != valueCount) return ERROR;
    for (size_t i = 0; i < count; ++i) {
        if (references[i] != TARGET && references[i] != MASS) return ERROR;
        ((Car*)car)->values[references[i]] = values[i];
    }
    return OK;
}
EXPORT int fmi3GetBoolean(void* car, const uint32_t* references, size_t count, bool* values, size_t valueCount) {
    (void)car, (void)references;
    if (count != valueCount) return ERROR;
    for (size_t i = 0; i < count; ++i) values[i] = true;
    return OK;
}
EXPORT int fmi3GetInt64(void* car, const uint32_t* references, size_t count, int64_t* values, size_t valueCount) {
    if (count != valueCount) return ERROR;
    for (size_t i = 0; i < count; ++i) values[i] = references[i] == MODE ? ((Car*)car)->mode : 1;
    return OK;
}
EXPORT int fmi3GetString(void* car, const uint32_t* references, size_t count, const char** values, size_t valueCount) {
    (void)car, (void)references;
    if (count != valueCount) return ERROR;
    for (size_t i = 0; i < count; ++i) values[i] = "good";
    return OK;
}
