#pragma once

#include <cstddef>
#include <string>

#include "host/messages.h"

namespace workbench {

/// What the library refuses of saved data.
struct RefusedField {
    std::string field;
    std::size_t element = 0;  ///< 1-based; 0 when the refusal is about something else
};

RefusedField refusedField(const resource_core::BaseMsgID& id);
/// What the exception says of a refused field, with the record at `position` (0-based) for the one that it names.
std::string refusalText(const kssvIException& refusal, std::size_t position);

}  // namespace workbench
