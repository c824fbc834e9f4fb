#pragma once

#include "bindings/set_methods.h"

namespace ks_hmi_foundation {

using InstrumentedSignalsMethod = SetMethod<ks_hmi::InstrumentedSignals>;

using InstrumentedSignalsConstructor = SetConstructor<ks_hmi::InstrumentedSignals>;
using InstrumentedSignalsAdd = SetAdd<ks_hmi::InstrumentedSignals>;
using InstrumentedSignalsSet = SetSet<ks_hmi::InstrumentedSignals>;
using InstrumentedSignalsRemove = SetRemove<ks_hmi::InstrumentedSignals>;

class InstrumentedSignalsGet final : public InstrumentedSignalsMethod {
public:
    InstrumentedSignalsGet()
        : InstrumentedSignalsMethod("get", {kSet, "uint32 scalar", "logical scalar"}, {"any"}, 1) {}
    void invoke(hos::Invocation& call) const override;
};

class InstrumentedSignalsIsPortObserved final : public InstrumentedSignalsMethod {
public:
    InstrumentedSignalsIsPortObserved()
        : InstrumentedSignalsMethod("isPortObserved", {kSet, kRecord}, {"logical scalar"}) {}
    void invoke(hos::Invocation& call) const override;
};

class InstrumentedSignalsIsCWActivityObserved final : public InstrumentedSignalsMethod {
public:
    InstrumentedSignalsIsCWActivityObserved()
        : InstrumentedSignalsMethod("isGivenCWActivityObserved",
                                    {kSet, "unicodeString", "double scalar", "unicodeString"}, {"logical scalar"}) {}
    void invoke(hos::Invocation& call) const override;
};

class InstrumentedSignalsIsAnyCWActivityObserved final : public InstrumentedSignalsMethod {
public:
    InstrumentedSignalsIsAnyCWActivityObserved()
        : InstrumentedSignalsMethod("isAnyCWActivityObserved", {kSet, "unicodeString", "double scalar"},
                                    {"logical scalar"}) {}
    void invoke(hos::Invocation& call) const override;
};

class InstrumentedSignalsIsBlockAndPortObserved final : public InstrumentedSignalsMethod {
public:
    InstrumentedSignalsIsBlockAndPortObserved()
        : InstrumentedSignalsMethod("isGivenPortObserved", {kSet, "double scalar", "int32 scalar"},
                                    {"logical scalar"}) {}
    void invoke(hos::Invocation& call) const override;
};

class InstrumentedSignalAddToPortUUIDmap final : public InstrumentedSignalsMethod {
public:
    InstrumentedSignalAddToPortUUIDmap()
        : InstrumentedSignalsMethod("setUUIDForBlock", {"double scalar", "uint32 scalar", "asciiString"}, {}) {}
    void invoke(hos::Invocation& call) const override;
    bool isStatic() const override { return true; }
};

class InstrumentedSignalGetUUIDForBlock final : public InstrumentedSignalsMethod {
public:
    InstrumentedSignalGetUUIDForBlock()
        : InstrumentedSignalsMethod("getUUIDForBlock", {"double scalar", "uint32 scalar", "logical scalar"}, {"any"}) {}
    void invoke(hos::Invocation& call) const override;
    bool isStatic() const override { return true; }
};

class InstrumentedSignalsGetUUID final : public InstrumentedSignalsMethod {
public:
    InstrumentedSignalsGetUUID() : InstrumentedSignalsMethod("getUUID", {kSet, "uint32 scalar"}, {"any"}) {}
    void invoke(hos::Invocation& call) const override;
};

}  // namespace ks_hmi_foundation
