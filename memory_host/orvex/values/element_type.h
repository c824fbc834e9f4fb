#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <type_traits>

#include "host/hv_array.h"

namespace orvex {

/// What the classes are called, by `hvClassID`; the first name is that of values that are gone.
inline constexpr std::array<std::string_view, hvOBJECT_CLASS + 1> kClassNames{
    "expired", "double", "struct", "logical", "char",   "cell",  "single", "int8",
    "uint8",   "int16",  "uint16", "int32",   "uint32", "int64", "uint64", "object"};

/// Calls `visit(std::type_identity<T>())`, where T is the type of the elements in arrays of that numeric class or in
/// logical ones. Answers whether the class is one of those; else nothing is called.
template <class Visit>
bool withElementType(hvClassID classId, Visit visit) {
    const auto with = [&]<class T>(std::type_identity<T> type) { return visit(type), true; };
    switch (classId) {
        case hvDOUBLE_CLASS:
            return with(std::type_identity<double>());
        case hvSINGLE_CLASS:
            return with(std::type_identity<float>());
        case hvLOGICAL_CLASS:
            return with(std::type_identity<bool>());
        case hvINT8_CLASS:
            return with(std::type_identity<std::int8_t>());
        case hvUINT8_CLASS:
            return with(std::type_identity<std::uint8_t>());
        case hvINT16_CLASS:
            return with(std::type_identity<std::int16_t>());
        case hvUINT16_CLASS:
            return with(std::type_identity<std::uint16_t>());
        case hvINT32_CLASS:
            return with(std::type_identity<std::int32_t>());
        case hvUINT32_CLASS:
            return with(std::type_identity<std::uint32_t>());
        case hvINT64_CLASS:
            return with(std::type_identity<std::int64_t>());
        case hvUINT64_CLASS:
            return with(std::type_identity<std::uint64_t>());
        default:
            return false;
    }
}

}  // namespace orvex
