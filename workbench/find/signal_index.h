#pragma once

#include <boost/unordered/unordered_flat_map.hpp>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "workbench/find/reference.h"
#include "workbench/session/session.h"
#include "workbench/session/signal_source.h"

namespace workbench {

/// Finds the positions of the signals on a port or chart item. Made anew after the set has changed; does not outlive
/// the session.
class SignalIndex {
public:
    explicit SignalIndex(const Session& session);
    /// The same for sources that are on these blocks only.
    SignalIndex(const Session& session, std::span<const kestrel::Block* const> blocks);

    /// Positions (0-based, ascending) of the signals on the source, of all activities.
    const std::vector<std::size_t>& on(const SignalSource& source) const;
    /// Of a chart item only those of the activity, when the options say one. Throws `Error` for one that it cannot
    /// have.
    std::vector<std::size_t> on(const SignalSource& source, const ReferenceOptions& options) const;

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
    template <class IsWanted>
    void enter(IsWanted isWanted);

    const Session& m_session;
    boost::unordered_flat_map<Key, std::vector<std::size_t>, Hash> m_positions;
};

}  // namespace workbench
