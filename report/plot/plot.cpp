#include "report/plot/plot.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>

#include "report/plot/figures.h"
#include "report/plot/text_changes.h"
#include "workbench/text/columns.h"

namespace report {

using namespace workbench;

namespace {

// In the pixels of the style sheet.
constexpr std::size_t kHeight = 112;
constexpr std::size_t kLowHeight = 28;
constexpr std::size_t kMostPlotLabels = 7;
// Of a name, in columns.
constexpr std::size_t kLongestLabel = 18;
// Of whole numbers.
constexpr double kMostExact = 1e15;

std::string percent(double share) { return fmt::format("{:.4g}%", share * 100); }

const char* anchorOf(const Tick& tick) {
    constexpr double kEdge = 0.08;
    return tick.at < kEdge ? "start" : tick.at > 1 - kEdge ? "end" : "middle";
}

void writeTimeAxis(Html& html, const TimeAxis& time, std::string_view id, std::size_t height) {
    html.add("<g id=\"{}\">", id);
    for (const Tick& tick : time.ticks)
        html.add("<line x1=\"{0}\" x2=\"{0}\" y2=\"{1}\"/><text x=\"{0}\" y=\"{2}\" text-anchor=\"{3}\">{4}</text>",
                 percent(tick.at), height + 4, height + 17, anchorOf(tick), tick.text);
    html.add("</g>\n");
}

void writeGrid(Html& html, std::size_t labels) {
    html.add("<g id=\"g{}\"><use href=\"#t\"/>", labels);
    for (std::size_t i = 0; i < labels; ++i)
        html.add("<line x2=\"100%\" y1=\"{0}\" y2=\"{0}\"/>",
                 fmt::format("{:.4g}", static_cast<double>(i * kHeight) / static_cast<double>(labels - 1)));
    html.add("</g>");
}

std::string dotsAt(const std::vector<double>& times, const PlotFrame& frame, std::size_t y) {
    std::string path;
    long last = -1;
    for (const double time : times) {
        const auto width = static_cast<double>(frame.grid.width);
        const long x = std::lround(shareOf(time, frame.time.from, frame.time.to) * width);
        if (x > last) path += fmt::format("M{} {}h0", x, y);
        last = x;
    }
    return path;
}

// Null for a number without one.
const std::string* nameOf(const ValueNames& names, double value) noexcept {
    return std::abs(value) < kMostExact ? findName(names, static_cast<std::int64_t>(value)) : nullptr;
}

void writeNumber(Html& html, const char* name, double number) {
    html.add("<i>{} <b>{}</b></i>", name, numberText(number));
}

void writeCount(Html& html, std::size_t count, const char* what) {
    if (count > 0) html.add("<i>{}</i>", countedText(count, what));
}

void writeLast(Html& html, const RecordedColumn& column, double value) {
    if (const std::string* const name = nameOf(column.names, value))
        html.add("<i>last <b>{}</b></i>", Name(*name));
    else if (column.kind == ValueKind::boolean)
        html.add("<i>last <b>{}</b></i>", value == 0.0 ? "false" : "true");
    else
        writeNumber(html, "last", value);
}

void writeCaption(Html& html, const RecordedColumn& column, const ColumnFigures& figures, std::string_view what) {
    html.add("<figcaption>");
    if (!column.unit.empty()) html.add("<span class=\"unit\">{}</span>", Name(column.unit));
    html.add("<div>");
    if (!what.empty()) html.add("<i class=\"which\">{}</i>", Name(what));
    if (figures.finite > 1 && column.kind != ValueKind::boolean && column.names.empty()) {
        writeNumber(html, "min", figures.least);
        writeNumber(html, "max", figures.greatest);
    }
    if (figures.finite > 0) writeLast(html, column, figures.last);
    writeCount(html, column.times.size(), "sample");
    writeCount(html, figures.gaps, "gap");
    if (!figures.up.empty()) html.add("<i class=\"amiss\">{} × ∞</i>", grouped(figures.up.size()));
    if (!figures.down.empty()) html.add("<i class=\"amiss\">{} × -∞</i>", grouped(figures.down.size()));
    html.add("</div></figcaption>");
}

// One label for each value; nothing for too many.
std::optional<ValueAxis> namedAxis(const ValueNames& names, const ColumnFigures& figures) {
    const double room = figures.least == figures.greatest ? 1 : 0;
    const double from = figures.least - room;
    const double to = figures.greatest + room;
    const bool areExact = std::abs(from) < kMostExact && std::abs(to) < kMostExact;
    if (names.empty() || !areExact || to - from >= static_cast<double>(kMostPlotLabels)) return std::nullopt;
    ValueAxis axis{from, to, {}};
    for (double value = from; value <= to; ++value) {
        const std::string* const name = nameOf(names, value);
        axis.labels.push_back(name != nullptr ? shortened(*name, kLongestLabel) : "");
    }
    return axis;
}

ValueAxis axisOf(const RecordedColumn& column, const ColumnFigures& figures) {
    if (column.kind == ValueKind::boolean) return {0.0, 1.0, {"false", "true"}};
    if (figures.finite == 0) return {0.0, 1.0, {"", ""}};
    if (const std::optional<ValueAxis> axis = namedAxis(column.names, figures)) return *axis;
    return valueAxis(figures.least, figures.greatest, column.kind != ValueKind::real);
}

void writeDots(Html& html, const char* look, const std::string& dots) {
    if (!dots.empty()) html.add("<path class=\"{}\" d=\"{}\"/>", look, dots);
}

// Lines of text, as far apart as those of the grid.
void writeLabels(Html& html, const ValueAxis& axis) {
    html.add("<div class=\"axis a{}\">", axis.labels.size());
    for (auto label = axis.labels.rbegin(); label != axis.labels.rend(); ++label)
        html.add("{}{}", Markup{label == axis.labels.rbegin() ? "" : "\n"}, *label);
    html.add("</div>");
}

void writeLines(Html& html, const PlotFrame& frame, const RecordedColumn& column, const ColumnFigures& figures) {
    const bool isBoolean = column.kind == ValueKind::boolean;
    const ValueAxis axis = axisOf(column, figures);
    writeLabels(html, axis);
    html.add("<svg role=\"img\" aria-label=\"{}\"><use href=\"#{}{}\"/>", column.title, isBoolean ? "tl" : "g",
             Markup{isBoolean ? "" : std::to_string(axis.labels.size())});
    html.add("<svg viewBox=\"0 0 {} {}\" preserveAspectRatio=\"none\">", frame.grid.width, frame.grid.height);
    const std::vector<Point> points =
        thinned(column.times, column.values, frame.time.from, frame.time.to, frame.grid.columns, frame.grid.isCoarse);
    const bool isStepped = column.kind != ValueKind::real;
    const DrawnLine line = drawn(points, frame.time, axis, frame.grid, isStepped);
    html.add("<path d=\"{}\"/>", line.line);
    writeDots(html, "dot", line.dots);
    writeDots(html, "inf", dotsAt(figures.up, frame, 0) + dotsAt(figures.down, frame, frame.grid.height));
    html.add("</svg></svg>");
}

}  // namespace

void writePlotFrame(Html& html, const PlotFrame& frame) {
    html.add("<svg class=\"defs\" aria-hidden=\"true\"><defs>\n");
    writeTimeAxis(html, frame.time, "t", kHeight);
    writeTimeAxis(html, frame.time, "tl", kLowHeight);
    for (std::size_t labels = 2; labels <= kMostPlotLabels; ++labels) writeGrid(html, labels);
    html.add("\n</defs></svg>\n");
}

void writePlot(Html& html, const PlotFrame& frame, const RecordedColumn& column, std::string_view what) {
    const bool isText = column.kind == ValueKind::text || column.kind == ValueKind::binary;
    const ColumnFigures figures = figuresOf(column);
    const bool isEmpty = column.times.empty();
    html.add("<figure{}>", Markup{isText || isEmpty                   ? " class=\"said\""
                                  : column.kind == ValueKind::boolean ? " class=\"low\""
                                                                      : ""});
    if (isText && !isEmpty)
        writeTextChanges(html, column, what);
    else
        writeCaption(html, column, figures, what);
    if (isEmpty)
        html.add("<p class=\"none\">no samples</p>");
    else if (!isText)
        writeLines(html, frame, column, figures);
    html.add("</figure>");
}

}  // namespace report
