#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "signals/source_key_index.h"

namespace ks_hmi {

/// The first signals of an index's keys once more, as long as the processor's first cache holds them. A question
/// compares all keys of one cache line: hits and misses take the same way, and the processor has nothing to guess.
/// Borrows the signals.
class NearSignals {
public:
    bool isInUse() const noexcept { return !m_lines.empty(); }

    struct Answer {
        std::uintptr_t signal;   ///< its address, 0 for none
        std::uint64_t isPassed;  ///< not 0: the index may know one where there is none here
    };
    /// Only while in use.
    Answer find(std::uint64_t key) const noexcept {
        const Line& line = m_lines[key & (m_lines.size() - 1)];
        std::uintptr_t signal = 0;
        for (std::size_t i = 0; i < kPlaces; ++i)
            signal |= line.signals[i] & (std::uintptr_t{0} - static_cast<std::uintptr_t>(line.keys[i] == key));
        return {signal, line.isPassed};
    }

    /// For one more key than there are in `index`, whose signals these are. Throws when there is no memory, and has
    /// changed nothing then.
    void makeRoom(const SourceKeyIndex& index) {
        if (index.keyCount() < m_limit) return;
        NearSignals larger;
        larger.m_limit = std::numeric_limits<std::size_t>::max();
        if (m_lines.size() < kMostLines) {
            larger.m_lines.resize(std::bit_ceil(index.keyCount() + kFewestLines));
            larger.m_limit = larger.m_lines.size() + larger.m_lines.size() / 2;
            index.forEachFirst([&](std::uint64_t key, const SignalSpecification& signal) { larger.add(key, signal); });
        }
        *this = std::move(larger);
    }

    /// A key that is new in the index.
    void add(std::uint64_t key, const SignalSpecification& signal) noexcept {
        if (!isInUse()) return;
        Line& line = lineOf(key);
        for (std::size_t i = 0; i < kPlaces; ++i)
            if (line.signals[i] == 0) return line.put(i, key, &signal);
        line.isPassed = 1;
    }
    /// What is the key's first signal now; null for none.
    void change(std::uint64_t key, const SignalSpecification* signal) noexcept {
        if (!isInUse()) return;
        Line& line = lineOf(key);
        for (std::size_t i = 0; i < kPlaces; ++i)
            if (line.signals[i] != 0 && line.keys[i] == key) return line.put(i, key, signal);
    }

private:
    static constexpr std::size_t kPlaces = 3;
    static constexpr std::size_t kFewestLines = 4;
    static constexpr std::size_t kMostLines = 512;  // 32 KiB

    struct alignas(64) Line {
        std::array<std::uint64_t, kPlaces> keys{};
        std::array<std::uintptr_t, kPlaces> signals{};
        std::uint64_t isPassed = 0;  ///< whether a key found no place here

        void put(std::size_t place, std::uint64_t key, const SignalSpecification* signal) noexcept {
            keys[place] = key;
            signals[place] = reinterpret_cast<std::uintptr_t>(signal);
        }
    };

    Line& lineOf(std::uint64_t key) noexcept { return m_lines[key & (m_lines.size() - 1)]; }

    std::vector<Line> m_lines;
    std::size_t m_limit = 0;  ///< of keys, for these lines
};

}  // namespace ks_hmi
