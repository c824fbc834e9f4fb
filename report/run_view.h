#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "report/plot/plot.h"
#include "workbench/find/positions.h"
#include "workbench/find/watching.h"
#include "workbench/record/recorded_run.h"

namespace report {

/// A run beside the model: which columns are of which signal, and what their plots have in common.
class RunView {
public:
    RunView(const workbench::RecordedRun& run, const workbench::SignalUuids& uuids, std::size_t signalCount);

    const workbench::RecordedRun& run() const noexcept { return m_run; }
    const PlotFrame& frame() const noexcept { return m_frame; }
    /// Positions (0-based) of the signal's columns: several for an array.
    const workbench::Positions& columnsOf(std::size_t signal) const { return m_columns[signal]; }
    /// Of those that belong to no signal of the model.
    const workbench::Positions& others() const noexcept { return m_others; }
    std::size_t recordedSignals() const noexcept;
    std::size_t sampleCount() const noexcept;
    bool isEarly() const noexcept { return !m_run.outcome.empty() && m_run.outcome != "done"; }
    /// Nobody has said how it ended: it goes on still, or the recording was killed.
    bool isUnended() const noexcept { return m_run.outcome == "running"; }

private:
    const workbench::RecordedRun& m_run;
    PlotFrame m_frame;
    std::vector<workbench::Positions> m_columns;
    workbench::Positions m_others;
};

}  // namespace report
