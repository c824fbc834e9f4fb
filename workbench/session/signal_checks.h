#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "memory_host/kestrel/model.h"
#include "signals/instrumented_signals.h"

namespace workbench {

/// A signal that does not fit its model.
struct SignalFault {
    std::size_t position = 0;  ///< 0-based
    std::string field;         ///< persisted field name
    std::string text;          ///< what is wrong
    bool isDangling = false;   ///< what the signal is on is gone from the model
};

/// Every signal must have a UUID of its own and a block, port or chart item in the model. Faults in order,
/// one for each signal at most.
std::vector<SignalFault> faultsOf(const ks_hmi::InstrumentedSignals& set, const kestrel::Model& model);

}  // namespace workbench
