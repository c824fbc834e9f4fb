#include "bindings/instrumented_signals_methods.h"

#include "foundation/native_object.h"

namespace ks_hmi_foundation {

using ks_hmi::InstrumentedSignals;
using ks_hmi::SignalSpecification;

InstrumentedSignals& InstrumentedSignalsMethod::self(const hos::Invocation& call) {
    return requireNativeObject<InstrumentedSignals>(value(call, 0), kClass);
}

std::unique_ptr<SignalSpecification> InstrumentedSignalsMethod::specification(const hos::Invocation& call,
                                                                              std::size_t position,
                                                                              const InstrumentedSignals& set) {
    return std::make_unique<SignalSpecification>(value(call, position), 0, set.getModelName());
}

void InstrumentedSignalsConstructor::invoke(hos::Invocation& call) const {
    const auto& object = std::get<HvArrayPtr>(call.results[0]);
    if (isGiven(call, 0)) {
        requireNativeObject<InstrumentedSignals>(object.get(), kClass).setModelName(argument<std::u16string>(call, 0));
    }
    call.resultCount = 1;
}

void InstrumentedSignalsAdd::invoke(hos::Invocation& call) const {
    InstrumentedSignals& set = self(call);
    set.add(specification(call, 1, set));
}

void InstrumentedSignalsSet::invoke(hos::Invocation& call) const {
    InstrumentedSignals& set = self(call);
    const std::size_t index = elementIndex(call, 1, set.getCount());
    set.set(index, specification(call, 2, set));
}

void InstrumentedSignalsRemove::invoke(hos::Invocation& call) const {
    InstrumentedSignals& set = self(call);
    set.remove(elementIndex(call, 1, set.getCount()));
}

void InstrumentedSignalsGet::invoke(hos::Invocation& call) const {
    const InstrumentedSignals& set = self(call);
    const auto signal = set.share(elementIndex(call, 1, set.getCount()));
    const bool asStruct = isGiven(call, 2) && argument<bool>(call, 2);
    setResult(call, signal->getHOSObject(set.getModelName(), asStruct));
}

void InstrumentedSignalsIsPortObserved::invoke(hos::Invocation& call) const {
    InstrumentedSignals& set = self(call);
    const auto signal = specification(call, 1, set);
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
