#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kshmi/print/json/record_watch.h"
#include "kshmi/print/output.h"
#include "workbench/json/json_object.h"
#include "workbench/session/session.h"

namespace kshmi {

/// How a change is made and told.
struct ChangeOptions {
    bool isDryRun = false;
    bool isJson = false;
    bool isAllTold = false;  ///< every line, however many there are
};

/// What becomes of a thing. JSON has a list of each.
enum class Fate : std::uint8_t { added, changed, removed, skipped, unchanged };

/// Tells what a command changes, or in a dry run would change, and saves it. A model from standard input goes to the
/// standard output, changed or not; what is told then goes to the standard error. What becomes of signals and clients
/// while the report lives, JSON tells by itself.
class ChangeReport {
public:
    /// Adds the members of the thing's JSON object.
    using Members = std::function<void(workbench::JsonObject&)>;

    /// The session must outlive it.
    ChangeReport(const Output& output, std::string_view command, const ChangeOptions& options,
                 workbench::Session& session);

    /// One line: "would mark a/b:1" in a dry run, else "marked a/b:1".
    void change(std::string_view infinitive, std::string_view past, const std::string& what);
    /// The same; `what` is asked only for a line that is printed.
    void change(std::string_view infinitive, std::string_view past, const std::function<std::string()>& what);
    /// The same of what is neither a signal nor a client.
    void change(Fate fate, std::string_view infinitive, std::string_view past, const std::string& what,
                const Members& members);
    /// The same without a line, for JSON alone.
    void list(Fate fate, const Members& members);
    /// A line about something that stays as it is.
    void keep(Fate fate, const std::string& text, const Members& members);
    void note(const std::string& text) { note(text, text); }
    /// A line about what follows from a change: the first text in a dry run, else the second.
    void note(const std::string& expected, const std::string& happened);
    void note(Fate fate, const std::string& expected, const std::string& happened, const Members& members);

    /// Saves the session unless nothing was changed or the run is dry; then prints the lines and sums up, or prints
    /// the JSON. Only the first lines are printed, and the others counted, unless all are asked for. Returns how the
    /// run ends. Throws `Error` when the save fails, with nothing printed, and when it was made and cannot be told.
    [[nodiscard]] ExitCode finish();

private:
    using Save = workbench::Session::SaveResult;

    std::ostream& out() const;
    /// Counts a further line; whether it is to be kept.
    bool countLine() noexcept;
    void listRecords();
    Save save(bool isChanged);
    void printText(bool isSaved, std::size_t leftOut) const;
    void printSaved(std::size_t leftOut) const;
    void printJson(bool isSaved) const;

    static constexpr std::size_t kFates = 5;

    const Output& m_output;
    std::string m_command;
    ChangeOptions m_options;
    workbench::Session& m_session;
    std::optional<RecordWatch> m_watch;
    std::size_t m_changes = 0;
    std::vector<std::string> m_lines;                       ///< those that are printed
    std::size_t m_lineCount = 0;                            ///< of all
    std::array<std::vector<std::string>, kFates> m_things;  ///< JSON objects
};

}  // namespace kshmi
