#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/api.h"
#include "host/hv_array.h"
#include "host/object_system.h"
#include "memory_host/orvex/account/ledger.h"

/// What this host does with values beyond the operations in host/. Thread: the interpreter thread only.
namespace orvex {

/// The elements of an object array.
using Objects = std::vector<hos::ObjectInterface>;

/// An empty double array, 0x0. Cannot be made to fail but for want of memory.
OX_API HvArrayPtr makeEmpty(const Site& site = "[]");
/// An N x 1 object array; counts as creating a value.
OX_API HvArrayPtr makeObjectColumn(Objects objects, const Site& site = "makeObjectColumn");

/// An N x 1 struct array of these fields: `values` are those of the first element in the fields' order, then those of
/// the second, null for none. It takes them over. Counts as creating a value; throws as that does, also for a value
/// that is in a container.
OX_API HvArrayPtr makeStructColumn(std::span<const char* const> fieldNames, std::span<HvArrayPtr> values,
                                   const Site& site = "makeStructColumn");

/// Class and size for messages: "double 1x1", "struct 2x1", "null".
OX_API std::string describeValue(const hvArray* value);

/// Replaces a field of an element by a value that a struct or cell array holds, which both hold from then on: nobody
/// changes a value while it is in a container. Null stands for no value. Counts as writing a field, and throws as that
/// does; also for a value that is in no container.
OX_API void shareField(hvArray* structArray, std::size_t index, const char* name, const hvArray* value);

/// Has elements of a struct array that hold the same text, numbers or empty struct in a field as the one in front of
/// them share it: it takes less room and reads as before. Throws for any other value.
OX_API void shareRepeats(hvArray* structArray);
/// Struct arrays of the same fields, one behind the other as one N x 1; the values are shared with them. It is from a
/// saved file when the first one is. Counts as creating a value. Throws for other values, and when there are none.
OX_API HvArrayPtr joinedColumns(std::span<const HvArrayPtr> columns);

/// One element of a struct array.
struct StructElement {
    const hvArray* structArray = nullptr;  ///< not owned
    std::size_t index = 0;                 ///< 0-based
};
/// Whether two elements of struct arrays hold the same texts, numbers and empty structs in the same fields. False also
/// where that is not seen at once, as of other values.
OX_API bool areSeenToBeSame(const StructElement& one, const StructElement& other) noexcept;
/// Elements of struct arrays that have the fields of `absent`, one behind the other as one N x 1. What they have not
/// set is as in `absent`, a 1 x 1 struct. The values are shared with them. Counts as creating a value. Throws for other
/// values and for elements that are not there.
OX_API HvArrayPtr gatheredElements(std::span<const StructElement> elements, const hvArray* absent);

/// Marks a struct array as read from a saved file (its class word is then 18). Throws for any other value.
OX_API void markAsPersisted(hvArray* structArray);

}  // namespace orvex
