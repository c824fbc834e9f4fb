#include "kshmi/print/reports/sarif.h"

#include <fmt/format.h>

#include <filesystem>
#include <string_view>

#include "kshmi/print/reports/findings.h"
#include "workbench/json/json_object.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

namespace {

constexpr const char* kSchema = "https://json.schemastore.org/sarif-2.1.0.json";

// Relative paths as they are: whoever shows the log knows where the tool ran.
std::string uriOf(const std::string& path) {
    constexpr std::string_view kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~/";
    const bool isAbsolute = path.starts_with('/');
    std::string uri = isAbsolute ? "file://" : "";
    for (const char c : isAbsolute ? path : std::filesystem::path(path).lexically_normal().string())
        uri += kPlain.find(c) != std::string_view::npos
                   ? std::string(1, c)
                   : fmt::format("%{:02X}", static_cast<unsigned>(static_cast<unsigned char>(c)));
    return uri;
}

void appendMessage(std::string& out, std::string_view name, JsonObject& object, std::string_view text) {
    object.name(name);
    JsonObject(out).text("text", text).close();
}

void appendRule(std::string& out, const CheckRule& rule) {
    JsonObject object(out);
    object.text("id", std::string_view(rule.id)).text("name", std::string_view(rule.name));
    appendMessage(out, "shortDescription", object, rule.summary);
    object.name("defaultConfiguration");
    JsonObject(out).text("level", std::string_view(textOf(rule.level))).close();
    object.close();
}

void appendLocation(std::string& out, const Finding& finding) {
    JsonObject location(out);
    location.name("physicalLocation");
    JsonObject physical(out);
    physical.name("artifactLocation");
    JsonObject(out).text("uri", std::string_view(uriOf(finding.place.file))).close();
    if (finding.place.line > 0) {
        physical.name("region");
        JsonObject region(out);
        region.number("startLine", finding.place.line);
        if (finding.place.column > 0) region.number("startColumn", finding.place.column);
        region.close();
    }
    physical.close();
    if (!finding.place.pointer.empty()) {
        location.name("logicalLocations"), out += '[';
        JsonObject(out).text("fullyQualifiedName", std::string_view(finding.place.pointer)).close();
        out += ']';
    }
    location.close();
}

// Stays the same while lines and positions change, so that a finding is recognised in the next version.
std::string fingerprintOf(const Finding& finding) {
    const CheckRule& rule = ruleOf(finding.code);
    const std::string& what = finding.uuid.empty() ? finding.place.pointer : finding.uuid;
    return fmt::format("{}:{}:{}", rule.id, what, finding.subject);
}

void appendResult(std::string& out, const Finding& finding) {
    const CheckRule& rule = ruleOf(finding.code);
    JsonObject object(out);
    object.text("ruleId", std::string_view(rule.id)).number("ruleIndex", static_cast<std::size_t>(finding.code));
    object.text("level", std::string_view(textOf(rule.level)));
    appendMessage(out, "message", object, fmt::format("{}. To settle it: {}", finding.text, remedyOf(finding)));
    object.name("locations");
    out += '[';
    appendLocation(out, finding);
    out += ']';
    object.name("partialFingerprints");
    JsonObject(out).text("kshmiFinding/v1", std::string_view(fingerprintOf(finding))).close();
    object.close();
}

}  // namespace

SarifLog::SarifLog(std::ostream& out) : m_out(out) {
    std::string text = "{\"$schema\": ";
    appendJsonText(text, std::string_view(kSchema));
    text += ", \"version\": \"2.1.0\", \"runs\": [{\"tool\": {\"driver\": ";
    JsonObject driver(text);
    driver.text("name", std::string_view("kshmi")).text("version", std::string_view(KSHMI_VERSION)).name("rules");
    appendJsonArray(
        text, checkRules(), [&](const CheckRule& rule) { appendRule(text, rule); }, kLines);
    driver.close();
    m_out << text << "}, \"columnKind\": \"utf16CodeUnits\", \"results\": [";
}

void SarifLog::add(const CheckedFile& checked) {
    for (const Finding& finding : checked.findings) {
        std::string text = m_isEmpty ? "\n  " : ",\n  ";
        appendResult(text, finding);
        m_out << printableJson(text);
        m_isEmpty = false;
    }
}

void SarifLog::close() { m_out << (m_isEmpty ? "]}]}\n" : "\n]}]}\n"); }

}  // namespace kshmi
