#include "workbench/model_file/record_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "host/values.h"
#include "memory_host/orvex/values/values.h"
#include "observers/signal_client.h"
#include "signals/signal_specification.h"
#include "workbench/model_file/field_kinds.h"
#include "workbench/model_file/plain_record.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

// A saved field, with what is looked up for each value of it.
struct Field {
    std::string_view name;
    const FieldKind* kind;
};

const std::vector<Field>& fieldTable(RecordKind kind) {
    static const auto tables = [] {
        std::array<std::vector<Field>, 2> result;
        for (const RecordKind one : {RecordKind::signal, RecordKind::client})
            for (const std::string_view name : fieldsOf(one))
                result.at(static_cast<std::size_t>(one)).push_back({name, &fieldKindOf(name)});
        return result;
    }();
    return tables[static_cast<std::size_t>(kind)];
}

}  // namespace

std::span<const char* const> fieldsOf(RecordKind kind) {
    if (kind == RecordKind::client) return ks_hmi::SignalClient::getStructFields();
    using ks_hmi::SignalSpecification;
    const int count = SignalSpecification::getNumStructFields(/*withRuntimeFields=*/false);
    return {SignalSpecification::getStructFields(), static_cast<std::size_t>(count)};
}

std::optional<std::size_t> fieldNumber(RecordKind kind, std::string_view name, std::size_t likely) {
    const std::vector<Field>& fields = fieldTable(kind);
    if (likely < fields.size() && fields[likely].name == name) return likely;
    if (kind == RecordKind::signal && name == kMarkedName) return RecordLines::kMarkedName;
    const auto found = std::find_if(fields.begin(), fields.end(), [&](const Field& one) { return one.name == name; });
    if (found == fields.end()) return std::nullopt;
    return static_cast<std::size_t>(found - fields.begin());
}

void RecordLines::begin(std::size_t line) {
    if (!m_starts.empty() && (m_shapeNumbers.empty() || m_shapes[m_shapeNumbers.back()] != m_last)) {
        const auto [shape, isNew] = m_numbers.try_emplace(m_last, static_cast<std::uint32_t>(m_shapes.size()));
        if (isNew) m_shapes.push_back(m_last);
        m_shapeNumbers.push_back(shape->second);
    } else if (!m_starts.empty()) {
        m_shapeNumbers.push_back(m_shapeNumbers.back());
    }
    m_starts.push_back(line);
    m_last = {};
}

std::size_t RecordLines::start(std::size_t position) const noexcept {
    return position < m_starts.size() ? m_starts[position] : 0;
}

std::size_t RecordLines::line(std::size_t position, std::size_t field) const {
    if (position >= m_starts.size()) return 0;
    const bool isLast = position + 1 == m_starts.size();
    const std::size_t offset = isLast ? m_last.at(field) : m_shapes[m_shapeNumbers[position]].at(field);
    return offset == 0 ? 0 : m_starts[position] + offset - 1;
}

ErrorPlace recordPlace(const std::string& path, RecordKind kind, const RecordLines& lines, std::size_t position,
                       const std::string& field) {
    const std::optional<std::size_t> number = fieldNumber(kind, field);
    std::size_t line = number ? lines.line(position, *number) : 0;
    if (line == 0) line = lines.start(position);
    const char* const list = kind == RecordKind::signal ? "signals" : "clients";
    return {path, line, fmt::format("/{}/{}{}", list, position, field.empty() ? "" : pointerToken(field))};
}

void RecordTable::begin() {
    m_values.resize(m_values.size() + fieldsOf(m_kind).size());
    m_markedNames.emplace_back();
    m_lines.begin(m_file.line());
}

void RecordTable::setField(std::size_t field, HvArrayPtr value) {
    const bool isMarkedName = field == RecordLines::kMarkedName;
    const FieldKind& kind = isMarkedName ? markedNameKind() : *fieldTable(m_kind)[field].kind;
    if (value && !kind.holds(value.get()))
        throw Error(fmt::format("{} appears where {} is expected; correct it", describeFieldValue(value.get(), kind),
                                kind.description));
    if (!isMarkedName)
        m_values[m_values.size() - fieldsOf(m_kind).size() + field] = std::move(value);
    else if (value)
        m_markedNames.back() = ks_host::textOf(value.get());
}

void RecordTable::takeField(const PlainRecord& record, std::size_t field) {
    noteField(field);
    if (field == RecordLines::kMarkedName)
        m_markedNames.back() = toUtf16(record.markedName());
    else
        m_values[m_values.size() - record.fields() + field] = record.value(field);
}

RecordSlice RecordTable::takeSlice() {
    const std::size_t first = std::exchange(m_first, m_first + size());
    HvArrayPtr records = orvex::makeStructColumn(fieldsOf(m_kind), m_values);
    m_values.clear();
    m_hasGivenSlice = true;
    orvex::markAsPersisted(records.get());
    return {first, std::move(records), std::exchange(m_markedNames, {})};
}

HvArrayPtr emptyRecords(RecordKind kind) {
    HvArrayPtr records = orvex::makeStructColumn(fieldsOf(kind), {});
    orvex::markAsPersisted(records.get());
    return records;
}

}  // namespace workbench
