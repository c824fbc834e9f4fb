#pragma once

#include <cstddef>
#include <string>

#include "host/hv_array.h"

/// A model's sets, of signals and of clients, as a script handles them: by the names of their classes, properties
/// and methods. Positions are 1-based, as scripts count. Everything throws the host's exception on refusal.
namespace workbench::script {

/// A new, empty set of signals of that model.
HvArrayPtr newSet(const std::u16string& modelName);
/// A new, empty set of clients of that model.
HvArrayPtr newClientSet(const std::u16string& modelName);
/// Renames a set of clients, and what it holds.
void renameClientSet(hvArray* set, const std::u16string& modelName);
/// The object of an open model.
HvArrayPtr modelObject(const std::u16string& modelName);

void add(const hvArray* set, const hvArray* record);
void remove(const hvArray* set, std::size_t position);
std::string uuidOf(const hvArray* set, std::size_t position);
/// Has the next signal that is made for the port take that UUID.
void rememberUuid(double blockHandle, int port, const std::string& uuid);
std::size_t count(const hvArray* set);
/// The signals or clients in their saved form.
HvArrayPtr persistence(const hvArray* set);
void setPersistence(hvArray* set, const hvArray* saved);

}  // namespace workbench::script
