#pragma once

#include <cstddef>
#include <optional>
#include <unordered_map>
#include <vector>

#include "report/page.h"
#include "report/run_view.h"
#include "workbench/find/positions.h"
#include "workbench/find/signal_index.h"
#include "workbench/find/watching.h"
#include "workbench/session/block_tree.h"
#include "workbench/session/signal_source.h"

namespace report {

/// What belongs to what on a page. Positions are 0-based.
class PageIndex {
public:
    explicit PageIndex(const Contents& contents);

    const workbench::SignalSource& source(std::size_t signal) const { return m_sources[signal]; }
    /// Clients that watch the signal, ascending.
    const workbench::Positions& clientsOf(std::size_t signal) const { return m_clients[signal]; }
    /// Clients whose signal is not in the model, ascending.
    const workbench::Positions& strays() const noexcept { return m_strays; }
    const workbench::SignalUuids& uuids() const noexcept { return m_uuids; }
    /// How many findings are about the signal or its clients.
    std::size_t findingsOf(std::size_t signal) const { return m_findings[signal]; }
    /// The first signal on a port or chart item, nothing when there is none.
    std::optional<std::size_t> signalOn(const workbench::SignalSource& source) const;
    /// Null for a page without a run.
    const RunView* run() const noexcept { return m_run ? &*m_run : nullptr; }
    const std::vector<workbench::BlockNode>& tree() const noexcept { return m_tree; }
    /// Where in the tree the block is; nothing for null.
    std::optional<std::size_t> nodeOf(const kestrel::Block* block) const;

private:
    void countFindings(const Contents& contents);

    workbench::SignalUuids m_uuids;
    workbench::SignalIndex m_signals;
    std::vector<workbench::SignalSource> m_sources;
    std::vector<workbench::Positions> m_clients;
    workbench::Positions m_strays;
    std::vector<std::size_t> m_findings;
    std::optional<RunView> m_run;
    std::vector<workbench::BlockNode> m_tree;
    std::unordered_map<const kestrel::Block*, std::size_t> m_nodes;
};

}  // namespace report
