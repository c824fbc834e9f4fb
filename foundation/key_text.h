#pragma once

#include <boost/container_hash/hash.hpp>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

namespace ks_hmi_foundation {

/// Builds the text of a key in a stack buffer and hashes it; only texts that outgrow the buffer go to the heap.
/// Numbers are written as in the "C" locale, whatever the process's locale is.
class KeyText {
public:
    KeyText() noexcept : m_begin(m_stack) {}
    KeyText(const KeyText&) = delete;
    KeyText& operator=(const KeyText&) = delete;

    KeyText& add(std::string_view utf8);
    /// A text that is known here: copied without a call.
    template <std::size_t Size>
    KeyText& add(const char (&literal)[Size]) {
        std::memcpy(reserve(Size - 1), literal, Size - 1);
        m_size += Size - 1;
        return *this;
    }
    /// Adds the text in UTF-8; ill-formed UTF-16 becomes U+FFFD.
    KeyText& add(std::u16string_view text);
    KeyText& add(int number) {
        if (number < 0 || number > 9) return addLongNumber(number);
        *reserve(1) = static_cast<char>('0' + number);
        ++m_size;
        return *this;
    }
    /// As "%.17g" writes it.
    KeyText& addGeneral17(double number);
    /// As "%f" writes it.
    KeyText& addFixed6(double number);

    std::string_view text() const noexcept { return {m_begin, m_size}; }
    /// The string hash behind all source keys: Boost's container hash of the narrow text.
    std::uint64_t hash() const noexcept { return boost::hash<std::string_view>()(text()); }

private:
    /// Room for that many more bytes.
    char* reserve(std::size_t more) {
        if (m_capacity - m_size < more) grow(more);
        return m_begin + m_size;
    }
    void grow(std::size_t more);
    KeyText& addLongNumber(int number);
    void advanceTo(const char* end) noexcept { m_size = static_cast<std::size_t>(end - m_begin); }

    static constexpr std::size_t kStackSize = 512;

    char* m_begin;
    std::size_t m_size = 0;
    std::size_t m_capacity = kStackSize;
    std::unique_ptr<char[]> m_heap;
    char m_stack[kStackSize];
};

}  // namespace ks_hmi_foundation
