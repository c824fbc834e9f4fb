#include "kshmi/selecting.h"

#include <algorithm>

#include "kshmi/error.h"
#include "kshmi/glob.h"
#include "kshmi/text.h"

namespace kshmi {

namespace {

using Sources = std::vector<SignalSource>;

Sources sourcesOf(const kestrel::Model& model, Selectable what) {
    Sources sources;
    for (const kestrel::Block& block : model.blocks()) {
        for (int port = 1; port <= static_cast<int>(block.outputs.size()); ++port)
            sources.push_back({&block, port, std::nullopt});
        if (what == Selectable::ports) continue;
        for (ChartItem& item : chartItemsOf(block)) sources.push_back({&block, 0, std::move(item)});
    }
    return sources;
}

bool isAnyMatched(const kestrel::Model& model, const Sources& sources, const std::string& pattern) {
    const Globs globs({pattern});
    return std::any_of(sources.begin(), sources.end(),
                       [&](const SignalSource& source) { return globs.matches(model, source); });
}

}  // namespace

void requireApplicable(const Selection& selection) {
    if (!selection.except.empty() && selection.all.empty()) throw Error("--except narrows --all; give --all 'GLOB'");
    const bool isNarrowed = !selection.options.activity.empty() || selection.options.ssid;
    if (isNarrowed && selection.references.empty() && selection.all.empty())
        throw Error("--activity and --ssid say more of a chart; name one as REF");
    if (selection.options.ssid && !selection.all.empty())
        throw Error("--ssid is for one chart and --all for many blocks; name the chart as REF");
}

void requireSelection(const Selection& selection, bool isOtherwiseSelected) {
    const bool isAnything = !selection.references.empty() || !selection.all.empty() || isOtherwiseSelected;
    if (!isAnything) throw Error("nothing to work on; name a REF or give --all 'GLOB'");
    requireApplicable(selection);
}

Sources selectMatching(const kestrel::Model& model, const Selection& selection, Selectable what, const Output& output) {
    if (selection.all.empty()) return {};
    Sources sources = sourcesOf(model, what);
    for (const std::string& pattern : selection.all)
        if (!isAnyMatched(model, sources, pattern))
            throw Error(std::string(what == Selectable::ports ? "no port" : "nothing") + " matches " + quoted(pattern) +
                        R"(; patterns match full paths like "MODEL/block/path" or "MODEL/block/path:1")");
    const auto drop = [&](auto isDropped) { std::erase_if(sources, isDropped); };
    drop([&, all = Globs(selection.all)](const SignalSource& source) { return !all.matches(model, source); });
    for (const std::string& pattern : selection.except)
        if (!isAnyMatched(model, sources, pattern))
            output.err << "warning: --except " << quoted(pattern) << " leaves nothing out\n";
    drop([&, except = Globs(selection.except)](const SignalSource& source) { return except.matches(model, source); });
    if (selection.options.activity.empty()) return sources;
    const std::u16string activity = toUtf16(selection.options.activity);
    drop([&](const SignalSource& source) { return !source.item || !hasActivity(*source.item, activity); });
    return sources;
}

}  // namespace kshmi
