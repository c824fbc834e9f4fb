#pragma once

#include <ostream>
#include <string>

#include "workbench/check/check_file.h"

namespace kshmi {

/// Findings as a log in SARIF 2.1.0, file by file.
class SarifLog {
public:
    /// Begins the log.
    explicit SarifLog(std::ostream& out);
    void add(const workbench::CheckedFile& checked);
    /// Ends the log; it is not one before.
    void close();

private:
    std::ostream& m_out;
    bool m_isEmpty = true;
};

}  // namespace kshmi
