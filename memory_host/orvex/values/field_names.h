#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>

#include <cstddef>
#include <cstdint>
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
    /// Position of the name, or -1.
    int find(std::string_view name) const noexcept;
    /// For messages, in one line: "a, b, c", or "none".
    std::string joined() const;

private:
    explicit FieldNames(std::span<const char* const> names);
    bool areThose(std::span<const char* const> names) const noexcept;
    std::size_t hashOf(std::string_view name) const noexcept;
    void enter(std::size_t position);

    std::vector<std::string> m_names;
    /// Positions plus 1, each at its name's hash or the next free slot behind it; 0 is free.
    std::vector<std::uint32_t> m_slots;
};

}  // namespace orvex
