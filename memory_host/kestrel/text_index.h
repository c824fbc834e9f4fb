#pragma once

#include <boost/unordered/unordered_flat_set.hpp>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string_view>

namespace kestrel {

/// Finds what stands in a list by a text that each has for itself, as `textOf(item)` tells it. Holds positions only:
/// the list is handed in, and everything in it has been inserted. Fastest when one is asked for after the other.
template <class Item, class Text, Text (*textOf)(const Item&)>
class TextIndex {
public:
    using List = std::deque<Item>;

    std::optional<std::size_t> find(const List& list, Text text) const {
        for (const std::size_t guess : {m_last, m_last + 1})
            if (guess < list.size() && textOf(list[guess]) == text) return m_last = guess;
        const std::optional<std::size_t> position = searched(list, text);
        if (position) m_last = *position;
        return position;
    }
    /// The same without a guess, for a text that is hardly there.
    std::optional<std::size_t> searched(const List& list, Text text) const {
        const auto found = m_entries.find(Wanted{hashOf(text), text, &list});
        return found == m_entries.end() ? std::nullopt : std::optional<std::size_t>(found->position);
    }
    /// The text at that position, which no other has.
    void insert(const List& list, std::size_t position) { insert(textOf(list[position]), position); }
    /// What the text at that position is going to be.
    void insert(Text text, std::size_t position) {
        m_entries.insert({hashOf(text), static_cast<std::uint32_t>(position)});
    }
    void erase(const List& list, std::size_t position) {
        m_entries.erase({hashOf(textOf(list[position])), static_cast<std::uint32_t>(position)});
    }
    void clear() noexcept { m_entries.clear(); }

private:
    struct Entry {
        std::uint32_t hash;
        std::uint32_t position;
    };
    struct Wanted {
        std::uint32_t hash;
        Text text;
        const List* list;
    };
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(const auto& entry) const noexcept { return entry.hash; }
    };
    struct Same {
        using is_transparent = void;
        bool operator()(const Entry& a, const Entry& b) const noexcept { return a.position == b.position; }
        bool operator()(const Wanted& a, const Entry& b) const noexcept {
            return a.hash == b.hash && textOf((*a.list)[b.position]) == a.text;
        }
        bool operator()(const Entry& a, const Wanted& b) const noexcept { return (*this)(b, a); }
    };

    static std::uint32_t hashOf(Text text) noexcept { return static_cast<std::uint32_t>(std::hash<Text>()(text)); }

    boost::unordered_flat_set<Entry, Hash, Same> m_entries;
    mutable std::size_t m_last = 0;  ///< found last
};

}  // namespace kestrel
