#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "report/sections/sections.h"
#include "workbench/check/finding.h"

namespace report {

using namespace workbench;

namespace {

// Where on the page the signal or client is that the finding is about.
void writeLink(Html& html, const Finding& finding) {
    if (!finding.record) return;
    const bool isSignal = *finding.record == RecordKind::signal;
    html.add(" <a href=\"#{}{}\">{} {}</a>", isSignal ? "s" : "c", finding.position + 1, isSignal ? "signal" : "client",
             finding.position + 1);
}

// Lines end between the words of a command only.
void writeRemedy(Html& html, std::string_view remedy) {
    if (remedy.empty()) return;
    html.add("<code>");
    while (!remedy.empty()) {
        const std::size_t blank = std::min(remedy.find(' '), remedy.size() - 1);
        html.add("<span>{}</span>{}", Message{remedy.substr(0, blank + (remedy[blank] == ' ' ? 0 : 1))},
                 Markup{remedy[blank] == ' ' ? " " : ""});
        remedy.remove_prefix(blank + 1);
    }
    html.add("</code>");
}

void writeFinding(Html& html, const Contents& contents, const Finding& finding) {
    const CheckRule& rule = ruleOf(finding.code);
    html.add("<li class=\"{0}\"><span class=\"level\">{0}</span><div><p>{1}</p><p class=\"from\">{2}",
             textOf(rule.level), Message{finding.text}, rule.id);
    if (finding.place.line > 0) html.add(", line {}", finding.place.line);
    if (!finding.place.pointer.empty()) html.add(", <span>{}</span>", Message{finding.place.pointer});
    writeLink(html, finding);
    html.add("</p></div>");
    writeRemedy(html, contents.remedy(finding));
    html.add("</li>\n");
}

}  // namespace

void writeFindings(Html& html, const Contents& contents, const PageIndex&) {
    const std::vector<Finding>& findings = contents.checked.findings;
    openSection(html, "findings", "Findings", findings.size());
    if (findings.empty()) {
        html.add("<p class=\"empty\">Nothing is wrong with this file.</p>\n");
        closeSection(html);
        return;
    }
    std::vector<const Finding*> ordered;
    ordered.reserve(findings.size());
    for (const Finding& finding : findings) ordered.push_back(&finding);
    std::stable_sort(ordered.begin(), ordered.end(), [](const Finding* one, const Finding* other) {
        return ruleOf(one->code).level > ruleOf(other->code).level;
    });
    html.add("<ul class=\"findings list\" data-has=\"findings\">\n");
    for (const Finding* const finding : ordered) writeFinding(html, contents, *finding);
    html.add("</ul>\n");
    closeSection(html);
}

}  // namespace report
