#include "foundation/key_text.h"

#include <algorithm>
#include <boost/container_hash/hash.hpp>
#include <charconv>
#include <cstring>

namespace ks_hmi_foundation {

namespace {

// The largest double in fixed notation: sign, 309 digits, point, 6 decimals.
constexpr std::size_t kLongestNumber = 1 + 309 + 1 + 6;

constexpr bool isHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
constexpr bool isLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

char32_t takeCodePoint(std::u16string_view text, std::size_t& at) {
    const char32_t unit = text[at++];
    if (isHighSurrogate(unit) && at < text.size() && isLowSurrogate(text[at])) {
        return 0x10000 + ((unit - 0xD800) << 10) + (text[at++] - char32_t{0xDC00});
    }
    return isHighSurrogate(unit) || isLowSurrogate(unit) ? U'\uFFFD' : unit;
}

char* putUtf8(char* to, char32_t point) {
    const auto continuation = [&](int shift) { return static_cast<char>(0x80 | ((point >> shift) & 0x3F)); };
    if (point < 0x80) {
        *to++ = static_cast<char>(point);
    } else if (point < 0x800) {
        *to++ = static_cast<char>(0xC0 | (point >> 6));
        *to++ = continuation(0);
    } else if (point < 0x10000) {
        *to++ = static_cast<char>(0xE0 | (point >> 12));
        *to++ = continuation(6);
        *to++ = continuation(0);
    } else {
        *to++ = static_cast<char>(0xF0 | (point >> 18));
        *to++ = continuation(12);
        *to++ = continuation(6);
        *to++ = continuation(0);
    }
    return to;
}

}  // namespace

KeyText& KeyText::add(std::string_view utf8) {
    if (utf8.empty()) return *this;
    std::memcpy(reserve(utf8.size()), utf8.data(), utf8.size());
    m_size += utf8.size();
    return *this;
}

KeyText& KeyText::add(std::u16string_view text) {
    char* to = reserve(3 * text.size());
    for (std::size_t at = 0; at < text.size();) to = putUtf8(to, takeCodePoint(text, at));
    advanceTo(to);
    return *this;
}

KeyText& KeyText::add(int number) {
    char* const to = reserve(kLongestNumber);
    advanceTo(std::to_chars(to, to + kLongestNumber, number).ptr);
    return *this;
}

KeyText& KeyText::addGeneral17(double number) {
    char* const to = reserve(kLongestNumber);
    advanceTo(std::to_chars(to, to + kLongestNumber, number, std::chars_format::general, 17).ptr);
    return *this;
}

KeyText& KeyText::addFixed6(double number) {
    char* const to = reserve(kLongestNumber);
    advanceTo(std::to_chars(to, to + kLongestNumber, number, std::chars_format::fixed, 6).ptr);
    return *this;
}

std::uint64_t KeyText::hash() const noexcept { return boost::hash<std::string_view>()(text()); }

char* KeyText::reserve(std::size_t more) {
    if (m_capacity - m_size < more) {
        const std::size_t capacity = std::max(2 * m_capacity, m_size + more);
        auto larger = std::make_unique_for_overwrite<char[]>(capacity);
        std::memcpy(larger.get(), m_begin, m_size);
        m_heap = std::move(larger);
        m_begin = m_heap.get();
        m_capacity = capacity;
    }
    return m_begin + m_size;
}

}  // namespace ks_hmi_foundation
