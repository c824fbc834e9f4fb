#include <cmath>
#include <optional>

#include "host/text.h"
#include "memory_host/kestrel/alignment.h"
#include "memory_host/kestrel/host_definitions.h"
#include "memory_host/kestrel/host_values.h"
#include "memory_host/kestrel/set_elements.h"
#include "memory_host/orvex/calls/call_by_name.h"
#include "memory_host/orvex/calls/functions.h"

// "applyRebindingRules": brings the handles that signals have cached in step with the open models.
namespace kestrel {

namespace {

// What a signal has cached: the block's handle (nothing: unresolved), the port and the rule that found it.
struct Binding {
    std::optional<double> handle;
    double port = 0.0;
    std::u16string rule;
    bool operator==(const Binding&) const = default;
};

Binding currentBinding(const hvArray* signal) {
    const HvArrayPtr handle(hvGetPropertyShared(signal, 0, "CachedBlockHandle_"));
    Binding binding{.handle = std::nullopt, .port = 0.0, .rule = textProperty(signal, "BindingRule_")};
    if (hvIsEmpty(handle.get()) || hvGetScalar(handle.get()) == 0.0) return binding;
    binding.handle = hvGetScalar(handle.get());
    binding.port = numberProperty(signal, "CachedPortIdx_");
    return binding;
}

// A block resolves the ports only that it has; charts are observed as a whole.
bool hasPort(const Block& block, double port, bool isChart) {
    return isChart || (port >= 1.0 && port <= static_cast<double>(block.outputs.size()) && port == std::floor(port));
}

// All that the signal says is read before its block is looked for: to read may be to run a script, which may unload
// the model.
Binding rebind(const hvArray* signal) {
    const std::string eid = fl::i18n::to_string(textProperty(signal, "EID_"));
    const std::u16string path = textProperty(signal, "BlockPath_");
    const double port = numberProperty(signal, "OutputPortIndex_");
    const bool isChart = isOnChart(signal);
    const auto bound = [&](const LoadedBlock& found, const char16_t* rule) {
        return found && hasPort(*found.block, port, isChart)
                   ? std::optional(Binding{.handle = found.block->handle, .port = port, .rule = rule})
                   : std::nullopt;
    };
    return onSignalBlock(
               eid, path, PathFallback::afterEid,
               [&](std::string_view text) { return bound(findByFullEid(text), u"eid"); },
               [&](const std::u16string& text) { return bound(findByFullPath(text), u"path"); })
        .value_or(Binding{});
}

Binding forgetWhenStale(const Binding& binding) {
    if (!binding.handle || loadedModels().findByHandle(*binding.handle)) return binding;
    return {};
}

void assign(hvArray* signal, const Binding& binding) {
    const HvArrayPtr handle = binding.handle ? makeDouble(*binding.handle) : makeEmpty();
    const HvArrayPtr port = binding.handle ? makeDouble(binding.port) : makeEmpty();
    hvSetProperty(signal, 0, "BindingRule_", makeText(binding.rule).get());
    hvSetProperty(signal, 0, "CachedBlockHandle_", handle.get());
    hvSetProperty(signal, 0, "CachedPortIdx_", port.get());
}

// With `all` every signal is bound anew: by its element identifier (rule "eid"), else by its path (rule
// "path"); one whose port is found neither way is left unresolved, with no rule. Without, only the
// signals are left unresolved whose handle belongs to no open block. Signals are changed one after the
// other through the set's own methods; after a failure those before it stay changed.
void applyRebindingRules(orvex::Call& call) {
    requireInputs(call, 2);
    const hvArray* set = call.ins[0];
    const bool all = truthAt(call, 1);
    for (const SetElement element : elementsOf(set)) {
        const HvArrayPtr signal = element.get();
        const Binding before = currentBinding(signal.get());
        const Binding after = all ? rebind(signal.get()) : forgetWhenStale(before);
        if (after == before) continue;
        assign(signal.get(), after);
        const hvArray* ins[] = {set, element.position(), signal.get()};
        orvex::callByName("set", ins, 0);
    }
}

}  // namespace

void defineRebinding() { orvex::defineFunction("applyRebindingRules", applyRebindingRules, 0); }

}  // namespace kestrel
