#pragma once

#include <algorithm>
#include <array>
#include <new>
#include <optional>
#include <stdexcept>

#include "tests/support/engine_port.h"
#include "tests/support/host_test.h"
#include "tests/support/plain_signal_set.h"
#include "tests/support/random_operation.h"

namespace ks_test {

using SignalPtr = ks_hmi::InstrumentedSignals::SignalPtr;

/// A record of the library beside the plain one.
struct Record {
    SignalPtr real;
    PlainSignalPtr plain;
};

/// How much was compared.
struct Totals {
    std::size_t steps = 0, failures = 0, questions = 0, yes = 0;
};

/// The ASCII text; no operation of the host, which might fail between the set and its model.
inline std::string narrow(std::u16string_view text) { return {text.begin(), text.end()}; }

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
        for (const Record& record : m_records)
            agree("a record", PlainSignal::of(*record.real).isIdentical(*record.plain), true);
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
    void agree(std::string_view what, const Value& real, const Value& plain) {
        if (real != plain) throw Disagreement(std::string("The set and its plain model disagree on ").append(what));
    }
    /// The same to the set and to its plain model. The set goes first: should memory run out, the plain one must not
    /// have happened. The set refuses just what its model does.
    template <class Action>
    void inBoth(const Operation& o, Side& side, const Record& record, Action action) {
        const bool isRefused = !raisedBy([&] { action(side.real(), record.real); }).empty();
        bool isPlainRefused = false;
        try {
            action(side.plain, record.plain);
        } catch (const std::out_of_range&) {
            isPlainRefused = true;
        }
        agree(o.kind, isRefused, isPlainRefused);
    }
    template <class Question>
    void ask(const char* what, Side& side, Question question) {
        const bool answer = question(side.real());
        const bool plainAnswer = question(side.plain);
        ++m_totals.questions;
        if (plainAnswer) ++m_totals.yes;
        agree(what, answer, plainAnswer);
    }

    /// Nothing happens to the real side, and so to neither, when memory runs out; but a renumbering and a rebuild of
    /// the chart index that stop half way are not undone, and a change of a record is the test's own.
    void attempt(const Operation& o) {
        const bool isUndone = o.kind != "renumber" && o.kind != "update" && o.kind != "change";
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

    void enter(const SignalPtr& real, const PlainSignalPtr& plain) {
        plain->number = m_records.size();
        m_records.push_back({real, plain});
    }
    Record recordFor(const Operation& o) {
        const std::size_t recent = std::min(m_records.size(), kRecentRecords);
        if (o.reuses && recent != 0) return m_records[m_records.size() - 1 - o.pick % recent];
        const SignalPtr real(new ks_hmi::SignalSpecification);
        real->m_blockPath = o.path;
        real->m_subPath = o.subPath;
        real->m_eid = narrow(o.eid);
        real->m_outputPortIndex = o.outputPort;
        real->m_logicalPortIndex = o.logicalPort;
        real->setCachedInfo(o.handle, o.cachedPort);
        real->m_domainType = o.domain;
        real->m_excludeForSave = o.flag;
        real->m_domainParams = {{u"SSID", o.ssid}, {u"Activity", o.activity}};
        enter(real, std::make_shared<PlainSignal>(PlainSignal::of(*real)));
        return m_records.back();
    }

    static bool takesRecord(std::string_view kind) {
        constexpr std::string_view kTaking[] = {"add",        "insert",          "set",      "removeValue",
                                                "addToIndex", "removeFromIndex", "askSignal"};
        return std::find(std::begin(kTaking), std::end(kTaking), kind) != std::end(kTaking);
    }
    void applyToBoth(Side& side, Side& other, const Operation& o) {
        const bool grows = o.kind == "add" || o.kind == "insert";
        if (grows && side.plain.getCount() >= kMostSignals) return;
        const Record record = takesRecord(o.kind) ? recordFor(o) : Record{};
        if (o.kind == "copy") return copy(side, other, o);
        if (o.kind == "saveAndLoad") return saveAndLoad(side, other);
        if (o.kind == "change") return changeRecord(side, o);
        if (o.kind == "askPath")
            return ask("isPortObserved by path", side, [&](auto& set) {
                return set.isPortObserved(o.handle, o.path, o.subPath, o.outputPort, o.cachedPort, o.logicalPort);
            });
        if (o.kind == "askSignal")
            return agree("isPortObserved of a signal", side.real().isPortObserved(record.real.get()),
                         side.plain.isPortObserved(record.plain.get()));
        inBoth(o, side, record, [&](auto& set, const auto& r) { changeSet(set, r, o); });
    }
    template <class Set, class Signal>
    void changeSet(Set& set, const Signal& signal, const Operation& o) {
        ksPort* const port = &m_engine[o.pick % std::size(m_engine)];
        if (o.kind == "add") return set.add(signal);
        if (o.kind == "insert") return set.insert(o.position, signal);
        if (o.kind == "set") return set.set(o.position, signal);
        if (o.kind == "removeAt") return set.remove(o.position);
        if (o.kind == "removeValue") return set.remove(*signal);
        if (o.kind == "renumber")
            return set.renumberPorts(o.handle, std::u16string(o.model) + u"/" + o.path,
                                     (o.flag ? narrow(o.model) + ":" : "") + narrow(o.eid), o.newNumbers);
        if (o.kind == "rename") return set.setModelName(o.model);
        if (o.kind == "pending") return set.setRebindingPending(o.flag);
        if (o.kind == "update") return set.updateObservedPortMap();
        if (o.kind == "cachePorts") return set.cacheKSPorts({port, m_engine, port});
        if (o.kind == "addActivity")
            return set.addToObservedCWActivity(narrow(o.eid), narrow(o.ssid), narrow(o.activity));
        if (o.kind == "removeActivity")
            return set.removeObservedCWActivity(narrow(o.eid), narrow(o.ssid), narrow(o.activity));
        if (o.kind == "addToIndex" || o.kind == "removeFromIndex") return changeIndex(set, signal, o);
        throw std::logic_error("no such operation");
    }
    template <class Set, class Signal>
    static void changeIndex(Set& set, const Signal& signal, const Operation& o) {
        const bool isChart = PlainSignal::of(*signal).isChart() && o.flag;
        if (o.kind == "addToIndex") {
            isChart ? set.addToObservedCWObjectCache(signal) : set.addToObservedPortMap(signal);
        } else {
            isChart ? set.removeFromObservedCWObject(signal) : set.removeFromObservedPortMap(signal);
        }
    }
    void copy(Side& side, Side& other, const Operation& o) {
        other.object = side.real().copy(o.flag);
        other.plain = side.plain.copy(o.flag);
        agree("the length of a copy", other.real().getCount(), other.plain.getCount());
        for (std::size_t i = 0; i < other.plain.getCount(); ++i) enter(other.real().share(i), other.plain.share(i));
    }
    /// When memory runs out, the records before the failure must be there.
    void saveAndLoad(Side& side, Side& other) {
        const std::size_t before = other.plain.getCount();
        const std::size_t after = before + side.plain.getCount();
        if (after > kMostSignals) return;
        const HvArrayPtr data = side.real().getPersistenceData();
        try {
            other.real().setFromPersistenceData(data.get());
        } catch (const std::bad_alloc&) {
            enterLoaded(side, other, before);
            throw;
        }
        agree("the length after loading", other.real().getCount(), after);
        enterLoaded(side, other, before);
    }
    void enterLoaded(const Side& side, Side& other, std::size_t before) {
        std::vector<PlainSignalPtr> loaded;
        for (std::size_t i = before; i < other.real().getCount(); ++i) {
            loaded.push_back(std::make_shared<PlainSignal>(side.plain.share(i - before)->asLoaded()));
            enter(other.real().share(i), loaded.back());
        }
        for (const PlainSignalPtr& signal : loaded) other.plain.add(signal);
    }
    /// Changes a member of a record behind its set's back.
    static void changeRecord(Side& side, const Operation& o) {
        if (side.plain.getCount() == 0) return;
        const std::size_t position = o.position % side.plain.getCount();
        changeMember(*side.real().share(position), o);
        changeMember(*side.plain.share(position), o);
    }
    template <class Signal>
    static void changeMember(Signal& signal, const Operation& o) {
        const std::size_t member = o.pick % 6;
        if (member == 0) signal.m_cachedBlockHandle = o.handle;
        if (member == 0) signal.m_cachedPortIdx = o.cachedPort;
        if (member == 1) signal.m_outputPortIndex = o.outputPort;
        if (member == 2) signal.m_blockPath = o.path;
        if (member == 3) signal.m_domainType = o.domain;
        if (member == 4) signal.m_eid = narrow(o.eid);
        if (member == 5) signal.m_excludeForSave = o.flag;
    }

    // ---- what can be observed ----

    void compareList(const Side& side) {
        const ks_hmi::InstrumentedSignals& real = side.real();
        agree("the model's name", real.getModelName(), side.plain.getModelName());
        agree("pending rebinding", real.isRebindingPending(), side.plain.isRebindingPending());
        agree("the number of signals", real.getCount(), side.plain.getCount());
        for (std::size_t i = 0; i < real.getCount(); ++i)
            agree("a signal of the list", real.share(i), realOf(side.plain.share(i)));
    }
    void comparePorts(Side& side) {
        ask("isAnyPortObserved", side, [](auto& set) { return set.isAnyPortObserved(); });
        for (const ksPort* const port : {&m_engine[0], &m_engine[1], &m_engine[2], static_cast<ksPort*>(nullptr)})
            ask("isKSPortObserved", side, [&](auto& set) { return set.isKSPortObserved(port); });
        for (const int port : kPorts) {
            for (const double handle : kHandles)
                ask("isPortObserved by handle", side, [&](auto& set) { return set.isPortObserved(handle, port); });
            for (const char16_t* const path : {kPaths[0], kPaths[3]}) comparePath(side, path, port);
        }
    }
    /// Asked with port 0, which records nothing.
    void comparePath(Side& side, const char16_t* path, int outputPort) {
        for (const char16_t* const subPath : {u"", u"in/x"}) {
            for (const int logicalPort : {0, 1}) {
                ask("isPortObserved by path alone", side,
                    [&](auto& set) { return set.isPortObserved(12.5, path, subPath, outputPort, 0, logicalPort); });
            }
        }
    }
    void compareCharts(Side& side) {
        for (const char16_t* const eid : {u"m1:4", u"41", u"m2:"}) {
            for (const double ssid : kSsidNumbers) {
                ask("isAnyCWActivityObserved", side, [&](auto& set) { return set.isAnyCWActivityObserved(eid, ssid); });
                for (const char16_t* const activity : kActivities)
                    ask("isCWActivityObserved", side,
                        [&](auto& set) { return set.isCWActivityObserved(eid, ssid, activity); });
            }
        }
    }
    void compareSets(const Side& a, const Side& b) {
        agree("isEqual", a.real().isEqual(&b.real()), a.plain.isEqual(&b.plain));
        compareDifference(a, &b.real(), &b.plain);
        compareDifference(a, nullptr, nullptr);
    }
    void compareDifference(const Side& a, const ks_hmi::InstrumentedSignals* real, const PlainSignalSet* plain) {
        std::vector<SignalPtr> expected;
        for (const PlainSignalPtr& signal : a.plain.setDifference_cw(plain)) expected.push_back(realOf(signal));
        agree("setDifference_cw", a.real().setDifference_cw(real), expected);
    }
    const SignalPtr& realOf(const PlainSignalPtr& plain) const { return m_records[plain->number].real; }

    ksPort m_engine[3];
    Totals& m_totals;
    std::vector<Record> m_records;
    std::array<Side, 2> m_sides;
};

}  // namespace ks_test
