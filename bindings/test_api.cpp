#include "bindings/entry_points.h"
#include "bindings/namespace_registration.h"

namespace ks_hmi::testAPI {

namespace {

bool isAdded = false;

}  // namespace

void addStreamingClientHOSNamespace() { ks_hmi_foundation::registerHostClassesOnce(isAdded); }

}  // namespace ks_hmi::testAPI
