#pragma once

#include "workbench/text/error.h"

/// How a run of the tool ends.
namespace kshmi {

enum ExitCode : int {
    kSuccess = 0,
    kNothing = 1,
    kWrongUsage = 2,
    kBadFile = 3,
    kFileInUse = 4,
    kHostRefused = 5,
    kStoppedEarly = 6,
};

struct ExitCodeMeaning {
    ExitCode code;
    const char* text;
};

/// What "kshmi help exit-codes", the manual and docs/kshmi.md tell of them.
inline constexpr ExitCodeMeaning kExitCodeMeanings[] = {
    {kSuccess, "done; of a question: yes"},
    {kNothing, "nothing matched, nothing was left to change, or the answer is no"},
    {kWrongUsage, "wrong usage: an unknown command, option, block or port, or a change that cannot be made"},
    {kBadFile, "a file, or the output, cannot be read or written, or it is not a model file that fits together"},
    {kFileInUse, "the file is being saved by somebody else, or has been changed since it was read"},
    {kHostRefused, "the host refused, or there is not enough memory"},
    {kStoppedEarly, "what was recorded stopped before its end"},
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
