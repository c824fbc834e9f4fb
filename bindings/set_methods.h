#pragma once

#include <memory>
#include <string>

#include "bindings/hmi_cos_method_info.h"
#include "foundation/native_object.h"
#include "observers/streaming_clients.h"
#include "signals/instrumented_signals.h"

/// What the host methods of the two set classes share. Positions are 1-based at the host.
namespace ks_hmi_foundation {

/// The host classes of a set and of its records.
template <class Set>
struct HostClasses;

template <>
struct HostClasses<ks_hmi::InstrumentedSignals> {
    using Record = ks_hmi::SignalSpecification;
    static constexpr const char* kName = "InstrumentedSignals";
    static constexpr const char* kRecord = "Kestrel.HMI.SignalSpecification";
};

template <>
struct HostClasses<ks_hmi::StreamingClients> {
    using Record = ks_hmi::SignalClient;
    static constexpr const char* kName = "StreamingClients";
    static constexpr const char* kRecord = "Kestrel.HMI.SignalClient";
};

template <class Set>
class SetMethod : public HMICOSMethodInfo {
protected:
    static constexpr const char* kSet = Set::kHostClass;
    static constexpr const char* kRecord = HostClasses<Set>::kRecord;
    using Record = typename HostClasses<Set>::Record;

    using HMICOSMethodInfo::HMICOSMethodInfo;

    /// The native set behind the first argument; raises the host's exception when there is none.
    static Set& self(const hos::Invocation& call) { return requireNativeObject<Set>(value(call, 0), kSet); }
    /// A new record read from the argument's host object, relative to the set's model.
    static std::unique_ptr<Record> record(const hos::Invocation& call, std::size_t position, const Set& set) {
        return std::make_unique<Record>(value(call, position), 0, set.getModelName());
    }
};

template <class Set>
class SetConstructor : public SetMethod<Set> {
public:
    SetConstructor() : SetMethod<Set>(HostClasses<Set>::kName, {"unicodeString"}, {Set::kHostClass}, 1) {}
    void invoke(hos::Invocation& call) const override {
        const auto& object = std::get<HvArrayPtr>(call.results[0]);
        if (this->isGiven(call, 0)) {
            const auto& name = this->template argument<std::u16string>(call, 0);
            requireNativeObject<Set>(object.get(), this->kSet).setModelName(name);
        }
        call.resultCount = 1;
    }
};

template <class Set>
class SetAdd : public SetMethod<Set> {
public:
    SetAdd() : SetMethod<Set>("add", {Set::kHostClass, HostClasses<Set>::kRecord}, {}) {}
    void invoke(hos::Invocation& call) const override {
        Set& set = this->self(call);
        set.add(this->record(call, 1, set));
    }
};

template <class Set>
class SetSet : public SetMethod<Set> {
public:
    SetSet() : SetMethod<Set>("set", {Set::kHostClass, "uint32 scalar", HostClasses<Set>::kRecord}, {}) {}
    void invoke(hos::Invocation& call) const override {
        Set& set = this->self(call);
        const std::size_t index = this->elementIndex(call, 1, set.getCount());
        set.set(index, this->record(call, 2, set));
    }
};

template <class Set>
class SetRemove : public SetMethod<Set> {
public:
    SetRemove() : SetMethod<Set>("remove", {Set::kHostClass, "uint32 scalar"}, {}) {}
    void invoke(hos::Invocation& call) const override {
        Set& set = this->self(call);
        set.remove(this->elementIndex(call, 1, set.getCount()));
    }
};

}  // namespace ks_hmi_foundation
