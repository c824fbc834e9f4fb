#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <boost/unordered/unordered_flat_set.hpp>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "foundation/text_hash.h"

namespace ks_hmi {

/// Addresses, replaced as a whole and asked for one by one. As long as they are few enough for the processor's caches,
/// an answer compares all of a cache line: hits and misses take the same way, and the processor has nothing to guess,
/// which costs more than all the rest. More of them stand in a flat table, where a miss touches little memory.
class AddressSet {
public:
    AddressSet() = default;
    /// Duplicates and null are welcome.
    template <class Object>
    explicit AddressSet(const std::vector<Object*>& addresses) {
        if (addresses.empty()) return;
        addresses.size() <= kMostInLines ? makeLines(addresses) : makeTable(addresses);
    }

    void clear() noexcept {
        m_lines.clear();
        // Clearing walks the whole table, so an empty one is left alone.
        if (!m_table.empty()) m_table.clear();
    }

    bool contains(const void* address) const noexcept {
        return m_lines.empty() ? m_table.contains(numberOf(address)) : isInLines(numberOf(address));
    }

private:
    static constexpr std::size_t kMostInLines = 32'768;
    static constexpr std::size_t kMostLoad = 4;  // of a line, on the average

    struct alignas(64) Line {
        std::array<std::uint64_t, 7> addresses{};
        std::uint64_t isPassed = 0;  ///< whether addresses that belong here stand in the next line

        bool holds(std::uint64_t address) const noexcept {
            unsigned found = 0;
            for (const std::uint64_t one : addresses) found |= static_cast<unsigned>(one == address);
            return found != 0;
        }
    };

    // Of addresses whole runs of bits never vary.
    struct Hash {
        using is_avalanching = void;
        std::size_t operator()(std::uint64_t address) const noexcept {
            return ks_hmi_foundation::foldedProduct(address, ks_hmi_foundation::kFirstFactor);
        }
    };

    static std::uint64_t numberOf(const void* address) noexcept { return reinterpret_cast<std::uintptr_t>(address); }
    Line& lineAt(std::size_t place) noexcept { return m_lines[place & (m_lines.size() - 1)]; }
    const Line& lineAt(std::size_t place) const noexcept { return m_lines[place & (m_lines.size() - 1)]; }

    bool isInLines(std::uint64_t address) const noexcept {
        const std::size_t place = Hash()(address);
        const Line& line = lineAt(place);
        const bool isHere = line.holds(address);
        if (line.isPassed == 0 || isHere) [[likely]]
            return isHere;
        return isFurther(place + 1, address);
    }

    [[gnu::noinline]] bool isFurther(std::size_t place, std::uint64_t address) const noexcept {
        for (; !lineAt(place).holds(address); ++place)
            if (lineAt(place).isPassed == 0) return false;
        return true;
    }

    template <class Object>
    void makeLines(const std::vector<Object*>& addresses) {
        // Free places hold an address of the set: none is left to mean "free", and finding it there is no mistake.
        const std::uint64_t free = numberOf(addresses.front());
        Line line;
        line.addresses.fill(free);
        m_lines.assign(std::bit_ceil((addresses.size() + kMostLoad - 1) / kMostLoad), line);
        for (const Object* const address : addresses)
            if (!isInLines(numberOf(address))) insert(numberOf(address), free);
        // The others may have taken all places of its own line.
        insert(free, free);
    }

    void insert(std::uint64_t address, std::uint64_t free) noexcept {
        for (std::size_t place = Hash()(address);; ++place) {
            Line& line = lineAt(place);
            const auto found = std::find(line.addresses.begin(), line.addresses.end(), free);
            if (found != line.addresses.end()) {
                *found = address;
                return;
            }
            line.isPassed = 1;
        }
    }

    template <class Object>
    void makeTable(const std::vector<Object*>& addresses) {
        m_table.reserve(addresses.size());
        for (const Object* const address : addresses) m_table.insert(numberOf(address));
    }

    std::vector<Line> m_lines;
    boost::unordered_flat_set<std::uint64_t, Hash> m_table;
};

}  // namespace ks_hmi
