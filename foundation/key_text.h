#pragma once

#include <cstddef>
#include <cstdint>
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
    /// Adds the text in UTF-8; ill-formed UTF-16 becomes U+FFFD.
    KeyText& add(std::u16string_view text);
    KeyText& add(int number);
    /// As "%.17g" writes it.
    KeyText& addGeneral17(double number);
    /// As "%f" writes it.
    KeyText& addFixed6(double number);

    std::string_view text() const noexcept { return {m_begin, m_size}; }
    /// The string hash behind all source keys: Boost's container hash of the narrow text.
    std::uint64_t hash() const noexcept;
    /// A faster hash of the same text, for the tables that nobody else looks into.
    std::uint64_t lookupHash() const noexcept;

private:
    char* reserve(std::size_t more);
    void advanceTo(const char* end) noexcept { m_size = static_cast<std::size_t>(end - m_begin); }

    static constexpr std::size_t kStackSize = 512;

    char* m_begin;
    std::size_t m_size = 0;
    std::size_t m_capacity = kStackSize;
    std::unique_ptr<char[]> m_heap;
    char m_stack[kStackSize];
};

}  // namespace ks_hmi_foundation
