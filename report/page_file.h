#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "report/page.h"

/// Pages of files, in files.
namespace report {

/// A model file, and a run of it if there is one, opened for a page.
class PageSource {
public:
    /// Whatever is wrong with the model stands on the page; throws `workbench::Error` for a file that cannot be read at
    /// all or is no model file. The host must have been entered.
    explicit PageSource(const std::string& model);
    /// Adds a recorded run: the one of that number, or the file's last one. Throws `workbench::Error` when there is
    /// none.
    void addRun(const std::string& path, std::optional<int> number);

    const workbench::Session& session() const noexcept { return m_session; }
    const workbench::CheckedFile& checked() const noexcept { return m_checked; }
    /// Null when there is none.
    const workbench::RecordedRun* run() const noexcept { return m_run ? &*m_run : nullptr; }
    /// For `writePage`, with what settles a finding in the front end's words.
    Contents contents(std::function<std::string(const workbench::Finding&)> remedy) const {
        return {m_session, m_checked, std::move(remedy), run()};
    }

private:
    workbench::CheckedFile m_checked;
    workbench::Session m_session;
    std::optional<workbench::RecordedRun> m_run;
};

struct WrittenPage {
    std::size_t bytes = 0;
    std::vector<std::string> warnings;  ///< as `workbench::AtomicFile::warnings` says
};
/// Writes the page into that file, whole or not at all. Throws `workbench::Error`, also for a file that is there and is
/// no page: then one name was mistaken for another.
WrittenPage writePageFile(const std::string& path, const Contents& contents);

}  // namespace report
