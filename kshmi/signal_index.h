#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "kshmi/session.h"
#include "kshmi/signal_source.h"

namespace kshmi {

/// Finds the positions of the signals on a port or chart item. Made anew after the set has changed.
class SignalIndex {
public:
    explicit SignalIndex(const Session& session);

    /// Positions (0-based, ascending) of the signals on the source, of all activities.
    const std::vector<std::size_t>& on(const SignalSource& source) const;

private:
    struct Key {
        const kestrel::Block* block;
        std::int64_t place;  ///< port number; for a chart item the SSID below zero
        friend bool operator==(const Key&, const Key&) = default;
    };
    struct Hash {
        std::size_t operator()(const Key& key) const noexcept;
    };
    static Key keyOf(const SignalSource& source) noexcept;

    std::unordered_map<Key, std::vector<std::size_t>, Hash> m_positions;
};

}  // namespace kshmi
