#include "kshmi/tour/temporary_copy.h"

#include <fmt/format.h>
#include <stdlib.h>

#include <cerrno>
#include <filesystem>

#include "workbench/text/error.h"

namespace kshmi {

using namespace workbench;

namespace fs = std::filesystem;

TemporaryCopy::TemporaryCopy(const std::string& file) : m_original(file) {
    if (fs::is_directory(file)) throw Error({file}, "is a directory; name a model file", ErrorCode::file);
    std::error_code code;
    const fs::path base = fs::temp_directory_path(code);
    m_directory = (base / "kshmi-tour-XXXXXX").string();
    if (!code && !::mkdtemp(m_directory.data())) code.assign(errno, std::generic_category());
    if (code)
        throw Error(fmt::format("no directory for the copy can be made: {}; set TMPDIR to one that can be written",
                                code.message()));
    m_path = (fs::path(m_directory) / fs::path(file).filename()).string();
    fs::copy_file(file, m_path, code);
    if (!code) fs::permissions(m_path, fs::perms::owner_read | fs::perms::owner_write, code);
    if (!code) return;
    std::error_code ignored;
    fs::remove_all(m_directory, ignored);
    throw Error({file}, fmt::format("cannot be copied: {}; check the path and its permissions", code.message()),
                ErrorCode::file);
}

ErrorPlace TemporaryCopy::aboutOriginal(ErrorPlace place) const {
    if (place.file == m_path) place.file = m_original;
    return place;
}

TemporaryCopy::~TemporaryCopy() {
    std::error_code ignored;
    fs::remove_all(m_directory, ignored);
}

}  // namespace kshmi
