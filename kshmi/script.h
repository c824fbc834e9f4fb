#pragma once

#include <cstddef>
#include <string>

#include "host/hv_array.h"

/// The set of instrumented signals as a script handles it: by the names of its class, properties and
/// methods. Positions are 1-based, as scripts count. Everything throws the host's exception on refusal.
namespace kshmi::script {

/// A new, empty set object of that model.
HvArrayPtr newSet(const std::u16string& modelName);
void add(const hvArray* set, const hvArray* signal);
void remove(const hvArray* set, std::size_t position);
/// The signal's object.
HvArrayPtr get(const hvArray* set, std::size_t position);
std::string uuidOf(const hvArray* set, std::size_t position);
/// Has the next signal that is made for the port take that UUID.
void rememberUuid(double blockHandle, int port, const std::string& uuid);
std::size_t count(const hvArray* set);
/// The signals in their saved form.
HvArrayPtr persistence(const hvArray* set);
void setPersistence(hvArray* set, const hvArray* saved);

}  // namespace kshmi::script
