#include <iterator>
#include <map>
#include <sstream>

#include "observers/hmi_engine_utils.h"
#include "tests/reliability/swept_world.h"
#include "tests/support/host_recorder.h"

using namespace ks_test;
using ks_hmi::InstrumentedSignals;
using ks_hmi::ModelObservers;
using ks_hmi::SignalClient;
using ks_hmi::SignalSpecification;
using ks_hmi::StreamingClients;

namespace {

const Operations kScopes = {"kssvSetLocalScope", "hvSetArrayScope"};
const Operations kCalls = {"kssvFEVAL",         "kssvFEVAL_NoThrow", "kssvReportAsWarning", "kssvDiscardDiagnostic",
                           "kssvSetLocalScope", "hvSetArrayScope"};

// What the library asks of the host: operations, arguments, scopes and their order.
class HostTraffic : public HostTest {
protected:
    using Values = std::map<std::string, std::string>;
    static Lines words(const std::string& text) {
        std::istringstream in(text);
        return {std::istream_iterator<std::string>(in), {}};
    }
    // From "NAME=VALUE NAME=VALUE".
    static Values valuesIn(const std::string& text) {
        Values values;
        for (const std::string& word : words(text))
            values[word.substr(0, word.find('='))] = word.substr(word.find('=') + 1);
        return values;
    }
    // "PREFIX NAME" with the value behind it where `suffix` wants one.
    static Lines fields(const std::string& prefix, const Lines& names, const Values& values = {}) {
        Lines lines;
        for (const std::string& name : names)
            lines.push_back(prefix + ' ' + name + (values.empty() ? "" : ' ' + values.at(name)));
        return lines;
    }
    // Each property is read, and what it hands out goes into the local scope.
    static Lines propertyReads(const Lines& names, const Values& values) {
        Lines lines;
        for (const std::string& name : names) {
            const bool isCopied = name == "ObserverParams_";
            lines.push_back((isCopied ? "hvGetProperty 0 " : "hvGetPropertyShared 0 ") + name);
            lines.push_back(isCopied ? "hvSetArrayScope struct null" : "kssvSetLocalScope " + values.at(name));
        }
        return lines;
    }
    static inline const Operations kPropertyReads = {"hvGetProperty", "hvGetPropertyShared", "kssvSetLocalScope",
                                                     "hvSetArrayScope"};

    SweptWorld world;
};

constexpr const char* kNewSignal = "kssvFEVAL_NoThrow 1 Kestrel.HMI.SignalSpecification (struct) true null";
constexpr const char* kNewClient = "kssvFEVAL_NoThrow 1 Kestrel.HMI.SignalClient (struct) true null";
constexpr const char* kTemporary = "kssvSetLocalScope struct";

TEST_F(HostTraffic, signalsAreWrittenAndReadInTheirOrder) {
    const Values values = valuesIn(
        "UUID='s-2' EID_='m1:3' BlockPath_='m1/Sub/Switch' SubPath_='in/x' SignalName_='n' SubSysPath_='s' "
        "DomainType_='d' VisualType_='v' DomainParams_=struct OutputPortIndex_=2 Decimation_=4 "
        "TargetBufferedStreaming_=1 IsFrameBased_=0 HideInPLV_=1 LogicalPortIndex_=3 MaxPoints_=5 BindingRule_='r' "
        "CachedBlockHandle_=12.5 CachedPortIdx_=2 ExcludeForSave_=true");
    const Lines runtime = words("BindingRule_ CachedBlockHandle_ CachedPortIdx_ ExcludeForSave_");
    SignalSpecification& signal = *world.signals().get(1);
    signal.m_subPath = u"in/x";
    signal.m_signalName = u"n";
    signal.m_subSysPath = u"s";
    signal.m_domainType = u"d";
    signal.m_visualType = u"v";
    signal.m_logicalPortIndex = 3;
    signal.m_decimation = 4;
    signal.m_maxPoints = 5;
    signal.m_targetBufferedStreaming = signal.m_hideInPLV = signal.m_excludeForSave = true;
    signal.m_bindingRule = "r";
    signal.setCachedInfo(12.5, 2);
    Lines names = words(
        "UUID EID_ BlockPath_ SubPath_ SignalName_ SubSysPath_ DomainType_ VisualType_ DomainParams_ OutputPortIndex_ "
        "LogicalPortIndex_ Decimation_ MaxPoints_ TargetBufferedStreaming_ IsFrameBased_ HideInPLV_");
    signal.m_domainParams.clear();
    HvArrayPtr object;
    Lines expected = fields("hvReplaceField 0", names, values);
    expected.push_back(kNewSignal);
    for (const std::string& line : fields("hvSetProperty 0", runtime, values)) expected.push_back(line);
    EXPECT_EQ(recorded({"hvReplaceField", "hvSetProperty", "kssvFEVAL_NoThrow"},
                       [&] { object = signal.getHOSObject(u"m1", false); }),
              expected);
    names.insert(names.end(), runtime.begin(), runtime.end());
    expected = fields("hvReplaceField 0", names, values);
    expected.push_back("hvSetArrayScope struct 4");
    EXPECT_EQ(recorded({"hvReplaceField", "hvSetArrayScope"}, [&] { signal.getHOSObject(u"m1", true); }), expected);
    const Lines read = words(
        "UUID EID_ BlockPath_ SubPath_ SubSysPath_ SignalName_ DomainType_ VisualType_ DomainParams_ OutputPortIndex_ "
        "LogicalPortIndex_ Decimation_ MaxPoints_ TargetBufferedStreaming_ IsFrameBased_ HideInPLV_ BindingRule_ "
        "CachedBlockHandle_ CachedPortIdx_ ExcludeForSave_");
    EXPECT_EQ(recorded(kPropertyReads, [&] { SignalSpecification(object.get(), 0, u"m1"); }),
              propertyReads(read, values));
    EXPECT_EQ(recorded({"hvGetField"}, [&] { SignalSpecification(world.saved.get(), 0, u""); }),
              fields("hvGetField 0",
                     words("UUID EID_ OutputPortIndex_ LogicalPortIndex_ BlockPath_ SubPath_ SubSysPath_ SignalName_ "
                           "Decimation_ MaxPoints_ TargetBufferedStreaming_ IsFrameBased_ HideInPLV_ DomainType_ "
                           "VisualType_ DomainParams_")));
}

TEST_F(HostTraffic, clientsAreWrittenAndReadInTheirOrder) {
    Values values = valuesIn(
        "UUID='c-1' SignalUUID_='s-1' ObserverType_='ks_scope_observer' SourceModel_='m1' ModelPath_={'m1/Sub'} "
        "ModelPathEID_={'m1:2'} ObserverParams_=struct ObserveImaginaryPart_=true BusLeafPath_='a.b'");
    values["UpdateRate_"] = values["DimensionChannel_"] = "uint32 1";
    SignalClient& client = *world.clients().get(0);
    client.m_observeImaginaryPart = true;
    client.m_busLeafPath = "a.b";
    HvArrayPtr object;
    EXPECT_EQ(recorded({"hvReplaceField"}, [&] { object = client.getHOSObject(u"m1"); }),
              fields("hvReplaceField 0",
                     words("UUID SignalUUID_ ObserverType_ SourceModel_ ModelPath_ ModelPathEID_ ObserverParams_ "
                           "UpdateRate_ DimensionChannel_ ObserveImaginaryPart_ BusLeafPath_"),
                     values));
    const Lines read = words(
        "UUID SourceModel_ SignalUUID_ ObserverType_ ModelPath_ ModelPathEID_ ObserverParams_ UpdateRate_ "
        "DimensionChannel_ ObserveImaginaryPart_ BusLeafPath_");
    EXPECT_EQ(recorded(kPropertyReads, [&] { SignalClient(object.get(), 0, u"m1"); }), propertyReads(read, values));
    EXPECT_EQ(recorded({"hvGetField"}, [&] { SignalClient(world.savedClients.get(), 1, u""); }),
              fields("hvGetField 1", read));
}

TEST_F(HostTraffic, temporariesAreInTheLocalScopeAndResultsInNone) {
    const SignalSpecification& signal = *world.signals().get(0);
    EXPECT_EQ(recorded(kCalls, [&] { signal.getHOSObject(u"m1", true); }),
              (Lines{kTemporary, "hvSetArrayScope struct 4"}));
    EXPECT_EQ(recorded(kCalls, [&] { signal.getHOSObject(u"m1", false); }), (Lines{kTemporary, kNewSignal}));
    EXPECT_EQ(recorded(kCalls, [&] { signal.getAlignedBlockPath(u"m1"); }),
              (Lines{kTemporary, kNewSignal, "kssvSetLocalScope Kestrel.HMI.SignalSpecification",
                     "kssvFEVAL_NoThrow 1 getAlignedBlockPath (Kestrel.HMI.SignalSpecification) true null"}));
    EXPECT_EQ(recorded(kCalls, [&] { world.clients().get(1)->getHOSObject(u"m1"); }), (Lines{kTemporary, kNewClient}));
    const auto call = [&](const char* method, std::initializer_list<const hvArray*> inputs) {
        const Lines lines = recorded(kScopes, [&] { ks_test::call(method, inputs); });
        return lines.empty() ? "" : lines.back();
    };
    const auto number = ks_test::number(1);
    EXPECT_EQ(call("get", {world.signalsObject.get(), number.get(), world.yes.get()}), "hvSetArrayScope struct 0");
    EXPECT_EQ(call("get", {world.clientsObject.get(), number.get()}), "hvSetArrayScope Kestrel.HMI.SignalClient 0");
    EXPECT_EQ(call("getUUID", {world.signalsObject.get(), number.get()}), "hvSetArrayScope 's-1' 0");
}

TEST_F(HostTraffic, whatARecordKeepsIsPersistent) {
    const auto element = [&] { SignalClient(world.savedClients.get(), 0, u""); };
    EXPECT_EQ(recorded(kScopes, element), (Lines{"hvSetArrayScope struct null"}));
    EXPECT_EQ(recorded(kScopes, [&] { world.clients().get(0)->clone(); }), (Lines{"hvSetArrayScope struct null"}));
    EXPECT_EQ(recorded(kScopes, [&] { ModelObservers(world.bundle.get()); }),
              (Lines{"hvSetArrayScope Kestrel.HMI.ModelObservers null"}));
}

TEST_F(HostTraffic, whatOutlivesTheHostCallThatItIsMadeInHasAScopeByThen) {
    std::vector<std::unique_ptr<SignalClient>> clients;
    std::unique_ptr<ModelObservers> bundle;
    HvArrayPtr runtimeStruct;
    const auto keep = orvex::registerFunction("keep", [&](orvex::Call&) {
        clients.push_back(std::make_unique<SignalClient>(world.savedClients.get(), 0, u""));
        clients.push_back(world.clients().get(0)->clone());
        bundle = std::make_unique<ModelObservers>(world.bundle.get());
        runtimeStruct = world.signals().get(0)->getHOSObject(u"m1", true);
    });
    ks_test::call("keep", {}, 0);
    EXPECT_EQ(hvGetClassID(runtimeStruct.get()), hvSTRUCT_CLASS);
    EXPECT_EQ(orvex::scopeErrors(), Lines());
}

TEST_F(HostTraffic, queriesOfTheHostPassTheirArgumentsInOrder) {
    std::vector<InstrumentedSignals::Source> sources;
    const Lines listed = recorded(kCalls, [&] {
        InstrumentedSignals::getObservedPorts(world.modelObject.get(), "Sub", "bar", sources, true, false);
    });
    ASSERT_EQ(listed.size(), 11U);
    EXPECT_EQ(listed[0], "kssvFEVAL_NoThrow 10 getObservedPorts (Kestrel.Model, 'Sub', 'bar', true, false) true null");
    for (std::size_t i = 1; i < listed.size(); ++i) EXPECT_EQ(listed[i].rfind("kssvSetLocalScope ", 0), 0U) << i;
    std::set<double> badges;
    EXPECT_EQ(recorded(kCalls, [&] { InstrumentedSignals::getPortsWithBadges(world.modelObject.get(), badges); }),
              (Lines{"kssvFEVAL_NoThrow 1 getPortsWithBadges (Kestrel.Model) true null"}));
    EXPECT_EQ(recorded(kCalls, [&] { world.signals().applyRebindingRules(world.signalsObject.get(), true); }),
              (Lines{"hvSetArrayScope true null",
                     "kssvFEVAL_NoThrow 0 applyRebindingRules (Kestrel.HMI.InstrumentedSignals, true) true null"}));
    EXPECT_EQ(recorded(kCalls, [&] { world.signals().applyRebindingRules(nullptr, true); }), Lines{});
    EXPECT_EQ(recorded(kCalls, [&] { world.signals().copy(false); }),
              (Lines{"kssvFEVAL 1 Kestrel.HMI.InstrumentedSignals ()"}));
    EXPECT_EQ(recorded(kCalls, [&] { ks_hmi::HMIEngineUtils::updateParamsForBlock(u"m1/Gain"); }),
              (Lines{"kssvFEVAL_NoThrow 0 Kestrel.HMI.kshmi ('block_param_change', 'm1/Gain') true null"}));
}

TEST_F(HostTraffic, observersAskTheHostForTheirPart) {
    const hvArray* const object = world.clientsObject.get();
    StreamingClients& clients = world.clients();
    EXPECT_EQ(recorded({"kssvFEVAL"}, [&] { clients.copy(); }), (Lines{"kssvFEVAL 1 Kestrel.HMI.StreamingClients ()"}));
    EXPECT_EQ(recorded(kCalls, [&] { clients.get(0)->isEqual(clients.get(0)); }),
              (Lines{"kssvFEVAL 1 isequal (struct, struct)"}));
    const SignalClient& with = *clients.get(0);
    const auto without = with.clone();
    without->m_observerParams.reset();
    EXPECT_EQ(recorded({"kssvFEVAL"}, [&] { with.isEqual(without.get()); }),
              (Lines{"kssvFEVAL 1 isequal (struct, [])"}));
    EXPECT_EQ(recorded({"kssvFEVAL"}, [&] { without->isEqual(&with); }), (Lines{"kssvFEVAL 1 isequal ([], struct)"}));
    EXPECT_EQ(recorded({"kssvFEVAL"}, [&] { without->isEqual(without.get()); }),
              (Lines{"kssvFEVAL 1 isequal ([], [])"}));
    clients.setModelName(u"m2");
    EXPECT_EQ(recorded(kCalls, [&] { StreamingClients::handleModelRename(object); }),
              (Lines{"kssvFEVAL_NoThrow 1 Kestrel.HMI.InterfaceMgr.getInterfaceMgr () true null",
                     "kssvFEVAL_NoThrow 0 renameModel (Kestrel.HMI.InterfaceMgr, 'm1', 'm2') true null"}));
    EXPECT_EQ(recorded(kCalls, [&] { StreamingClients::validateAndRemoveUnused(object); }),
              (Lines{"kssvFEVAL_NoThrow 0 validateAndRemoveUnused (Kestrel.HMI.StreamingClients) true null"}));
    std::vector<StreamingClients::ClientPtr> aligned;
    EXPECT_EQ(recorded({"kssvFEVAL_NoThrow"}, [&] { StreamingClients::getAlignedObservers(object, aligned); }),
              (Lines{"kssvFEVAL_NoThrow 1 getAlignedObservers (Kestrel.HMI.StreamingClients) true null"}));
    EXPECT_EQ(recorded({"kssvFEVAL_NoThrow"}, [&] { ModelObservers::createFromSignalsAndClients(object, nullptr); }),
              (Lines{"kssvFEVAL_NoThrow 1 Kestrel.HMI.ModelObservers.createFromSignalsAndClients "
                     "(Kestrel.HMI.StreamingClients, []) true null"}));
    EXPECT_EQ(recorded(kCalls, [&] { ModelObservers::createFromSignalsAndClients(nullptr, object); }),
              (Lines{"kssvSetLocalScope []",
                     "kssvFEVAL_NoThrow 1 Kestrel.HMI.ModelObservers.createFromSignalsAndClients "
                     "([], Kestrel.HMI.StreamingClients) true null"}));
    const ModelObservers bundle(world.bundle.get());
    HvArrayPtr signals;
    HvArrayPtr parts;
    EXPECT_EQ(recorded(kCalls, [&] { bundle.getSignalsAndClients(signals, parts); }),
              (Lines{"kssvFEVAL_NoThrow 2 getSignalsAndClients (Kestrel.HMI.ModelObservers) true null"}));
    EXPECT_EQ(recorded(kCalls, [&] { ModelObservers(nullptr).getSignalsAndClients(signals, parts); }), Lines{});
}

TEST_F(HostTraffic, aRefusalIsConsumedOnceAndAnErrorIsThrownWithItsCataloguesText) {
    const auto refuse = [](orvex::Call&) { orvex::raise("refused", "by the test"); };
    const auto noPorts = orvex::registerFunction("getPortsWithBadges", refuse);
    const auto noNotice = orvex::registerFunction("Kestrel.HMI.kshmi", refuse);
    const Operations kDiagnostics = {"kssvReportAsWarning", "kssvDiscardDiagnostic", "kssvCreateDiagnostic",
                                     "kssvThrowIExceptionFromDiagnostic", "kssvCreateDiagnosticFromCatchClause"};
    std::set<double> badges;
    EXPECT_EQ(recorded(kDiagnostics, [&] { InstrumentedSignals::getPortsWithBadges(world.modelObject.get(), badges); }),
              (Lines{"kssvReportAsWarning"}));
    EXPECT_EQ(recorded(kDiagnostics, [&] { ks_hmi::HMIEngineUtils::updateParamsForBlock(u"m1/Gain"); }),
              (Lines{"kssvDiscardDiagnostic"}));
    EXPECT_EQ(recorded(kDiagnostics, [&] { EXPECT_THROW(world.signals().get(9), kssvIException); }),
              (Lines{"kssvCreateDiagnostic InvalidElementIndex ''", "kssvThrowIExceptionFromDiagnostic null"}));
    try {
        world.signals().get(9);
    } catch (const kssvIException& error) {
        EXPECT_EQ(error.messageId().catalogue(), "plv_hmi_foundation:errors");
    }
}

}  // namespace
