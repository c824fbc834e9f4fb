#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "observers/hmi_engine_utils.h"
#include "tests/reliability/swept_world.h"
#include "tests/support/failure_sweep.h"

/// The operations of the library that ask the host or take memory, each on a state of its own.
namespace ks_test {

/// What an operation that threw leaves.
enum class Leaves {
    stateAsItWas,
    beginning,  ///< what it did before the failure stays, and the index may be due for a rebuild
};

struct SweptRow : SweptOperation<SweptWorld> {
    SweptRow(const char* rowName, std::function<void(SweptWorld&)> rowAction, Leaves rowLeaves = Leaves::stateAsItWas)
        : SweptOperation{rowName, std::move(rowAction)}, leaves(rowLeaves) {}
    Leaves leaves;
};
using Value = HvArrayPtr SweptWorld::*;
inline constexpr Value kSignals = &SweptWorld::signalsObject;
inline constexpr Value kClients = &SweptWorld::clientsObject;
inline constexpr Value kOne = &SweptWorld::one;

/// The host's function or method of that name, called with members of the world.
inline std::function<void(SweptWorld&)> calls(const char* name, std::initializer_list<Value> inputs, int results = 1) {
    return [name, values = std::vector<Value>(inputs), results](SweptWorld& w) {
        std::vector<const hvArray*> given;
        for (const Value value : values) given.push_back((w.*value).get());
        orvex::callByName(name, given, results);
    };
}
inline std::function<void(SweptWorld&)> gets(Value object, const char* name) {
    return [=](SweptWorld& w) { property(SweptWorld::shared(w.*object).get(), name); };
}
inline std::function<void(SweptWorld&)> sets(Value object, const char* name, Value value) {
    return [=](SweptWorld& w) {
        const HvArrayPtr target = SweptWorld::shared(w.*object);
        hvSetProperty(target.get(), 0, name, (w.*value).get());
    };
}

/// What a list that is filled holds when that fails.
template <class List, class Fill>
void fill(List list, std::size_t countAfterFailure, Fill fillList) {
    try {
        fillList(list);
    } catch (...) {
        EXPECT_EQ(list.size(), countAfterFailure);
        throw;
    }
}

/// Loads the set's own records behind themselves; when that fails, the ones before the failure must be there.
template <class Set>
void loadAgain(const SweptWorld& w, Set& set, const hvArray* saved) {
    const std::size_t count = set.getCount();
    try {
        set.setFromPersistenceData(saved);
    } catch (...) {
        for (std::size_t i = count; !w.isMeddledWith && i < set.getCount(); ++i)
            EXPECT_EQ(set.get(i)->m_uuid, set.get(i - count)->m_uuid);
        throw;
    }
}

inline const std::vector<SweptRow>& recordRows() {
    static const std::vector<SweptRow> rows{
        {"signal to object", [](SweptWorld& w) { w.signals().share(1)->getHOSObject(u"m1", false); }},
        {"signal to struct", [](SweptWorld& w) { w.signals().share(1)->getHOSObject(u"m1", true); }},
        {"signal from object", [](SweptWorld& w) { ks_hmi::SignalSpecification(w.specObject.get(), 0, u"m1"); }},
        {"signal from element", [](SweptWorld& w) { ks_hmi::SignalSpecification(w.saved.get(), 1, u""); }},
        {"signal clone", [](SweptWorld& w) { w.signals().share(1)->clone(); }},
        {"signal aligned path", [](SweptWorld& w) { w.signals().share(1)->getAlignedBlockPath(u"m1"); }},
        {"signal parameters", [](SweptWorld& w) { w.signals().share(1)->getDomainParamsAsHvArray(); }},
        {"signal stripped", [](SweptWorld& w) { w.signals().share(1)->clone()->stripModelName(u"Sub"); }},
        {"signal from port",
         [](SweptWorld&) {
             ks_hmi::SignalSpecification::createSigSpecFromPort(u"m1/A", "m1:1", 1, 0, 2.0, u"m1", true);
         }},
        {"UUID minted", [](SweptWorld&) { ks_hmi::SignalSpecification::getUUIDFromBlockHandle(1, 2.0, true); }},
        {"UUID entered",
         [](SweptWorld&) {
             ks_hmi::SignalSpecification::addToBlockHandleUUIDmap(1, 2.0, "a UUID of thirty-six characters......");
         }},
        {"UUID looked up", [](SweptWorld&) { ks_hmi::SignalSpecification::isInBlockHandleUUIDmap(1, 2.0); }},
        {"client to object", [](SweptWorld& w) { w.clients().share(0)->getHOSObject(u"m1"); }},
        {"client from object", [](SweptWorld& w) { ks_hmi::SignalClient(w.clientObject.get(), 0, u"m1"); }},
        {"client from element", [](SweptWorld& w) { ks_hmi::SignalClient(w.savedClients.get(), 1, u""); }},
        {"client clone", [](SweptWorld& w) { w.clients().share(0)->clone(); }},
        {"client's signal", [](SweptWorld& w) { w.clients().share(1)->clone()->getSignalSpecification(u"m1"); }},
        {"client's port", [](SweptWorld& w) { w.clients().share(1)->clone()->getAlignedPortIndex(u"m1"); }},
        {"client's decimation", [](SweptWorld& w) { w.clients().share(1)->clone()->getDecimation(u"m1"); }},
        {"client's points", [](SweptWorld& w) { w.clients().share(1)->clone()->getMaxPoints(u"m1"); }},
        {"client's aligned path",
         [](SweptWorld& w) {
             std::vector<std::u16string> path;
             std::u16string subPath;
             w.clients().share(0)->getAlignedBlockPath(u"m1", path, subPath);
         }},
        {"client renamed", [](SweptWorld& w) { w.clients().share(0)->clone()->renameModel(u"m1", u"m2"); }},
    };
    return rows;
}

inline const std::vector<SweptRow>& setRows() {
    static const std::vector<SweptRow> rows{
        {"add", [](SweptWorld& w) { w.signals().add(SweptWorld::port(u"Sub/Switch", 3, "3", "s-4")); }},
        {"insert a bound port",
         [](SweptWorld& w) {
             auto spec = SweptWorld::port(u"Sub/Other", 1, "5", "s-4");
             spec->setCachedInfo(w.gain + 1, 1);
             w.signals().insert(0, std::move(spec));
         }},
        {"add a chart's signal", [](SweptWorld& w) { w.signals().add(SweptWorld::state(u"8", u"Child", "s-4")); }},
        {"set a chart's signal", [](SweptWorld& w) { w.signals().set(0, SweptWorld::state(u"8", u"Child", "s-4")); }},
        {"set", [](SweptWorld& w) { w.signals().set(0, SweptWorld::port(u"Sub/Other", 1, "5", "s-4")); }},
        {"remove by position", [](SweptWorld& w) { w.signals().remove(0); }},
        {"remove a chart's signal", [](SweptWorld& w) { w.signals().remove(2); }},
        {"remove by value", [](SweptWorld& w) { w.signals().remove(*SweptWorld::port(u"Sub/Switch", 2, "3", "")); }},
        {"rename", [](SweptWorld& w) { w.signals().setModelName(u"a name that is not short at all"); },
         Leaves::beginning},
        {"signals equal", [](SweptWorld& w) { w.signals().isEqual(&w.signals()); }},
        {"copy", [](SweptWorld& w) { w.signals().copy(true); }},
        {"save", [](SweptWorld& w) { w.signals().getPersistenceData(); }},
        {"load", [](SweptWorld& w) { loadAgain(w, w.signals(), w.saved.get()); }, Leaves::beginning},
        {"rebind",
         [](SweptWorld& w) {
             w.signals().setRebindingPending(true);
             w.signals().applyRebindingRules(w.signalsObject.get(), false);
         },
         Leaves::beginning},
        {"rebuild the index", [](SweptWorld& w) { w.signals().updateObservedPortMap(); }},
        {"cache engine ports",
         [](SweptWorld& w) {
             w.signals().cacheKSPorts({&w.engine, &w.otherEngine});
         }},
        {"is a port observed",
         [](SweptWorld& w) { w.signals().isPortObserved(w.gain + 1, u"Sub/Switch", u"", 2, 2, 0); }},
        {"is a chart's item observed", [](SweptWorld& w) { w.signals().isAnyCWActivityObserved(u"m1:4", 12.0); }},
        {"chart difference", [](SweptWorld& w) { w.signals().setDifference_cw(nullptr); }},
        {"renumber",
         [](SweptWorld& w) {
             w.signals().renumberPorts(-1, u"m1/Sub/Switch", "m1:3", {2, 3, 1});
         },
         Leaves::beginning},
        {"renumber with a deleted port",
         [](SweptWorld& w) { w.signals().renumberPorts(w.gain, u"m1/Gain", "m1:1", {0}); }, Leaves::beginning},
        {"list observed ports",
         [](SweptWorld& w) {
             fill(std::vector<ks_hmi::InstrumentedSignals::Source>(1), 1, [&](auto& out) {
                 ks_hmi::InstrumentedSignals::getObservedPorts(w.modelObject.get(), "", "", out, true, true);
             });
         }},
        {"list badges",
         [](SweptWorld& w) {
             fill(std::set<double>{1.0}, 1,
                  [&](auto& out) { ks_hmi::InstrumentedSignals::getPortsWithBadges(w.modelObject.get(), out); });
         }},
    };
    return rows;
}

inline const std::vector<SweptRow>& observerRows() {
    static const std::vector<SweptRow> rows{
        {"clients add", [](SweptWorld& w) { w.clients().add(SweptWorld::client("c-3", "s-1")); }},
        {"clients set", [](SweptWorld& w) { w.clients().set(0, SweptWorld::client("c-3", "s-1")); }},
        {"clients remove", [](SweptWorld& w) { w.clients().remove(0); }},
        {"clients rename", [](SweptWorld& w) { w.clients().setModelName(u"m2"); }, Leaves::beginning},
        {"clients equal", [](SweptWorld& w) { w.clients().isEqual(&w.clients()); }},
        {"clients copy", [](SweptWorld& w) { w.clients().copy(); }},
        {"clients save", [](SweptWorld& w) { w.clients().getPersistenceData(); }},
        {"clients load", [](SweptWorld& w) { loadAgain(w, w.clients(), w.savedClients.get()); }, Leaves::beginning},
        {"clients validate",
         [](SweptWorld& w) { ks_hmi::StreamingClients::validateAndRemoveUnused(w.clientsObject.get()); },
         Leaves::beginning},
        {"tell of a rename",
         [](SweptWorld& w) {
             w.clients().setModelName(u"m2");
             ks_hmi::StreamingClients::handleModelRename(w.clientsObject.get());
         },
         Leaves::beginning},
        {"list aligned observers",
         [](SweptWorld& w) {
             fill(std::vector<ks_hmi::StreamingClients::ClientPtr>(1), 0,
                  [&](auto& out) { ks_hmi::StreamingClients::getAlignedObservers(w.clientsObject.get(), out); });
         }},
        {"bundle",
         [](SweptWorld& w) {
             ks_hmi::ModelObservers::createFromSignalsAndClients(w.signalsObject.get(), w.clientsObject.get());
         }},
        {"unbundle",
         [](SweptWorld& w) {
             HvArrayPtr signals;
             HvArrayPtr clients;
             ks_hmi::ModelObservers(w.bundle.get()).getSignalsAndClients(signals, clients);
             EXPECT_EQ(!signals, !clients);
         }},
        {"notice",
         [](SweptWorld&) {
             ks_hmi::HMIEngineUtils::updateParamsForBlock(u"m1/Gain");
             EXPECT_TRUE(orvex::warnings().empty());
         }},
    };
    return rows;
}

inline const std::vector<SweptRow>& hostRows() {
    static const std::vector<SweptRow> rows{
        {"host new signals", calls("Kestrel.HMI.InstrumentedSignals", {&SweptWorld::name})},
        {"host add", calls("add", {kSignals, &SweptWorld::specObject}, 0)},
        {"host set", calls("set", {kSignals, kOne, &SweptWorld::specObject}, 0)},
        {"host remove", calls("remove", {kSignals, kOne}, 0)},
        {"host get", calls("get", {kSignals, kOne})},
        {"host isPortObserved", calls("isPortObserved", {kSignals, &SweptWorld::specObject})},
        {"host isGivenPortObserved", calls("isGivenPortObserved", {kSignals, kOne, kOne})},
        {"host isGivenCWActivityObserved",
         calls("isGivenCWActivityObserved", {kSignals, &SweptWorld::name, kOne, &SweptWorld::name})},
        {"host isAnyCWActivityObserved", calls("isAnyCWActivityObserved", {kSignals, &SweptWorld::name, kOne})},
        {"host getUUID", calls("getUUID", {kSignals, kOne})},
        {"host setUUIDForBlock",
         calls("Kestrel.HMI.InstrumentedSignals.setUUIDForBlock", {kOne, kOne, &SweptWorld::name}, 0)},
        {"host getUUIDForBlock",
         calls("Kestrel.HMI.InstrumentedSignals.getUUIDForBlock", {kOne, kOne, &SweptWorld::yes}), Leaves::beginning},
        {"host Model", gets(kSignals, "Model")},
        {"host Count", gets(kSignals, "Count")},
        {"host Persistence", gets(kSignals, "Persistence")},
        {"host Persistence set", sets(kSignals, "Persistence", &SweptWorld::saved), Leaves::beginning},
        {"host new clients", calls("Kestrel.HMI.StreamingClients", {&SweptWorld::name})},
        {"host clients add", calls("add", {kClients, &SweptWorld::clientObject}, 0)},
        {"host clients set", calls("set", {kClients, kOne, &SweptWorld::clientObject}, 0)},
        {"host clients remove", calls("remove", {kClients, kOne}, 0)},
        {"host clients get", calls("get", {kClients, kOne})},
        {"host clients Model", gets(kClients, "Model")},
        {"host clients Model set", sets(kClients, "Model", &SweptWorld::newName), Leaves::beginning},
        {"host clients Persistence", gets(kClients, "Persistence")},
        {"host clients Persistence set", sets(kClients, "Persistence", &SweptWorld::savedClients), Leaves::beginning},
    };
    return rows;
}

}  // namespace ks_test
