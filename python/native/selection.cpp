#include <pybind11/stl.h>

#include <optional>
#include <vector>

#include "python/native/open_model.h"
#include "workbench/find/below.h"
#include "workbench/text/text.h"

namespace ks_hmi_python {

using namespace workbench;

namespace {

template <class Value>
Value valueIn(const py::dict& selection, const char* name) {
    return selection.contains(name) ? selection[name].cast<Value>() : Value();
}

SourceKind kindCalled(const std::string& word) {
    const std::optional<SourceKind> kind = sourceKindOf(word);
    if (!kind) throw Error(inQuotes(word) + " is no kind; there are: " + listedWords(kSourceKinds));
    return *kind;
}

Selection selectionOf(const py::dict& given) {
    using Texts = std::vector<std::string>;
    Selection selection;
    selection.references = valueIn<Texts>(given, "references");
    selection.all = valueIn<Texts>(given, "all");
    selection.except = valueIn<Texts>(given, "except");
    for (const std::string& word : valueIn<Texts>(given, "kinds")) selection.kinds.push_back(kindCalled(word));
    selection.options.activity = valueIn<std::string>(given, "activity");
    selection.options.ssid = valueIn<std::optional<std::uint32_t>>(given, "ssid");
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
    const auto below = valueIn<std::string>(given, "below");
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
