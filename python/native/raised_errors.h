#pragma once

#include "python/native/host_turn.h"

/// How failures pass between Python and the host.
namespace ks_hmi_python {

/// Throws the host's exception for what Python has raised: that of a `HostError`, else one under "python:errors" with
/// the type's name as its key. Back in Python, the exception is the cause of the `HostError` that is raised there; one
/// that is meant to end the program is raised itself.
[[noreturn]] void throwAsHost(const py::error_already_set& error);
/// Raises it where the host has made something else of it; one that is no such is forgotten.
void raiseWhatEnds();
/// Lets go of such an exception that nobody has asked for.
void forgetRaised();

}  // namespace ks_hmi_python
