#include "bindings/instrumented_signals_class.h"

#include <memory>

#include "bindings/instrumented_signals_methods.h"
#include "bindings/instrumented_signals_properties.h"
#include "signals/instrumented_signals.h"

namespace ks_hmi_foundation {

void InstrumentedSignalsCOSClassInfo::defineMembers(hos::COSClass& hostClass) const {
    hostClass.addProperty(std::make_unique<SignalsModelPI>(this));
    hostClass.addProperty(std::make_unique<SignalsCountPI>(this));
    hostClass.addProperty(std::make_unique<SignalsPersistencePI>(this));
    hostClass.addMethod(std::make_unique<InstrumentedSignalsConstructor>());
    hostClass.addMethod(std::make_unique<InstrumentedSignalsAdd>());
    hostClass.addMethod(std::make_unique<InstrumentedSignalsSet>());
    hostClass.addMethod(std::make_unique<InstrumentedSignalsRemove>());
    hostClass.addMethod(std::make_unique<InstrumentedSignalsGet>());
    hostClass.addMethod(std::make_unique<InstrumentedSignalsIsPortObserved>());
    hostClass.addMethod(std::make_unique<InstrumentedSignalsIsCWActivityObserved>());
    hostClass.addMethod(std::make_unique<InstrumentedSignalsIsAnyCWActivityObserved>());
    hostClass.addMethod(std::make_unique<InstrumentedSignalsIsBlockAndPortObserved>());
    hostClass.addMethod(std::make_unique<InstrumentedSignalAddToPortUUIDmap>());
    hostClass.addMethod(std::make_unique<InstrumentedSignalGetUUIDForBlock>());
    hostClass.addMethod(std::make_unique<InstrumentedSignalsGetUUID>());
}

void* InstrumentedSignalsCOSClassInfo::createInstance() const {
    return std::make_unique<ks_hmi::InstrumentedSignals>().release();
}

void InstrumentedSignalsCOSClassInfo::destroyInstance(void* instance) const {
    const std::unique_ptr<ks_hmi::InstrumentedSignals> set(static_cast<ks_hmi::InstrumentedSignals*>(instance));
}

}  // namespace ks_hmi_foundation
