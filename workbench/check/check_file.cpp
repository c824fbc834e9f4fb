#include "workbench/check/check_file.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "host/values.h"
#include "workbench/check/client_checks.h"
#include "workbench/check/mark_checks.h"

namespace workbench {

// All that is looked for in records.
class RecordsCheck {
public:
    RecordsCheck(CheckedFile& checked, const kestrel::Model& model, const CheckedList& signals,
                 const CheckedList& clients)
        : m_checked(checked),
          m_signals(markChecks(checked, model, signals)),
          m_clients(clientChecks(checked, model, m_uuids, clients)),
          m_hasClients(clients.count > 0) {}

    void take(RecordKind kind, const hvArray* records, const MarkedNameList& names) {
        const bool isSignal = kind == RecordKind::signal;
        if (!isSignal) endSignals();
        std::size_t& first = isSignal ? m_signalCount : m_clientCount;
        (isSignal ? m_signals : m_clients)->take({records, names, first});
        first += hvGetNumberOfElements(records);
        if (isSignal && m_hasClients) noteUuids(records);
    }

    void end(const std::vector<ParkedMark>& parked) {
        endSignals();
        m_clients->end();
        checkParked(m_checked, parked);
    }

private:
    void endSignals() {
        if (!std::exchange(m_areSignalsDone, true)) m_signals->end();
    }
    void noteUuids(const hvArray* signals) {
        for (const std::size_t i : ks_host::indicesOf(signals))
            if (const hvArray* const uuid = hvGetField(signals, i, "UUID")) m_uuids.insert(ks_host::utf8TextOf(uuid));
    }

    CheckedFile& m_checked;
    std::unordered_set<std::string> m_uuids;  // of signals, as far as clients ask for them
    std::unique_ptr<SliceChecks> m_signals;
    std::unique_ptr<SliceChecks> m_clients;
    bool m_hasClients;
    bool m_areSignalsDone = false;
    std::size_t m_signalCount = 0;
    std::size_t m_clientCount = 0;
};

WrittenCheck::WrittenCheck(std::string path, const kestrel::Model& model, std::size_t signals, std::size_t clients)
    : m_checked{.path = std::move(path)},
      m_checks(std::make_unique<RecordsCheck>(m_checked, model, CheckedList{signals}, CheckedList{clients})) {}

WrittenCheck::~WrittenCheck() = default;

void WrittenCheck::take(RecordKind kind, const hvArray* records, const MarkedNameList& markedNames) {
    m_checks->take(kind, records, markedNames);
}

CheckedFile WrittenCheck::end(const std::vector<ParkedMark>& parked) {
    m_checks->end(parked);
    return std::move(m_checked);
}

namespace {

FindingCode codeOf(const Error& fault) {
    const std::string_view pointer = fault.place().pointer;
    if (pointer.starts_with("/blocks/"))
        return pointer.find("/chart") != std::string_view::npos ? FindingCode::chart : FindingCode::blockPlace;
    return FindingCode::value;
}

Finding findingOf(const Error& fault, FindingCode code) {
    ErrorPlace place = fault.place();
    return {.code = code, .place = std::move(place), .text = fault.text()};
}

template <class Read>
CheckedFile check(const std::string& path, Read read) {
    CheckedFile checked{.path = path};
    try {
        checked.contents = read([&](const Error& fault) {
            checked.findings.push_back(findingOf(fault, codeOf(fault)));
            checked.isWhole = false;
        });
    } catch (const Error& error) {
        const bool isUnreadable = error.code() == ErrorCode::file;
        checked.findings.push_back(findingOf(error, isUnreadable ? FindingCode::unreadable : FindingCode::format));
        checked.isWhole = false;
        return checked;
    }
    const ModelFile& file = *checked.contents;
    RecordsCheck checks(checked, file.model, {hvGetNumberOfElements(file.signals.get()), &file.signalLines},
                        {hvGetNumberOfElements(file.clients.get()), &file.clientLines});
    checks.take(RecordKind::signal, file.signals.get(), file.extras.markedNames);
    checks.take(RecordKind::client, file.clients.get(), {});
    checks.end(file.extras.parked);
    return checked;
}

}  // namespace

std::size_t CheckedFile::count(FindingLevel level) const noexcept {
    return static_cast<std::size_t>(std::count_if(
        findings.begin(), findings.end(), [&](const Finding& finding) { return ruleOf(finding.code).level == level; }));
}

bool CheckedFile::isReadable() const noexcept {
    return findings.empty() || findings.front().code != FindingCode::unreadable;
}

CheckedFile checkFile(const std::string& path) {
    return check(path, [&](const FaultSink& faults) { return readModelFile(path, faults); });
}

CheckedFile checkText(const std::string& path, const std::string& text) {
    return check(path, [&](const FaultSink& faults) { return readModelText(path, text, faults); });
}

}  // namespace workbench
