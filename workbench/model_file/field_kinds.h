#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/hv_array.h"

namespace workbench {

/// What a saved field of records must hold, where the library itself would read something else as empty or cut it.
struct FieldKind {
    /// What its values mostly look like in a file.
    enum class Plain : std::uint8_t { text, number, fields, other };

    const char* description;  ///< for messages: "a text in one row"
    bool (*holds)(const hvArray* value);
    Plain plain = Plain::other;
    std::int32_t least = 0;  ///< of plain numbers, which are not below 0
    std::int32_t most = 0;
};

/// Of the saved field of that name.
const FieldKind& fieldKindOf(std::string_view field);
/// Of marked names.
const FieldKind& markedNameKind() noexcept;
/// For messages: what a value is that is not of the wanted kind.
std::string describeFieldValue(const hvArray* value, const FieldKind& wanted);

}  // namespace workbench
