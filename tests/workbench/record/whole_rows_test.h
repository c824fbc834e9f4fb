#pragma once

#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string>

#include "tests/workbench/record/record_test.h"

namespace kshmi::testing {

/// A unit with two signals that are marked, and what must hold however its recording ends.
class RecordFailures : public RecordTest {
protected:
    RecordFailures() {
        import(probe2());
        mark("state:count wave:sine");
    }
    /// Whole rows only, each of them as it should be.
    void expectWholeRows(const std::string& csv) const {
        if (csv.empty()) return;
        EXPECT_TRUE(csv.starts_with("time,count,sine\r\n")) << csv.substr(0, 40);
        EXPECT_TRUE(csv.ends_with("\r\n")) << csv.substr(csv.size() - 40);
        for (std::size_t at = 0, end = 0; (end = csv.find('\n', at)) != std::string::npos; at = end + 1)
            if (const std::string row = csv.substr(at, end - at); std::count(row.begin(), row.end(), ',') != 2)
                FAIL() << row;
    }
    static std::size_t openDescriptors() {
        const std::filesystem::directory_iterator files("/proc/self/fd");
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }
    static void expectNoChildren() { EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a process is left"; }
};

}  // namespace kshmi::testing
