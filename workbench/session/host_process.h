#pragma once

#include <functional>
#include <string>

#include "host/hv_array.h"

namespace workbench {

/// Receives the host's warnings: UTF-8, one line, without control characters.
using WarningSink = std::function<void(const std::string& text)>;

/// Brings the host into this process, once: its modelling side, and the signals library, loaded and
/// initialised as the environment does it. From now on the host's warnings go to `warnings`. Throws the
/// host's exception when the library cannot be loaded, and after `leaveHost`.
void enterHost(WarningSink warnings);

/// Releases everything that lives in the host and lets the library go; the host cannot be
/// entered again, because the library registers its classes once per process. Returns a line
/// for each thing that still lives, because nobody released it, and for each value that was used or kept against its
/// scope. Empty as it should be, and in release builds, which do not look.
std::string leaveHost();

/// From now on the set of signals of a session that ends stays until another one begins, or the process ends: taking a
/// hundred thousand records apart is idle for a process whose work is done. For those in which nobody looks at what
/// still lives in the host.
void leaveSignalsToProcess() noexcept;
/// Keeps that set, when the above was said, and releases the one before. Null for none.
void leaveSignals(const hvArray* set) noexcept;

/// File name of the library.
extern const char* const kLibrary;

}  // namespace workbench
