#pragma once

#include "bindings/hmi_cos_method_info.h"
#include "signals/instrumented_signals.h"

namespace ks_hmi_foundation {

/// Common base of the methods of "Kestrel.HMI.InstrumentedSignals". Positions are 1-based at the host.
class InstrumentedSignalsMethod : public HMICOSMethodInfo {
protected:
    static constexpr const char* kClass = "Kestrel.HMI.InstrumentedSignals";
    static constexpr const char* kSpecificationClass = "Kestrel.HMI.SignalSpecification";

    using HMICOSMethodInfo::HMICOSMethodInfo;

    /// The native set behind the first argument; raises the host's exception when there is none.
    static ks_hmi::InstrumentedSignals& self(const hos::Invocation& call);
    /// A new record read from the argument's host object, relative to the set's model.
    static std::unique_ptr<ks_hmi::SignalSpecification> specification(const hos::Invocation& call, std::size_t position,
                                                                      const ks_hmi::InstrumentedSignals& set);
};

class InstrumentedSignalsConstructor final : public InstrumentedSignalsMethod {
public:
    InstrumentedSignalsConstructor()
        : InstrumentedSignalsMethod("InstrumentedSignals", {"unicodeString"}, {kClass}, 1) {}
    void invoke(hos::Invocation& call) const override;
};

class InstrumentedSignalsAdd final : public InstrumentedSignalsMethod {
public:
    InstrumentedSignalsAdd() : InstrumentedSignalsMethod("add", {kClass, kSpecificationClass}, {}) {}
    void invoke(hos::Invocation& call) const override;
};

class InstrumentedSignalsSet final : public InstrumentedSignalsMethod {
public:
    InstrumentedSignalsSet() : InstrumentedSignalsMethod("set", {kClass, "uint32 scalar", kSpecificationClass}, {}) {}
    void invoke(hos::Invocation& call) const override;
};

class InstrumentedSignalsRemove final : public InstrumentedSignalsMethod {
public:
    InstrumentedSignalsRemove() : InstrumentedSignalsMethod("remove", {kClass, "uint32 scalar"}, {}) {}
    void invoke(hos::Invocation& call) const override;
};

class InstrumentedSignalsGet final : public InstrumentedSignalsMethod {
public:
    InstrumentedSignalsGet()
        : InstrumentedSignalsMethod("get", {kClass, "uint32 scalar", "logical scalar"}, {"any"}, 1) {}
    void invoke(hos::Invocation& call) const override;
};

class InstrumentedSignalsIsPortObserved final : public InstrumentedSignalsMethod {
public:
    InstrumentedSignalsIsPortObserved()
        : InstrumentedSignalsMethod("isPortObserved", {kClass, kSpecificationClass}, {"logical scalar"}) {}
    void invoke(hos::Invocation& call) const override;
};

class InstrumentedSignalsIsCWActivityObserved final : public InstrumentedSignalsMethod {
public:
    InstrumentedSignalsIsCWActivityObserved()
        : InstrumentedSignalsMethod("isGivenCWActivityObserved",
                                    {kClass, "unicodeString", "double scalar", "unicodeString"}, {"logical scalar"}) {}
    void invoke(hos::Invocation& call) const override;
};

class InstrumentedSignalsIsAnyCWActivityObserved final : public InstrumentedSignalsMethod {
public:
    InstrumentedSignalsIsAnyCWActivityObserved()
        : InstrumentedSignalsMethod("isAnyCWActivityObserved", {kClass, "unicodeString", "double scalar"},
                                    {"logical scalar"}) {}
    void invoke(hos::Invocation& call) const override;
};

class InstrumentedSignalsIsBlockAndPortObserved final : public InstrumentedSignalsMethod {
public:
    InstrumentedSignalsIsBlockAndPortObserved()
        : InstrumentedSignalsMethod("isGivenPortObserved", {kClass, "double scalar", "int32 scalar"},
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
    InstrumentedSignalsGetUUID() : InstrumentedSignalsMethod("getUUID", {kClass, "uint32 scalar"}, {"any"}) {}
    void invoke(hos::Invocation& call) const override;
};

}  // namespace ks_hmi_foundation
