#pragma once

#include <array>
#include <sstream>
#include <string>
#include <vector>

#include "observers/model_observers.h"
#include "observers/streaming_clients.h"
#include "tests/support/engine_port.h"
#include "tests/support/host_test.h"
#include "tests/support/plain_signal_set.h"

namespace ks_test {

inline constexpr const char16_t* kSweptPaths[] = {u"Gain", u"Sub/Switch", u"Sub/Chart", u"Sub/Other"};

/// An open model with signals and clients, and what operations on them take; the same each time but for handles.
/// It is made from members only, so that one that cannot be made leaves nothing.
class SweptWorld {
public:
    SweptWorld() {
        using ks_hmi::SignalSpecification;
        kestrel::loadedModels().unloadAll();
        ks_hmi::SignalSpecification::getBlockUUIDmap().clear();
        gain = loadModel().findByPath(u"Gain")->handle;
        signalsObject = call("Kestrel.HMI.InstrumentedSignals", {text("m1").get()});
        clientsObject = call("Kestrel.HMI.StreamingClients", {text("m1").get()});
        signals().add(port(u"Gain", 1, "1", "s-1"));
        signals().get(0)->setCachedInfo(gain, 1);
        signals().updateObservedPortMap();
        signals().add(port(u"Sub/Switch", 2, "3", "s-2"));
        signals().get(1)->m_domainParams = {{u"Unit", u"V"}};
        signals().add(state(u"7", u"Self", "s-3"));
        clients().add(client("c-1", "s-1"));
        clients().add(client("c-2", "s-2"));
        kestrel::loadedModels().find(u"m1")->setSignals(shared(signalsObject));
        kestrel::loadedModels().find(u"m1")->setClients(shared(clientsObject));
        makeArguments();
        signals().cacheKSPorts({&engine});
        clients().get(0)->getSignalSpecification(u"m1");
        orvex::clearWarnings();
    }
    SweptWorld(const SweptWorld&) = delete;
    SweptWorld& operator=(const SweptWorld&) = delete;
    ~SweptWorld() {
        kestrel::loadedModels().unloadAll();
        orvex::clearWarnings();
    }

    ks_hmi::InstrumentedSignals& signals() const {
        return *ks_hmi::InstrumentedSignals::getFromHvArray(signalsObject.get());
    }
    ks_hmi::StreamingClients& clients() const { return *ks_hmi::StreamingClients::getFromHvArray(clientsObject.get()); }

    static std::unique_ptr<ks_hmi::SignalSpecification> port(const std::u16string& path, int number,
                                                             const std::string& eid, const std::string& uuid) {
        auto result = std::make_unique<ks_hmi::SignalSpecification>();
        result->m_uuid = uuid;
        result->m_blockPath = path;
        result->m_eid = eid;
        result->m_outputPortIndex = number;
        result->m_signalName = u"a name that does not fit into the text object itself";
        return result;
    }
    static std::unique_ptr<ks_hmi::SignalSpecification> state(const std::u16string& ssid,
                                                              const std::u16string& activity, const std::string& uuid) {
        auto result = port(u"Sub/Chart", 0, "4", uuid);
        result->m_domainType = u"cw_state";
        result->m_domainParams = {{u"SSID", ssid}, {u"Activity", activity}};
        return result;
    }
    static std::unique_ptr<ks_hmi::SignalClient> client(const std::string& uuid, const std::string& signalUUID) {
        auto result = std::make_unique<ks_hmi::SignalClient>();
        result->m_uuid = uuid;
        result->m_signalUUID = signalUUID;
        result->m_observerType = "ks_scope_observer";
        result->m_sourceModel = u"m1";
        result->m_modelPath = {u"Sub"};
        result->m_modelPathEID = {"2"};
        result->m_observerParams = structOf(1, std::array{"ModelName", "gain"});
        hvReplaceField(result->m_observerParams.get(), 0, "ModelName", text("m1").release());
        hvReplaceField(result->m_observerParams.get(), 0, "gain", number(3).release());
        hvSetArrayScope(result->m_observerParams.get(), nullptr);  // made in a host call at times
        return result;
    }
    static HvArrayPtr shared(const HvArrayPtr& value) { return HvArrayPtr(hvCreateSharedDataCopy(value.get())); }

    /// All that can be seen of the state without changing it.
    std::string state() const { return listState() + answers() + clientState() + processState(); }

    /// The answers of the indexes, and what a plain model, built from the list alone, answers; equal unless
    /// an index and the list have come apart.
    std::string answers() const { return answersOf(signals()); }
    std::string plainAnswers() const {
        PlainSignalSet plain;
        plain.setModelName(signals().getModelName());
        for (std::size_t i = 0; i < signals().getCount(); ++i)
            plain.add(std::make_shared<PlainSignal>(PlainSignal::of(*signals().get(i))));
        return answersOf(plain);
    }

    double gain = 0.0;           ///< the handle of "Gain"
    bool isMeddledWith = false;  ///< whether the host changes the state while it is asked
    ksPort engine, otherEngine;
    HvArrayPtr signalsObject, clientsObject;
    HvArrayPtr modelObject, bundle, specObject, clientObject, saved, savedClients, one, yes, name, newName;

private:
    void makeArguments() {
        modelObject = call("Kestrel.Model", {text("m1").get()});
        bundle = ks_hmi::ModelObservers::createFromSignalsAndClients(signalsObject.get(), clientsObject.get());
        specObject = port(u"Sub/Switch", 3, "3", "s-4")->getHOSObject(u"m1", false);
        clientObject = client("c-3", "s-3")->getHOSObject(u"m1");
        saved = signals().getPersistenceData();
        savedClients = clients().getPersistenceData();
        one = number(1);
        yes = logical(true);
        name = text("m1");
        newName = text("m2");
    }
    template <class Set>
    std::string answersOf(Set& set) const {
        std::string result = "; answers ";
        const auto add = [&](bool answer) { result += answer ? '1' : '0'; };
        for (int n = 0; n <= 4; ++n) {
            for (const char16_t* const path : kSweptPaths) add(set.isPortObserved(0.5, path, u"", n, 0, 0));
            for (const double handle : {gain, gain + 1, 0.0}) add(set.isPortObserved(handle, n));
        }
        for (const double ssid : {7.0, 8.0}) {
            for (const char16_t* const kind : {u"Self", u"Child"}) add(set.isCWActivityObserved(u"4", ssid, kind));
            add(set.isAnyCWActivityObserved(u"4", ssid));
        }
        return result;
    }
    std::string listState() const {
        std::ostringstream out;
        out << utf8(signals().getModelName()) << (signals().isRebindingPending() ? " pending" : "");
        for (std::size_t i = 0; i < signals().getCount(); ++i) {
            const ks_hmi::SignalSpecification& s = *signals().get(i);
            out << "; " << s.m_uuid << ' ' << utf8(s.m_blockPath) << ' ' << s.m_eid << ' ' << s.m_outputPortIndex << ' '
                << s.m_logicalPortIndex << ' ' << utf8(s.m_domainType) << ' ' << utf8(s.m_signalName) << ' '
                << s.m_cachedPortIdx << (s.m_cachedBlockHandle == 0.0 ? "" : " bound") << ' '
                << s.m_domainParams.size();
        }
        return out.str();
    }
    std::string clientState() const {
        std::ostringstream out;
        out << "; clients of " << utf8(clients().getModelName());
        for (std::size_t i = 0; i < clients().getCount(); ++i) {
            const ks_hmi::SignalClient& c = *clients().get(i);
            out << "; " << c.m_uuid << ' ' << c.m_signalUUID << ' ' << utf8(c.m_sourceModel) << ' '
                << c.m_modelPath.size() << c.m_modelPathEID.size() << ' ' << c.m_updateRate << ' '
                << (c.m_signalSpec ? "known " : "") << (c.m_observerParams ? modelNameIn(c.m_observerParams) : "none");
        }
        return out.str();
    }
    static std::string modelNameIn(const HvArrayPtr& params) {
        const hvArray* const field = hvGetField(params.get(), 0, "ModelName");
        return field == nullptr ? "nothing" : hvArrayToStdString(field);
    }
    static std::string processState() {
        return "; " + std::to_string(ks_hmi::SignalSpecification::getBlockUUIDmap().size()) + " UUIDs";
    }
};

}  // namespace ks_test
