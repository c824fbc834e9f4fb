#pragma once

#include <string>
#include <vector>

#include "memory_host/orvex/objects/script_class.h"

namespace orvex {

/// Adds the class to those that `findScriptClass` knows, unless there is one of that name.
void addScriptClass(ScriptClass definition);
/// Full names of all script classes, in no order.
std::vector<std::string> scriptClassNames();
/// Forgets all script classes; they live on while objects of them do.
void releaseScriptClasses() noexcept;

}  // namespace orvex
