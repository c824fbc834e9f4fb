#pragma once

#include <string>

#include "host/messages.h"

namespace orvex {

/// The catalogues' text for the identifier with its arguments filled in, UTF-8. A key without a text
/// shows as "catalogue key (arguments)".
std::string messageText(const resource_core::BaseMsgID& id);

}  // namespace orvex
