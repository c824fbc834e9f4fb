#include "kshmi/print/reports/change_report.h"

#include <fmt/format.h>

#include <iterator>
#include <utility>

#include "kshmi/print/json/json_document.h"
#include "kshmi/print/reports/name_notice.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

namespace {

constexpr std::size_t kMostLines = 50;
constexpr const char* kFateNames[] = {"added", "changed", "removed", "skipped", "unchanged"};

}  // namespace

ChangeReport::ChangeReport(const Output& output, std::string_view command, const ChangeOptions& options,
                           Session& session)
    : m_output(output), m_command(command), m_options(options), m_session(session) {
    if (options.isJson) m_watch.emplace(session);
}

std::ostream& ChangeReport::out() const { return m_session.isStream() ? besideModel(m_output) : m_output.out; }

void ChangeReport::list(Fate fate, const Members& members) {
    if (!m_options.isJson) return;
    std::string text;
    JsonObject object(text);
    members(object);
    object.close();
    m_things.at(static_cast<std::size_t>(fate)).push_back(std::move(text));
}

void ChangeReport::listRecords() {
    const auto add = [&](Fate fate, std::vector<std::string> things) {
        auto& all = m_things.at(static_cast<std::size_t>(fate));
        all.insert(all.end(), std::make_move_iterator(things.begin()), std::make_move_iterator(things.end()));
    };
    RecordWatch::Changes changes = m_watch->changes();
    add(Fate::added, std::move(changes.added));
    add(Fate::changed, std::move(changes.changed));
    add(Fate::removed, std::move(changes.removed));
}

void ChangeReport::change(std::string_view infinitive, std::string_view past, const std::string& what) {
    change(infinitive, past, [&] { return what; });
}

void ChangeReport::change(std::string_view infinitive, std::string_view past,
                          const std::function<std::string()>& what) {
    ++m_changes;
    if (countLine())
        m_lines.push_back(m_options.isDryRun ? fmt::format("would {} {}", infinitive, what())
                                             : fmt::format("{} {}", past, what()));
}

bool ChangeReport::countLine() noexcept {
    return (++m_lineCount <= kMostLines || m_options.isAllTold) && !m_options.isJson;
}

void ChangeReport::change(Fate fate, std::string_view infinitive, std::string_view past, const std::string& what,
                          const Members& members) {
    change(infinitive, past, what);
    list(fate, members);
}

void ChangeReport::keep(Fate fate, const std::string& text, const Members& members) {
    note(text);
    list(fate, members);
}

void ChangeReport::note(const std::string& expected, const std::string& happened) {
    if (countLine()) m_lines.push_back(m_options.isDryRun ? expected : happened);
}

void ChangeReport::note(Fate fate, const std::string& expected, const std::string& happened, const Members& members) {
    note(expected, happened);
    list(fate, members);
}

ExitCode ChangeReport::finish() {
    if (m_changes > 0) m_session.requireSettledNames();
    if (m_watch) listRecords();
    const bool isSaved = m_changes > 0 && !m_options.isDryRun;
    const auto [leftOut, warnings] = save(isSaved);
    m_options.isJson ? printJson(isSaved) : printText(isSaved, leftOut);
    warnOfSave(m_session.path(), warnings, m_output.err);
    if (!m_session.isStream()) noticeUnconfirmed(m_session, m_output.err);
    out().flush();
    if (isSaved && !out())
        throw Error({m_session.fileName()}, "saved, but what was changed cannot be written to the output",
                    ErrorCode::file);
    return m_changes > 0 ? kSuccess : kNothing;
}

// What goes out is whole: it is written once nothing can go wrong any more.
ChangeReport::Save ChangeReport::save(bool isChanged) {
    if (!m_session.isStream()) return isChanged ? m_session.save() : Save();
    std::string text;
    m_session.saveTo([&](std::string_view piece) { text += piece; });
    Save result = isChanged ? m_session.save() : Save();
    sendModel(m_output, isChanged ? text : m_session.input());
    return result;
}

void ChangeReport::printText(bool isSaved, std::size_t leftOut) const {
    for (const std::string& line : m_lines) out() << line << '\n';
    if (const std::size_t more = m_lineCount - m_lines.size(); more > 0)
        out() << fmt::format("... and {}; --all-lines prints them\n", counted(more, "more line"));
    if (isSaved) return printSaved(leftOut);
    const std::string file = printable(std::string_view(m_session.fileName()));
    out() << (m_options.isDryRun ? fmt::format("{}: dry run, {} not made\n", file, counted(m_changes, "change"))
                                 : fmt::format("{}: nothing to change\n", file));
}

void ChangeReport::printSaved(std::size_t leftOut) const {
    const std::size_t saved = m_session.signals().getCount() - leftOut;
    const std::size_t clients = m_session.clients().getCount();
    const std::string file = printable(std::string_view(calledWhenSaved(m_session.path())));
    out() << fmt::format("{}: saved with {}{}\n", file, counted(saved, "signal"),
                         clients > 0 ? " and " + counted(clients, "client") : "");
    if (leftOut > 0)
        out() << fmt::format("{} excluded from saving {} left out of the file\n", counted(leftOut, "signal"),
                             leftOut == 1 ? "was" : "were");
}

void ChangeReport::printJson(bool isSaved) const {
    JsonDocument document(m_command);
    document.object().text("file", std::string_view(m_session.path())).text("model", m_session.model().name());
    document.object().truth("dryRun", m_options.isDryRun).truth("saved", isSaved);
    for (std::size_t i = 0; i < kFates; ++i)
        document.list(kFateNames[i], m_things.at(i), [&](const std::string& thing) { document.text() += thing; });
    document.print(out());
}

}  // namespace kshmi
