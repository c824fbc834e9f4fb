#include "workbench/record/engine_ports.h"

namespace workbench {

EnginePorts::EnginePorts(Session& session) : m_session(session) {
    for (const kestrel::Block& block : session.model().blocks()) {
        m_first.emplace(&block, m_ports.size());
        for (std::size_t i = 0; i < block.outputs.size(); ++i) m_ports.push_back({&block, static_cast<int>(i) + 1});
    }
    refill();
}

const ksPort* EnginePorts::find(const kestrel::Block& block, int port) const {
    const auto first = m_first.find(&block);
    const bool isThere = first != m_first.end() && port >= 1 && static_cast<std::size_t>(port) <= block.outputs.size();
    return isThere ? &m_ports[first->second + static_cast<std::size_t>(port) - 1] : nullptr;
}

bool EnginePorts::isObserved(const ksPort& port) {
    if (isForgotten()) refill();
    return m_session.signals().isKSPortObserved(&port);
}

bool EnginePorts::isForgotten() const {
    const ks_hmi::InstrumentedSignals& set = m_session.signals();
    return m_observed.empty() ? set.isAnyPortObserved() : !set.isKSPortObserved(m_observed.front());
}

void EnginePorts::refill() {
    m_observed.clear();
    for (ksPort& port : m_ports)
        if (m_session.isObserved(*port.block, port.port)) m_observed.push_back(&port);
    m_session.signals().cacheKSPorts(m_observed);
}

}  // namespace workbench
