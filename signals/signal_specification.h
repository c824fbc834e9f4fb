#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "foundation/export.h"
#include "foundation/sparse.h"
#include "host/hv_array.h"

namespace ks_hmi {

/// What of a signal is saved. Comparing looks the domain parameters up; their order is the record's affair.
struct SignalFields {
    using DomainParamsMap = std::unordered_map<std::u16string, std::u16string>;  ///< Values by name.
    template <class T>
    using Sparse = ks_hmi_foundation::Sparse<T>;  ///< What most signals leave empty.

    std::string m_uuid;                      ///< UTF-8; what observers name the signal by
    std::u16string m_blockPath;              ///< relative to the model
    std::string m_eid;                       ///< relative to the model
    Sparse<std::u16string> m_subPath;        ///< below the block, e.g. inside a chart
    std::u16string m_signalName;             ///< as shown to the user
    std::u16string m_subSysPath;             ///< of the enclosing subsystem
    Sparse<std::u16string> m_domainType;     ///< empty for an output port
    Sparse<std::u16string> m_visualType;     ///< kind of display that the signal feeds
    Sparse<DomainParamsMap> m_domainParams;  ///< free-form, such as "SSID" and "Activity" of a chart signal
    std::int32_t m_outputPortIndex = 0;      ///< 1-based
    std::int32_t m_logicalPortIndex = 0;     ///< 1-based; found under it when not 0
    std::int32_t m_decimation = 1;           ///< keep every n-th sample
    std::int32_t m_maxPoints = 0;            ///< to keep, 0 for all; stored and compared only
    bool m_targetBufferedStreaming = false;  ///< stored and compared only
    bool m_isFrameBased = false;             ///< stored and compared only
    bool m_hideInPLV = false;                ///< not shown in the signal viewer

    friend bool operator==(const SignalFields&, const SignalFields&) = default;  ///< All members, parameters unordered.
};

/// One instrumented signal of a model: a block output port, or a chart's state, activity or data,
/// told apart by the domain type, whose values are streamed to dashboards, viewers and recorders.
///
/// Paths and identifiers are held relative to the model. Port numbers are 1-based, 0 means none.
/// A block handle of 0.0 means that none is cached. Records are copied with `clone` only.
/// Failures of host calls by name become host warnings and give an empty result; failures of host
/// value operations are thrown as the host's exception. A caller that asks the host keeps the record alive
/// (`InstrumentedSignals::share`): scripts may change the set it is in. Thread: the host's interpreter thread.
class KS_HMI_EXPORT SignalSpecification : public SignalFields {
public:
    using BlockUUIDMap = std::unordered_map<std::string, std::string>;  ///< UUIDs by "port-handle".

    /// A record with the defaults that the members show.
    SignalSpecification();
    /// Reads element `index` (0-based) of a persisted struct array, or the host object `data` (its
    /// element 0, whatever `index` is), whose references lose the leading `modelName`.
    /// Whatever is no struct is read as an object, and refused by the host if it is none.
    /// Throws the host's exception when a field cannot be read, naming the field and the 1-based element.
    SignalSpecification(const hvArray* data, std::size_t index, const std::u16string& modelName);
    ~SignalSpecification();
    SignalSpecification& operator=(const SignalSpecification&) = delete;

    /// An independent record with every member copied, the runtime-only ones and the order of the
    /// domain parameters included.
    std::unique_ptr<SignalSpecification> clone() const;

    // ---- the persisted form ----

    /// The names of the struct's fields in order, NUL-terminated, valid as long as the library is loaded.
    static const char* const* getStructFields();
    /// How many of them a struct has: 20 with the runtime fields, 16 (the first ones) as persisted.
    static int getNumStructFields(bool withRuntimeFields);

    /// Writes the 16 persisted fields of element `index` of `s`, which has them, over what was there. A non-empty
    /// `modelName` is put in front of the block path and the element identifier.
    void createStructData(hvArray* s, std::size_t index, const std::u16string& modelName) const;
    /// Writes element `index` of `s` as it is saved: references relative to the model, the block path freshly aligned
    /// by the host for `modelName`. A path that the host cannot align is saved empty; the host has warned of it.
    void getPersistenceData(hvArray* s, std::size_t index, std::u16string modelName) const;
    /// Reads element `index` of a persisted struct array by field name. The runtime-only members keep their values,
    /// even when the struct has such fields.
    /// Of missing fields, "LogicalPortIndex_" and the three flags keep their values; domain type, visual type and
    /// parameters become empty. Any other missing field, and a number field without a number, throws the host's
    /// exception; what was read before it stays read. A text field of another class reads as empty; numbers truncate
    /// toward zero and saturate.
    void setFromPersistentData(const hvArray* s, std::size_t index);

    // ---- the host's forms ----

    /// The signal as an object of the host class "Kestrel.HMI.SignalSpecification", or with `asStruct` as a 1x1 struct
    /// of 20 fields. Null when the host refuses the object. Without a cached handle the object keeps the class's own
    /// handle and port.
    HvArrayPtr getHOSObject(const std::u16string& modelName, bool asStruct) const;
    /// Reads the properties of element 0 of a host object and takes `modelName` off the references. An empty
    /// "CachedBlockHandle_" leaves handle and port at their values.
    void setFromHOS(const hvArray* object, const std::u16string& modelName);
    /// The block's full path as the modelling environment knows it now; empty when the host cannot tell.
    std::u16string getAlignedBlockPath(const std::u16string& modelName) const;

    /// A 1x1 struct with one character field per domain parameter, in the map's order. Names are not checked.
    HvArrayPtr getDomainParamsAsHvArray() const;
    /// Replaces the record's own domain parameters by the fields of `value`, walked in the order of the fields; an
    /// empty value leaves none. The map argument is ignored: every caller passes that very map.
    void extractDomainParamsFromHvArray(const hvArray* value, DomainParamsMap& ignored);
    /// The parameter's value, or the empty text when there is none; adds nothing.
    std::u16string getValueForDomainParams(const std::u16string& name) const;

    // ---- comparing ----

    /// All persisted members are equal; the runtime-only ones are not compared. Domain parameters whose maps are walked
    /// in another order are unequal. Saving and reading back keeps the order, and so does a trip through a host object.
    /// False for null.
    bool isEqual(const SignalSpecification* other) const;
    /// Both records denote the same source port: equal cached handles and ports, else, also when the handles
    /// differ, equal port numbers, block path and sub-path. False for null.
    bool isSameSignal(const SignalSpecification* other) const;

    // ---- changing ----

    /// Does nothing: the record holds no model name.
    void renameModel(const std::u16string& oldName, const std::u16string& newName);
    /// Takes a leading `modelName` off the block path and the element identifier.
    void stripModelName(const std::u16string& modelName);
    void setCachedInfo(double blockHandle, int portIdx);  ///< Sets both members; no set is told.
    /// Sets the output port and the cached port; the logical port is left unchanged.
    void renumberPortIndex(int portIndex);

    // ---- identity ----

    /// Hash of the texts joined with nothing between them. Hashes are equal within one process only.
    static std::uint64_t getInfoHashFromStringList(std::vector<std::string> texts);
    /// The port that path keys are made of: the logical one when it is 1 or more, else the output port.
    static int pathKeyPort(int outputPortIndex, int logicalPortIndex) noexcept {
        return logicalPortIndex >= 1 ? logicalPortIndex : outputPortIndex;
    }
    /// Hash of "model/path$$subPath$$port" (without "model/" for an empty name), with the `pathKeyPort`.
    static std::uint64_t getNonCachedInfoHash(const std::u16string& blockPath, const std::u16string& subPath,
                                              int outputPortIndex, int logicalPortIndex,
                                              const std::u16string& modelName);
    /// Hash of "handle$$port", the handle as "%.17g" writes it. Does not allocate.
    static std::uint64_t getCachedInfoHash(double blockHandle, int portIdx);
    /// The path key of this record in that model.
    std::uint64_t getSourceKeyNonCached(const std::u16string& modelName) const;
    /// The handle key of this record.
    std::uint64_t getSourceKeyCached() const;

    /// Whether the process-wide map has a UUID for the block's port. Handles that differ beyond the sixth
    /// decimal share an entry.
    static bool isInBlockHandleUUIDmap(const int& port, const double& handle);
    /// Sets the map's entry for the block's port; an empty UUID is an entry like any other.
    static void addToBlockHandleUUIDmap(const int& port, const double& handle, const std::string& uuid);
    /// The map's UUID for the block's port, minted and entered when there is none; without `useMap` a fresh one
    /// that is entered nowhere. Throws Boost's entropy error when the system has no randomness to give.
    static std::string getUUIDFromBlockHandle(const int& port, const double& handle, const bool& useMap);
    /// A new record for a block's output port, with the UUID that the map has for it or a fresh one, which is
    /// not entered in the map. References may carry the model's name and are stored without it. Handle and port are
    /// cached as they are given, a handle of 0.0 as well: where it is not known yet, `setCachedInfo(0.0, 0)` makes
    /// the record one that is found by its path. All else has its default.
    static std::unique_ptr<SignalSpecification> createSigSpecFromPort(const std::u16string& blockPath,
                                                                      const std::string& eid, int portIdx,
                                                                      int logicalPortIdx, double blockHandle,
                                                                      const std::u16string& modelName,
                                                                      bool excludeForSave);
    /// The map itself. It outlives models and only grows.
    static BlockUUIDMap& getBlockUUIDmap();

    // ---- runtime only; open to sets and host classes like the fields ----

    bool m_excludeForSave = false;      ///< left out of the saved copy of a set
    std::int32_t m_cachedPortIdx = 0;   ///< 0 until the handle is resolved
    double m_cachedBlockHandle = 0.0;   ///< valid for one load of the model
    Sparse<std::string> m_bindingRule;  ///< UTF-8; how the signal was bound: "eid", "path" or empty

private:
    KS_HMI_LOCAL SignalSpecification(const SignalSpecification&);
    KS_HMI_LOCAL void readDomainParams(const hvArray* value);

    KS_HMI_LOCAL static BlockUUIDMap m_blockUUIDmap;
};

}  // namespace ks_hmi
