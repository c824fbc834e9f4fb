#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "kshmi/print/output.h"
#include "workbench/session/session.h"

namespace kshmi {

/// Tells what a command changes, or in a dry run would change, and saves it.
class ChangeReport {
public:
    ChangeReport(const Output& output, bool isDryRun) : m_output(output), m_isDryRun(isDryRun) {}

    /// One line: "would mark a/b:1" in a dry run, else "marked a/b:1".
    void change(std::string_view infinitive, std::string_view past, const std::string& what);
    /// A line about something that stays as it is.
    void note(const std::string& text);
    /// A line about what follows from a change: the first text in a dry run, else the second.
    void note(const std::string& expected, const std::string& happened);
    /// Saves the session unless nothing was changed or the run is dry; then prints the lines and sums up. After a save
    /// only the first lines are printed, and the others counted. Throws `Error` when the save fails, with nothing
    /// printed, and when it was made and cannot be told.
    void finish(workbench::Session& session);

private:
    void line(std::string text);
    void print(std::size_t most) const;
    void saveAndTell(workbench::Session& session) const;

    const Output& m_output;
    bool m_isDryRun;
    std::size_t m_changes = 0;
    std::vector<std::string> m_lines;
};

}  // namespace kshmi
