#pragma once

#include <functional>
#include <string>

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

/// File name of the library.
extern const char* const kLibrary;

}  // namespace workbench
