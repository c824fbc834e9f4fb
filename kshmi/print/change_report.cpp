#include "kshmi/print/change_report.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

namespace {

constexpr std::size_t kMostLines = 50;

}  // namespace

void ChangeReport::line(std::string text) { m_lines.push_back(std::move(text)); }

void ChangeReport::change(std::string_view infinitive, std::string_view past, const std::string& what) {
    ++m_changes;
    line(m_isDryRun ? fmt::format("would {} {}", infinitive, what) : fmt::format("{} {}", past, what));
}

void ChangeReport::note(const std::string& text) { line(text); }

void ChangeReport::note(const std::string& expected, const std::string& happened) {
    line(m_isDryRun ? expected : happened);
}

void ChangeReport::print(std::size_t most) const {
    const std::size_t count = std::min(most, m_lines.size());
    for (std::size_t i = 0; i < count; ++i) m_output.out << m_lines[i] << '\n';
    if (count < m_lines.size()) m_output.out << "... and " << counted(m_lines.size() - count, "more line") << '\n';
}

void ChangeReport::finish(Session& session) {
    if (m_changes > 0 && !m_isDryRun) return saveAndTell(session);
    print(m_lines.size());
    const std::string file = printable(session.path());
    if (m_isDryRun)
        m_output.out << fmt::format("{}: dry run, {} not made\n", file, counted(m_changes, "change"));
    else
        m_output.out << file << ": nothing to change\n";
}

void ChangeReport::saveAndTell(Session& session) const {
    const std::size_t leftOut = session.save();
    print(kMostLines);
    const std::string file = printable(session.path());
    const std::size_t saved = session.signals().getCount() - leftOut;
    const std::size_t clients = session.clients().getCount();
    m_output.out << fmt::format("{}: saved with {}{}\n", file, counted(saved, "signal"),
                                clients > 0 ? " and " + counted(clients, "client") : "");
    if (leftOut > 0)
        m_output.out << fmt::format("{} excluded from saving {} left out of the file\n", counted(leftOut, "signal"),
                                    leftOut == 1 ? "was" : "were");
    m_output.out.flush();
    if (!m_output.out)
        throw Error({session.path(), 0, {}}, "saved, but what was changed cannot be written to the output",
                    ErrorCode::file);
}

}  // namespace kshmi
