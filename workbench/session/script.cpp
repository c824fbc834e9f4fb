#include "workbench/session/script.h"

#include <initializer_list>
#include <span>
#include <vector>

#include "host/values.h"
#include "memory_host/orvex/calls/call_by_name.h"
#include "observers/streaming_clients.h"
#include "signals/instrumented_signals.h"

namespace workbench::script {

namespace {

constexpr const char* kModelClass = "Kestrel.Model";

HvArrayPtr call(const std::string& name, int outputs, std::initializer_list<const hvArray*> inputs) {
    std::vector<HvArrayPtr> results = orvex::callByName(name, std::span(inputs.begin(), inputs.size()), outputs);
    return std::move(results.at(0));
}

HvArrayPtr numberValue(double number) { return HvArrayPtr(hvCreateDoubleScalar(number)); }

}  // namespace

HvArrayPtr newSet(const std::u16string& modelName) {
    return call(ks_hmi::InstrumentedSignals::kHostClass, 1, {ks_host::makeText(modelName).get()});
}

HvArrayPtr newClientSet(const std::u16string& modelName) {
    return call(ks_hmi::StreamingClients::kHostClass, 1, {ks_host::makeText(modelName).get()});
}

void renameClientSet(hvArray* set, const std::u16string& modelName) {
    hvSetProperty(set, 0, "Model", ks_host::makeText(modelName).get());
}

HvArrayPtr modelObject(const std::u16string& modelName) {
    return call(kModelClass, 1, {ks_host::makeText(modelName).get()});
}

void add(const hvArray* set, const hvArray* record) { call("add", 0, {set, record}); }

void remove(const hvArray* set, std::size_t position) {
    const HvArrayPtr where = numberValue(static_cast<double>(position));
    call("remove", 0, {set, where.get()});
}

std::string uuidOf(const hvArray* set, std::size_t position) {
    const HvArrayPtr where = numberValue(static_cast<double>(position));
    return hvArrayToStdString(call("getUUID", 1, {set, where.get()}).get());
}

void rememberUuid(double blockHandle, int port, const std::string& uuid) {
    const HvArrayPtr handle = numberValue(blockHandle);
    const HvArrayPtr portNumber = numberValue(port);
    const HvArrayPtr text = ks_host::makeText(std::string_view(uuid));
    call(std::string(ks_hmi::InstrumentedSignals::kHostClass) + ".setUUIDForBlock", 0,
         {handle.get(), portNumber.get(), text.get()});
}

std::size_t count(const hvArray* set) {
    const HvArrayPtr value(hvGetProperty(set, 0, "Count"));
    return static_cast<std::size_t>(hvGetScalarInt(value.get()));
}

HvArrayPtr persistence(const hvArray* set) { return HvArrayPtr(hvGetPropertyShared(set, 0, "Persistence")); }

void setPersistence(hvArray* set, const hvArray* saved) { hvSetProperty(set, 0, "Persistence", saved); }

}  // namespace workbench::script
