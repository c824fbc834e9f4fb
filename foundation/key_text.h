#pragma once

#include <boost/container_hash/hash.hpp>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "foundation/number_digits.h"
#include "foundation/stack_text.h"
#include "foundation/utf8_units.h"

namespace ks_hmi_foundation {

/// The text of a key and its hash. Allocates only for texts of hundreds of bytes.
class KeyText {
public:
    KeyText& add(std::string_view utf8) {
        char* const to = m_text.reserve(utf8.size());
        if (!utf8.empty()) std::memcpy(to, utf8.data(), utf8.size());
        return endAt(to + utf8.size());
    }
    /// A text that is known here: copied without a call.
    template <std::size_t Size>
    KeyText& add(const char (&literal)[Size]) {
        char* const to = m_text.reserve(Size - 1);
        std::memcpy(to, literal, Size - 1);
        return endAt(to + Size - 1);
    }
    /// Adds the text in UTF-8; ill-formed UTF-16 becomes U+FFFD.
    KeyText& add(std::u16string_view text) {
        const bool fitsInAnyCase = kMostUtf8BytesPerUnit * text.size() <= m_text.room();
        return endAt(putUtf8(m_text.reserve(fitsInAnyCase ? 0 : mostUtf8Bytes(text)), text));
    }
    KeyText& add(int number) { return endAt(putInt(m_text.reserve(kMostIntBytes), number)); }
    /// As "%.17g" writes it.
    KeyText& addGeneral17(double number) { return endAt(putGeneral17(m_text.reserve(kMostGeneral17Bytes), number)); }
    /// As "%f" writes it.
    KeyText& addFixed6(double number) { return endAt(putFixed6(m_text.reserve(kMostFixed6Bytes), number)); }

    std::string_view text() const noexcept { return m_text.text(); }
    /// The string hash behind all source keys: Boost's container hash of the narrow text.
    std::uint64_t hash() const noexcept { return boost::hash<std::string_view>()(text()); }

private:
    KeyText& endAt(const char* end) noexcept {
        m_text.endAt(end);
        return *this;
    }

    StackText m_text;
};

}  // namespace ks_hmi_foundation
