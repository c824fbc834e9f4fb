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

/// The kinds that the words name. Throws `workbench::Error` for one that the option does not take.
workbench::FindingKinds requireKinds(const std::vector<std::string>& words, IsOfKind isAllowed, const char* option);

}  // namespace kshmi
