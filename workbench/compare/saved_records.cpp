#include "workbench/compare/saved_records.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <utility>

#include "host/values.h"
#include "memory_host/kestrel/signal_block.h"
#include "memory_host/orvex/values/values.h"
#include "workbench/text/text.h"
#include "workbench/values/host_value_writer.h"

namespace workbench {

namespace {

enum class Form : std::uint8_t { text, number, flag, list, parameters };

Form formOf(std::string_view field) {
    static const std::unordered_map<std::string_view, Form> kForms{{"OutputPortIndex_", Form::number},
                                                                   {"LogicalPortIndex_", Form::number},
                                                                   {"Decimation_", Form::number},
                                                                   {"MaxPoints_", Form::number},
                                                                   {"UpdateRate_", Form::number},
                                                                   {"DimensionChannel_", Form::number},
                                                                   {"TargetBufferedStreaming_", Form::flag},
                                                                   {"IsFrameBased_", Form::flag},
                                                                   {"HideInPLV_", Form::flag},
                                                                   {"ObserveImaginaryPart_", Form::flag},
                                                                   {"ModelPath_", Form::list},
                                                                   {"ModelPathEID_", Form::list},
                                                                   {"DomainParams_", Form::parameters},
                                                                   {"ObserverParams_", Form::parameters}};
    const auto found = kForms.find(field);
    return found == kForms.end() ? Form::text : found->second;
}

std::string unsetForm(Form form) {
    switch (form) {
        case Form::text:
            return "\"\"";
        case Form::number:
            return "0";
        case Form::flag:
            return "false";
        case Form::list:
            return "[]";
        case Form::parameters:
            break;
    }
    return "{}";
}

std::string canonical(const hvArray* value, std::string_view field) {
    const Form form = formOf(field);
    if (!value) return unsetForm(form);
    if (form == Form::flag) return ks_host::numberAt(value).value_or(0.0) != 0.0 ? "true" : "false";
    if (form == Form::number) return fmt::format("{:.0f}", ks_host::numberAt(value).value_or(0.0));
    std::string out;
    field == "DomainParams_" ? appendJsonFieldsSorted(out, value) : appendJsonValue(out, value);
    return out;
}

// What a field that was left out is saved as.
HvArrayPtr unsetValue(std::string_view field) {
    constexpr std::size_t kNone = 0;
    constexpr std::size_t kOne = 1;
    switch (formOf(field)) {
        case Form::text:
            return ks_host::makeText(std::u16string_view());
        case Form::number:
            return ks_host::makeDouble(0.0);
        case Form::flag:
            return field == "ObserveImaginaryPart_" ? ks_host::makeLogical(false) : ks_host::makeDouble(0.0);
        case Form::list:
            return HvArrayPtr(hvCreateCellArray(1, &kNone));
        case Form::parameters:
            break;
    }
    return HvArrayPtr(hvCreateStructArray(1, &kOne, 0, nullptr));
}

HvArrayPtr unsetRecord(RecordKind kind) {
    std::vector<HvArrayPtr> values;
    for (const char* const field : fieldsOf(kind)) values.push_back(unsetValue(field));
    return orvex::makeStructColumn(fieldsOf(kind), values);
}

// A saved field, with what is looked up for each value of it.
struct SavedField {
    const char* name;
    Form form;
};

const std::vector<SavedField>& savedFields(RecordKind kind) {
    const auto fieldsWithForms = [](RecordKind one) {
        std::vector<SavedField> fields;
        for (const char* const name : fieldsOf(one)) fields.push_back({name, formOf(name)});
        return fields;
    };
    static const std::vector<SavedField> signals = fieldsWithForms(RecordKind::signal);
    static const std::vector<SavedField> clients = fieldsWithForms(RecordKind::client);
    return kind == RecordKind::signal ? signals : clients;
}

std::u16string_view charsOf(const hvArray* value) { return {hvGetChars(value), hvGetNumberOfElements(value)}; }

bool isEmptyStruct(const hvArray* value) {
    return hvGetClassID(value) == hvSTRUCT_CLASS && hvGetNumberOfFields(value) == 0 &&
           hvGetNumberOfElements(value) == 1;
}

// Without forming the texts, where it is seen at once.
std::optional<bool> seenToBeSame(const hvArray* one, const hvArray* other, Form form) {
    if (one == other) return true;
    if (ks_host::isText(one) && ks_host::isText(other)) return charsOf(one) == charsOf(other);
    if (form == Form::parameters && isEmptyStruct(one) && isEmptyStruct(other)) return true;
    if (form != Form::number && form != Form::flag) return std::nullopt;
    const double a = ks_host::numberAt(one).value_or(0.0);
    const double b = ks_host::numberAt(other).value_or(0.0);
    if (form == Form::flag) return (a != 0.0) == (b != 0.0);
    const bool areWhole = a == std::trunc(a) && b == std::trunc(b);
    return areWhole ? std::optional(a == b && std::signbit(a) == std::signbit(b)) : std::nullopt;
}

bool isSameValue(const hvArray* one, const hvArray* other, const SavedField& field) {
    const std::optional<bool> isSame = seenToBeSame(one, other, field.form);
    return isSame ? *isSame : canonical(one, field.name) == canonical(other, field.name);
}

}  // namespace

std::u16string recordText(const hvArray* records, std::size_t position, const char* field) {
    return ks_host::textOf(hvGetField(records, position, field));
}

std::u16string_view recordView(const hvArray* records, std::size_t position, const char* field) noexcept {
    const hvArray* const value = hvGetField(records, position, field);
    return ks_host::isText(value) ? charsOf(value) : std::u16string_view();
}

void setRecordText(hvArray* records, std::size_t position, const char* field, std::u16string_view text) {
    const hvArray* const before = hvGetField(records, position, field);
    if (ks_host::isText(before) && charsOf(before) == text) return;
    hvReplaceField(records, position, field, ks_host::makeText(text).release());
}

std::u16string_view domainParameter(const hvArray* signals, std::size_t position, const char* name) {
    return recordView(hvGetField(signals, position, "DomainParams_"), 0, name);
}

const kestrel::Block* SavedBlocks::of(const RecordPlace& signal) {
    const std::u16string_view path = recordView(signal.records, signal.position, "BlockPath_");
    return of(recordView(signal.records, signal.position, "EID_"), path);
}

const kestrel::Block* SavedBlocks::of(std::u16string_view eid, std::u16string_view path) {
    if (!m_block || m_eid != eid || m_path != path) {
        m_eid = eid;
        m_path = path;
        m_block = kestrel::signalBlock(*m_model, toUtf8(eid), m_path);
    }
    return *m_block;
}

std::string canonicalField(const hvArray* records, std::size_t position, const char* field) {
    return canonical(hvGetField(records, position, field), field);
}

bool isSameField(const hvArray* one, std::size_t position, const hvArray* other, std::size_t otherPosition,
                 const char* field) {
    const hvArray* const value = hvGetField(one, position, field);
    const hvArray* const another = hvGetField(other, otherPosition, field);
    if (value == another) return true;
    if (ks_host::isText(value) && ks_host::isText(another)) return charsOf(value) == charsOf(another);
    return isSameValue(value, another, {field, formOf(field)});
}

bool isSameRecord(RecordKind kind, const RecordPlace& one, const RecordPlace& other) {
    if (orvex::areSeenToBeSame({one.records, one.position}, {other.records, other.position})) return true;
    return std::ranges::all_of(savedFields(kind), [&](const SavedField& field) {
        return isSameValue(hvGetField(one.records, one.position, field.name),
                           hvGetField(other.records, other.position, field.name), field);
    });
}

HvArrayPtr copyRecords(RecordKind kind, const std::vector<RecordPlace>& places) {
    std::vector<orvex::StructElement> elements;
    elements.reserve(places.size());
    for (const RecordPlace& place : places) elements.push_back({place.records, place.position});
    HvArrayPtr copy = orvex::gatheredElements(elements, unsetRecord(kind).get());
    orvex::markAsPersisted(copy.get());
    return copy;
}

void copyField(hvArray* records, std::size_t position, const char* field, const RecordPlace& from) {
    if (const hvArray* const value = hvGetField(from.records, from.position, field))
        orvex::shareField(records, position, field, value);
    else
        hvReplaceField(records, position, field, unsetValue(field).release());
}

ParkedMark copyOf(const ParkedMark& mark) {
    std::vector<RecordPlace> clients;
    for (const std::size_t i : ks_host::indicesOf(mark.clients.get())) clients.push_back({mark.clients.get(), i});
    return {copyRecords(RecordKind::signal, {{mark.signal.get(), 0}}),
            mark.markedName,
            copyRecords(RecordKind::client, clients),
            mark.lost,
            mark.from,
            mark.isUnsure};
}

RecordPairs pairRecords(const hvArray* first, const hvArray* second) {
    constexpr auto kNone = static_cast<std::size_t>(-1);
    RecordPairs pairs;
    pairs.ofFirst.resize(hvGetNumberOfElements(first));
    pairs.ofSecond.resize(hvGetNumberOfElements(second));
    std::unordered_map<std::u16string_view, std::size_t> next;  // the first that is left of a UUID
    std::vector<std::size_t> after(pairs.ofSecond.size(), kNone);
    next.reserve(pairs.ofSecond.size());
    for (std::size_t i = pairs.ofSecond.size(); i-- > 0;) {
        const auto [place, isNew] = next.emplace(recordView(second, i, "UUID"), i);
        if (!isNew) after[i] = std::exchange(place->second, i);
    }
    for (std::size_t i = 0; i < pairs.ofFirst.size(); ++i) {
        const auto found = next.find(recordView(first, i, "UUID"));
        if (found == next.end() || found->second == kNone) continue;
        pairs.ofFirst[i] = found->second;
        pairs.ofSecond[found->second] = i;
        found->second = after[found->second];
    }
    return pairs;
}

std::vector<std::size_t> outOfOrder(const std::vector<std::size_t>& numbers) {
    std::vector<std::size_t> tails;  // of the best run of each length, as indices
    std::vector<std::size_t> before(numbers.size());
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const auto at = std::lower_bound(tails.begin(), tails.end(), numbers[i],
                                         [&](std::size_t tail, std::size_t number) { return numbers[tail] < number; });
        before[i] = at == tails.begin() ? numbers.size() : *(at - 1);
        at == tails.end() ? tails.push_back(i) : static_cast<void>(*at = i);
    }
    std::vector<bool> stays(numbers.size());
    for (std::size_t i = tails.empty() ? numbers.size() : tails.back(); i < numbers.size(); i = before[i])
        stays[i] = true;
    std::vector<std::size_t> moved;
    for (std::size_t i = 0; i < numbers.size(); ++i)
        if (!stays[i]) moved.push_back(i);
    return moved;
}

}  // namespace workbench
