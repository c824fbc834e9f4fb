#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "host/unicode.h"

/// Hashes for look-up within the process: fast, well mixed, equal for equal contents, and never saved.
namespace ks_hmi_foundation {

/// Odd numbers with evenly spread bits, to multiply with.
inline constexpr std::uint64_t kFirstFactor = 0xA0761D6478BD642FULL;
inline constexpr std::uint64_t kSecondFactor = 0xE7037ED1A0B428DBULL;

/// Both halves of the 128-bit product of `a` and `b`, folded.
inline std::uint64_t foldedProduct(std::uint64_t a, std::uint64_t b) noexcept {
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide>(a) * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

/// Whether two texts have the same units.
inline bool isSameText(std::u16string_view a, std::u16string_view b) noexcept {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(char16_t)) == 0;
}

/// Hashes a sequence of texts and numbers. Ill-formed UTF-16 counts as U+FFFD, as in the texts of the source keys.
class TextHash {
public:
    TextHash& add(std::u16string_view text) noexcept;
    TextHash& add(std::uint64_t number) noexcept {
        m_state = mixed(m_state, number, 0);
        return *this;
    }
    std::uint64_t value() const noexcept { return foldedProduct(m_state ^ kFirstFactor, kSecondFactor); }

private:
    static constexpr std::size_t kUnits = sizeof(std::uint64_t) / sizeof(char16_t);

    /// The units as they are. Notices what may be a surrogate, which needs a closer look.
    class PlainUnits {
    public:
        explicit PlainUnits(std::u16string_view text) noexcept : m_units(text.data()) {}
        std::uint64_t one(std::size_t at) noexcept { return seen(m_units[at]); }
        std::uint64_t four(std::size_t at) noexcept {
            std::uint64_t units = 0;
            std::memcpy(&units, m_units + at, sizeof units);
            return seen(units);
        }
        /// False for most texts: surrogates have the two highest bits set, as have few letters.
        bool mayHaveSurrogates() const noexcept { return (m_highest & 0x8000800080008000ULL) != 0; }

    private:
        std::uint64_t seen(std::uint64_t units) noexcept {
            m_highest |= units & (units << 1);
            return units;
        }
        const char16_t* m_units;
        std::uint64_t m_highest = 0;
    };

    /// The units with lone surrogates replaced.
    class RepairedUnits {
    public:
        explicit RepairedUnits(std::u16string_view text) noexcept : m_text(text) {}
        std::uint64_t one(std::size_t at) const noexcept {
            using namespace ks_host;
            const char16_t unit = m_text[at];
            const bool isPaired = (isHighSurrogate(unit) && at + 1 < m_text.size() && isLowSurrogate(m_text[at + 1])) ||
                                  (isLowSurrogate(unit) && at > 0 && isHighSurrogate(m_text[at - 1]));
            return isSurrogate(unit) && !isPaired ? kReplacementCharacter : unit;
        }
        std::uint64_t four(std::size_t at) const noexcept {
            char16_t units[kUnits];
            for (std::size_t i = 0; i < kUnits; ++i) units[i] = static_cast<char16_t>(one(at + i));
            std::uint64_t word = 0;
            std::memcpy(&word, units, sizeof word);
            return word;
        }

    private:
        std::u16string_view m_text;
    };

    // The factors stay in the state beside their product, so that a factor of 0 forgets nothing.
    static std::uint64_t mixed(std::uint64_t state, std::uint64_t a, std::uint64_t b) noexcept {
        const std::uint64_t x = state ^ a ^ kFirstFactor;
        const std::uint64_t y = b ^ kSecondFactor;
        return foldedProduct(x, y) ^ std::rotl(x, 23) ^ y;
    }

    template <class Units>
    static std::uint64_t added(std::uint64_t state, Units& units, std::size_t size) noexcept;
    std::uint64_t repaired(std::u16string_view text) const noexcept;

    std::uint64_t m_state = 0;
};

// The last units are read once more where they do not fill a word: no loop over single units, and no copy. The size is
// spread over all bits, because units that are read twice may differ in as few bits as sizes do.
template <class Units>
[[gnu::always_inline]] inline std::uint64_t TextHash::added(std::uint64_t state, Units& units,
                                                            std::size_t size) noexcept {
    if (size == 0) return mixed(state, 0, 0);
    if (size < kUnits) return mixed(state, units.one(0) | units.one(size / 2) << 16 | units.one(size - 1) << 32, size);
    for (std::size_t at = 0; at + 2 * kUnits < size; at += 2 * kUnits)
        state = mixed(state, units.four(at), units.four(at + kUnits));
    const std::size_t first = size < 2 * kUnits ? 0 : size - 2 * kUnits;
    return mixed(state, units.four(first), units.four(size - kUnits) ^ (size * kFirstFactor));
}

inline TextHash& TextHash::add(std::u16string_view text) noexcept {
    PlainUnits plain(text);
    const std::uint64_t state = added(m_state, plain, text.size());
    m_state = plain.mayHaveSurrogates() ? repaired(text) : state;
    return *this;
}

[[gnu::noinline]] inline std::uint64_t TextHash::repaired(std::u16string_view text) const noexcept {
    RepairedUnits units(text);
    return added(m_state, units, text.size());
}

}  // namespace ks_hmi_foundation
