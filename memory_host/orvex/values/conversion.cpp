#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

#include "memory_host/orvex/account/faults.h"
#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/values/element_type.h"
#include "memory_host/orvex/values/hv_array_impl.h"
#include "memory_host/orvex/values/utf.h"

namespace orvex {
namespace {

std::u16string_view textOf(const hvArray* value) {
    faults::point(faults::Operation::readText);
    if (hvGetClassID(value) == hvCHAR_CLASS) return {hvGetChars(value), value->m_dimensions.elements()};
    raise("WrongClass", "A character array is needed here, not " + describeValue(value) + ".");
}

std::int64_t saturated(double number) noexcept {
    // The limits as doubles: the greatest 64-bit integer itself is none.
    constexpr double kBeyond = 9223372036854775808.0;
    if (std::isnan(number)) return 0;
    if (number >= kBeyond) return std::numeric_limits<std::int64_t>::max();
    if (number <= -kBeyond) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(number);
}

template <class Number>
Number converted(auto element) noexcept {
    using Element = decltype(element);
    if constexpr (std::is_same_v<Number, double>) {
        return static_cast<double>(element);
    } else if constexpr (std::is_floating_point_v<Element>) {
        return saturated(element);
    } else if constexpr (std::is_same_v<Element, std::uint64_t>) {
        constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
        return static_cast<std::int64_t>(std::min(element, kMost));
    } else {
        return static_cast<std::int64_t>(element);
    }
}

template <class Number>
Number firstElement(const hvArray* value) {
    faults::point(faults::Operation::readScalar);
    if (hvIsEmpty(value)) raise("EmptyValue", "A number is needed here, not " + describeValue(value) + ".");
    Number number{};
    const auto read = [&]<class T>(std::type_identity<T>) {
        number = converted<Number>(*static_cast<const T*>(hvGetData(value)));
    };
    if (value->m_class == hvCHAR_CLASS)
        read(std::type_identity<char16_t>());
    else if (!withElementType(value->m_class, read))
        raise("WrongClass", "A number is needed here, not " + describeValue(value) + ".");
    return number;
}

}  // namespace
}  // namespace orvex

std::string hvArrayToStdString(const hvArray* value) { return orvex::utf8Of(orvex::textOf(value)); }

std::u16string matrix::get_ustring(const hvArray* value) { return std::u16string(orvex::textOf(value)); }

double hvGetScalar(const hvArray* value) { return orvex::firstElement<double>(value); }

std::int64_t hvGetScalarInt(const hvArray* value) { return orvex::firstElement<std::int64_t>(value); }
