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
#include "memory_host/orvex/calls/call_by_name.h"

/// Host values and host failures as tests write them down.
namespace ks_test {

inline HvArrayPtr text(std::string_view utf8) { return HvArrayPtr(matrix::create(utf8.data(), utf8.size())); }
inline HvArrayPtr text(std::u16string_view units) { return HvArrayPtr(matrix::create(units.data(), units.size())); }
inline HvArrayPtr number(double value) { return HvArrayPtr(hvCreateDoubleScalar(value)); }
inline HvArrayPtr logical(bool value) { return HvArrayPtr(hvCreateLogicalScalar(value)); }
/// A column of numbers.
template <class Number>
HvArrayPtr numbers(hvClassID classID, std::initializer_list<Number> values) {
    HvArrayPtr column(hvCreateNumericMatrix(values.size(), 1, classID, hvREAL));
    std::copy(values.begin(), values.end(), static_cast<Number*>(hvGetDataForWriting(column.get())));
    return column;
}
/// A column of structs without values.
inline HvArrayPtr structOf(std::size_t elements, std::span<const char* const> names) {
    return HvArrayPtr(hvCreateStructArray(1, &elements, static_cast<int>(names.size()), names.data()));
}
inline HvArrayPtr emptyDouble() { return HvArrayPtr(hvCreateNumericMatrix(0, 0, hvDOUBLE_CLASS, hvREAL)); }

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
