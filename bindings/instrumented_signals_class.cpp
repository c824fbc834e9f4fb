#include "bindings/instrumented_signals_class.h"

#include "bindings/instrumented_signals_methods.h"
#include "bindings/instrumented_signals_properties.h"
#include "signals/signal_specification.h"

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

}  // namespace ks_hmi_foundation
