#include "workbench/find/selecting.h"

#include <algorithm>

#include "workbench/find/glob.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

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

Matching selectMatching(const kestrel::Model& model, const Selection& selection, Selectable what) {
    if (selection.all.empty()) return {};
    Matching result{sourcesOf(model, what), {}};
    for (const std::string& pattern : selection.all)
        if (!isAnyMatched(model, result.sources, pattern))
            throw Error(std::string(what == Selectable::ports ? "no port" : "nothing") + " matches " +
                        inQuotes(pattern) +
                        R"(; patterns match full paths like "MODEL/block/path" or "MODEL/block/path:1")");
    const auto drop = [&](auto isDropped) { std::erase_if(result.sources, isDropped); };
    drop([&, all = Globs(selection.all)](const SignalSource& source) { return !all.matches(model, source); });
    for (const std::string& pattern : selection.except)
        if (!isAnyMatched(model, result.sources, pattern)) result.idle.push_back(pattern);
    drop([&, except = Globs(selection.except)](const SignalSource& source) { return except.matches(model, source); });
    if (selection.options.activity.empty()) return result;
    const std::u16string activity = toUtf16(selection.options.activity);
    drop([&](const SignalSource& source) { return !source.item || !hasActivity(*source.item, activity); });
    return result;
}

}  // namespace workbench
