#include "bindings/instrumented_signals_methods.h"
#include "signals/signal_specification.h"

namespace ks_hmi_foundation {

using ks_hmi::InstrumentedSignals;
using ks_hmi::SignalSpecification;

void InstrumentedSignalsGet::invoke(hos::Invocation& call) const {
    const InstrumentedSignals& set = self(call);
    const auto signal = set.share(elementIndex(call, 1, set.getCount()));
    const bool asStruct = isGiven(call, 2) && argument<bool>(call, 2);
    setResult(call, signal->getHOSObject(set.getModelName(), asStruct));
}

void InstrumentedSignalsIsPortObserved::invoke(hos::Invocation& call) const {
    InstrumentedSignals& set = self(call);
    const auto signal = record(call, 1, set);
    setResult(call, set.isPortObserved(signal.get()));
}

void InstrumentedSignalsIsCWActivityObserved::invoke(hos::Invocation& call) const {
    setResult(call, self(call).isCWActivityObserved(argument<std::u16string>(call, 1), argument<double>(call, 2),
                                                    argument<std::u16string>(call, 3)));
}

void InstrumentedSignalsIsAnyCWActivityObserved::invoke(hos::Invocation& call) const {
    setResult(call, self(call).isAnyCWActivityObserved(argument<std::u16string>(call, 1), argument<double>(call, 2)));
}

void InstrumentedSignalsIsBlockAndPortObserved::invoke(hos::Invocation& call) const {
    setResult(call, self(call).isPortObserved(argument<double>(call, 1), argument<std::int32_t>(call, 2)));
}

void InstrumentedSignalAddToPortUUIDmap::invoke(hos::Invocation& call) const {
    SignalSpecification::addToBlockHandleUUIDmap(static_cast<int>(argument<std::uint32_t>(call, 1)),
                                                 argument<double>(call, 0), argument<std::string>(call, 2));
}

void InstrumentedSignalGetUUIDForBlock::invoke(hos::Invocation& call) const {
    setResult(call, SignalSpecification::getUUIDFromBlockHandle(static_cast<int>(argument<std::uint32_t>(call, 1)),
                                                                argument<double>(call, 0), argument<bool>(call, 2)));
}

void InstrumentedSignalsGetUUID::invoke(hos::Invocation& call) const {
    const InstrumentedSignals& set = self(call);
    setResult(call, set.get(elementIndex(call, 1, set.getCount()))->m_uuid);
}

}  // namespace ks_hmi_foundation
