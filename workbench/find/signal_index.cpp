#include "workbench/find/signal_index.h"

#include <boost/unordered/unordered_flat_set.hpp>
#include <functional>

#include "workbench/session/records.h"

namespace workbench {

SignalIndex::SignalIndex(const Session& session) : m_session(session) {
    m_positions.reserve(session.signals().getCount());
    enter([](const kestrel::Block*) { return true; });
}

SignalIndex::SignalIndex(const Session& session, std::span<const kestrel::Block* const> blocks) : m_session(session) {
    if (blocks.empty()) return;
    const boost::unordered_flat_set<const kestrel::Block*> wanted(blocks.begin(), blocks.end());
    enter([&](const kestrel::Block* block) { return wanted.contains(block); });
}

template <class IsWanted>
void SignalIndex::enter(IsWanted isWanted) {
    for (const auto& [position, signal] : numbered(m_session.signals())) {
        const SignalSource source = sourceOf(m_session.model(), signal);
        if (isWanted(source.block)) m_positions[keyOf(source)].push_back(position);
    }
}

const std::vector<std::size_t>& SignalIndex::on(const SignalSource& source) const {
    static const std::vector<std::size_t> none;
    const auto found = m_positions.find(keyOf(source));
    return found == m_positions.end() ? none : found->second;
}

std::vector<std::size_t> SignalIndex::on(const SignalSource& source, const ReferenceOptions& options) const {
    std::vector<std::size_t> positions = on(source);
    if (!source.item || options.activity.empty()) return positions;
    const std::u16string activity = activityFor(*source.item, options);
    std::erase_if(positions,
                  [&](std::size_t position) { return activityOf(*m_session.signals().get(position)) != activity; });
    return positions;
}

std::size_t SignalIndex::Hash::operator()(const Key& key) const noexcept {
    constexpr std::size_t kSpread = 0x9E3779B97F4A7C15U;
    return std::hash<const void*>()(key.block) ^ (static_cast<std::size_t>(key.place) * kSpread);
}

SignalIndex::Key SignalIndex::keyOf(const SignalSource& source) noexcept {
    const std::int64_t place = source.item ? -1 - std::int64_t{source.item->ssid} : source.port;
    return {source.block, place};
}

}  // namespace workbench
