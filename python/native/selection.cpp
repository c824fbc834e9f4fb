#include <pybind11/stl.h>

#include <optional>
#include <vector>

#include "python/native/arguments.h"
#include "python/native/open_model.h"
#include "workbench/find/below.h"
#include "workbench/text/text.h"

namespace ks_hmi_python {

using namespace workbench;

namespace {

using Texts = std::vector<std::string>;

Texts textsIn(const py::dict& selection, const char* name) {
    return selection.contains(name) ? selection[name].cast<Texts>() : Texts();
}

SourceKind kindCalled(const std::string& word) {
    const std::optional<SourceKind> kind = sourceKindOf(word);
    if (!kind) throw Error(inQuotes(word) + " is not a kind; there are: " + listedWords(kSourceKinds));
    return *kind;
}

Selection selectionOf(const py::dict& given) {
    Selection selection;
    selection.references = textsIn(given, "references");
    selection.all = textsIn(given, "all");
    selection.except = textsIn(given, "except");
    for (const std::string& word : textsIn(given, "kinds")) selection.kinds.push_back(kindCalled(word));
    selection.options.activity = textIn(given, "activity").value_or("");
    takeNumber(given, "ssid", 0, kLargestUint, selection.options.ssid);
    return selection;
}

void requireSense(const Selection& selection) {
    const bool isRefined = !selection.options.activity.empty() || selection.options.ssid;
    if (isRefined && !selection.isAnything())
        throw Error("activity= and ssid= refine a reference to a chart; name the chart");
    if (selection.options.ssid && !selection.all.empty())
        throw Error("ssid= is for one chart and all= for many blocks; name the chart");
}

void keepBelow(const std::u16string& below, std::vector<SignalSource>& sources) {
    std::erase_if(sources, [&](const SignalSource& source) { return !isAtOrBelow(source.block->path, below); });
}

}  // namespace

Chosen choose(const Session& session, const py::dict& given) {
    const kestrel::Model& model = session.model();
    Selection selection = selectionOf(given);
    requireSense(selection);
    const std::string below = textIn(given, "below").value_or("");
    const bool isNarrowed = !below.empty() || !selection.except.empty() || !selection.kinds.empty();
    if (!selection.isAnything() && isNarrowed && !model.blocks().empty()) selection.all = {"*"};
    Chosen chosen{select(model, selection), selection.options, selection.isAnything() || isNarrowed};
    for (const std::string& pattern : chosen.selected.idle) warn("except " + inQuotes(pattern) + " leaves nothing out");
    if (below.empty()) return chosen;
    const std::u16string path = resolveBelow(model, below);
    if (path.empty()) return chosen;
    keepBelow(path, chosen.selected.matching);
    for (NamedSources& named : chosen.selected.named) keepBelow(path, named.sources);
    return chosen;
}

}  // namespace ks_hmi_python
