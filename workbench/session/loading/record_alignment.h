#pragma once

#include "host/hv_array.h"
#include "memory_host/kestrel/model.h"
#include "workbench/session/chart_item_finder.h"

namespace workbench {

/// Brings saved signals in step with their model, many of one. It does not outlive the model, which must not change
/// meanwhile.
class RecordAligner {
public:
    explicit RecordAligner(const kestrel::Model& model) : m_model(model) {}
    /// `signals` is an N x 1 struct array with the saved fields. A signal with an element identifier gets the path that
    /// its block has now, and the subsystem path follows where it was the old parent's; one on a chart item gets the
    /// name that the item with its SSID has now. Signals whose block or item is gone stay as they are. Throws the
    /// host's exception.
    void align(hvArray* signals);

private:
    const kestrel::Model& m_model;
    ChartItemFinder m_items;
};

}  // namespace workbench
