#pragma once

#include <string>

#include "foundation/export.h"

namespace ks_hmi {

/// Notices to the dashboard layer. Thread: the host's interpreter thread.
class KS_HMI_EXPORT HMIEngineUtils {
public:
    HMIEngineUtils() = delete;

    /// Tells the dashboard layer that the parameters of a block have changed. Silent, whatever fails:
    /// no warning is shown, for a parameter change must not depend on the dashboards.
    static void updateParamsForBlock(const std::u16string& blockPath) noexcept;
};

}  // namespace ks_hmi
