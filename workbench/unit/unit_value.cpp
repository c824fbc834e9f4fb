#include "workbench/unit/unit_value.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <utility>

#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

constexpr std::array<std::pair<std::string_view, UnitType>, 16> kTypes{{{"Real", UnitType::float64},
                                                                        {"Integer", UnitType::int32},
                                                                        {"Boolean", UnitType::boolean},
                                                                        {"String", UnitType::string},
                                                                        {"Enumeration", UnitType::enumeration},
                                                                        {"Float32", UnitType::float32},
                                                                        {"Float64", UnitType::float64},
                                                                        {"Int8", UnitType::int8},
                                                                        {"UInt8", UnitType::uint8},
                                                                        {"Int16", UnitType::int16},
                                                                        {"UInt16", UnitType::uint16},
                                                                        {"Int32", UnitType::int32},
                                                                        {"UInt32", UnitType::uint32},
                                                                        {"Int64", UnitType::int64},
                                                                        {"UInt64", UnitType::uint64},
                                                                        {"Binary", UnitType::binary}}};

struct NumberRange {
    std::int64_t least;
    std::uint64_t most;
};

template <class T>
constexpr NumberRange rangeOf() {
    return {static_cast<std::int64_t>(std::numeric_limits<T>::min()),
            static_cast<std::uint64_t>(std::numeric_limits<T>::max())};
}

NumberRange rangeOf(UnitType type) {
    switch (type) {
        case UnitType::int8:
            return rangeOf<std::int8_t>();
        case UnitType::uint8:
            return rangeOf<std::uint8_t>();
        case UnitType::int16:
            return rangeOf<std::int16_t>();
        case UnitType::uint16:
            return rangeOf<std::uint16_t>();
        case UnitType::uint32:
            return rangeOf<std::uint32_t>();
        case UnitType::int64:
        case UnitType::enumeration:
            return rangeOf<std::int64_t>();
        case UnitType::uint64:
            return rangeOf<std::uint64_t>();
        default:
            return rangeOf<std::int32_t>();
    }
}

[[noreturn]] void refuse(const std::string& variable, std::string_view text, const std::string& wanted) {
    throw Error(fmt::format("{}: {} is not {}", inQuotes(variable), inQuotes(text), wanted));
}

template <class Number>
std::optional<Number> parsed(std::string_view text) {
    if (text.starts_with('+')) text.remove_prefix(1);
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, code] = std::from_chars(text.data(), end, number);
    if (code != std::errc() || stop != end || text.empty()) return std::nullopt;
    return number;
}

std::uint64_t slotOfWhole(UnitType type, std::string_view text, const std::string& variable) {
    const NumberRange range = rangeOf(type);
    if (const auto number = parsed<std::uint64_t>(text); number && *number <= range.most) return *number;
    const auto number = parsed<std::int64_t>(text);
    if (number && *number >= range.least && *number < 0) return static_cast<std::uint64_t>(*number);
    refuse(variable, text, fmt::format("a whole number from {} to {}", range.least, range.most));
}

std::vector<std::string_view> wordsOf(std::string_view text) {
    std::vector<std::string_view> words;
    while (true) {
        const std::size_t start = text.find_first_not_of(' ');
        if (start == std::string_view::npos) return words;
        text.remove_prefix(start);
        words.push_back(text.substr(0, text.find(' ')));
        text.remove_prefix(words.back().size());
    }
}

std::uint64_t sizeOf(const FmiDimension& dimension, const FmiVariable& variable, const FmiDescription& description,
                     const std::vector<GivenSize>& sizes) {
    if (!dimension.valueReference) return dimension.size;
    for (const GivenSize& given : sizes)
        if (given.reference == *dimension.valueReference) return given.size;
    const auto found = std::find_if(
        description.variables.begin(), description.variables.end(),
        [&](const FmiVariable& one) { return one.valueReference == dimension.valueReference && one.size; });
    if (found == description.variables.end())
        throw Error(fmt::format("the array {} has a size that no structural parameter gives", inQuotes(variable.name)),
                    ErrorCode::model);
    return *found->size;
}

}  // namespace

std::optional<UnitType> unitTypeOf(std::string_view name) noexcept {
    for (const auto& [known, type] : kTypes)
        if (known == name) return type;
    return std::nullopt;
}

std::vector<std::uint64_t> extentsOf(const FmiVariable& variable, const FmiDescription& description,
                                     const std::vector<GivenSize>& sizes) {
    std::vector<std::uint64_t> extents;
    std::uint64_t count = 1;
    for (const FmiDimension& dimension : variable.dimensions) {
        const std::uint64_t size = sizeOf(dimension, variable, description, sizes);
        if (size > kMostElements || count * size > kMostElements)
            throw Error(fmt::format("the array {} has more than {} elements", inQuotes(variable.name), kMostElements),
                        ErrorCode::model);
        count *= size;
        extents.push_back(size);
    }
    return extents;
}

std::uint64_t slotOfText(UnitType type, std::string_view text, const std::string& variable) {
    if (isFloat(type)) {
        const auto number = parsed<double>(text);
        if (!number) refuse(variable, text, "a number");
        if (type == UnitType::float32 && std::isfinite(*number) && std::isinf(static_cast<float>(*number)))
            refuse(variable, text, "within the limits of a Float32");
        return std::bit_cast<std::uint64_t>(*number);
    }
    if (type != UnitType::boolean) return slotOfWhole(type, text, variable);
    if (text != "true" && text != "false" && text != "1" && text != "0") refuse(variable, text, "true or false");
    return text == "true" || text == "1" ? 1 : 0;
}

std::uint64_t slotOfText(const FmiVariable& variable, std::string_view text) {
    const UnitType type = unitTypeOf(variable.type).value_or(UnitType::float64);
    if (!variable.items || parsed<std::int64_t>(text)) return slotOfText(type, text, variable.name);
    for (const FmiItem& item : *variable.items)
        if (item.name == text) return static_cast<std::uint64_t>(item.value);
    constexpr std::size_t kMostListed = 8;
    const auto nameOf = [](const FmiItem& item) { return inQuotes(item.name); };
    refuse(variable.name, text, fmt::format("a number or one of {}", listed(*variable.items, kMostListed, nameOf)));
}

UnitValue valueOfText(const FmiVariable& variable, std::uint64_t count, std::string_view text) {
    UnitValue value{unitTypeOf(variable.type).value_or(UnitType::float64), variable.valueReference.value_or(0)};
    const bool isScalar = variable.dimensions.empty();
    if (value.type == UnitType::string && isScalar) {
        value.texts.emplace_back(text);
        return value;
    }
    const std::vector<std::string_view> words = isScalar ? std::vector{text} : wordsOf(text);
    if (words.size() != count)
        throw Error(fmt::format("{} takes {}, with blanks between them, and is given {}", inQuotes(variable.name),
                                counted(count, "value"), words.size()));
    for (const std::string_view word : words) {
        if (!isText(value.type)) value.slots.push_back(slotOfText(variable, word));
        if (value.type == UnitType::string) value.texts.emplace_back(word);
        if (value.type != UnitType::binary) continue;
        const std::optional<std::string> bytes = bytesOfDigits(word);
        if (!bytes) refuse(variable.name, word, "pairs of hexadecimal digits");
        value.texts.push_back(*bytes);
    }
    return value;
}

std::optional<std::string> bytesOfDigits(std::string_view digits) {
    std::string bytes;
    if (digits.size() % 2 != 0) return std::nullopt;
    for (; !digits.empty(); digits.remove_prefix(2)) {
        unsigned byte = 0;
        if (std::from_chars(digits.data(), digits.data() + 2, byte, 16).ptr != digits.data() + 2) return std::nullopt;
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

}  // namespace workbench
