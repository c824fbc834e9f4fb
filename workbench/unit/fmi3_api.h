#pragma once

#include <cstddef>
#include <cstdint>

/// The C interface of FMI 3.0 for Co-Simulation, as far as it is used, in own words.
namespace workbench::fmi3 {

using Instance = void*;
using State = void*;
using Reference = std::uint32_t;
using Binary = const std::uint8_t*;

enum Status : int { ok = 0, warning = 1, discard = 2, error = 3, fatal = 4 };

using Logger = void (*)(void* environment, Status status, const char* category, const char* message);
using IntermediateUpdate = void (*)(void* environment, double time, bool setsInputs, bool getsOutputs, bool isStepDone,
                                    bool mayReturnEarly, bool* returnsEarly, double* returnTime);

using Simple = Status (*)(Instance);
template <class Value>
using Get = Status (*)(Instance, const Reference*, std::size_t, Value*, std::size_t);
template <class Value>
using Set = Status (*)(Instance, const Reference*, std::size_t, const Value*, std::size_t);
using GetBinary = Status (*)(Instance, const Reference*, std::size_t, std::size_t* sizes, Binary*, std::size_t);
using SetBinary = Status (*)(Instance, const Reference*, std::size_t, const std::size_t* sizes, const Binary*,
                             std::size_t);

using Instantiate = Instance (*)(const char* name, const char* token, const char* resources, bool isVisible, bool logs,
                                 bool usesEvents, bool mayReturnEarly, const Reference* intermediate,
                                 std::size_t intermediateCount, void* environment, Logger, IntermediateUpdate);
using FreeInstance = void (*)(Instance);
using EnterInitialization = Status (*)(Instance, bool hasTolerance, double tolerance, double start, bool hasStop,
                                       double stop);
using UpdateDiscreteStates = Status (*)(Instance, bool* needsUpdate, bool* isTerminated, bool* haveNominalsChanged,
                                        bool* haveStatesChanged, bool* hasNextEvent, double* nextEvent);
using DoStep = Status (*)(Instance, double time, double size, bool keepsNoState, bool* needsEvent, bool* isTerminated,
                          bool* hasReturnedEarly, double* lastSuccessfulTime);
using TakeState = Status (*)(Instance, State*);
using GiveState = Status (*)(Instance, State);

}  // namespace workbench::fmi3
