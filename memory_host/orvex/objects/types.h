#pragma once

#include <optional>
#include <string>
#include <utility>

#include "host/hv_array.h"
#include "host/object_system.h"

/// Declared types and the conversion of values by them.

namespace hos {

class COSType {
public:
    enum class Kind { number, uint32, int32, logical, unicodeText, asciiText, any, object };

    COSType(Kind kind, std::string text) : m_kind(kind), m_text(std::move(text)) {}
    Kind kind() const noexcept { return m_kind; }
    /// As declared; for `Kind::object` the full name of the class.
    const std::string& text() const noexcept { return m_text; }

private:
    Kind m_kind;
    std::string m_text;
};

}  // namespace hos

namespace orvex {

/// The type of that text; the empty name stands for "any". Throws the host's exception for a text that
/// names neither a type nor a class.
const hos::COSType& resolveType(hos::InternedName typeText);

/// The value converted by its declared type; nothing when it does not convert. Numbers must fit exactly:
/// nothing is rounded. "any" and class-typed values are borrowed from `value`.
std::optional<hos::Argument> convertByType(const hos::COSType& type, const hvArray* value);

/// Throws the host's exception for a value that did not convert. `what` begins the message
/// ("Argument 2 of ..."); it goes on with the type wanted and what was given.
[[noreturn]] void refuseValue(const hos::COSType& type, const hvArray* value, const std::string& what);

}  // namespace orvex
