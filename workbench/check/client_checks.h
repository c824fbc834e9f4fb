#pragma once

#include <memory>
#include <string>
#include <unordered_set>

#include "workbench/check/check_file.h"
#include "workbench/check/record_checks.h"

namespace workbench {

/// Adds findings about the clients of a file whose signals have these UUIDs. What is given must outlive it, but for the
/// list.
std::unique_ptr<SliceChecks> clientChecks(CheckedFile& checked, const kestrel::Model& model,
                                          const std::unordered_set<std::string>& signals, const CheckedList& list);

}  // namespace workbench
