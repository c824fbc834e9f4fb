#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "memory_host/kestrel/model.h"

/// The fields of blocks, as text for messages and compared.
namespace workbench {

std::string jsonOf(std::u16string_view text);
std::string jsonOf(const std::vector<std::u16string>& names);
std::string jsonOf(const std::optional<kestrel::Chart>& chart);  ///< Its items; empty for no chart.

template <class Value>
bool isSame(const Value& one, const Value& other) {
    return one == other;
}
bool isSame(const std::optional<kestrel::Chart>& one, const std::optional<kestrel::Chart>& other);
bool isSame(const kestrel::Block& one, const kestrel::Block& other);  ///< All but identifier, handle and source.

}  // namespace workbench
