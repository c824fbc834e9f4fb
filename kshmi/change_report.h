#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "kshmi/output.h"
#include "kshmi/session.h"

namespace kshmi {

/// Tells what a command changes, or in a dry run would change, and saves it.
class ChangeReport {
public:
    ChangeReport(const Output& output, bool isDryRun) : m_output(output), m_isDryRun(isDryRun) {}

    /// One line, of which the first ones are printed and the others counted: "would mark a/b:1" in a dry run,
    /// else "marked a/b:1".
    void change(std::string_view infinitive, std::string_view past, const std::string& what);
    /// A line about something that stays as it is.
    void note(const std::string& text);
    /// Saves the session unless nothing was changed or the run is dry, and sums up.
    void finish(Session& session);

private:
    void line(const std::string& text);

    const Output& m_output;
    bool m_isDryRun;
    std::size_t m_changes = 0;
    std::size_t m_lines = 0;
};

}  // namespace kshmi
