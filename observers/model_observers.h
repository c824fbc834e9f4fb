#pragma once

#include "foundation/export.h"
#include "host/hv_array.h"

namespace ks_hmi {

/// A model's signals and observers as the host hands them over in one value: an object of class
/// "Kestrel.HMI.ModelObservers", whose contents only the host interprets. Thread: the interpreter thread.
class KS_HMI_EXPORT ModelObservers {
public:
    /// Keeps a shared-data copy of the value; none when it is null or empty. Throws as `validateDataFormat`.
    explicit ModelObservers(const hvArray* value);
    ~ModelObservers();
    ModelObservers(const ModelObservers&) = delete;
    ModelObservers& operator=(const ModelObservers&) = delete;

    /// Accepts null and empty values. Raises the host's exceptions "SignalObserversSetParamNonScalar" for any other
    /// number of elements than one, whatever the class, then "SignalObserversSetParamInvalidType".
    static void validateDataFormat(const hvArray* value);
    /// Sets both to the bundle's parts; to null when there is no bundle and when the host refuses (a warning).
    void getSignalsAndClients(HvArrayPtr& signals, HvArrayPtr& clients) const;
    /// A new bundle; a null part is handed over as a 0x0 double. Null when both are null, without asking the host,
    /// and when it refuses (a warning).
    static HvArrayPtr createFromSignalsAndClients(const hvArray* signals, const hvArray* clients);

private:
    HvArrayPtr m_observers;
};

}  // namespace ks_hmi
