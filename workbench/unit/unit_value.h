#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/import/fmi_description.h"

namespace workbench {

/// What the variables of a unit hold. Enumerations are whole numbers.
enum class UnitType : std::uint8_t {
    float32,
    float64,
    int8,
    uint8,
    int16,
    uint16,
    int32,
    uint32,
    int64,
    uint64,
    boolean,
    enumeration,
    string,
    binary,
};

/// Of a description's type: "Real", "Float64", ...; nothing for what cannot be read or set, as clocks.
std::optional<UnitType> unitTypeOf(std::string_view name) noexcept;
constexpr bool isText(UnitType type) noexcept { return type == UnitType::string || type == UnitType::binary; }
constexpr bool isFloat(UnitType type) noexcept { return type == UnitType::float32 || type == UnitType::float64; }
/// Whole numbers below zero cannot be.
constexpr bool isUnsigned(UnitType type) noexcept {
    return type == UnitType::uint8 || type == UnitType::uint16 || type == UnitType::uint32 || type == UnitType::uint64;
}

/// Values on their way to a unit. A number is 64 bits: a double's, an integer's, 0 or 1 of a Boolean. Of texts and
/// binary values there are `texts` instead.
struct UnitValue {
    UnitType type = UnitType::float64;
    std::uint32_t reference = 0;
    std::vector<std::uint64_t> slots = {};
    std::vector<std::string> texts = {};
};

/// How many values a variable has: 1 for a scalar, for an array what its dimensions, or the structural parameters that
/// they name, say, as `sizes` overrules them by reference. Throws `Error` for sizes that nobody gives or that are
/// beyond `kMostElements`.
inline constexpr std::uint64_t kMostElements = 1'000'000;
struct GivenSize {
    std::uint32_t reference;
    std::uint64_t size;
};
std::vector<std::uint64_t> extentsOf(const FmiVariable& variable, const FmiDescription& description,
                                     const std::vector<GivenSize>& sizes);

/// The 64 bits of a text: "1.5", "-3", "true", hexadecimal digits of a binary value apart. Throws `Error` with the
/// variable's name for what is none of the type or beyond its limits.
std::uint64_t slotOfText(UnitType type, std::string_view text, const std::string& variable);
/// The same of a scalar variable or an array's element: an enumeration's value may be told by its name, too.
std::uint64_t slotOfText(const FmiVariable& variable, std::string_view text);
/// The values of a text for a variable of `count` values, an array's with blanks between them. Throws `Error` as
/// above, also for too few or too many.
UnitValue valueOfText(const FmiVariable& variable, std::uint64_t count, std::string_view text);

/// The bytes of hexadecimal digits; nothing for what is none.
std::optional<std::string> bytesOfDigits(std::string_view digits);

}  // namespace workbench
