#include "kshmi/print/change_report.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "kshmi/print/json_document.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

namespace {

constexpr std::size_t kMostLines = 50;
constexpr const char* kFateNames[] = {"added", "changed", "removed", "skipped", "unchanged"};

}  // namespace

void ChangeReport::collect(Fate fate, const Members& members) {
    if (!m_options.isJson) return;
    std::string text;
    JsonObject object(text);
    members(object);
    object.close();
    m_things.at(static_cast<std::size_t>(fate)).push_back(std::move(text));
}

void ChangeReport::change(Fate fate, std::string_view infinitive, std::string_view past, const std::string& what,
                          const Members& members) {
    ++m_changes;
    m_lines.push_back(m_options.isDryRun ? fmt::format("would {} {}", infinitive, what)
                                         : fmt::format("{} {}", past, what));
    collect(fate, members);
}

void ChangeReport::keep(Fate fate, const std::string& text, const Members& members) {
    m_lines.push_back(text);
    collect(fate, members);
}

void ChangeReport::note(const std::string& expected, const std::string& happened) {
    m_lines.push_back(m_options.isDryRun ? expected : happened);
}

void ChangeReport::note(Fate fate, const std::string& expected, const std::string& happened, const Members& members) {
    note(expected, happened);
    collect(fate, members);
}

ExitCode ChangeReport::finish(Session& session) {
    if (m_changes > 0) session.requireSettledNames();
    const bool isSaved = m_changes > 0 && !m_options.isDryRun;
    const auto [leftOut, warnings] = isSaved ? session.save() : Session::SaveResult();
    m_options.isJson ? printJson(session, isSaved) : printText(session, isSaved, leftOut);
    warnOfSave(session.path(), warnings, m_output.err);
    m_output.out.flush();
    if (isSaved && !m_output.out)
        throw Error({session.path(), 0, {}}, "saved, but what was changed cannot be written to the output",
                    ErrorCode::file);
    return m_changes > 0 ? kSuccess : kNothing;
}

void ChangeReport::printText(const Session& session, bool isSaved, std::size_t leftOut) const {
    const std::size_t count = m_options.isAllTold ? m_lines.size() : std::min(kMostLines, m_lines.size());
    for (std::size_t i = 0; i < count; ++i) m_output.out << m_lines[i] << '\n';
    if (count < m_lines.size())
        m_output.out << fmt::format("... and {}; --all-lines prints them\n",
                                    counted(m_lines.size() - count, "more line"));
    if (isSaved) return printSaved(session, leftOut);
    const std::string file = printable(session.path());
    m_output.out << (m_options.isDryRun ? fmt::format("{}: dry run, {} not made\n", file, counted(m_changes, "change"))
                                        : fmt::format("{}: nothing to change\n", file));
}

void ChangeReport::printSaved(const Session& session, std::size_t leftOut) const {
    const std::size_t saved = session.signals().getCount() - leftOut;
    const std::size_t clients = session.clients().getCount();
    m_output.out << fmt::format("{}: saved with {}{}\n", printable(session.path()), counted(saved, "signal"),
                                clients > 0 ? " and " + counted(clients, "client") : "");
    if (leftOut > 0)
        m_output.out << fmt::format("{} excluded from saving {} left out of the file\n", counted(leftOut, "signal"),
                                    leftOut == 1 ? "was" : "were");
}

void ChangeReport::printJson(const Session& session, bool isSaved) const {
    JsonDocument document(m_command);
    document.object().text("file", std::string_view(session.path())).text("model", session.model().name());
    document.object().truth("dryRun", m_options.isDryRun).truth("saved", isSaved);
    for (std::size_t i = 0; i < kFates; ++i)
        document.list(kFateNames[i], m_things.at(i), [&](const std::string& thing) { document.text() += thing; });
    document.print(m_output.out);
}

}  // namespace kshmi
