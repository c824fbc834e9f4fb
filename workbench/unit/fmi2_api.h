#pragma once

#include <cstddef>

/// The C interface of FMI 2.0 for Co-Simulation, as far as it is used, in own words.
namespace workbench::fmi2 {

using Component = void*;
using State = void*;
using Reference = unsigned int;
using Boolean = int;

enum Status : int { ok = 0, warning = 1, discard = 2, error = 3, fatal = 4, pending = 5 };
enum Kind : int { coSimulation = 1 };
enum StatusKind : int { lastSuccessfulTime = 2, terminated = 3 };

using Logger = void (*)(void* environment, const char* instance, Status status, const char* category,
                        const char* message, ...);

struct Callbacks {
    Logger logger;
    void* (*allocate)(std::size_t count, std::size_t size);
    void (*release)(void* memory);
    void (*stepFinished)(void* environment, Status status);
    void* environment;
};

using Simple = Status (*)(Component);
template <class Value>
using Get = Status (*)(Component, const Reference*, std::size_t, Value*);
template <class Value>
using Set = Status (*)(Component, const Reference*, std::size_t, const Value*);

using Instantiate = Component (*)(const char* name, Kind kind, const char* token, const char* resources,
                                  const Callbacks* callbacks, Boolean isVisible, Boolean logs);
using FreeInstance = void (*)(Component);
using SetupExperiment = Status (*)(Component, Boolean hasTolerance, double tolerance, double start, Boolean hasStop,
                                   double stop);
using DoStep = Status (*)(Component, double time, double size, Boolean keepsNoState);
using GetRealStatus = Status (*)(Component, StatusKind, double*);
using GetBooleanStatus = Status (*)(Component, StatusKind, Boolean*);
using TakeState = Status (*)(Component, State*);
using GiveState = Status (*)(Component, State);

}  // namespace workbench::fmi2
