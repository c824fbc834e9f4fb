#pragma once

#include <string>

#include "host/api.h"

/// Text conversion. Ill-formed sequences become U+FFFD; nothing here throws but for memory.
/// May be called from any thread.
namespace fl::i18n {

/// An explicit converter from UTF-16 to a named encoding; only "UTF-8" is known. Constant-initialised
/// wherever it is static, so that no order of initialisation matters.
class codecvt_ustring_to_string {
public:
    constexpr codecvt_ustring_to_string(const char* encoding, bool replaceIllFormed) noexcept
        : m_encoding(encoding), m_replaceIllFormed(replaceIllFormed) {}     ///< `encoding` lives as long as this.
    constexpr const char* encoding() const noexcept { return m_encoding; }  ///< As given.
    constexpr bool replacesIllFormed() const noexcept { return m_replaceIllFormed; }  ///< As given.

private:
    const char* m_encoding;
    bool m_replaceIllFormed;
};

/// UTF-8 (NUL-terminated; null reads as empty) to UTF-16.
OX_API std::u16string to_ustring(const char* text);
/// UTF-16 to UTF-8.
OX_API std::string to_string(const std::u16string& text);
/// The same through an explicit converter. Throws the host's exception for an unknown encoding.
OX_API std::string to_string(const std::u16string& text, const codecvt_ustring_to_string& converter);

}  // namespace fl::i18n
