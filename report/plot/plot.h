#pragma once

#include "report/html.h"
#include "report/plot/line.h"
#include "workbench/record/recorded_run.h"

namespace report {

/// What all plots of a page share.
struct PlotFrame {
    TimeAxis time;
    Grid grid;
};

/// The axes and grids that plots refer to. Once on a page, in front of the first plot.
void writePlotFrame(Html& html, const PlotFrame& frame);

/// What was recorded of a signal, as a figure: numbers as a line, texts as a list of their changes. `what` stands in
/// front of its figures, for one of several.
void writePlot(Html& html, const PlotFrame& frame, const workbench::RecordedColumn& column, std::string_view what);

}  // namespace report
