#include "benchmarks/plain_form.h"

#include <algorithm>
#include <array>
#include <boost/container_hash/hash.hpp>
#include <cstdio>

#include "host/unicode.h"

namespace ks_bench::plain {

namespace {

std::string textOf(double number) {
    constexpr std::size_t kLongest = 32;
    std::array<char, kLongest> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "%.17g", number);
    return buffer.data();
}

template <class Matches>
bool isAny(const Table& table, std::uint64_t key, Matches matches) {
    const auto [first, last] = table.equal_range(key);
    return std::any_of(first, last, [&](const auto& entry) { return matches(*entry.second); });
}

}  // namespace

std::uint64_t handleKey(double blockHandle, int portIdx) {
    const std::string key = textOf(blockHandle) + "$$" + std::to_string(portIdx);
    return boost::hash<std::string>()(key);
}

std::string unitByUnit(const std::u16string& text) {
    std::string utf8;
    char bytes[ks_host::kMostUtf8Bytes];
    for (std::size_t at = 0; at < text.size();)
        utf8.append(bytes, ks_host::putUtf8(bytes, ks_host::takeCharacter(text, at)));
    return utf8;
}

std::uint64_t pathKey(const std::u16string& blockPath, const std::u16string& subPath, int outputPortIndex,
                      int logicalPortIndex, const std::u16string& modelName, Convert convert) {
    const std::u16string fullPath = modelName.empty() ? blockPath : modelName + u"/" + blockPath;
    const int port = logicalPortIndex >= 1 ? logicalPortIndex : outputPortIndex;
    const std::string key = convert(fullPath) + "$$" + convert(subPath) + "$$" + std::to_string(port);
    return boost::hash<std::string>()(key);
}

bool isPortObserved(const Table& table, double blockHandle, int portIdx) {
    return isAny(table, handleKey(blockHandle, portIdx), [&](const ks_hmi::SignalSpecification& signal) {
        return signal.m_cachedPortIdx == portIdx && signal.m_cachedBlockHandle == blockHandle;
    });
}

bool isPortObserved(const Table& table, const std::u16string& blockPath, const std::u16string& subPath,
                    int outputPortIndex, const std::u16string& modelName) {
    const std::uint64_t key = pathKey(blockPath, subPath, outputPortIndex, 0, modelName);
    return isAny(table, key, [&](const ks_hmi::SignalSpecification& signal) {
        return signal.m_outputPortIndex == outputPortIndex && signal.m_blockPath == blockPath;
    });
}

}  // namespace ks_bench::plain
