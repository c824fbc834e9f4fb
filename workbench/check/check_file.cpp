#include "workbench/check/check_file.h"

#include <algorithm>
#include <string_view>

#include "workbench/check/client_checks.h"
#include "workbench/check/mark_checks.h"

namespace workbench {

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
    checkMarks(checked);
    checkClients(checked);
    checkParked(checked);
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
