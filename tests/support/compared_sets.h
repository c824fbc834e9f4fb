#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <new>
#include <optional>
#include <stdexcept>

#include "tests/support/host_test.h"
#include "tests/support/plain_signal_set.h"
#include "tests/support/random_operation.h"

/// The engine's ports are opaque to the library; here they need only addresses.
struct ksPort {
    int number = 0;
};

namespace ks_test {

/// A record of the library beside the plain one.
struct Record {
    ks_hmi::InstrumentedSignals::SignalPtr real;
    PlainSignalPtr plain;
};

using PlainParameters = decltype(PlainSignal::parameters);

inline PlainParameters parametersOf(const ks_hmi::SignalSpecification& spec) {
    return {spec.m_domainParams.begin(), spec.m_domainParams.end()};
}

/// How much was compared.
struct Totals {
    std::size_t sequences = 0, steps = 0, failures = 0, questions = 0, yes = 0;
};

class Disagreement : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Two sets, which share records, each beside its plain model; records that left the sets are kept.
class ComparedSets {
public:
    explicit ComparedSets(Totals& totals) : m_totals(totals) {
        for (Side& side : m_sides) side.object = call("Kestrel.HMI.InstrumentedSignals", {});
    }

    /// Throws `Disagreement` when the operation's own answers, or what can be observed afterwards, differ.
    void apply(const Operation& o) {
        ++m_totals.steps;
        attempt(o);
        for (Side& side : m_sides) compareList(side);
        for (const Record& record : m_records) compareRecord(record);
        for (Side& side : m_sides) comparePorts(side);
        for (Side& side : m_sides) compareCharts(side);
        compareSets(m_sides[0], m_sides[1]);
        compareSets(m_sides[1], m_sides[0]);
    }

private:
    static constexpr std::size_t kRecentRecords = 6;

    struct Side {
        HvArrayPtr object;
        PlainSignalSet plain;
        ks_hmi::InstrumentedSignals& real() const { return *ks_hmi::InstrumentedSignals::getFromHvArray(object.get()); }
    };

    template <class Value>
    void agree(const char* what, const Value& real, const Value& plain) {
        if (real != plain) throw Disagreement(std::string("The set and its plain model disagree on ") + what);
    }
    void agreeOnAnswer(const char* what, bool real, bool plain) {
        ++m_totals.questions;
        if (plain) ++m_totals.yes;
        agree(what, real, plain);
    }
    /// The real operation raises just when there is no such position. It goes first: should memory run out, the
    /// plain one must not have happened.
    template <class Action, class PlainAction>
    void agreeOnPosition(const char* what, Action action, PlainAction plainAction) {
        const bool isAccepted = raisedBy(action).empty();
        agree(what, isAccepted, plainAction());
    }

    /// Nothing happens to the real side, and so to neither, when memory runs out; but a renumbering and a rebuild of
    /// the chart index that stop half way are not undone, and a change of a record is the test's own.
    void attempt(const Operation& o) {
        const bool isUndone = o.kind != Kind::renumber && o.kind != Kind::update && o.kind != Kind::change;
        const bool canFail = o.failAt != 0 && isUndone;
        std::optional<orvex::FaultInjection> faults;
        if (canFail) faults.emplace(orvex::FaultPlan{o.failAt, false, orvex::FaultKind::outOfMemory});
        try {
            applyToBoth(m_sides[o.side], m_sides[1 - o.side], o);
        } catch (const std::bad_alloc&) {
            if (!faults || faults->fired() == 0) throw;
            ++m_totals.failures;
        }
    }

    // ---- operations ----

    void enter(ks_hmi::InstrumentedSignals::SignalPtr real, PlainSignalPtr plain) {
        plain->number = m_records.size();
        m_records.push_back({std::move(real), std::move(plain)});
    }
    Record recordFor(const Operation& o) {
        const std::size_t recent = std::min(m_records.size(), kRecentRecords);
        if (o.reuses && recent != 0) return m_records[m_records.size() - 1 - o.pick % recent];
        const ks_hmi::InstrumentedSignals::SignalPtr real(new ks_hmi::SignalSpecification);
        const auto plain = std::make_shared<PlainSignal>();
        real->m_blockPath = plain->path = o.path;
        real->m_subPath = plain->subPath = o.subPath;
        real->m_eid = utf8(plain->eid = o.eid);
        real->m_outputPortIndex = plain->outputPort = o.outputPort;
        real->m_logicalPortIndex = plain->logicalPort = o.logicalPort;
        real->m_cachedBlockHandle = plain->handle = o.handle;
        real->m_cachedPortIdx = plain->cachedPort = o.cachedPort;
        real->m_domainType = plain->domainType = o.domain;
        real->m_excludeForSave = plain->excludeForSave = o.flag;
        real->m_domainParams = {{u"SSID", o.ssid}, {u"Activity", o.activity}};
        plain->parameters = parametersOf(*real);
        enter(real, plain);
        return m_records.back();
    }

    void applyToBoth(Side& side, Side& other, const Operation& o) {
        switch (o.kind) {
            case Kind::add:
            case Kind::insert:
            case Kind::set:
            case Kind::removeAt:
            case Kind::removeValue:
                return changeList(side, o);
            case Kind::copy:
                return copy(side, other, o);
            case Kind::saveAndLoad:
                return saveAndLoad(side, other);
            case Kind::change:
                return changeRecord(side, o);
            case Kind::askPath:
            case Kind::askSignal:
                return ask(side, o);
            case Kind::addToIndex:
            case Kind::removeFromIndex:
            case Kind::addActivity:
            case Kind::removeActivity:
                return changeIndex(side, o);
            default:
                return changeSet(side, o);
        }
    }
    void changeList(Side& side, const Operation& o) {
        ks_hmi::InstrumentedSignals& real = side.real();
        const bool grows = o.kind == Kind::add || o.kind == Kind::insert;
        if (grows && real.getCount() >= kMostSignals) return;
        if (o.kind == Kind::removeAt) {
            return agreeOnPosition(
                "remove", [&] { real.remove(o.position); }, [&] { return side.plain.removeAt(o.position); });
        }
        const Record record = recordFor(o);
        if (o.kind == Kind::add) {
            real.add(record.real);
            side.plain.insert(side.plain.signals.size(), record.plain);
        } else if (o.kind == Kind::insert) {
            agreeOnPosition(
                "insert", [&] { real.insert(o.position, record.real); },
                [&] { return side.plain.insert(o.position, record.plain); });
        } else if (o.kind == Kind::set) {
            agreeOnPosition(
                "set", [&] { real.set(o.position, record.real); },
                [&] { return side.plain.set(o.position, record.plain); });
        } else {
            real.remove(*record.real);
            side.plain.remove(*record.plain);
        }
    }
    void changeSet(Side& side, const Operation& o) {
        ks_hmi::InstrumentedSignals& real = side.real();
        if (o.kind == Kind::renumber) {
            const std::u16string eid = (o.flag ? std::u16string(o.model) + u":" : u"") + o.eid;
            const std::u16string path = std::u16string(o.model) + u"/" + o.path;
            real.renumberPorts(o.handle, path, utf8(eid), o.newNumbers);
            side.plain.renumberPorts(o.handle, path, eid, o.newNumbers);
        } else if (o.kind == Kind::rename) {
            real.setModelName(o.model);
            side.plain.modelName = o.model;
        } else if (o.kind == Kind::pending) {
            real.setRebindingPending(o.flag);
            side.plain.rebindingPending = o.flag;
        } else if (o.kind == Kind::update) {
            real.updateObservedPortMap();
            side.plain.rebuildIndex();
        } else {
            ksPort* const port = &m_engine[o.pick % std::size(m_engine)];
            real.cacheKSPorts({port, m_engine, port});
            side.plain.cachePorts({port, m_engine});
        }
    }
    void changeIndex(Side& side, const Operation& o) {
        ks_hmi::InstrumentedSignals& real = side.real();
        if (o.kind == Kind::addActivity) {
            real.addToObservedCWActivity(utf8(o.eid), utf8(o.ssid), utf8(o.activity));
            return side.plain.addActivity(o.eid, o.ssid, o.activity);
        }
        if (o.kind == Kind::removeActivity) {
            real.removeObservedCWActivity(utf8(o.eid), utf8(o.ssid), utf8(o.activity));
            return side.plain.removeActivity(o.eid, o.ssid, o.activity);
        }
        const Record record = recordFor(o);
        const bool isChart = record.plain->isChart() && o.flag;
        if (o.kind == Kind::addToIndex) {
            isChart ? real.addToObservedCWObjectCache(record.real) : real.addToObservedPortMap(record.real);
            isChart ? side.plain.addChart(*record.plain) : side.plain.addToIndex(record.plain);
        } else {
            isChart ? real.removeFromObservedCWObject(record.real) : real.removeFromObservedPortMap(record.real);
            isChart ? side.plain.removeChart(*record.plain) : side.plain.removeFromIndex(*record.plain);
        }
    }
    void copy(Side& side, Side& other, const Operation& o) {
        other.object = side.real().copy(o.flag);
        other.plain = side.plain.copy(o.flag);
        agree("the length of a copy", other.real().getCount(), other.plain.signals.size());
        for (std::size_t i = 0; i < other.plain.signals.size(); ++i) {
            enter(other.real().share(i), other.plain.signals[i]);
        }
    }
    void saveAndLoad(Side& side, Side& other) {
        const std::size_t before = other.real().getCount();
        std::vector<PlainSignalPtr> saved = side.plain.signals;
        if (before + saved.size() > kMostSignals) return;
        const HvArrayPtr data = side.real().getPersistenceData();
        try {
            other.real().setFromPersistenceData(data.get());
        } catch (const std::bad_alloc&) {
            saved.resize(other.real().getCount() - before);
            enterLoaded(other, before, saved);
            throw;
        }
        agree("the length after loading", other.real().getCount(), before + saved.size());
        enterLoaded(other, before, saved);
    }
    void enterLoaded(Side& other, std::size_t before, const std::vector<PlainSignalPtr>& saved) {
        for (std::size_t i = 0; i < saved.size(); ++i) {
            const auto loaded = std::make_shared<PlainSignal>(saved[i]->asLoaded());
            enter(other.real().share(before + i), loaded);
            // A record that was read back may have its parameters in another order.
            const PlainParameters parameters = parametersOf(*m_records.back().real);
            if (std::is_permutation(parameters.begin(), parameters.end(), loaded->parameters.begin(),
                                    loaded->parameters.end())) {
                loaded->parameters = parameters;
            }
            other.plain.insert(other.plain.signals.size(), loaded);
        }
    }
    /// Changes a member of a record behind its set's back.
    void changeRecord(Side& side, const Operation& o) {
        if (side.plain.signals.empty()) return;
        const std::size_t position = o.position % side.plain.signals.size();
        ks_hmi::SignalSpecification& real = *side.real().get(position);
        PlainSignal& plain = *side.plain.signals[position];
        switch (o.pick % 6) {
            case 0:
                real.setCachedInfo(o.handle, o.cachedPort);
                plain.handle = o.handle;
                plain.cachedPort = o.cachedPort;
                break;
            case 1:
                real.m_outputPortIndex = plain.outputPort = o.outputPort;
                break;
            case 2:
                real.m_blockPath = plain.path = o.path;
                break;
            case 3:
                real.m_domainType = plain.domainType = o.domain;
                break;
            case 4:
                real.m_eid = utf8(plain.eid = o.eid);
                break;
            default:
                real.m_excludeForSave = plain.excludeForSave = o.flag;
        }
    }
    /// The questions that may record a handle.
    void ask(Side& side, const Operation& o) {
        if (o.kind == Kind::askPath) {
            return agreeOnAnswer(
                "isPortObserved by path",
                side.real().isPortObserved(o.handle, o.path, o.subPath, o.outputPort, o.cachedPort, o.logicalPort),
                side.plain.isPortObserved(o.handle, o.path, o.subPath, o.outputPort, o.cachedPort, o.logicalPort));
        }
        const Record record = recordFor(o);
        const PlainSignal asked = *record.plain;
        agreeOnAnswer("isPortObserved of a signal", side.real().isPortObserved(record.real.get()),
                      side.plain.isPortObserved(asked.handle, asked.path, asked.subPath, asked.outputPort,
                                                asked.cachedPort, asked.logicalPort));
    }

    // ---- what can be observed ----

    void compareList(const Side& side) {
        const ks_hmi::InstrumentedSignals& real = side.real();
        agree("the model's name", real.getModelName(), side.plain.modelName);
        agree("pending rebinding", real.isRebindingPending(), side.plain.rebindingPending);
        agree("the number of signals", real.getCount(), side.plain.signals.size());
        for (std::size_t i = 0; i < real.getCount(); ++i) {
            agree("a signal of the list", real.get(i), m_records[side.plain.signals[i]->number].real.get());
        }
    }
    void compareRecord(const Record& record) {
        const ks_hmi::SignalSpecification& real = *record.real;
        const PlainSignal& plain = *record.plain;
        agree("a block path", real.m_blockPath, plain.path);
        agree("a sub-path", real.m_subPath, plain.subPath);
        agree("an identifier", real.m_eid, std::string(plain.eid.begin(), plain.eid.end()));
        agree("a domain", real.m_domainType, plain.domainType);
        agree("an output port", real.m_outputPortIndex, plain.outputPort);
        agree("a logical port", real.m_logicalPortIndex, plain.logicalPort);
        agree("the domain's parameters",
              std::equal(real.m_domainParams.begin(), real.m_domainParams.end(), plain.parameters.begin(),
                         plain.parameters.end(),
                         [](const auto& a, const auto& b) { return a.first == b.first && a.second == b.second; }),
              true);
        agree("a cached port", real.m_cachedPortIdx, plain.cachedPort);
        agree("a cached handle", std::bit_cast<std::uint64_t>(real.m_cachedBlockHandle),
              std::bit_cast<std::uint64_t>(plain.handle));
        agree("what is not saved", real.m_excludeForSave, plain.excludeForSave);
    }
    void comparePorts(Side& side) {
        ks_hmi::InstrumentedSignals& real = side.real();
        agreeOnAnswer("isAnyPortObserved", real.isAnyPortObserved(), side.plain.isAnyPortObserved());
        for (const ksPort* const port : {&m_engine[0], &m_engine[1], &m_engine[2], static_cast<ksPort*>(nullptr)}) {
            agreeOnAnswer("isKSPortObserved", real.isKSPortObserved(port), side.plain.isCachedPort(port));
        }
        for (const double handle : kHandles) {
            for (const int port : kPorts) {
                agreeOnAnswer("isPortObserved by handle", real.isPortObserved(handle, port),
                              side.plain.isPortObserved(handle, port));
            }
        }
        for (const char16_t* const path : {kPaths[0], kPaths[3]}) {
            for (const char16_t* const subPath : {u"", u"in/x"}) {
                for (const int port : kPorts) comparePath(side, path, subPath, port);
            }
        }
    }
    /// Asked with port 0, which records nothing.
    void comparePath(Side& side, const char16_t* path, const char16_t* subPath, int outputPort) {
        for (const int logicalPort : {0, 1}) {
            agreeOnAnswer("isPortObserved by path alone",
                          side.real().isPortObserved(12.5, path, subPath, outputPort, 0, logicalPort),
                          side.plain.isPortObserved(12.5, path, subPath, outputPort, 0, logicalPort));
        }
    }
    void compareCharts(Side& side) {
        for (const char16_t* const eid : {u"m1:4", u"41", u"m2:"}) {
            for (const double ssid : kSsidNumbers) {
                agreeOnAnswer("isAnyCWActivityObserved", side.real().isAnyCWActivityObserved(eid, ssid),
                              side.plain.isAnyActivityObserved(eid, ssid));
                for (const char16_t* const activity : kActivities) {
                    agreeOnAnswer("isCWActivityObserved", side.real().isCWActivityObserved(eid, ssid, activity),
                                  side.plain.isActivityObserved(eid, ssid, activity));
                }
            }
        }
    }
    void compareSets(const Side& a, const Side& b) {
        agreeOnAnswer("isEqual", a.real().isEqual(&b.real()), a.plain.isEqual(b.plain));
        compareDifference(a, &b.real(), b.plain);
        compareDifference(a, nullptr, PlainSignalSet());
    }
    void compareDifference(const Side& a, const ks_hmi::InstrumentedSignals* real, const PlainSignalSet& plain) {
        std::vector<const ks_hmi::SignalSpecification*> expected;
        for (const std::size_t number : a.plain.chartDifference(plain))
            expected.push_back(m_records[number].real.get());
        std::vector<const ks_hmi::SignalSpecification*> difference;
        for (const auto& signal : a.real().setDifference_cw(real)) difference.push_back(signal.get());
        agree("setDifference_cw", difference, expected);
    }

    ksPort m_engine[3];
    Totals& m_totals;
    std::vector<Record> m_records;
    std::array<Side, 2> m_sides;
};

}  // namespace ks_test
