#pragma once

#include <string>
#include <string_view>

#include "workbench/session/signal_source.h"

namespace kshmi {

/// What lists say of a signal's settings that are not as they are when nothing is said: "decimation 10, max points
/// 5000, hidden, for dial".
std::string settingsText(int decimation, int maxPoints, const workbench::SignalFlags& flags,
                         std::u16string_view visualType);

}  // namespace kshmi
