#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "foundation/export.h"
#include "host/hv_array.h"

namespace ks_hmi {

class SignalSpecification;

/// What of an observer is saved, copied and compared member by member.
struct SignalClientFields {
    std::string m_uuid;                       ///< UTF-8; the client's own
    std::u16string m_sourceModel;             ///< name of the model that holds the signal
    std::string m_signalUUID;                 ///< of the observed `SignalSpecification`
    std::string m_observerType;               ///< such as "hmi_web_widget_observer"
    std::vector<std::u16string> m_modelPath;  ///< through the model hierarchy to the block
    std::vector<std::string> m_modelPathEID;  ///< UTF-8; the identifiers of those blocks
    std::uint64_t m_updateRate = 1;           ///< stored and compared only
    std::uint64_t m_dimensionChannel = 1;     ///< which element of a signal of several, from 1
    bool m_observeImaginaryPart = false;      ///< of a complex signal
    std::string m_busLeafPath;                ///< UTF-8; inside a bus, empty for any other signal

    friend bool operator==(const SignalClientFields&, const SignalClientFields&) = default;  ///< Every member, exactly.
};

/// One observer of an instrumented signal: a dashboard widget or another consumer of the signal whose UUID it names.
///
/// Element 0 of the model path and of its identifiers is held relative to the owning model; further elements
/// are never touched by model names. Records are copied with `clone` only.
///
/// Queries that ask the host turn its refusals into warnings and give their fixed answers. Failures of host value
/// operations are thrown as the host's exception. A caller that asks the host keeps the record alive: scripts may
/// change the set it is in. Parameters that hold the very set the client is in are a circle that nothing releases.
/// Thread: the host's interpreter thread.
class KS_HMI_EXPORT SignalClient : public SignalClientFields {
public:
    /// A record with the defaults that the members show.
    SignalClient();
    /// Reads element `index` (0-based) of a persisted struct array, or element 0 of the host object `value`, whose
    /// references lose the leading `modelName`. Throws the host's exception when a field cannot be read, naming
    /// the field and the 1-based element.
    SignalClient(const hvArray* value, std::size_t index, const std::u16string& modelName);
    ~SignalClient();
    SignalClient(const SignalClient&) = delete;
    SignalClient& operator=(const SignalClient&) = delete;

    // ---- the persisted form ----

    /// The names of the 11 fields in order, NUL-terminated, valid as long as the library is loaded.
    static std::span<const char* const> getStructFields();
    static int getNumStructFields();  ///< 11.
    /// Reads element `index` of a persisted struct array by field name. Missing fields 8 to 11 read as 0, 0, false and
    /// empty, not as the defaults of a new record; a text field of another class reads as empty.
    /// Any other missing field, a number field without a number, and a path field that is not a cell array throws the
    /// host's exception; what was read before it stays read.
    void setFromPersistentData(const hvArray* s, std::size_t index);
    /// Writes all fields of element `index` of `s` over what was there. `modelName` is put in front of the first path
    /// and identifier. A client without a model path belongs to the model being written: its source model is then
    /// `modelName`. Without parameters a 0x0 double is written.
    void createStructData(hvArray* s, std::size_t index, const std::u16string& modelName) const;
    /// The same relative to the model. A client without a model path so loses its source model.
    void getPersistenceData(hvArray* s, std::size_t index) const;

    /// All members but the cached signal are equal. What decides last is the host's "isequal" of the parameters, with a
    /// 0x0 double for none; its failure is thrown. False for null.
    bool isEqual(const SignalClient* other) const;
    /// An independent record without the cached signal.
    std::unique_ptr<SignalClient> clone() const;
    /// Takes a leading `modelName` off the first path and the first identifier.
    void stripModelName(const std::u16string& modelName);
    /// A source model that is `oldName` or empty becomes `newName`; then a field "ModelName" of the parameters does,
    /// whatever the source model is. When the field cannot be written, the source model has its new name already.
    void renameModel(const std::u16string& oldName, const std::u16string& newName);
    /// Whether the observer type is one that is no longer supported (exact match).
    bool isDeprecatedObserver() const;

    // ---- the host object and the observed signal ----

    /// Reads the properties of element 0 of a "Kestrel.HMI.SignalClient" object and takes `modelName` off the
    /// references.
    void setFromHOS(const hvArray* object, const std::u16string& modelName);
    /// A new host object with full paths; null when the host refuses.
    HvArrayPtr getHOSObject(const std::u16string& modelName) const;
    /// The observed signal as the host finds it, owned by the client; null when there is none, and then nothing is
    /// kept. What was found once is kept: later changes of the model, renames included, are not seen.
    SignalSpecification* getSignalSpecification(const std::u16string& modelName);
    /// Sets `path` to the aligned path of the observed block through the model hierarchy: the model path, its first
    /// element with the model's name in front, then the block's full path. Sets `subPath` to the signal's sub-path.
    /// Both become empty when the host cannot tell. The block's path is asked anew each time.
    void getAlignedBlockPath(const std::u16string& modelName, std::vector<std::u16string>& path,
                             std::u16string& subPath);
    /// The signal's cached port, 1-based; 0 without a signal.
    int getAlignedPortIndex(const std::u16string& modelName);
    /// The signal's decimation; 1 without a signal.
    int getDecimation(const std::u16string& modelName);
    /// The signal's maximum number of points; 0 without a signal.
    int getMaxPoints(const std::u16string& modelName);

    // ---- further members, open to sets and host classes like the fields ----

    HvArrayPtr m_observerParams;                        ///< outlives host calls; null for none
    std::unique_ptr<SignalSpecification> m_signalSpec;  ///< runtime only
};

}  // namespace ks_hmi
