#include "kshmi/change_report.h"

#include <fmt/format.h>

#include "kshmi/text.h"

namespace kshmi {

namespace {

constexpr std::size_t kMostLines = 50;

}  // namespace

void ChangeReport::line(const std::string& text) {
    if (++m_lines <= kMostLines) m_output.out << text << '\n';
}

void ChangeReport::change(std::string_view infinitive, std::string_view past, const std::string& what) {
    ++m_changes;
    line(m_isDryRun ? fmt::format("would {} {}", infinitive, what) : fmt::format("{} {}", past, what));
}

void ChangeReport::note(const std::string& text) { line(text); }

void ChangeReport::finish(Session& session) {
    if (m_lines > kMostLines) m_output.out << "... and " << counted(m_lines - kMostLines, "more line") << '\n';
    const std::string file = printable(session.path());
    if (m_isDryRun) {
        m_output.out << fmt::format("{}: dry run, {} not made\n", file, counted(m_changes, "change"));
    } else if (m_changes == 0) {
        m_output.out << file << ": nothing to change\n";
    } else {
        const std::size_t leftOut = session.save();
        const std::size_t saved = session.signals().getCount() - leftOut;
        const std::size_t clients = session.clients().getCount();
        m_output.out << fmt::format("{}: saved with {}{}\n", file, counted(saved, "signal"),
                                    clients > 0 ? " and " + counted(clients, "client") : "");
        if (leftOut > 0)
            m_output.out << fmt::format("{} excluded from saving {} left out of the file\n", counted(leftOut, "signal"),
                                        leftOut == 1 ? "was" : "were");
    }
}

}  // namespace kshmi
