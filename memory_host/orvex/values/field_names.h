#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvex {

/// A struct's field names in order. Struct arrays that were made one after another with the same names share the list.
class FieldNames : public boost::intrusive_ref_counter<FieldNames, boost::thread_unsafe_counter> {
public:
    using Ptr = boost::intrusive_ptr<const FieldNames>;

    /// The list of those names. Throws for a null, empty or repeated name.
    static Ptr of(std::span<const char* const> names);

    auto begin() const noexcept { return m_names.begin(); }
    auto end() const noexcept { return m_names.end(); }
    std::size_t size() const noexcept { return m_names.size(); }
    const std::string& operator[](std::size_t position) const noexcept { return m_names[position]; }
    /// Position of the name, or -1. Fastest when the names are asked for in the same order again.
    int find(const char* name) const noexcept {
        if (m_names.empty()) return -1;
        const std::uint32_t guess = m_after[m_last];
        const char* const guessed = m_names[guess].c_str();
        if (name != guessed && std::strcmp(guessed, name) != 0) return seldomNext(name);
        m_last = guess;
        return static_cast<int>(guess);
    }
    /// For messages, in one line: "a, b, c", or "none".
    std::string joined() const;

private:
    explicit FieldNames(std::span<const char* const> names);
    bool areThose(std::span<const char* const> names) const noexcept;
    int seldomNext(const char* name) const noexcept;
    int searched(std::string_view name) const noexcept;
    std::size_t hashOf(std::string_view name) const noexcept;
    void enter(std::size_t position);

    std::vector<std::string> m_names;
    /// Positions plus 1, each at its name's hash or the next free slot behind it; 0 is free.
    std::vector<std::uint32_t> m_slots;
    /// For each position the one that was asked for after it the last time, and another one that was before.
    mutable std::vector<std::uint32_t> m_after;
    mutable std::vector<std::uint32_t> m_seldomAfter;
    mutable std::uint32_t m_last = 0;  ///< the position found last
};

}  // namespace orvex
