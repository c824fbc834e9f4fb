#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "workbench/check/mending.h"

namespace kshmi {

using IsOfKind = bool (*)(workbench::FindingKind kind) noexcept;

/// An option that takes kinds of findings, with commas between, or "all".
CLI::Option* addKinds(CLI::App& command, const char* name, std::vector<std::string>& words, IsOfKind isAllowed,
                      const std::string& help);

}  // namespace kshmi
