#pragma once

#include <cstddef>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include "host/hv_array.h"
#include "host/values.h"
#include "memory_host/orvex/calls/call.h"
#include "memory_host/orvex/objects/script_object.h"

/// Host values on the modelling side, beside what everybody makes and reads.
namespace kestrel {

using ks_host::makeDouble;
using ks_host::makeEmpty;
using ks_host::makeEmptyCell;
using ks_host::makeLogical;
using ks_host::makeText;
using ks_host::makeUint32;
using ks_host::textOf;
using ks_host::utf8TextOf;

/// For properties that start as a text without characters.
HvArrayPtr emptyText();

/// The text of a property of an object's first element.
std::u16string textProperty(const hvArray* object, const char* name);
/// The first element of a property as a number; 0.0 when it is empty.
double numberProperty(const hvArray* object, const char* name);

/// In quotes, for messages.
std::string quoted(std::u16string_view text);

/// Calls with one result. Throws as the call does.
HvArrayPtr callForOne(std::string_view name, std::initializer_list<const hvArray*> ins);
/// A flag among a call's inputs (0-based position): a logical, or a number, as a logical. Throws the host's exception
/// for anything else.
bool truthAt(const orvex::Call& call, std::size_t position);
/// Whether a signal object is on a chart, a state or a datum; any other domain is a port's.
bool isOnChart(const hvArray* signal);
/// Throws the host's exception unless the call has exactly that many inputs.
void requireInputs(const orvex::Call& call, std::size_t count);
/// A constructor that takes nothing, or a 1x1 struct with fields for the first `saved` properties of the class. Throws
/// the host's exception, naming the class and the field, for any other value and for a field that is missing.
void constructFromStruct(orvex::ScriptObject& self, std::span<const hvArray* const> arguments, std::size_t saved);
/// Defines the class unless it is defined.
void defineOnce(orvex::ScriptClass definition);

}  // namespace kestrel
