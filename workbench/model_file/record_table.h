#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/hv_array.h"
#include "workbench/json/json_file.h"
#include "workbench/text/error.h"

/// The records of a model file: its signals and its clients, an object each. The keys are the names of the
/// fields that the library saves.
namespace workbench {

enum class RecordKind : std::uint8_t { signal, client };

/// Names of the saved fields in order, NUL-terminated.
std::span<const char* const> fieldsOf(RecordKind kind);
/// Of a signal, behind the saved fields: what its source was called.
inline constexpr std::string_view kMarkedName = "markedName";
/// Position of a saved field's name, or of "markedName"; nothing when it is neither.
std::optional<std::size_t> fieldNumber(RecordKind kind, std::string_view name);

/// Where a record stands in the file: 1-based lines, 0 for a field that is not there.
struct RecordLines {
    static constexpr std::size_t kMostFields = 16;
    static constexpr std::size_t kMarkedName = kMostFields;  ///< its place behind the saved fields
    std::size_t start = 0;
    std::array<std::size_t, kMostFields + 1> fields{};
};

/// The file's place for a field (empty: the record itself) of the record at `position` (0-based).
ErrorPlace recordPlace(const std::string& path, RecordKind kind, const std::vector<RecordLines>& lines,
                       std::size_t position, const std::string& field);

/// A 0 x 1 struct array of all fields, marked as read from a file.
HvArrayPtr emptyRecords(RecordKind kind);

/// Gathers the records of one kind.
class RecordTable {
public:
    RecordTable(const JsonFile& file, RecordKind kind) : m_file(file), m_kind(kind) {}

    void begin();
    bool hasField(std::size_t field) const noexcept { return m_lines.back().fields.at(field) != 0; }
    void noteField(std::size_t field) { m_lines.back().fields.at(field) = m_file.line(); }
    /// Throws `Error`, with text only, for a value of the wrong kind.
    void setField(std::size_t field, HvArrayPtr value);

    RecordKind kind() const noexcept { return m_kind; }
    /// N x 1 struct array of all fields, marked as read from a file; absent fields are unset. The table is
    /// then empty.
    HvArrayPtr build();
    std::vector<RecordLines> takeLines() noexcept { return std::exchange(m_lines, {}); }
    /// Of all records since it was called last.
    std::vector<std::optional<std::u16string>> takeMarkedNames() noexcept { return std::exchange(m_markedNames, {}); }

private:
    const JsonFile& m_file;
    RecordKind m_kind;
    std::vector<std::array<HvArrayPtr, RecordLines::kMostFields>> m_rows;
    std::vector<RecordLines> m_lines;
    std::vector<std::optional<std::u16string>> m_markedNames;
};

}  // namespace workbench
