#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/hv_array.h"
#include "workbench/model_file/field_kinds.h"
#include "workbench/model_file/record_table.h"

namespace workbench {

/// Reads a signal of which all is as `writeModel` writes it, several times as fast as member by member. It takes
/// nothing that would be refused or read differently otherwise.
class PlainRecord {
public:
    PlainRecord();

    /// Whether `text` starts with a signal, a comma and the end of a line: every saved field in order, each on a line
    /// of its own, texts without escapes, small whole numbers and no domain parameters. `text` must stay where it is
    /// as long as the values are asked for.
    bool scan(std::string_view text);
    /// How much of the text that is.
    std::size_t size() const noexcept { return m_size; }
    /// How many fields it has.
    std::size_t fields() const noexcept { return m_members.size(); }
    bool hasMarkedName() const noexcept { return m_hasMarkedName; }
    std::string_view markedName() const noexcept { return m_texts.back(); }
    /// Makes the value of a saved field.
    HvArrayPtr value(std::size_t field) const;

private:
    struct Member {
        std::string key;  ///< with what is in front of it and behind it
        const FieldKind* kind;
    };

    bool take(std::string_view text) noexcept;
    bool takeValue(std::size_t field);
    bool takeText(std::size_t field);
    bool takeNumber(std::size_t field) noexcept;

    std::vector<Member> m_members;
    std::string m_markedNameKey;
    std::string_view m_rest;
    std::size_t m_size = 0;
    bool m_hasMarkedName = false;
    std::array<std::string_view, RecordLines::kMostFields + 1> m_texts{};  ///< the marked name at the end
    std::array<std::int32_t, RecordLines::kMostFields> m_numbers{};
};

}  // namespace workbench
