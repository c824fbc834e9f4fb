#pragma once

#include "foundation/export.h"

/// The library's entry points, called by the host from its main thread. The first two are plain C.
#ifdef __cplusplus
extern "C" {
#endif
/// Registers the library's host classes under "Kestrel.HMI"; the first call only, also when that one failed.
/// Errors of the object system propagate as C++ exceptions.
KS_HMI_EXPORT void OXInitialize_ks_hmi_foundation(void);
/// Does nothing: what was registered belongs to the host.
KS_HMI_EXPORT void OXTerminate_ks_hmi_foundation(void);
#ifdef __cplusplus
}

namespace ks_hmi::testAPI {

/// The same registration on demand, with its own memory of having been called: after the host's initialisation
/// it registers once more, and whatever the host does with a repeated class is what the caller sees.
KS_HMI_EXPORT void addStreamingClientHOSNamespace();

}  // namespace ks_hmi::testAPI
#endif
