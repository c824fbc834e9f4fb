#pragma once

#include <ostream>

namespace workbench {

/// Brings the host into this process, once: its modelling side, and the signals library, loaded and
/// initialised as the environment does it. From now on the host's warnings go to `warnings`. Throws the
/// host's exception when the library cannot be loaded.
void enterHost(std::ostream& warnings);

/// Releases everything that lives in the host and lets the library go; the host cannot be entered again.
/// False when something still lives that nobody released: it is then listed on `err`. Release builds do
/// not look.
bool leaveHost(std::ostream& err);

/// File name of the library.
inline constexpr const char* kLibrary = "libks_hmi_foundation.so.0";

}  // namespace workbench
