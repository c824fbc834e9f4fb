#pragma once

#include <boost/smart_ptr/shared_ptr.hpp>
#include <cstdint>
#include <string>
#include <unordered_map>

#include "signals/signal_specification.h"

/// The source keys as one writes them without a thought of speed: texts put together from strings, hashed, and
/// looked up in the standard library's table.
namespace ks_bench::plain {

using Convert = std::string (*)(const std::u16string& text);
/// To UTF-8, without a quick way for ASCII; lone surrogates become U+FFFD.
std::string unitByUnit(const std::u16string& text);

std::uint64_t handleKey(double blockHandle, int portIdx);
std::uint64_t pathKey(const std::u16string& blockPath, const std::u16string& subPath, int outputPortIndex,
                      int logicalPortIndex, const std::u16string& modelName, Convert convert = unitByUnit);

using Table = std::unordered_multimap<std::uint64_t, boost::shared_ptr<ks_hmi::SignalSpecification>>;

bool isPortObserved(const Table& table, double blockHandle, int portIdx);
bool isPortObserved(const Table& table, const std::u16string& blockPath, const std::u16string& subPath,
                    int outputPortIndex, const std::u16string& modelName);

}  // namespace ks_bench::plain
