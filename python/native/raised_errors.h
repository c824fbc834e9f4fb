#pragma once

#include <vector>

#include "host/messages.h"
#include "python/native/host_turn.h"

/// How failures pass between Python and the host.
namespace ks_hmi_python {

/// What fills the places of a message's text: numbers and texts, in their order.
using MessageArguments = std::vector<resource_core::BaseMsgID::Argument>;
py::tuple pythonOf(const MessageArguments& arguments);
MessageArguments argumentsOf(const py::handle& values);

/// Throws the host's exception for what Python has raised: that of a `HostError`, else one under "python:errors" with
/// the type's name as its key. Back in Python, the exception is the cause of the `HostError` that is raised there; one
/// that is meant to end the program is raised itself.
[[noreturn]] void throwAsHost(const py::error_already_set& error);
/// Raises it where the host has made something else of it; one that is no such is forgotten.
void raiseWhatEnds();
/// Lets go of such an exception that nobody has asked for.
void forgetRaised();

}  // namespace ks_hmi_python
