#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "memory_host/kestrel/model.h"
#include "signals/instrumented_signals.h"

namespace workbench {

/// How a signal does not fit its model.
enum class Misfit : std::uint8_t {
    blockGone,
    portGone,
    itemGone,  ///< or the block is no chart
    kind,      ///< of another domain than ports and charts, or a port with a sub-path
    ssid,      ///< none, or not a plain number
    activity,  ///< none, or not one of the item's
    uuidMissing,
    uuidTaken,
};

class ChartItemFinder;

/// A signal that does not fit its model.
struct SignalFault {
    std::size_t position = 0;  ///< 0-based
    std::string field;         ///< persisted field name
    std::string text;          ///< what is wrong
    bool isDangling = false;   ///< what the signal is on is gone from the model
    Misfit misfit = Misfit::kind;
};

/// What is wrong with where the signal comes from, at the position 0; nothing when it fits.
std::optional<SignalFault> sourceFault(const ks_hmi::SignalSpecification& signal, const kestrel::Model& model,
                                       ChartItemFinder& items);

/// Every signal must have a UUID of its own and a block, port or chart item in the model. Faults in order,
/// one for each signal at most.
std::vector<SignalFault> faultsOf(const ks_hmi::InstrumentedSignals& set, const kestrel::Model& model);

}  // namespace workbench
