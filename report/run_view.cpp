#include "report/run_view.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace report {

using namespace workbench;

namespace {

TimeAxis axisOf(const RecordedRun& run) {
    constexpr double kNone = std::numeric_limits<double>::infinity();
    double from = kNone;
    double to = -kNone;
    const auto take = [&](double time) {
        if (!std::isfinite(time)) return;
        from = std::min(from, time);
        to = std::max(to, time);
    };
    for (const RecordedColumn& column : run.columns)
        for (const double time : column.times) take(time);
    if (run.start) take(*run.start);
    if (run.stop) take(*run.stop);
    return from <= to ? timeAxis(from, to) : timeAxis(0.0, 1.0);
}

// The more plots, the coarser: all lines together stay within two megabytes up to some thousand plots.
Grid gridFor(std::size_t plots) {
    constexpr std::size_t kMostBytes = 2'000'000;
    constexpr std::size_t kBytesOfColumn = 20;
    constexpr std::size_t kFinest = 600;
    constexpr std::size_t kCoarse = 40;
    constexpr std::size_t kCoarsest = 20;
    constexpr Grid kCoarseGrid{kCoarsest, 120, 56, true};
    const std::size_t columns = kMostBytes / kBytesOfColumn / std::max<std::size_t>(plots, 1);
    if (columns < kCoarse) return kCoarseGrid;
    const bool isFine = columns >= kFinest;
    return {std::min(columns, kFinest), isFine ? 2 * kFinest : kFinest, isFine ? 560U : 112U};
}

}  // namespace

RunView::RunView(const RecordedRun& run, const SignalUuids& uuids, std::size_t signalCount)
    : m_run(run), m_frame{axisOf(run), gridFor(run.columns.size())}, m_columns(signalCount) {
    for (std::size_t i = 0; i < run.columns.size(); ++i) {
        const std::string& uuid = run.columns[i].signal;
        const std::optional<std::size_t> signal = uuid.empty() ? std::nullopt : uuids.positionOf(uuid);
        (signal ? m_columns[*signal] : m_others).push_back(i);
    }
}

std::size_t RunView::recordedSignals() const noexcept {
    return static_cast<std::size_t>(
        std::ranges::count_if(m_columns, [](const Positions& columns) { return !columns.empty(); }));
}

std::size_t RunView::sampleCount() const noexcept {
    std::size_t count = 0;
    for (const RecordedColumn& column : m_run.columns) count += column.times.size();
    return count;
}

}  // namespace report
