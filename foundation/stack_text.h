#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

namespace ks_hmi_foundation {

/// A text under construction on the stack, which goes to the heap only when it outgrows its place there.
class StackText {
public:
    StackText() noexcept : m_begin(m_stack) {}
    StackText(const StackText&) = delete;
    StackText& operator=(const StackText&) = delete;

    /// Room for that many more bytes, behind what is there.
    char* reserve(std::size_t more) {
        if (room() < more) grow(more);
        return m_begin + m_size;
    }
    std::size_t room() const noexcept { return m_capacity - m_size; }
    /// The text ends there now: within the room, behind bytes that have been written.
    void endAt(const char* end) noexcept { m_size = static_cast<std::size_t>(end - m_begin); }
    std::string_view text() const noexcept { return {m_begin, m_size}; }

private:
    [[gnu::noinline]] void grow(std::size_t more) {
        const std::size_t capacity = std::max(2 * m_capacity, m_size + more);
        auto larger = std::make_unique_for_overwrite<char[]>(capacity);
        std::memcpy(larger.get(), m_begin, m_size);
        m_heap = std::move(larger);
        m_begin = m_heap.get();
        m_capacity = capacity;
    }

    /// Holds the keys of all but unusually long paths.
    static constexpr std::size_t kStackSize = 512;

    char* m_begin;
    std::size_t m_size = 0;
    std::size_t m_capacity = kStackSize;
    std::unique_ptr<char[]> m_heap;
    char m_stack[kStackSize];
};

}  // namespace ks_hmi_foundation
