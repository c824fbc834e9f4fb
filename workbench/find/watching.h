#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>

#include "workbench/find/positions.h"
#include "workbench/session/session.h"

/// Which signal a client watches. Positions are 0-based.
namespace workbench {

/// Finds signals by UUID. Made anew after the signals have changed.
class SignalUuids {
public:
    explicit SignalUuids(const Session& session);
    std::optional<std::size_t> positionOf(std::string_view uuid) const;

private:
    std::unordered_map<std::string_view, std::size_t> m_positions;
};

/// Where the signal is that a client watches.
enum class Watched : std::uint8_t {
    here,
    gone,       ///< all models that the client names are open, and none has it
    elsewhere,  ///< a model that the client names is not open
};
Watched watched(const ks_hmi::SignalClient& client, const SignalUuids& uuids);

/// Tells which clients lose their signals while this lives. The set of clients must not change meanwhile.
class DanglingWatch {
public:
    explicit DanglingWatch(const Session& session);
    /// Clients whose signal is gone now and was there when this was made, ascending.
    Positions lost() const;

private:
    Positions dangling() const;
    const Session& m_session;
    Positions m_before;
};

}  // namespace workbench
