#include "kshmi/commands/selecting.h"

#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

void requireApplicable(const Selection& selection) {
    if (!selection.except.empty() && selection.all.empty()) throw Error("--except narrows --all; give --all 'GLOB'");
    const bool isNarrowed = !selection.options.activity.empty() || selection.options.ssid;
    if (isNarrowed && selection.references.empty() && selection.all.empty())
        throw Error("--activity and --ssid refine a reference to a chart; name the chart as REF");
    if (selection.options.ssid && !selection.all.empty())
        throw Error("--ssid is for one chart and --all for many blocks; name the chart as REF");
}

void requireSelection(const Selection& selection, bool isOtherwiseSelected) {
    const bool isAnything = !selection.references.empty() || !selection.all.empty() || isOtherwiseSelected;
    if (!isAnything) throw Error("nothing to work on; name a REF or give --all 'GLOB'");
    requireApplicable(selection);
}

std::vector<SignalSource> matchingSources(const kestrel::Model& model, const Selection& selection, Selectable what,
                                          const Output& output) {
    Matching matching = selectMatching(model, selection, what);
    for (const std::string& pattern : matching.idle)
        output.err << "warning: --except " << inQuotes(pattern) << " leaves nothing out\n";
    return std::move(matching.sources);
}

}  // namespace kshmi
