#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
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

/// Position of the signal or client that a UUID or a 1-based position calls. Throws `Error` when there is none.
std::size_t signalCalled(const Session& session, const std::string& call);
std::size_t clientCalled(const Session& session, const std::string& call);

/// Where the signal is that a client watches.
enum class Watched : std::uint8_t {
    here,
    gone,       ///< all models that the client names are open, and none has it
    elsewhere,  ///< a model that the client names is not open
};
Watched watched(const ks_hmi::SignalClient& client, const SignalUuids& uuids);

/// How it stands with a client, in one word.
enum class ClientState : std::uint8_t {
    watching,   ///< its signal is here
    dangling,   ///< its signal is gone
    elsewhere,  ///< its signal may be in a model that is not open
    foreign,    ///< it names another model as its own, wherever its signal is
};
ClientState stateOf(const ks_hmi::SignalClient& client, const SignalUuids& uuids, std::u16string_view modelName);
/// The word: "watching", "dangling", "elsewhere", "foreign".
const char* nameOf(ClientState state) noexcept;

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
