#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "host/hv_array.h"
#include "host/messages.h"
#include "host/values.h"
#include "memory_host/orvex/calls/call_by_name.h"
#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/calls/functions.h"
#include "memory_host/orvex/values/values.h"

/// Host values and host failures as tests write them down.
namespace ks_test {

inline HvArrayPtr text(std::string_view utf8) { return ks_host::makeText(utf8); }
inline HvArrayPtr text(std::u16string_view units) { return ks_host::makeText(units); }
inline HvArrayPtr number(double value) { return ks_host::makeDouble(value); }
inline HvArrayPtr logical(bool value) { return ks_host::makeLogical(value); }
/// A column of numbers.
template <class Number>
HvArrayPtr numbers(hvClassID classID, std::initializer_list<Number> values) {
    HvArrayPtr column(hvCreateNumericMatrix(values.size(), 1, classID, hvREAL));
    std::copy(values.begin(), values.end(), static_cast<Number*>(hvGetDataForWriting(column.get())));
    return column;
}
/// A column of the first objects of the values.
inline HvArrayPtr objects(std::initializer_list<const hvArray*> values) {
    orvex::Objects list;
    for (const hvArray* const value : values) list.push_back(omGetArrayElement(value, 0));
    return orvex::makeObjectColumn(std::move(list));
}
/// A column of structs without values.
inline HvArrayPtr structOf(std::size_t elements, std::span<const char* const> names) {
    return HvArrayPtr(hvCreateStructArray(1, &elements, static_cast<int>(names.size()), names.data()));
}
inline HvArrayPtr emptyDouble() { return ks_host::makeEmpty(); }

/// Calls the host by name as a script would; the first result, null when there is none.
inline HvArrayPtr call(const char* name, std::initializer_list<const hvArray*> inputs, int results = 1) {
    return std::move(orvex::callByName(name, {inputs.begin(), inputs.size()}, results)[0]);
}
inline HvArrayPtr property(const hvArray* object, const char* name) {
    return HvArrayPtr(hvGetProperty(object, 0, name));
}

/// The key of the host exception that `action` throws, with its text behind a colon; "" when it does not.
template <class Action>
std::string failureOf(Action action) {
    try {
        action();
    } catch (const kssvIException& failure) {
        return failure.messageId().key() + ": " + failure.what();
    }
    return {};
}

/// The key of the host exception that `action` throws, with its arguments ("MissingField UUID 2"); "" when none.
template <class Action>
std::string raisedBy(Action action) {
    try {
        action();
        return "";
    } catch (const kssvIException& error) {
        std::string result = error.messageId().key();
        for (const auto& argument : error.messageId().arguments()) {
            result += ' ';
            if (const auto* const integer = std::get_if<std::int64_t>(&argument)) result += std::to_string(*integer);
            if (const auto* const narrow = std::get_if<std::string>(&argument)) result += *narrow;
        }
        return result;
    }
}

}  // namespace ks_test
