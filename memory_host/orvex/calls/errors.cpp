#include "memory_host/orvex/calls/errors.h"

#include <utility>

#include "host/messages.h"

namespace orvex {

void raise(std::string key, std::string text) {
    throw kssvIException(resource_core::BaseMsgID("orvex:errors", std::move(key), {text}), text);
}

}  // namespace orvex
