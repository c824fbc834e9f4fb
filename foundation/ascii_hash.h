#pragma once

#include <bit>
#include <boost/container_hash/hash.hpp>
#include <boost/version.hpp>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace ks_hmi_foundation {

/// Boost's container hash of a narrow text that is given in pieces, taken while they are converted: no text is built.
class AsciiHash {
public:
    /// Whether the hash is that of the Boost at hand: others than this one mix in another way.
    static constexpr bool kIsBoosts = BOOST_VERSION / 100 == 1081 && std::endian::native == std::endian::little;

    /// False for a text with other characters than those of ASCII; no hash comes of it then.
    bool add(std::u16string_view text) noexcept {
        const char16_t* at = text.data();
        std::size_t left = text.size();
        for (; left >= kWord; left -= kWord, at += kWord) {
            std::uint64_t units = 0;
            std::memcpy(&units, at, sizeof units);
            if ((units & 0xFF80'FF80'FF80'FF80) != 0) return false;
            units = (units | units >> 8) & 0x0000'FFFF'0000'FFFF;
            addWord(static_cast<std::uint32_t>(units | units >> 16));
        }
        for (; left > 0; --left, ++at) {
            if (*at > 0x7F) return false;
            add(static_cast<char>(*at));
        }
        return true;
    }
    AsciiHash& add(char character) noexcept {
        m_pending |= std::uint64_t{static_cast<unsigned char>(character)} << m_bits;
        m_bits += 8;
        if (m_bits == 32) {
            m_bits = 0;
            addWord(0);
        }
        return *this;
    }
    AsciiHash& add(const char* begin, const char* end) noexcept {
        for (; begin != end; ++begin) add(*begin);
        return *this;
    }
    std::uint64_t value() const noexcept {
        std::size_t state = m_state;
        boost::hash_combine(state, static_cast<std::uint32_t>(m_pending | std::uint64_t{1} << m_bits));
        return state;
    }

private:
    static constexpr std::size_t kWord = 4;

    // Four characters behind those that wait.
    void addWord(std::uint32_t word) noexcept {
        m_pending |= std::uint64_t{word} << m_bits;
        boost::hash_combine(m_state, static_cast<std::uint32_t>(m_pending));
        m_pending >>= 32;
    }

    std::size_t m_state = 0;
    std::uint64_t m_pending = 0;  ///< up to three characters that fill no word yet
    unsigned m_bits = 0;          ///< of them
};

}  // namespace ks_hmi_foundation
