#pragma once

#include "workbench/text/error.h"

/// How a run of the tool ends; docs/kshmi.md and "kshmi help exit-codes" tell the same.
namespace kshmi {

enum ExitCode : int {
    kSuccess = 0,       ///< done; of a question: yes
    kNothing = 1,       ///< nothing matched, nothing was left to change, or the answer is no
    kWrongUsage = 2,    ///< something asked for is not there or cannot be
    kBadFile = 3,       ///< a file, or the output, cannot be read or written, or what it holds does not fit
    kFileInUse = 4,     ///< somebody else saves the file, or has since it was read
    kHostRefused = 5,   ///< or there is not enough memory
    kStoppedEarly = 6,  ///< what was recorded ended too soon
};

constexpr ExitCode exitCodeOf(workbench::ErrorCode code) noexcept {
    switch (code) {
        case workbench::ErrorCode::request:
            return kWrongUsage;
        case workbench::ErrorCode::noMatch:
            return kNothing;
        case workbench::ErrorCode::format:
        case workbench::ErrorCode::model:
        case workbench::ErrorCode::file:
            return kBadFile;
        case workbench::ErrorCode::inUse:
            return kFileInUse;
        case workbench::ErrorCode::host:
            break;
    }
    return kHostRefused;
}

/// What is wrong with an option's text is wrong usage, whatever else it is.
inline ExitCode exitCodeOf(const workbench::Error& error) noexcept {
    return error.place().file.starts_with("--") ? kWrongUsage : exitCodeOf(error.code());
}

}  // namespace kshmi
