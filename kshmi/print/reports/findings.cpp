#include "kshmi/print/reports/findings.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "kshmi/print/json/json_document.h"
#include "workbench/json/json_object.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

std::string shellWord(const std::string& text) {
    constexpr std::string_view kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_./:@%+=,-";
    if (!text.empty() && text.find_first_not_of(kPlain) == std::string::npos) return text;
    std::string word = "'";
    for (const char c : text) word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return word + "'";
}

std::string remedyOf(const Finding& finding) {
    const std::string file = shellWord(finding.place.file);
    const char* const kind = textOf(ruleOf(finding.code).kind);
    switch (finding.cure) {
        case Cure::mend:
            return fmt::format("kshmi check {} --mend {}", file, kind);
        case Cure::prune:
            return fmt::format("kshmi prune {} --kinds {}", file, kind);
        case Cure::confirm:
            return fmt::format("kshmi set {} {} --confirm", file, shellWord(finding.subject));
        case Cure::confirmAll:
            return fmt::format("kshmi set {} --all '*' --confirm", file);
        case Cure::byHand:
            break;
    }
    return "correct it in the file";
}

void printFindings(const CheckedFile& checked, std::ostream& out) {
    for (const Finding& finding : checked.findings) {
        const CheckRule& rule = ruleOf(finding.code);
        std::string place = printable(std::string_view(checked.path));
        if (finding.place.line > 0) place += fmt::format(":{}", finding.place.line);
        if (finding.place.column > 0) place += fmt::format(":{}", finding.place.column);
        out << fmt::format("{}: {} {}: {}", place, textOf(rule.level), rule.id, printableMessage(finding.text));
        if (!finding.place.pointer.empty()) out << " [" << printableMessage(finding.place.pointer) << ']';
        out << '\n';
        // What refuses a file says itself what to do.
        if (finding.cure != Cure::byHand || finding.text.find("; ") == std::string::npos)
            out << "    " << printableMessage(remedyOf(finding)) << '\n';
    }
}

namespace {

void appendFinding(std::string& out, const Finding& finding) {
    const CheckRule& rule = ruleOf(finding.code);
    JsonObject object(out);
    object.text("code", std::string_view(rule.id)).text("name", std::string_view(rule.name));
    object.text("level", std::string_view(textOf(rule.level))).text("kind", std::string_view(textOf(rule.kind)));
    object.text("pointer", std::string_view(finding.place.pointer));
    if (finding.place.line > 0) object.number("line", finding.place.line);
    object.text("text", std::string_view(finding.text)).text("remedy", std::string_view(remedyOf(finding)));
    if (!finding.subject.empty()) object.text("source", std::string_view(finding.subject));
    if (finding.record) {
        object.name(*finding.record == RecordKind::signal ? "signal" : "client");
        JsonObject(out).text("uuid", std::string_view(finding.uuid)).number("position", finding.position + 1).close();
    }
    object.close();
}

}  // namespace

void appendSettled(std::string& out, const Settled& one) {
    JsonObject object(out);
    object.text("kind", std::string_view(textOf(one.kind))).text("text", std::string_view(one.what)).close();
}

void appendCheckedFile(std::string& out, const CheckedFile& checked, const std::vector<Settled>& settled) {
    constexpr JsonLayout kInFile{"\n      ", ",\n      ", "\n    "};
    JsonObject object(out);
    object.text("file", std::string_view(checked.path)).name("settled");
    appendJsonArray(
        out, settled, [&](const Settled& one) { appendSettled(out, one); }, kInFile);
    object.name("findings");
    appendJsonArray(
        out, checked.findings, [&](const Finding& finding) { appendFinding(out, finding); }, kInFile);
    object.close();
}

void printPruneJson(const SettledFile& pruned, const std::string& file, bool isDryRun, std::ostream& out) {
    JsonDocument document("prune");
    document.object().text("file", std::string_view(file)).truth("dryRun", isDryRun);
    document.object().truth("saved", !isDryRun && !pruned.settled.empty());
    document.list("settled", pruned.settled, [&](const Settled& one) { appendSettled(document.text(), one); });
    document.print(out);
}

void FindingCounts::add(const CheckedFile& checked) {
    errors += checked.count(FindingLevel::error);
    warnings += checked.count(FindingLevel::warning);
    notes += checked.count(FindingLevel::note);
}

std::string textOf(const FindingCounts& counts) {
    std::vector<std::string> texts;
    const auto add = [&](std::size_t count, std::string_view what) {
        if (count > 0) texts.push_back(counted(count, what));
    };
    add(counts.errors, "error");
    add(counts.warnings, "warning");
    add(counts.notes, "note");
    return texts.empty() ? "nothing found" : listed(texts);
}

}  // namespace kshmi
