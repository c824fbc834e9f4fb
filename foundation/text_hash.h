#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

/// Hashes for look-up within the process: fast, well mixed, equal for equal contents, and never saved.
namespace ks_hmi_foundation {

/// Both halves of the 128-bit product of `a` and `b`, folded.
inline std::uint64_t foldedProduct(std::uint64_t a, std::uint64_t b) noexcept {
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide>(a) * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

constexpr bool isHighSurrogate(char16_t unit) noexcept { return unit >= 0xD800 && unit < 0xDC00; }
constexpr bool isLowSurrogate(char16_t unit) noexcept { return unit >= 0xDC00 && unit < 0xE000; }

/// Hashes a sequence of texts and numbers. Ill-formed UTF-16 counts as U+FFFD, as in the texts of the source keys.
class TextHash {
public:
    TextHash& add(std::u16string_view text) noexcept;
    TextHash& add(std::string_view bytes) noexcept;
    TextHash& add(std::uint64_t number) noexcept {
        mix(number, 0);
        return *this;
    }
    std::uint64_t value() const noexcept { return foldedProduct(m_state ^ kFirst, kSecond); }

private:
    static constexpr std::uint64_t kFirst = 0xA0761D6478BD642FULL;
    static constexpr std::uint64_t kSecond = 0xE7037ED1A0B428DBULL;
    static constexpr std::size_t kUnits = sizeof(std::uint64_t) / sizeof(char16_t);

    // The factors stay in the state beside their product, so that a factor of 0 forgets nothing.
    void mix(std::uint64_t a, std::uint64_t b) noexcept {
        const std::uint64_t x = m_state ^ a ^ kFirst;
        const std::uint64_t y = b ^ kSecond;
        m_state = foldedProduct(x, y) ^ std::rotl(x, 23) ^ y;
    }

    static std::uint64_t load(const void* from, std::size_t bytes) noexcept {
        std::uint64_t word = 0;
        std::memcpy(&word, from, bytes);
        return word;
    }
    static constexpr bool hasSurrogate(std::uint64_t fourUnits) noexcept {
        const std::uint64_t lanes = (fourUnits & 0xF800F800F800F800ULL) ^ 0xD800D800D800D800ULL;
        return ((lanes - 0x0001000100010001ULL) & ~lanes & 0x8000800080008000ULL) != 0;
    }
    bool addWellKnown(std::u16string_view text) noexcept;
    void addRepaired(std::u16string_view text) noexcept;

    std::uint64_t m_state = 0;
};

inline TextHash& TextHash::add(std::string_view bytes) noexcept {
    constexpr std::size_t kWord = sizeof(std::uint64_t);
    std::size_t at = 0;
    for (; at + 2 * kWord <= bytes.size(); at += 2 * kWord) {
        mix(load(bytes.data() + at, kWord), load(bytes.data() + at + kWord, kWord));
    }
    const std::size_t rest = bytes.size() - at;
    const std::size_t first = rest < kWord ? rest : kWord;
    mix(load(bytes.data() + at, first), load(bytes.data() + at + first, rest - first) ^ bytes.size());
    return *this;
}

inline TextHash& TextHash::add(std::u16string_view text) noexcept {
    const std::uint64_t before = m_state;
    if (!addWellKnown(text)) {
        m_state = before;
        addRepaired(text);
    }
    return *this;
}

/// False, with the state spoilt, for a text that has surrogates.
inline bool TextHash::addWellKnown(std::u16string_view text) noexcept {
    std::uint64_t surrogates = 0;
    std::size_t at = 0;
    for (; at + 2 * kUnits <= text.size(); at += 2 * kUnits) {
        const std::uint64_t first = load(text.data() + at, sizeof first);
        const std::uint64_t second = load(text.data() + at + kUnits, sizeof second);
        surrogates |= static_cast<std::uint64_t>(hasSurrogate(first) || hasSurrogate(second));
        mix(first, second);
    }
    const std::size_t rest = text.size() - at;
    const std::size_t units = rest < kUnits ? rest : kUnits;
    const std::uint64_t first = load(text.data() + at, units * sizeof(char16_t));
    const std::uint64_t second = load(text.data() + at + units, (rest - units) * sizeof(char16_t));
    mix(first, second ^ text.size());
    return surrogates == 0 && !hasSurrogate(first) && !hasSurrogate(second);
}

inline void TextHash::addRepaired(std::u16string_view text) noexcept {
    char16_t units[2 * kUnits] = {};
    std::size_t filled = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool isPair = isHighSurrogate(text[at]) && at + 1 < text.size() && isLowSurrogate(text[at + 1]);
        const bool isTail = isLowSurrogate(text[at]) && at > 0 && isHighSurrogate(text[at - 1]);
        const bool isLone = !isPair && !isTail && (isHighSurrogate(text[at]) || isLowSurrogate(text[at]));
        units[filled++] = isLone ? u'\uFFFD' : text[at];
        if (filled == 2 * kUnits) {
            mix(load(units, sizeof(std::uint64_t)), load(units + kUnits, sizeof(std::uint64_t)));
            filled = 0;
        }
    }
    const std::size_t first = filled < kUnits ? filled : kUnits;
    mix(load(units, first * sizeof(char16_t)), load(units + first, (filled - first) * sizeof(char16_t)) ^ text.size());
}

}  // namespace ks_hmi_foundation
