#include "observers/model_observers.h"

#include "foundation/errors.h"
#include "foundation/host_call.h"
#include "foundation/host_value.h"

namespace ks_hmi {

namespace errors = plv_hmi_foundation::errors;
using namespace ks_hmi_foundation;

ModelObservers::ModelObservers(const hvArray* value) {
    validateDataFormat(value);
    if (hvIsEmpty(value)) return;
    m_observers = persistent(HvArrayPtr(hvCreateSharedDataCopy(value)));
}

ModelObservers::~ModelObservers() = default;

void ModelObservers::validateDataFormat(const hvArray* value) {
    if (hvIsEmpty(value)) return;
    if (hvGetNumberOfElements(value) != 1) errors::raise(errors::SignalObserversSetParamNonScalar());
    if (!hvIsA(value, "Kestrel.HMI.ModelObservers")) errors::raise(errors::SignalObserversSetParamInvalidType());
}

void ModelObservers::getSignalsAndClients(HvArrayPtr& signals, HvArrayPtr& clients) const {
    signals.reset();
    clients.reset();
    if (!m_observers) return;
    auto parts = tryCallHost<2>("getSignalsAndClients", {m_observers.get()});
    if (!parts) return;
    signals = std::move((*parts)[0]);
    clients = std::move((*parts)[1]);
}

HvArrayPtr ModelObservers::createFromSignalsAndClients(const hvArray* signals, const hvArray* clients) {
    const HvArrayPtr none = inLocalScope(makeEmpty());
    if (signals == nullptr && clients == nullptr) return nullptr;
    auto bundle =
        tryCallHost<1>("Kestrel.HMI.ModelObservers.createFromSignalsAndClients",
                       {signals != nullptr ? signals : none.get(), clients != nullptr ? clients : none.get()});
    return bundle ? std::move((*bundle)[0]) : nullptr;
}

}  // namespace ks_hmi
