#pragma once

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace ks_bench {

/// A directory in memory where there is one, so that no disk is measured; removed at the end.
class ScratchDirectory {
public:
    ScratchDirectory()
        : m_path((std::filesystem::exists("/dev/shm") ? "/dev/shm" : std::filesystem::temp_directory_path().string()) +
                 "/ks_hmi_benchmarks-XXXXXX") {
        if (::mkdtemp(m_path.data()) == nullptr) throw std::runtime_error(m_path + ": cannot be made");
    }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;
    ~ScratchDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    std::string file(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

}  // namespace ks_bench
