#pragma once

#include <boost/smart_ptr/shared_ptr.hpp>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "foundation/export.h"
#include "host/engine.h"
#include "host/hv_array.h"

namespace ks_hmi {

class SignalSpecification;

/// The instrumented signals of one model: an ordered list of records, with the indexes that answer whether
/// a port or a chart's activity is observed without walking the list.
///
/// Positions are 0-based. A position outside the set raises the host's exception "InvalidElementIndex"
/// with the number of signals; nothing is changed then. (Its text is the one that scripts see, who count from 1.) A
/// null record is refused with a host exception before anything changes. Records are shared: with the index, and with
/// callers that hold a pointer; who looks into one includes its own header. Thread: the host's interpreter thread.
class KS_HMI_EXPORT InstrumentedSignals {
public:
    using SignalPtr = boost::shared_ptr<SignalSpecification>;  ///< Shared with the index and with callers.

    /// Full name of the host class whose objects own such sets.
    static constexpr const char* kHostClass = "Kestrel.HMI.InstrumentedSignals";

    /// One observed port, as the host's "getObservedPorts" lists it. Each field names the result (1 to 10) that
    /// it is filled from; the flags stand together in front of the texts.
    struct Source {
        std::string uuid;                      ///< result 1: of the signal that observes the port
        double blockHandle = 0.0;              ///< result 2
        std::int32_t outputPortIndex = 0;      ///< result 3; 1-based
        std::int32_t decimation = 0;           ///< result 4
        std::int32_t maxPoints = 0;            ///< result 5
        bool isFrameBased = false;             ///< result 6
        bool targetBufferedStreaming = false;  ///< result 7
        bool hideInPLV = false;                ///< result 9
        std::u16string signalName;             ///< result 8
        std::u16string blockPath;              ///< result 10; the full path, model name in front
    };

    InstrumentedSignals();
    ~InstrumentedSignals();
    InstrumentedSignals(const InstrumentedSignals&) = delete;
    InstrumentedSignals& operator=(const InstrumentedSignals&) = delete;

    // ---- the list ----

    std::u16string getModelName() const;  ///< Empty until it is set.
    /// The index is not rebuilt, although its keys include the model's name: path and chart entries made under the
    /// old name answer no more. `updateObservedPortMap` mends that; until then a record that is removed lives on in its
    /// orphaned path entry. Orphaned chart entries stay for good.
    void setModelName(const std::u16string& newName);
    std::size_t getCount() const;  ///< How many signals.
    /// The record at `index`, not owned; it lives as long as somebody shares it.
    SignalSpecification* get(std::size_t index) const;
    /// The same, shared: it outlives what a host call may do to the set.
    SignalPtr share(std::size_t index) const;
    void add(SignalPtr spec);  ///< Appends, and enters the signal in the index.
    /// Inserts before `index`; the count itself is a valid position, at which it appends.
    void insert(std::size_t index, SignalPtr spec);
    /// Replaces the record at `index`, or changes nothing when that fails. The old record leaves the port index only
    /// (as by `removeFromObservedPortMap`): a chart signal's entry in the chart index stays.
    void set(std::size_t index, SignalPtr spec);
    /// Removes the record at `index`. Other signals under the same path key (path, sub-path and port) with the same
    /// output port, or with the same cached handle and port, lose those index entries with it, until
    /// `updateObservedPortMap`. Of two chart signals on the same activity, removing one clears the activity for both.
    void remove(std::size_t index);
    /// Removes the first signal that is the same signal as `spec`; does nothing when there is none. The chart
    /// index is not touched, unlike by `remove` by position.
    void remove(const SignalSpecification& spec);
    /// The same signals in the same order; model names and indexes take no part. False for null.
    bool isEqual(const InstrumentedSignals* other) const;
    /// A new host object with clones of the signals, leaving out those not to be saved when asked to. The chart index
    /// is copied only while an activity is observed. Throws when the host refuses the new object. The copy's port index
    /// refers to this set's records until `updateObservedPortMap`: a path query on the copy resolves the originals.
    /// Such queries on both sets, which may write to those records, must not run at the same time.
    HvArrayPtr copy(bool excludeUnsaved) const;

    // ---- persistence ----

    /// A new N x 1 struct array with one element per signal, those excluded from saving included.
    HvArrayPtr getPersistenceData() const;
    /// Appends a signal per element: what the set held stays in front. When an element cannot be
    /// read, the ones before it stay and the error propagates.
    void setFromPersistenceData(const hvArray* data);

    // ---- the host object around a set ----

    /// The set behind element 0 of a host object array, not owned; null for a null or empty value and for
    /// objects of another class.
    static InstrumentedSignals* getFromHvArray(const hvArray* object);
    /// True for null and empty values, else exactly for one object of class `kHostClass`.
    static bool isValidType(const hvArray* value);
    /// Has the host rebind the signals of the set behind `object`, which need not be this one. A failure becomes a
    /// warning; rebinding is no longer pending afterwards in every case. Nothing happens for null. The object's set is
    /// held meanwhile; `object` itself must live until the host has taken the call.
    void applyRebindingRules(hvArray* object, bool flag);

    /// While rebinding is pending, signals whose cached handle is stale still answer for their path and port.
    void setRebindingPending(bool pending);
    bool isRebindingPending() const;  ///< False in a new set.

    // ---- the observed-port index ----

    /// Enters the signal under its path key and, once its handle is resolved, under its handle key; a chart
    /// signal goes to the chart index. Entering a signal twice gives it two entries.
    void addToObservedPortMap(const SignalPtr& spec);
    /// Erases the entries under the signal's path key that have its block path and output port, and those of its
    /// cached handle and port, whichever signals they belong to. A chart signal has no effect.
    void removeFromObservedPortMap(const SignalPtr& spec);
    /// Rebuilds the index from the list, or leaves it as it was when that fails. The chart containers are added to,
    /// not emptied first, and keep what was added before a failure.
    void updateObservedPortMap();
    /// Whether the port index holds any entry; chart signals never count.
    bool isAnyPortObserved() const;
    /// Replaces the cache of observed engine ports. Every change to the list or the index empties it, but for the
    /// removal by position of a chart signal and a rebuild that enters no port.
    void cacheKSPorts(const std::vector<ksPort*>& ports);
    /// Whether the cache holds it; null is an address like any other. Does not allocate.
    bool isKSPortObserved(const ksPort* port) const;
    /// By block handle and port. A handle of NaN is never observed. Does not allocate.
    bool isPortObserved(double blockHandle, int portIdx) const;
    /// By handle and port, else by path and port.
    /// The first match of a signal that has no handle yet records this one in it, unless `portIdx` is 0. The signal
    /// gets a second entry under its path key, and the cache of engine ports is emptied.
    /// A handle of 0.0 or NaN uses the signal up: its real handle answers only while rebinding is pending. NaN is never
    /// found again; 0.0 answers for every path with that port.
    bool isPortObserved(double blockHandle, const std::u16string& blockPath, const std::u16string& subPath,
                        int outputPortIndex, int portIdx, int logicalPortIndex);
    /// The same with the signal's own values. False for null.
    bool isPortObserved(SignalSpecification* spec);

    // ---- chart activity ----

    /// Whether the domain type is "cw_state", "cw_chart" or "cw_data".
    bool isChartworkDomain(const std::u16string& domainType) const;
    /// Enters a chart signal by its "Activity" and "SSID" parameters; an unknown activity is not recorded.
    void addToObservedCWObjectCache(SignalPtr spec);
    /// Takes a chart signal's activity out again; the chart object's entry stays, without the bit.
    void removeFromObservedCWObject(SignalPtr spec);
    /// A chart object's key (model name, `eid`, `ssid`, `activity`): appended to `list`; or entered, taken out. @{
    void constructCWLookupStr(std::vector<std::string>& list, const std::string& eid, const std::string& ssid) const;
    void constructCWLookupStrUsingActivity(std::vector<std::string>& list, const std::string& eid,
                                           const std::string& ssid, const std::string& activity) const;
    void addToObservedCWActivity(const std::string& eid, const std::string& ssid, const std::string& activity);
    void removeObservedCWActivity(const std::string& eid, const std::string& ssid, const std::string& activity);
    /// @}
    /// Whether the chart object's activity is observed; `eidPath` may carry "model:". Allocates for huge texts only.
    bool isCWActivityObserved(const std::u16string& eidPath, double ssid, const std::u16string& activity) const;
    /// Whether any activity of the chart object is. Asking about an unknown object leaves an empty entry
    /// behind; it is harmless to every query.
    bool isAnyCWActivityObserved(const std::u16string& eidPath, double ssid);
    /// The chart signals of this set that `other` (may be null) does not observe, in order. Chart-level
    /// signals (SSID "0") match by identifier and activity, all others by identifier and SSID.
    std::vector<SignalPtr> setDifference_cw(const InstrumentedSignals* other) const;

    // ---- what an editor asks of a whole model; the host answers, the indexes take no part ----

    /// Fills `out` with the observed ports of the host's model object. The texts and flags are the host function's:
    /// a full path to list below and a kind of display (empty, not null, for all), and whether hidden signals and those
    /// not to be saved are listed. `out` becomes empty when the host refuses (a warning), and is unchanged when
    /// something is thrown. Integers truncate toward zero and saturate; NaN is 0, and a true flag. What a result does
    /// not hold keeps the field's default.
    static void getObservedPorts(const hvArray* modelObject, const char* belowPath, const char* visualType,
                                 std::vector<Source>& out, bool withHidden, bool withUnsaved);
    /// Adds the handles of the blocks that carry badges to `out`, which is not cleared. Unchanged for a null or empty
    /// model object, without asking the host, and when the host refuses (a warning). NaN has no place in the order
    /// and is skipped.
    static void getPortsWithBadges(const hvArray* modelObject, std::set<double>& out);

    /// Lets the signals of one block follow its output ports. Entry k (0-based) of `newNumbers` is the new 1-based
    /// number of old port k + 1, or 0 for a deleted port, whose signals leave the set. Ports beyond the list stay; a
    /// negative number is taken as any other. The index is rebuilt when anything changed.
    /// Path and identifier carry the model's name. A signal belongs to the block by its cached handle, else its path,
    /// else its identifier: a handle of 0.0 matches every unresolved signal, an empty identifier every signal without.
    /// Logical ports keep their numbers, and a signal with one is still found under it. A signal that was never
    /// resolved has a cached port afterwards, and so counts as resolved to its old handle (0.0). A record that is
    /// listed twice is renumbered at each of its places, one after the other.
    /// When memory runs out, signals already removed stay removed, numbers already changed stay changed, and
    /// `updateObservedPortMap` is due.
    void renumberPorts(double blockHandle, const std::u16string& blockPath, const std::string& eid,
                       std::vector<int> newNumbers);

private:
    struct KS_HMI_LOCAL Indexes;

    /// Enters the signal as `addToObservedPortMap` does, but leaves the cache of engine ports alone. Whether it has
    /// entered a port.
    KS_HMI_LOCAL bool enterIndex(const SignalPtr& spec, std::optional<std::uint64_t> knownPathKey);
    /// Has a signal that was found by its path remember its handle and port.
    KS_HMI_LOCAL void resolve(SignalPtr signal, double blockHandle, int portIdx, std::optional<std::uint64_t> pathKey);
    /// Takes a listed signal out of the index that a removal by position clears.
    KS_HMI_LOCAL void leaveIndex(const SignalPtr& signal);
    /// Removes those ascending positions, from the last to the first.
    KS_HMI_LOCAL void removeAll(const std::vector<std::size_t>& positions);

    std::unique_ptr<Indexes> m_indexes;
    std::u16string m_modelName;
    std::vector<SignalPtr> m_signals;
    bool m_rebindingPending = false;
};

}  // namespace ks_hmi
