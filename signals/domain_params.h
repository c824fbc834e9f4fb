#pragma once

#include <string>
#include <utility>
#include <vector>

#include "signals/signal_specification.h"

namespace ks_hmi {

using DomainParam = std::pair<std::u16string, std::u16string>;

/// A map whose walk meets the parameters in the order given; of equal names the last one holds. For thousands of names
/// in an order that no map of them has walked, the order may be another.
SignalSpecification::DomainParamsMap domainParamsInOrder(std::vector<DomainParam> params);

}  // namespace ks_hmi
