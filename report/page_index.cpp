#include "report/page_index.h"

#include "signals/signal_specification.h"
#include "workbench/session/records.h"

namespace report {

using namespace workbench;

PageIndex::PageIndex(const Contents& contents)
    : m_uuids(contents.session),
      m_signals(contents.session),
      m_clients(contents.session.signals().getCount()),
      m_tree(blockTree(contents.session)) {
    const Session& session = contents.session;
    for (const auto& signal : recordsOf(session.signals())) m_sources.push_back(sourceOf(session.model(), signal));
    for (std::size_t i = 0; i < session.clients().getCount(); ++i) {
        const std::optional<std::size_t> signal = m_uuids.positionOf(session.clients().get(i)->m_signalUUID);
        (signal ? m_clients[*signal] : m_strays).push_back(i);
    }
    for (std::size_t i = 0; i < m_tree.size(); ++i)
        if (m_tree[i].block != nullptr) m_nodes.emplace(m_tree[i].block, i);
    if (contents.run != nullptr) m_run.emplace(*contents.run, m_uuids, m_sources.size());
    countFindings(contents);
}

void PageIndex::countFindings(const Contents& contents) {
    m_findings.resize(m_clients.size());
    for (const Finding& finding : contents.checked.findings) {
        // One for the whole file names its first signal.
        if (!finding.record || finding.code == FindingCode::unconfirmed) continue;
        std::optional<std::size_t> signal = finding.position;
        if (*finding.record == RecordKind::client)
            signal = finding.position < contents.session.clients().getCount()
                         ? m_uuids.positionOf(contents.session.clients().get(finding.position)->m_signalUUID)
                         : std::nullopt;
        if (signal && *signal < m_findings.size()) ++m_findings[*signal];
    }
}

std::optional<std::size_t> PageIndex::signalOn(const SignalSource& source) const {
    const Positions& positions = m_signals.on(source);
    return positions.empty() ? std::nullopt : std::optional(positions.front());
}

std::optional<std::size_t> PageIndex::nodeOf(const kestrel::Block* block) const {
    const auto found = m_nodes.find(block);
    return found == m_nodes.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace report
