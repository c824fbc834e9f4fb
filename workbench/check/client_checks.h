#pragma once

#include "workbench/check/check_file.h"

namespace workbench {

/// Adds findings about the clients of the contents.
void checkClients(CheckedFile& checked);

}  // namespace workbench
