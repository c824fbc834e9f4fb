#pragma once

#include <cstddef>
#include <unordered_map>
#include <vector>

#include "host/engine.h"
#include "workbench/session/session.h"

/// An output port as this engine has it.
struct ksPort {
    const kestrel::Block* block;
    int port;  ///< 1-based
};

namespace workbench {

/// The output ports of a model, as an engine that runs it has them: it finds out once which of them are observed, hands
/// these to the set, and asks port by port from then on. The model's blocks must not change meanwhile.
class EnginePorts {
public:
    explicit EnginePorts(Session& session);
    EnginePorts(const EnginePorts&) = delete;
    EnginePorts& operator=(const EnginePorts&) = delete;

    /// Null when the block has no such port.
    const ksPort* find(const kestrel::Block& block, int port) const;
    /// Also when the set has changed since it was last asked: it has then forgotten the ports, and is handed them anew.
    bool isObserved(const ksPort& port);

private:
    void refill();
    bool isForgotten() const;

    Session& m_session;
    std::vector<ksPort> m_ports;
    std::unordered_map<const kestrel::Block*, std::size_t> m_first;  ///< of a block's ports
    std::vector<ksPort*> m_observed;
};

}  // namespace workbench
