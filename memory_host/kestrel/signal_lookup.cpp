#include "memory_host/kestrel/signal_lookup.h"

#include <algorithm>
#include <utility>

#include "memory_host/kestrel/alignment.h"
#include "memory_host/kestrel/host_values.h"

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

std::vector<std::u16string> signalUuids(const LoadedModel& open) {
    std::vector<std::u16string> uuids;
    if (!open.signals()) return uuids;
    const double count = numberProperty(open.signals(), "Count");
    uuids.reserve(static_cast<std::size_t>(count));
    for (double position = 1.0; position <= count; ++position) uuids.push_back(uuidAt(open.signals(), position));
    return uuids;
}

namespace {

/// 0 when the model has no such signal.
double positionOf(LoadedModel& open, const std::u16string& uuid) {
    const double count = open.signals() ? numberProperty(open.signals(), "Count") : 0.0;
    auto& known = open.foundSignals();
    const auto hint = known.find(uuid);
    if (hint != known.end() && hint->second <= count && uuidAt(open.signals(), hint->second) == uuid)
        return hint->second;
    known.clear();
    double position = 0.0;
    for (std::u16string& one : signalUuids(open)) known.emplace(std::move(one), ++position);
    const auto found = known.find(uuid);
    return found == known.end() ? 0.0 : found->second;
}

}  // namespace

HvArrayPtr findSignal(const std::vector<std::u16string>& modelNames, const std::u16string& uuid) {
    if (uuid.empty()) return nullptr;
    for (const std::u16string& name : modelNames) {
        LoadedModel* const open = loadedModels().find(name);
        const double position = open ? positionOf(*open, uuid) : 0.0;
        if (position > 0.0) return callForOne("get", {open->signals(), makeDouble(position).get()});
    }
    return nullptr;
}

}  // namespace kestrel
