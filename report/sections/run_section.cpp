#include <fmt/format.h>

#include <filesystem>
#include <string>

#include "report/sections/sections.h"
#include "workbench/text/text.h"

namespace report {

using namespace workbench;

namespace {

void writeFact(Html& html, const char* what, const std::string& fact) {
    if (!fact.empty()) html.add("<div><dt>{}</dt><dd>{}</dd></div>\n", what, Name(fact));
}

std::string simulatedTime(const RecordedRun& run) {
    if (!run.start || !run.stop) return {};
    std::string text = fmt::format("{} s to {} s", numberText(*run.start), numberText(*run.stop));
    return run.until && *run.until > *run.stop ? fmt::format("{} of {} s", text, numberText(*run.until)) : text;
}

// "2026-03-01T12:00:00Z" with blanks; anything else as it is.
std::string momentText(const std::string& moment) {
    constexpr std::size_t kSize = 20;
    constexpr std::size_t kDate = 10;
    if (moment.size() != kSize || moment[kDate] != 'T' || moment.back() != 'Z') return moment;
    return moment.substr(0, kDate) + ' ' + moment.substr(kDate + 1, kSize - kDate - 2) + " UTC";
}

std::string fileOf(const RecordedRun& run) {
    std::string text = std::filesystem::path(run.file).filename().string();
    return run.runCount > 1 ? fmt::format("{}, run {} of {}", text, run.number, run.runCount) : text;
}

void writeNotes(Html& html, const Contents& contents, const RunView& view) {
    const RecordedRun& run = view.run();
    if (view.isUnended())
        html.add("<p class=\"lead amiss\">Not ended: it is still being recorded, or the recording was cut off.</p>\n");
    else if (view.isEarly())
        html.add("<p class=\"lead amiss\">Stopped early ({}){}{}</p>\n", Name(run.outcome),
                 Markup{run.message.empty() ? "" : ": "}, Name(run.message));
    const std::string model = toUtf8(contents.session.model().name());
    if (!run.model.empty() && run.model != model)
        html.add("<p class=\"lead amiss\">The run is of the model {}.</p>\n", Name(run.model));
    if (view.recordedSignals() == 0)
        html.add("<p class=\"lead\">None of what was recorded is a signal of this model.</p>\n");
}

}  // namespace

void writeRun(Html& html, const Contents& contents, const PageIndex& index) {
    const RunView* const view = index.run();
    if (view == nullptr) return;
    const RecordedRun& run = view->run();
    openSection(html, "run", "Run", 0);
    html.add("<dl class=\"run\">\n");
    writeFact(html, "recorded in", fileOf(run));
    writeFact(html, "simulated time", simulatedTime(run));
    writeFact(html, "samples", grouped(view->sampleCount()));
    writeFact(html, "started", momentText(run.started));
    html.add("</dl>\n");
    writeNotes(html, contents, *view);
    writePlotFrame(html, view->frame());
    closeSection(html);
}

void writeOthers(Html& html, const PageIndex& index) {
    const RunView* const view = index.run();
    if (view == nullptr || view->others().empty()) return;
    openSection(html, "others", "Recorded besides", view->others().size());
    html.add("<ul class=\"others plotted list\">\n");
    for (const std::size_t position : view->others()) {
        const RecordedColumn& column = view->run().columns[position];
        html.add("<li><div class=\"what\"><h3>{}</h3><p class=\"from\">{}</p></div>", Name(column.title),
                 Path(column.block));
        writePlot(html, view->frame(), column, "");
        html.add("</li>\n");
    }
    html.add("</ul>\n");
    closeSection(html);
}

}  // namespace report
