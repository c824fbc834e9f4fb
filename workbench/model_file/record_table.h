#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/hv_array.h"
#include "workbench/json/json_file.h"
#include "workbench/model_file/record_slice.h"
#include "workbench/text/error.h"

/// The records of a model file: its signals and its clients, an object each. The keys are the names of the
/// fields that the library saves.
namespace workbench {

/// Names of the saved fields in order, NUL-terminated.
std::span<const char* const> fieldsOf(RecordKind kind);
/// Of a signal, behind the saved fields: what its source was called.
inline constexpr std::string_view kMarkedName = "markedName";
/// Position of a saved field's name, or of "markedName"; nothing when it is neither. `likely` is looked at first.
std::optional<std::size_t> fieldNumber(RecordKind kind, std::string_view name, std::size_t likely = 0);

/// Where the records of a list stand in the file: 1-based lines, 0 for a field that is not there. Records of the same
/// shape share what they have in common.
class RecordLines {
public:
    static constexpr std::size_t kMostFields = 16;
    static constexpr std::size_t kMarkedName = kMostFields;  ///< its place behind the saved fields

    /// A further record starts at that line.
    void begin(std::size_t line);
    /// A field of the last one is at that line, which is not in front of its start.
    void note(std::size_t field, std::size_t line) { m_last.at(field) = line - m_starts.back() + 1; }
    /// Whether the last one has the field.
    bool has(std::size_t field) const noexcept { return m_last.at(field) != 0; }

    /// Of the record at `position` (0-based), or of one of its fields; 0 for what is not there.
    std::size_t start(std::size_t position) const noexcept;
    std::size_t line(std::size_t position, std::size_t field) const;

private:
    /// Lines from the record's start, plus one.
    using Shape = std::array<std::size_t, kMostFields + 1>;

    std::vector<std::size_t> m_starts;
    std::vector<std::uint32_t> m_shapeNumbers;  ///< of all but the last one
    std::vector<Shape> m_shapes;
    std::map<Shape, std::uint32_t> m_numbers;
    Shape m_last{};
};

/// The file's place for a field (empty: the record itself) of the record at `position` (0-based).
ErrorPlace recordPlace(const std::string& path, RecordKind kind, const RecordLines& lines, std::size_t position,
                       const std::string& field);

/// A 0 x 1 struct array of all fields, marked as read from a file.
HvArrayPtr emptyRecords(RecordKind kind);

class PlainRecord;

/// Gathers the records of one kind.
class RecordTable {
public:
    RecordTable(const JsonFile& file, RecordKind kind) : m_file(file), m_kind(kind) {}

    void begin();
    bool hasField(std::size_t field) const noexcept { return m_lines.has(field); }
    void noteField(std::size_t field) { m_lines.note(field, m_file.line()); }
    /// Throws `Error`, with text only, for a value of the wrong kind.
    void setField(std::size_t field, HvArrayPtr value);
    /// Notes and sets a field of a record that was read as a whole, in their order.
    void takeField(const PlainRecord& record, std::size_t field);

    RecordKind kind() const noexcept { return m_kind; }
    /// How many records there are since the last slice.
    std::size_t size() const noexcept { return m_markedNames.size(); }
    bool hasGivenSlice() const noexcept { return m_hasGivenSlice; }
    /// These records. The struct array is N x 1 of all fields, marked as read from a file; absent fields are unset.
    RecordSlice takeSlice();
    /// Of all records since it was called last.
    RecordLines takeLines() noexcept { return std::exchange(m_lines, {}); }
    const RecordLines& lines() const noexcept { return m_lines; }

private:
    const JsonFile& m_file;
    RecordKind m_kind;
    std::size_t m_first = 0;
    bool m_hasGivenSlice = false;
    std::vector<HvArrayPtr> m_values;  ///< of each record all fields, null for absent ones
    RecordLines m_lines;
    MarkedNameList m_markedNames;
};

}  // namespace workbench
