#include "bindings/entry_points.h"
#include "bindings/namespace_registration.h"

namespace {

bool isInitialized = false;

}  // namespace

void OXInitialize_ks_hmi_foundation() { ks_hmi_foundation::registerHostClassesOnce(isInitialized); }

void OXTerminate_ks_hmi_foundation() {}
