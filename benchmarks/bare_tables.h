#pragma once

#include <bit>
#include <boost/unordered/unordered_flat_map.hpp>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "signals/signal_specification.h"

/// The least that an answer can cost: one flat hash table and a look at the record that it finds.
namespace ks_bench::bare {

inline std::uint64_t mixed(std::uint64_t a, std::uint64_t b) noexcept {
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide>(a ^ 0x9E3779B97F4A7C15ULL) * (b ^ 0xC2B2AE3D27D4EB4FULL);
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

/// 16 bytes of text in one product.
inline std::uint64_t hashOf(std::u16string_view text, std::uint64_t state) noexcept {
    const auto* at = reinterpret_cast<const char*>(text.data());
    std::size_t left = text.size() * sizeof(char16_t);
    std::uint64_t words[2];
    for (; left > sizeof words; left -= sizeof words, at += sizeof words) {
        std::memcpy(words, at, sizeof words);
        state = mixed(words[0] ^ state, words[1]);
    }
    words[0] = words[1] = 0;
    std::memcpy(words, at, left);
    return mixed(words[0] ^ state, words[1] ^ text.size());
}

struct HandleKey {
    std::uint64_t bits;
    std::int32_t port;
    HandleKey(double handle, std::int32_t portIdx) noexcept
        : bits(std::bit_cast<std::uint64_t>(handle)), port(portIdx) {}
    friend bool operator==(const HandleKey&, const HandleKey&) = default;
};

struct PathKey {
    std::u16string_view path;
    std::u16string_view subPath;
    std::int32_t port;
    friend bool operator==(const PathKey&, const PathKey&) = default;
};

struct ChartKey {
    std::u16string_view eid;
    std::uint64_t ssidBits;
    std::u16string_view activity;
    friend bool operator==(const ChartKey&, const ChartKey&) = default;
};

struct Hash {
    using is_avalanching = void;
    std::size_t operator()(const HandleKey& key) const noexcept {
        return mixed(key.bits, static_cast<std::uint32_t>(key.port));
    }
    std::size_t operator()(const PathKey& key) const noexcept {
        return mixed(hashOf(key.subPath, hashOf(key.path, 0)), static_cast<std::uint32_t>(key.port));
    }
    std::size_t operator()(const ChartKey& key) const noexcept {
        return mixed(hashOf(key.activity, hashOf(key.eid, 0)), key.ssidBits);
    }
};

template <class Key>
using Table = boost::unordered_flat_map<Key, const ks_hmi::SignalSpecification*, Hash>;

inline bool isPortObserved(const Table<HandleKey>& table, double handle, int port) {
    const auto found = table.find(HandleKey(handle, port));
    return found != table.end() && found->second->m_cachedPortIdx == port &&
           found->second->m_cachedBlockHandle == handle;
}

}  // namespace ks_bench::bare
