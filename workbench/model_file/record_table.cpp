#include "workbench/model_file/record_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "host/values.h"
#include "memory_host/orvex/values/values.h"
#include "observers/signal_client.h"
#include "signals/signal_specification.h"
#include "workbench/text/error.h"

namespace workbench {

namespace {

// What a field must hold, where the library itself would read something else as empty or cut it.
struct FieldKind {
    const char* description;
    bool (*holds)(const hvArray* value);
};

bool isText(const hvArray* value) {
    return hvGetClassID(value) == hvCHAR_CLASS && hvGetNumberOfDimensions(value) == 2 && hvGetDimensions(value)[0] == 1;
}

bool isTextWithoutNul(const hvArray* value) {
    return isText(value) && matrix::get_ustring(value).find(u'\0') == std::u16string::npos;
}

bool isListOfTexts(const hvArray* value) {
    if (hvGetClassID(value) != hvCELL_CLASS) return false;
    for (std::size_t i = 0; i < hvGetNumberOfElements(value); ++i)
        if (!isText(hvGetCell(value, i))) return false;
    return true;
}

bool isStructOfTexts(const hvArray* value) {
    if (hvGetClassID(value) != hvSTRUCT_CLASS || hvGetNumberOfElements(value) != 1) return false;
    for (int i = 0; i < hvGetNumberOfFields(value); ++i)
        if (!isText(hvGetField(value, 0, hvGetFieldNameByNumber(value, i)))) return false;
    return true;
}

bool isNumber(const hvArray* value) {
    const hvClassID classId = hvGetClassID(value);
    const bool isNumeric = classId == hvDOUBLE_CLASS || (classId >= hvSINGLE_CLASS && classId <= hvUINT64_CLASS);
    return isNumeric && hvGetNumberOfElements(value) == 1;
}

bool isWholeWithin(const hvArray* value, double least, double most) {
    if (!isNumber(value)) return false;
    const double number = hvGetScalar(value);
    return number >= least && number <= most && number == std::floor(number);
}

bool isCount(const hvArray* value) { return isWholeWithin(value, 0.0, std::numeric_limits<std::uint32_t>::max()); }

template <int kLeast>
bool isWhole(const hvArray* value) {
    return isWholeWithin(value, kLeast, std::numeric_limits<std::int32_t>::max());
}

bool isTruth(const hvArray* value) {
    const bool isLogical = hvGetClassID(value) == hvLOGICAL_CLASS && hvGetNumberOfElements(value) == 1;
    return isLogical || isWholeWithin(value, 0.0, 1.0);
}

// For messages: a single number itself, of other values class and size.
std::string describe(const hvArray* value) {
    return isNumber(value) ? fmt::format("the number {}", hvGetScalar(value)) : orvex::describeValue(value);
}

constexpr FieldKind kAny{"a value", [](const hvArray*) { return true; }};
constexpr FieldKind kText{"a text in one row", isText};
constexpr FieldKind kTextWithoutNul{"a text without NUL characters", isTextWithoutNul};
constexpr FieldKind kListOfTexts{"an array of texts", isListOfTexts};
constexpr FieldKind kStructOfTexts{"an object of texts", isStructOfTexts};
constexpr FieldKind kCount{"a whole number from 0 to 4294967295", isCount};
constexpr FieldKind kWhole{"a whole number from -2147483648 to 2147483647",
                           isWhole<std::numeric_limits<std::int32_t>::min()>};
constexpr FieldKind kFromOne{"a whole number from 1 to 2147483647", isWhole<1>};
constexpr FieldKind kTruth{"true or false, or 1 or 0,", isTruth};

const FieldKind& kindOf(std::string_view field) {
    static constexpr std::array<std::pair<std::string_view, const FieldKind*>, 25> kKinds{{
        {"UUID", &kText},
        {"BlockPath_", &kText},
        {"EID_", &kText},
        {"SubPath_", &kText},
        {"OutputPortIndex_", &kWhole},
        {"LogicalPortIndex_", &kWhole},
        {"SignalName_", &kText},
        {"SubSysPath_", &kText},
        {"Decimation_", &kFromOne},
        {"MaxPoints_", &kWhole},
        {"TargetBufferedStreaming_", &kTruth},
        {"IsFrameBased_", &kTruth},
        {"HideInPLV_", &kTruth},
        {"DomainType_", &kText},
        {"DomainParams_", &kStructOfTexts},
        {"VisualType_", &kText},
        {"ModelPath_", &kListOfTexts},
        {"ModelPathEID_", &kListOfTexts},
        {"SourceModel_", &kText},
        {"SignalUUID_", &kText},
        {"ObserverType_", &kText},
        {"UpdateRate_", &kCount},
        {"DimensionChannel_", &kCount},
        {"ObserveImaginaryPart_", &kTruth},
        {"BusLeafPath_", &kTextWithoutNul},
    }};
    const auto* const found =
        std::find_if(kKinds.begin(), kKinds.end(), [&](const auto& entry) { return entry.first == field; });
    return found == kKinds.end() ? kAny : *found->second;
}

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
                result.at(static_cast<std::size_t>(one)).push_back({name, &kindOf(name)});
        return result;
    }();
    return tables[static_cast<std::size_t>(kind)];
}

HvArrayPtr makeRecords(RecordKind kind, std::size_t count) {
    const auto fields = fieldsOf(kind);
    return HvArrayPtr(hvCreateStructArray(1, &count, static_cast<int>(fields.size()), fields.data()));
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
    m_rows.emplace_back();
    m_markedNames.emplace_back();
    m_lines.begin(m_file.line());
}

void RecordTable::setField(std::size_t field, HvArrayPtr value) {
    const bool isMarkedName = field == RecordLines::kMarkedName;
    const FieldKind& kind = isMarkedName ? kText : *fieldTable(m_kind)[field].kind;
    if (value && !kind.holds(value.get()))
        throw Error(
            fmt::format("{} appears where {} is expected; correct it", describe(value.get()), kind.description));
    if (!isMarkedName)
        m_rows.back().at(field) = std::move(value);
    else if (value)
        m_markedNames.back() = ks_host::textOf(value.get());
}

RecordSlice RecordTable::takeSlice() {
    HvArrayPtr records = makeRecords(m_kind, m_rows.size());
    const auto fields = fieldsOf(m_kind);
    for (std::size_t i = 0; i < m_rows.size(); ++i)
        for (std::size_t field = 0; field < fields.size(); ++field)
            if (HvArrayPtr& value = m_rows[i].at(field)) hvSetField(records.get(), i, fields[field], value.release());
    m_hasGivenSlice = true;
    const std::size_t first = std::exchange(m_first, m_first + m_rows.size());
    m_rows.clear();
    orvex::markAsPersisted(records.get());
    return {first, std::move(records), std::exchange(m_markedNames, {})};
}

HvArrayPtr emptyRecords(RecordKind kind) {
    HvArrayPtr records = makeRecords(kind, 0);
    orvex::markAsPersisted(records.get());
    return records;
}

}  // namespace workbench
