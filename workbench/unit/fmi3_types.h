#pragma once

#include <bit>
#include <cstdint>
#include <type_traits>

#include "workbench/unit/unit_value.h"

/// The types of FMI 3.0 as C has them.
namespace workbench::fmi3 {

/// What reads and writes one type of numbers.
struct NumberFunctions {
    const char* get;
    const char* set;
};

constexpr NumberFunctions functionsOf(UnitType type) {
    switch (type) {
        case UnitType::float32:
            return {"fmi3GetFloat32", "fmi3SetFloat32"};
        case UnitType::int8:
            return {"fmi3GetInt8", "fmi3SetInt8"};
        case UnitType::uint8:
            return {"fmi3GetUInt8", "fmi3SetUInt8"};
        case UnitType::int16:
            return {"fmi3GetInt16", "fmi3SetInt16"};
        case UnitType::uint16:
            return {"fmi3GetUInt16", "fmi3SetUInt16"};
        case UnitType::int32:
            return {"fmi3GetInt32", "fmi3SetInt32"};
        case UnitType::uint32:
            return {"fmi3GetUInt32", "fmi3SetUInt32"};
        case UnitType::int64:
        case UnitType::enumeration:
            return {"fmi3GetInt64", "fmi3SetInt64"};
        case UnitType::uint64:
            return {"fmi3GetUInt64", "fmi3SetUInt64"};
        case UnitType::boolean:
            return {"fmi3GetBoolean", "fmi3SetBoolean"};
        case UnitType::string:
            return {"fmi3GetString", "fmi3SetString"};
        case UnitType::binary:
            return {"fmi3GetBinary", "fmi3SetBinary"};
        case UnitType::float64:
            break;
    }
    return {"fmi3GetFloat64", "fmi3SetFloat64"};
}

/// Calls `work` with a value of the C type.
template <class Work>
void withNumberType(UnitType type, Work work) {
    switch (type) {
        case UnitType::float32:
            return work(float{});
        case UnitType::int8:
            return work(std::int8_t{});
        case UnitType::uint8:
            return work(std::uint8_t{});
        case UnitType::int16:
            return work(std::int16_t{});
        case UnitType::uint16:
            return work(std::uint16_t{});
        case UnitType::int32:
            return work(std::int32_t{});
        case UnitType::uint32:
            return work(std::uint32_t{});
        case UnitType::int64:
        case UnitType::enumeration:
            return work(std::int64_t{});
        case UnitType::uint64:
            return work(std::uint64_t{});
        case UnitType::boolean:
            return work(bool{});
        default:
            return work(double{});
    }
}

template <class T>
std::uint64_t slotOf(T value) {
    if constexpr (std::is_floating_point_v<T>)
        return std::bit_cast<std::uint64_t>(static_cast<double>(value));
    else
        return static_cast<std::uint64_t>(value);
}

template <class T>
T valueOf(std::uint64_t slot) {
    if constexpr (std::is_floating_point_v<T>)
        return static_cast<T>(std::bit_cast<double>(slot));
    else
        return static_cast<T>(slot);
}

}  // namespace workbench::fmi3
