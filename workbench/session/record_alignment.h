#pragma once

#include "host/hv_array.h"
#include "memory_host/kestrel/model.h"

namespace workbench {

/// Brings saved signals (an N x 1 struct array with the saved fields) in step with their model: one with an element
/// identifier gets the path that its block has now, and the subsystem path follows where it was the old parent's; one
/// on a chart item gets the name that the item with its SSID has now. Signals whose block or item is gone stay as
/// they are. Throws the host's exception.
void alignRecords(hvArray* signals, const kestrel::Model& model);

}  // namespace workbench
