#pragma once

#include <functional>
#include <new>
#include <set>
#include <string>
#include <vector>

#include "observers/hmi_engine_utils.h"
#include "tests/reliability/swept_world.h"

/// The operations of the library that ask the host or take memory, each on a state of its own.
namespace ks_test {

using ks_hmi::InstrumentedSignals;
using ks_hmi::SignalClient;
using ks_hmi::SignalSpecification;
using ks_hmi::StreamingClients;
using World = SweptWorld;

/// What an operation that threw leaves.
enum class Leaves {
    stateAsItWas,
    beginning,  ///< what it did before the failure stays, and the index may be due for a rebuild
};

struct SweptRow {
    std::string name;
    std::function<void(World&)> action;
    Leaves leaves = Leaves::stateAsItWas;
};

/// How one attempt ended.
enum class Ending { completed, threwHostError, threwNoMemory };

template <class Action>
Ending endingOf(Action action) {
    try {
        action();
        return Ending::completed;
    } catch (const kssvIException&) {
        return Ending::threwHostError;
    } catch (const std::bad_alloc&) {
        return Ending::threwNoMemory;
    }
}

using Value = HvArrayPtr World::*;
inline constexpr Value kSignals = &World::signalsObject;
inline constexpr Value kClients = &World::clientsObject;
inline constexpr Value kOne = &World::one;

/// The host's function or method of that name, called with members of the world.
inline std::function<void(World&)> calls(const char* name, std::initializer_list<Value> inputs, int results = 1) {
    return [name, values = std::vector<Value>(inputs), results](World& w) {
        std::vector<const hvArray*> given;
        for (const Value value : values) given.push_back((w.*value).get());
        orvex::callByName(name, given, results);
    };
}
inline std::function<void(World&)> gets(Value object, const char* name) {
    return [=](World& w) { property(World::shared(w.*object).get(), name); };
}
inline std::function<void(World&)> sets(Value object, const char* name, Value value) {
    return [=](World& w) {
        const HvArrayPtr target = World::shared(w.*object);
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
void loadAgain(const World& w, Set& set, const hvArray* saved) {
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
        {"signal to object", [](World& w) { w.signals().share(1)->getHOSObject(u"m1", false); }},
        {"signal to struct", [](World& w) { w.signals().share(1)->getHOSObject(u"m1", true); }},
        {"signal from object", [](World& w) { SignalSpecification(w.specObject.get(), 0, u"m1"); }},
        {"signal from element", [](World& w) { SignalSpecification(w.saved.get(), 1, u""); }},
        {"signal clone", [](World& w) { w.signals().share(1)->clone(); }},
        {"signal aligned path", [](World& w) { w.signals().share(1)->getAlignedBlockPath(u"m1"); }},
        {"signal parameters", [](World& w) { w.signals().share(1)->getDomainParamsAsHvArray(); }},
        {"signal stripped", [](World& w) { w.signals().share(1)->clone()->stripModelName(u"Sub"); }},
        {"signal from port",
         [](World&) { SignalSpecification::createSigSpecFromPort(u"m1/A", "m1:1", 1, 0, 2.0, u"m1", true); }},
        {"UUID minted", [](World&) { SignalSpecification::getUUIDFromBlockHandle(1, 2.0, true); }},
        {"UUID entered",
         [](World&) { SignalSpecification::addToBlockHandleUUIDmap(1, 2.0, "a UUID that does not fit in place"); }},
        {"UUID looked up", [](World&) { SignalSpecification::isInBlockHandleUUIDmap(1, 2.0); }},
        {"client to object", [](World& w) { w.clients().share(0)->getHOSObject(u"m1"); }},
        {"client from object", [](World& w) { SignalClient(w.clientObject.get(), 0, u"m1"); }},
        {"client from element", [](World& w) { SignalClient(w.savedClients.get(), 1, u""); }},
        {"client clone", [](World& w) { w.clients().share(0)->clone(); }},
        {"client's signal", [](World& w) { w.clients().share(1)->clone()->getSignalSpecification(u"m1"); }},
        {"client's port", [](World& w) { w.clients().share(1)->clone()->getAlignedPortIndex(u"m1"); }},
        {"client's decimation", [](World& w) { w.clients().share(1)->clone()->getDecimation(u"m1"); }},
        {"client's points", [](World& w) { w.clients().share(1)->clone()->getMaxPoints(u"m1"); }},
        {"client's aligned path",
         [](World& w) {
             std::vector<std::u16string> path;
             std::u16string subPath;
             w.clients().share(0)->getAlignedBlockPath(u"m1", path, subPath);
         }},
        {"client renamed", [](World& w) { w.clients().share(0)->clone()->renameModel(u"m1", u"m2"); }},
    };
    return rows;
}

inline const std::vector<SweptRow>& setRows() {
    static const std::vector<SweptRow> rows{
        {"add", [](World& w) { w.signals().add(World::port(u"Sub/Switch", 3, "3", "s-4")); }},
        {"insert a bound port",
         [](World& w) {
             auto spec = World::port(u"Sub/Other", 1, "5", "s-4");
             spec->setCachedInfo(w.gain + 1, 1);
             w.signals().insert(0, std::move(spec));
         }},
        {"add a chart's signal", [](World& w) { w.signals().add(World::state(u"8", u"Child", "s-4")); }},
        {"set a chart's signal", [](World& w) { w.signals().set(0, World::state(u"8", u"Child", "s-4")); }},
        {"set", [](World& w) { w.signals().set(0, World::port(u"Sub/Other", 1, "5", "s-4")); }},
        {"remove by position", [](World& w) { w.signals().remove(0); }},
        {"remove a chart's signal", [](World& w) { w.signals().remove(2); }},
        {"remove by value", [](World& w) { w.signals().remove(*World::port(u"Sub/Switch", 2, "3", "")); }},
        {"rename", [](World& w) { w.signals().setModelName(u"a name that is not short at all"); }, Leaves::beginning},
        {"signals equal", [](World& w) { w.signals().isEqual(&w.signals()); }},
        {"copy", [](World& w) { w.signals().copy(true); }},
        {"save", [](World& w) { w.signals().getPersistenceData(); }},
        {"load", [](World& w) { loadAgain(w, w.signals(), w.saved.get()); }, Leaves::beginning},
        {"rebind",
         [](World& w) {
             w.signals().setRebindingPending(true);
             w.signals().applyRebindingRules(w.signalsObject.get(), false);
         },
         Leaves::beginning},
        {"rebuild the index", [](World& w) { w.signals().updateObservedPortMap(); }},
        {"cache engine ports",
         [](World& w) {
             w.signals().cacheKSPorts({&w.engine, &w.otherEngine});
         }},
        {"is a port observed", [](World& w) { w.signals().isPortObserved(w.gain + 1, u"Sub/Switch", u"", 2, 2, 0); }},
        {"is a chart's item observed", [](World& w) { w.signals().isAnyCWActivityObserved(u"m1:4", 12.0); }},
        {"chart difference", [](World& w) { w.signals().setDifference_cw(nullptr); }},
        {"renumber",
         [](World& w) {
             w.signals().renumberPorts(-1, u"m1/Sub/Switch", "m1:3", {2, 3, 1});
         },
         Leaves::beginning},
        {"renumber with a deleted port", [](World& w) { w.signals().renumberPorts(w.gain, u"m1/Gain", "m1:1", {0}); },
         Leaves::beginning},
        {"list observed ports",
         [](World& w) {
             fill(std::vector<InstrumentedSignals::Source>(1), 1, [&](auto& out) {
                 InstrumentedSignals::getObservedPorts(w.modelObject.get(), "", "", out, true, true);
             });
         }},
        {"list badges",
         [](World& w) {
             fill(std::set<double>{1.0}, 1,
                  [&](auto& out) { InstrumentedSignals::getPortsWithBadges(w.modelObject.get(), out); });
         }},
    };
    return rows;
}

inline const std::vector<SweptRow>& observerRows() {
    static const std::vector<SweptRow> rows{
        {"clients add", [](World& w) { w.clients().add(World::client("c-3", "s-1")); }},
        {"clients set", [](World& w) { w.clients().set(0, World::client("c-3", "s-1")); }},
        {"clients remove", [](World& w) { w.clients().remove(0); }},
        {"clients rename", [](World& w) { w.clients().setModelName(u"m2"); }, Leaves::beginning},
        {"clients equal", [](World& w) { w.clients().isEqual(&w.clients()); }},
        {"clients copy", [](World& w) { w.clients().copy(); }},
        {"clients save", [](World& w) { w.clients().getPersistenceData(); }},
        {"clients load", [](World& w) { loadAgain(w, w.clients(), w.savedClients.get()); }, Leaves::beginning},
        {"clients validate", [](World& w) { StreamingClients::validateAndRemoveUnused(w.clientsObject.get()); },
         Leaves::beginning},
        {"tell of a rename",
         [](World& w) {
             w.clients().setModelName(u"m2");
             StreamingClients::handleModelRename(w.clientsObject.get());
         },
         Leaves::beginning},
        {"list aligned observers",
         [](World& w) {
             fill(std::vector<StreamingClients::ClientPtr>(1), 0,
                  [&](auto& out) { StreamingClients::getAlignedObservers(w.clientsObject.get(), out); });
         }},
        {"bundle",
         [](World& w) {
             ks_hmi::ModelObservers::createFromSignalsAndClients(w.signalsObject.get(), w.clientsObject.get());
         }},
        {"unbundle",
         [](World& w) {
             HvArrayPtr signals;
             HvArrayPtr clients;
             ks_hmi::ModelObservers(w.bundle.get()).getSignalsAndClients(signals, clients);
             EXPECT_EQ(!signals, !clients);
         }},
        {"notice",
         [](World&) {
             ks_hmi::HMIEngineUtils::updateParamsForBlock(u"m1/Gain");
             EXPECT_TRUE(orvex::warnings().empty());
         }},
    };
    return rows;
}

inline const std::vector<SweptRow>& hostRows() {
    static const std::vector<SweptRow> rows{
        {"host new signals", calls("Kestrel.HMI.InstrumentedSignals", {&World::name})},
        {"host add", calls("add", {kSignals, &World::specObject}, 0)},
        {"host set", calls("set", {kSignals, kOne, &World::specObject}, 0)},
        {"host remove", calls("remove", {kSignals, kOne}, 0)},
        {"host get", calls("get", {kSignals, kOne})},
        {"host isPortObserved", calls("isPortObserved", {kSignals, &World::specObject})},
        {"host isGivenPortObserved", calls("isGivenPortObserved", {kSignals, kOne, kOne})},
        {"host isGivenCWActivityObserved",
         calls("isGivenCWActivityObserved", {kSignals, &World::name, kOne, &World::name})},
        {"host isAnyCWActivityObserved", calls("isAnyCWActivityObserved", {kSignals, &World::name, kOne})},
        {"host getUUID", calls("getUUID", {kSignals, kOne})},
        {"host setUUIDForBlock",
         calls("Kestrel.HMI.InstrumentedSignals.setUUIDForBlock", {kOne, kOne, &World::name}, 0)},
        {"host getUUIDForBlock", calls("Kestrel.HMI.InstrumentedSignals.getUUIDForBlock", {kOne, kOne, &World::yes}),
         Leaves::beginning},
        {"host Model", gets(kSignals, "Model")},
        {"host Count", gets(kSignals, "Count")},
        {"host Persistence", gets(kSignals, "Persistence")},
        {"host Persistence set", sets(kSignals, "Persistence", &World::saved), Leaves::beginning},
        {"host new clients", calls("Kestrel.HMI.StreamingClients", {&World::name})},
        {"host clients add", calls("add", {kClients, &World::clientObject}, 0)},
        {"host clients set", calls("set", {kClients, kOne, &World::clientObject}, 0)},
        {"host clients remove", calls("remove", {kClients, kOne}, 0)},
        {"host clients get", calls("get", {kClients, kOne})},
        {"host clients Model", gets(kClients, "Model")},
        {"host clients Model set", sets(kClients, "Model", &World::newName), Leaves::beginning},
        {"host clients Persistence", gets(kClients, "Persistence")},
        {"host clients Persistence set", sets(kClients, "Persistence", &World::savedClients), Leaves::beginning},
    };
    return rows;
}

}  // namespace ks_test
