#include "workbench/check/record_checks.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "host/messages.h"
#include "workbench/session/loading/refused_field.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

// "/signals/3" of "/signals/3/UUID"; empty for what is in no record.
std::string recordPointer(const std::string& pointer) {
    const std::size_t list = pointer.find('/', 1);
    return list == std::string::npos ? std::string() : pointer.substr(0, pointer.find('/', list + 1));
}

}  // namespace

RecordChecks::RecordChecks(CheckedFile& checked, RecordKind kind, const CheckedList& list)
    : m_checked(checked), m_kind(kind), m_lines(list.lines) {
    m_uuids.reserve(list.count);
    for (const Finding& finding : checked.findings) m_faulty.insert(recordPointer(finding.place.pointer));
}

bool RecordChecks::isFaulty(std::size_t position) const {
    if (m_faulty.empty()) return false;
    return m_faulty.contains(fmt::format("/{}s/{}", kindName(), position));
}

Finding& RecordChecks::add(FindingCode code, std::size_t position, const std::string& field, std::string text) {
    static const RecordLines kNoLines;
    const RecordLines& lines = m_lines ? *m_lines : kNoLines;
    return m_checked.findings.emplace_back(Finding{.code = code,
                                                   .place = recordPlace(m_checked.path, m_kind, lines, position, field),
                                                   .text = std::move(text),
                                                   .cure = ruleOf(code).cure,
                                                   .record = m_kind,
                                                   .position = position});
}

Finding& RecordChecks::add(FindingCode code, std::size_t position, const std::string& field, std::string text,
                           std::string_view uuid, std::string subject) {
    Finding& finding = add(code, position, field, std::move(text));
    finding.uuid = uuid;
    finding.subject = std::move(subject);
    return finding;
}

Finding* RecordChecks::checkUuid(const std::string& uuid, std::size_t position) {
    using enum FindingCode;
    const bool isSignal = m_kind == RecordKind::signal;
    if (uuid.empty())
        return &add(isSignal ? signalUuidMissing : clientUuidMissing, position, "UUID",
                    fmt::format("the {} has no UUID", kindName()));
    const std::size_t first = m_uuids.try_emplace(uuid, position).first->second;
    if (first == position) return nullptr;
    return &add(isSignal ? signalUuidTaken : clientUuidTaken, position, "UUID",
                fmt::format("{} {} has the UUID {} already", kindName(), first + 1, inQuotes(std::string_view(uuid))),
                uuid, {});
}

bool RecordChecks::addRefusal(std::size_t position, const kssvIException& refusal) {
    const auto [field, element] = refusedField(refusal.messageId());
    if (element == 0) return false;
    const bool isMissing = refusal.messageId().key() == "MissingField";
    add(isMissing ? FindingCode::missingField : FindingCode::value, position, field,
        isMissing ? fmt::format("the {} has no field {}", kindName(), inQuotes(std::string_view(field)))
                  : std::string(refusal.what()));
    return true;
}

}  // namespace workbench
