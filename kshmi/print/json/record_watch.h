#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "observers/streaming_clients.h"
#include "signals/instrumented_signals.h"
#include "signals/signal_specification.h"
#include "workbench/session/session.h"

namespace kshmi {

/// Tells in JSON what becomes of a model's signals and clients while this lives, for whatever reason.
class RecordWatch {
public:
    /// The session must outlive it. With a block, which must outlive it, too, only of the signals on that and their
    /// clients: for changes that are nothing to others.
    explicit RecordWatch(const workbench::Session& session, const kestrel::Block* block = nullptr);

    /// JSON objects, signals first, in the order of the sets. What was removed is told as it was.
    struct Changes {
        std::vector<std::string> added;
        std::vector<std::string> changed;
        std::vector<std::string> removed;
    };
    Changes changes() const;

private:
    template <class Record>
    struct Seen {
        std::unique_ptr<Record> record;  ///< a copy
        std::u16string place;            ///< what it is on, below the model
        std::string state;               ///< what else can change about it
        std::string text;                ///< its JSON object
    };
    using Signals = std::vector<Seen<ks_hmi::SignalSpecification>>;
    using Clients = std::vector<Seen<ks_hmi::SignalClient>>;

    Signals signals() const;
    Clients clients() const;
    /// Whether it is the client of a signal that is watched.
    bool isWatched(const ks_hmi::SignalClient& client) const;

    const workbench::Session& m_session;
    const kestrel::Block* m_block;
    Signals m_signals;
    std::unordered_set<std::string_view> m_uuids;  ///< of these; of a block only
    Clients m_clients;
};

}  // namespace kshmi
