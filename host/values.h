#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

#include "host/hv_array.h"

/// Making, testing and reading host values: the words for it that every part of the system, and who embeds it, shares.
///
/// Makers hand over a new value and throw as the host's creators do; null where the host refuses by giving none.
/// Tests and readers never change a value, take null, and say below what a value of another kind gives.
namespace ks_host {

// ---- making -------------------------------------------------------------------------------------

/// A 1xN character array, the UTF-16 units kept exactly.
inline HvArrayPtr makeText(std::u16string_view text) { return HvArrayPtr(matrix::create(text.data(), text.size())); }
/// The same from UTF-8; ill-formed sequences become U+FFFD.
inline HvArrayPtr makeText(std::string_view utf8) { return HvArrayPtr(matrix::create(utf8.data(), utf8.size())); }
inline HvArrayPtr makeDouble(double value) { return HvArrayPtr(hvCreateDoubleScalar(value)); }  ///< A real 1x1 double.
inline HvArrayPtr makeLogical(bool value) { return HvArrayPtr(hvCreateLogicalScalar(value)); }  ///< A 1x1 logical.
inline HvArrayPtr makeUint32(std::uint32_t value) {                                             ///< A 1x1 uint32.
    HvArrayPtr scalar(hvCreateNumericScalar(hvUINT32_CLASS, hvREAL));
    *static_cast<std::uint32_t*>(hvGetDataForWriting(scalar.get())) = value;
    return scalar;
}
/// A 0x0 double, which stands for a value that is not there.
inline HvArrayPtr makeEmpty() { return HvArrayPtr(hvCreateNumericMatrix(0, 0, hvDOUBLE_CLASS, hvREAL)); }
/// A 0x0 cell array.
inline HvArrayPtr makeEmptyCell() {
    constexpr std::size_t kDimensions[] = {0, 0};
    return HvArrayPtr(hvCreateCellArray(2, kDimensions));
}

// ---- testing ------------------------------------------------------------------------------------

/// A struct array: the class word with bit 0x10 cleared is 2, so that 2 and 18 both count.
inline bool isStruct(const hvArray* value) noexcept {
    constexpr std::uint32_t kStructWord = 2;
    constexpr std::uint32_t kIgnoredBit = 0x10;
    return (hvGetClassWord(value) & ~kIgnoredBit) == kStructWord;
}
/// A character array: the class word is 4.
inline bool isText(const hvArray* value) noexcept {
    constexpr std::uint32_t kTextWord = 4;
    return hvGetClassWord(value) == kTextWord;
}

// ---- reading ------------------------------------------------------------------------------------

/// A character array's UTF-16 text, all elements in storage order; empty for any other value.
inline std::u16string textOf(const hvArray* value) {
    return isText(value) ? matrix::get_ustring(value) : std::u16string();
}
/// The same in UTF-8; ill-formed UTF-16 becomes U+FFFD.
inline std::string utf8TextOf(const hvArray* value) {
    return isText(value) ? hvArrayToStdString(value) : std::string();
}

namespace detail {
template <class Number>
double numberIn(const hvArray* value, std::size_t index) noexcept {  ///< Unchecked.
    return static_cast<double>(static_cast<const Number*>(hvGetData(value))[index]);
}
}  // namespace detail

/// Element `index` (0-based) of a numeric or logical array as a double; nothing when there is no such number.
inline std::optional<double> numberAt(const hvArray* value, std::size_t index = 0) noexcept {
    if (index >= hvGetNumberOfElements(value)) return std::nullopt;
    switch (hvGetClassID(value)) {
        case hvDOUBLE_CLASS:
            return detail::numberIn<double>(value, index);
        case hvLOGICAL_CLASS:
            return detail::numberIn<bool>(value, index);
        case hvSINGLE_CLASS:
            return detail::numberIn<float>(value, index);
        case hvINT8_CLASS:
            return detail::numberIn<std::int8_t>(value, index);
        case hvUINT8_CLASS:
            return detail::numberIn<std::uint8_t>(value, index);
        case hvINT16_CLASS:
            return detail::numberIn<std::int16_t>(value, index);
        case hvUINT16_CLASS:
            return detail::numberIn<std::uint16_t>(value, index);
        case hvINT32_CLASS:
            return detail::numberIn<std::int32_t>(value, index);
        case hvUINT32_CLASS:
            return detail::numberIn<std::uint32_t>(value, index);
        case hvINT64_CLASS:
            return detail::numberIn<std::int64_t>(value, index);
        case hvUINT64_CLASS:
            return detail::numberIn<std::uint64_t>(value, index);
        default:
            return std::nullopt;
    }
}

// ---- walking ------------------------------------------------------------------------------------

/// What `read(index)` gives for each element, to be walked once by `for`. Borrows the value; its elements may be
/// written meanwhile, their number may not change.
template <class Read>
class Elements {
public:  /// One place in the walk.
    class Iterator {
    public:
        Iterator(const Read* read, std::size_t index) noexcept : m_read(read), m_index(index) {}  ///< At `index`.
        decltype(auto) operator*() const { return (*m_read)(m_index); }  ///< What `read` gives for it.
        Iterator& operator++() noexcept {                                ///< To the next one.
            ++m_index;
            return *this;
        }
        bool operator==(const Iterator& other) const noexcept { return m_index == other.m_index; }  ///< The same place.

    private:
        const Read* m_read;
        std::size_t m_index;
    };

    Elements(std::size_t count, Read read) : m_count(count), m_read(read) {}  ///< Of `count` elements.
    Iterator begin() const noexcept { return {&m_read, 0}; }                  ///< At element 0.
    Iterator end() const noexcept { return {&m_read, m_count}; }              ///< Behind the last one.
    std::size_t size() const noexcept { return m_count; }                     ///< How many elements.

private:
    std::size_t m_count;
    Read m_read;
};

/// The element numbers of any value, from 0; none for null.
inline auto indicesOf(const hvArray* value) {
    return Elements(hvGetNumberOfElements(value), [](std::size_t index) noexcept { return index; });
}
/// The numbers of a numeric or logical array; none for any other value.
inline auto numbersOf(const hvArray* value) {
    const std::size_t count = numberAt(value) ? hvGetNumberOfElements(value) : 0;
    return Elements(count, [value](std::size_t index) noexcept { return *numberAt(value, index); });
}
/// The cells of a cell array, borrowed, null for a cell that is unset; none for any other value.
inline auto cellsOf(const hvArray* value) {
    const std::size_t count = hvGetClassID(value) == hvCELL_CLASS ? hvGetNumberOfElements(value) : 0;
    return Elements(count, [value](std::size_t index) noexcept { return hvGetCell(value, index); });
}

}  // namespace ks_host
