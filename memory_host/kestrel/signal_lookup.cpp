#include "memory_host/kestrel/signal_lookup.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "memory_host/kestrel/alignment.h"
#include "memory_host/kestrel/host_values.h"
#include "memory_host/kestrel/set_elements.h"

namespace kestrel {

namespace {

std::u16string uuidAt(const hvArray* set, double position) {
    return textOf(callForOne("getUUID", {set, makeDouble(position).get()}).get());
}

}  // namespace

std::vector<std::u16string> modelsOfClient(const hos::COSObject& client) {
    std::vector<std::u16string> names;
    const auto include = [&](std::u16string name) {
        if (!name.empty() && std::find(names.begin(), names.end(), name) == names.end())
            names.push_back(std::move(name));
    };
    include(textOf(client.getProperty("SourceModel_").get()));
    const HvArrayPtr path = client.getProperty("ModelPath_");
    for (std::size_t i = 0; i < hvGetNumberOfElements(path.get()); ++i)
        include(std::u16string(modelOfPath(textOf(hvGetCell(path.get(), i)))));
    return names;
}

HvArrayPtr signalsOf(std::u16string_view modelName) {
    const LoadedModel* const open = loadedModels().find(modelName);
    return HvArrayPtr(open && open->signals() ? hvCreateSharedDataCopy(open->signals()) : nullptr);
}

std::vector<std::u16string> signalUuids(const hvArray* signals) {
    std::vector<std::u16string> uuids;
    for (const SetElement element : elementsOf(signals)) uuids.push_back(textOf(element.get("getUUID").get()));
    return uuids;
}

namespace {

// Where the signal was found last; 0 when that is not known.
double knownPosition(std::u16string_view modelName, const std::u16string& uuid) {
    LoadedModel* const open = loadedModels().find(modelName);
    if (!open) return 0.0;
    const auto known = open->foundSignals().find(uuid);
    return known == open->foundSignals().end() ? 0.0 : known->second;
}

// 0 when the set has no such signal.
double positionOf(std::u16string_view modelName, const hvArray* signals, const std::u16string& uuid) {
    const double hint = knownPosition(modelName, uuid);
    if (hint > 0.0 && hint <= numberProperty(signals, "Count") && uuidAt(signals, hint) == uuid) return hint;
    std::unordered_map<std::u16string, double> positions;
    double position = 0.0;
    for (std::u16string& one : signalUuids(signals)) positions.emplace(std::move(one), ++position);
    const auto found = positions.find(uuid);
    const double answer = found == positions.end() ? 0.0 : found->second;
    if (LoadedModel* const open = loadedModels().find(modelName)) open->foundSignals() = std::move(positions);
    return answer;
}

}  // namespace

HvArrayPtr findSignal(const std::vector<std::u16string>& modelNames, const std::u16string& uuid) {
    if (uuid.empty()) return nullptr;
    for (const std::u16string& name : modelNames) {
        const HvArrayPtr signals = signalsOf(name);
        const double position = signals ? positionOf(name, signals.get(), uuid) : 0.0;
        if (position > 0.0) return callForOne("get", {signals.get(), makeDouble(position).get()});
    }
    return nullptr;
}

}  // namespace kestrel
