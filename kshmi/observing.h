#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/hv_array.h"
#include "kshmi/output.h"
#include "kshmi/positions.h"
#include "kshmi/session.h"

/// The observers of a model's signals. Positions are 0-based.
namespace kshmi {

/// What is said of a new client. Texts are UTF-8.
struct ClientSettings {
    std::string type;
    HvArrayPtr params;  ///< null for none
    std::uint32_t updateRate = 1;
    std::uint32_t channel = 1;
    bool isImaginary = false;
    std::string busLeaf;
};

/// Adds a client of the signal at that position to the end of the set. Its model path is the signal's block, so that
/// its source model is saved with it. Throws `Error` when the host makes no object for it.
void addClient(Session& session, std::size_t signal, const ClientSettings& settings);

/// Removes the clients at the positions, in any order, duplicates allowed.
void removeClients(Session& session, Positions positions);

/// New clients with aligned model paths, in the set's order, as the host answers for all. Throws `Error` when it does
/// not.
std::vector<ks_hmi::StreamingClients::ClientPtr> alignedClients(const Session& session);

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

/// "client 3 (ks_scope_observer)".
std::string nameOfClient(const Session& session, std::size_t position);
/// The same with what it watches: "client 3 (ks_scope_observer) on m/A:1", "... on m/Logic/On (Self)".
std::string describeClient(const Session& session, std::size_t position, const SignalUuids& uuids);
/// "dangling", "deprecated" and what else is special about a client, with commas between; empty for an everyday one.
std::string notesOn(const ks_hmi::SignalClient& client, Watched target);

/// Tells which clients lose their signals while this lives. The set of clients must not change meanwhile.
class DanglingWatch {
public:
    explicit DanglingWatch(const Session& session);
    /// One warning that names them and the remedy; nothing when there are none. In a dry run it names those that would.
    void warn(const Output& output, bool isDryRun) const;

private:
    std::vector<std::size_t> dangling() const;
    const Session& m_session;
    std::vector<std::size_t> m_before;
};

}  // namespace kshmi
