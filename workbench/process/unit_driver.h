#pragma once

#include "workbench/process/shared_ring.h"
#include "workbench/process/unit_task.h"

namespace workbench {

/// What a piece of the stream holds.
enum class UnitMessage : std::uint32_t { sample = 1, log, end };

/// In front of each. The body is as long as `size` says, and filled up to a multiple of 8 bytes: the slots of a sample
/// and its texts; level, category, NUL and text of a log message; kind and text of the end.
struct UnitMessageHead {
    UnitMessage message = UnitMessage::sample;
    std::uint32_t size = 0;
    double time = 0.0;
};

/// Bytes of one message.
inline constexpr std::uint32_t kLongestMessage = 1U << 30U;

/// Does the task in this process and sends what comes of it; returns when the unit is gone. All messages of the
/// unit are sent with `sendsLog`, else its errors only.
void driveUnit(const UnitTask& task, bool sendsLog, SharedRing& ring) noexcept;

}  // namespace workbench
