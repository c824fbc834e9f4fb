#pragma once

#include <pybind11/stl.h>

#include "python/native/host_turn.h"

namespace ks_hmi_python {

/// Adds a function to the module whose work is a turn in the host.
template <class Result, class... Arguments>
void define(py::module_& module, const char* name, Result (*function)(Arguments...)) {
    module.def(name, [function](Arguments... arguments) {
        return inHost([&] { return function(static_cast<Arguments>(arguments)...); });
    });
}

}  // namespace ks_hmi_python
