#include "kshmi/print/settings_text.h"

#include <fmt/format.h>

#include <vector>

#include "workbench/text/text.h"

namespace kshmi {

std::string settingsText(int decimation, int maxPoints, const workbench::SignalFlags& flags,
                         std::u16string_view visualType) {
    std::vector<std::string> settings;
    if (decimation != 1) settings.push_back(fmt::format("decimation {}", decimation));
    if (maxPoints != 0) settings.push_back(fmt::format("max points {}", maxPoints));
    if (std::string words = textOf(flags); !words.empty()) settings.push_back(std::move(words));
    if (!visualType.empty()) settings.push_back("for " + workbench::printable(visualType));
    return workbench::listed(settings);
}

}  // namespace kshmi
