#include "report/page_file.h"

#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>
#include <utility>

#include "workbench/files/atomic_file.h"
#include "workbench/text/error.h"

namespace report {

using namespace workbench;

namespace {

// What cannot be read at all is refused.
ModelFile contentsOf(CheckedFile& checked) {
    if (!checked.contents) throw errorOf(checked.findings.front());
    ModelFile contents = std::move(*checked.contents);
    checked.contents.reset();
    return contents;
}

void requirePage(const std::string& path) {
    constexpr std::string_view kStart = "<!DOCTYPE html>";
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path, ignored)) return;
    std::ifstream file(path, std::ios::binary);
    std::string start(kStart.size(), '\0');
    file.read(start.data(), static_cast<std::streamsize>(start.size()));
    start.resize(static_cast<std::size_t>(file.gcount()));
    if (!start.empty() && start != kStart)
        throw Error({path}, "exists already and is not a page; give another name", ErrorCode::file);
}

}  // namespace

PageSource::PageSource(const std::string& model)
    : m_checked(checkFile(model)), m_session(model, contentsOf(m_checked), Session::Opening::anyhow) {}

void PageSource::addRun(const std::string& path, std::optional<int> number) {
    m_run = readRecordedRun(path, number);
    identifyColumns(*m_run, m_session);
}

WrittenPage writePageFile(const std::string& path, const Contents& contents) {
    requirePage(path);
    AtomicFile file(path);
    WrittenPage written;
    writePage(contents, [&](std::string_view piece) {
        file.write(piece);
        written.bytes += piece.size();
    });
    file.commit();
    written.warnings = file.warnings();
    return written;
}

}  // namespace report
