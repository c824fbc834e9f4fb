#include "memory_host/orvex/objects/types.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <variant>

#include "host/text.h"
#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/objects/cos_namespace.h"
#include "memory_host/orvex/objects/object_system.h"
#include "memory_host/orvex/values/element_type.h"
#include "memory_host/orvex/values/hv_array_impl.h"

namespace orvex {

namespace {

using Kind = hos::COSType::Kind;
// A number as it is stored, so that nothing is lost before the comparison with the wanted type.
using Number = std::variant<double, std::int64_t, std::uint64_t>;

std::optional<Kind> builtInKind(std::string_view text) {
    static constexpr std::pair<std::string_view, Kind> kBuiltIn[] = {
        {"double scalar", Kind::number},
        {"uint32 scalar", Kind::uint32},
        {"int32 scalar", Kind::int32},
        {"logical scalar", Kind::logical},
        {"unicodeString", Kind::unicodeText},
        {"asciiString", Kind::asciiText},
        {"any", Kind::any},
    };
    for (const auto& [name, kind] : kBuiltIn)
        if (name == text) return kind;
    return std::nullopt;
}

template <class Stored>
using Wide = std::conditional_t<std::is_floating_point_v<Stored>, double,
                                std::conditional_t<std::is_same_v<Stored, std::uint64_t>, std::uint64_t, std::int64_t>>;

std::optional<Number> scalarNumber(const hvArray* value) {
    if (hvGetNumberOfElements(value) != 1) return std::nullopt;
    std::optional<Number> number;
    withElementType(hvGetClassID(value), [&]<class Stored>(std::type_identity<Stored>) {
        number = static_cast<Wide<Stored>>(*static_cast<const Stored*>(hvGetData(value)));
    });
    return number;
}

template <class Integer>
std::optional<Integer> exactInteger(double number) {
    constexpr double kLowest = static_cast<double>(std::numeric_limits<Integer>::min());
    constexpr double kHighest = static_cast<double>(std::numeric_limits<Integer>::max());
    if (!(number >= kLowest && number <= kHighest) || number != std::trunc(number)) return std::nullopt;
    return static_cast<Integer>(number);
}

template <class Integer>
std::optional<Integer> exactInteger(const Number& number) {
    if (const double* real = std::get_if<double>(&number)) return exactInteger<Integer>(*real);
    if (const std::int64_t* whole = std::get_if<std::int64_t>(&number))
        return std::in_range<Integer>(*whole) ? std::optional(static_cast<Integer>(*whole)) : std::nullopt;
    const std::uint64_t whole = std::get<std::uint64_t>(number);
    return std::in_range<Integer>(whole) ? std::optional(static_cast<Integer>(whole)) : std::nullopt;
}

std::optional<double> exactDouble(const Number& number) {
    constexpr std::uint64_t kLast = std::uint64_t{1} << std::numeric_limits<double>::digits;
    if (const double* real = std::get_if<double>(&number)) return *real;
    if (const std::int64_t* whole = std::get_if<std::int64_t>(&number)) {
        const bool exact = std::cmp_less_equal(*whole, kLast) && *whole >= -static_cast<std::int64_t>(kLast);
        return exact ? std::optional(static_cast<double>(*whole)) : std::nullopt;
    }
    const std::uint64_t whole = std::get<std::uint64_t>(number);
    return whole <= kLast ? std::optional(static_cast<double>(whole)) : std::nullopt;
}

std::optional<bool> truth(const Number& number) {
    const auto isTrue = [](auto plain) -> std::optional<bool> {
        if constexpr (std::is_same_v<decltype(plain), double>)
            if (std::isnan(plain)) return std::nullopt;
        return plain != 0;
    };
    return std::visit(isTrue, number);
}

std::string textOf(const Number& number) {
    char digits[32];
    const auto write = [&](auto plain) { return std::to_chars(digits, digits + sizeof digits, plain).ptr; };
    return {digits, std::visit(write, number)};
}

bool isTextRow(const hvArray* value) {
    if (hvGetClassID(value) != hvCHAR_CLASS) return false;
    return hvIsEmpty(value) || (hvGetNumberOfDimensions(value) == 2 && hvGetDimensions(value)[0] == 1);
}

std::optional<std::u16string> rowText(const hvArray* value) {
    if (!isTextRow(value)) return std::nullopt;
    return matrix::get_ustring(value);
}

std::optional<std::string> asciiText(const hvArray* value) {
    const std::optional<std::u16string> text = rowText(value);
    if (!text || std::any_of(text->begin(), text->end(), [](char16_t unit) { return unit >= 128; }))
        return std::nullopt;
    return std::string(text->begin(), text->end());
}

template <class Value>
std::optional<hos::Argument> asArgument(std::optional<Value> value) {
    if (!value) return std::nullopt;
    return hos::Argument(std::in_place_type<Value>, std::move(*value));
}

}  // namespace

std::optional<hos::Argument> convertByType(const hos::COSType& type, const hvArray* value) {
    switch (type.kind()) {
        case Kind::any:
            return hos::Argument(value);
        case Kind::object:
            if (hvGetNumberOfElements(value) != 1 || !hvIsA(value, type.text().c_str())) return std::nullopt;
            return hos::Argument(value);
        case Kind::unicodeText:
            return asArgument(rowText(value));
        case Kind::asciiText:
            return asArgument(asciiText(value));
        default:
            break;
    }
    const std::optional<Number> number = scalarNumber(value);
    if (!number) return std::nullopt;
    switch (type.kind()) {
        case Kind::uint32:
            return asArgument(exactInteger<std::uint32_t>(*number));
        case Kind::int32:
            return asArgument(exactInteger<std::int32_t>(*number));
        case Kind::logical:
            return asArgument(truth(*number));
        default:
            return asArgument(exactDouble(*number));
    }
}

void refuseValue(const hos::COSType& type, const hvArray* value, const std::string& what) {
    std::string given = value ? describeValue(value) : "nothing";
    if (const std::optional<Number> number = scalarNumber(value)) given += " with the value " + textOf(*number);
    raise("TypeMismatch", what + " must be of type \"" + type.text() + "\", and " + given + " was given.");
}

const hos::COSType& resolveType(hos::InternedName typeText) {
    static const hos::COSType kUnspecified(Kind::any, "any");
    static std::unordered_map<const std::string*, std::unique_ptr<const hos::COSType>> types;
    if (typeText.isEmpty()) return kUnspecified;
    auto& type = types[typeText.text()];
    if (type && type->kind() != Kind::object) return *type;
    const std::optional<Kind> kind = builtInKind(*typeText.text());
    if (!kind && !classExists(*typeText.text()))
        raise("UnknownType", "\"" + *typeText.text() + "\" is neither a type nor a class that is defined.");
    if (!type) type = std::make_unique<const hos::COSType>(kind.value_or(Kind::object), *typeText.text());
    return *type;
}

}  // namespace orvex

namespace hos {

const COSType* COSTypeRepository::getType(InternedName typeText) { return &orvex::resolveType(typeText); }

}  // namespace hos
