#include "workbench/change/following.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "foundation/model_path.h"
#include "signals/signal_specification.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using ks_hmi::InstrumentedSignals;
using ks_hmi::SignalSpecification;

// Signals of one block that can be renumbered together: those on the same port go to the same one.
struct Followers {
    std::vector<InstrumentedSignals::SignalPtr> signals;
    std::unordered_map<int, int> numbers;  // new by old
};

// By block. Marks on the same port may go different ways when they were made at different times.
using FollowersOfBlocks = std::unordered_map<const kestrel::Block*, std::vector<Followers>>;

void enter(std::vector<Followers>& groups, InstrumentedSignals::SignalPtr signal, int number) {
    const int port = signal->m_outputPortIndex;
    const auto takes = [&](const Followers& group) {
        const auto found = group.numbers.find(port);
        return found == group.numbers.end() || found->second == number;
    };
    auto group = std::find_if(groups.begin(), groups.end(), takes);
    if (group == groups.end()) group = groups.insert(groups.end(), Followers{});
    group->numbers.emplace(port, number);
    // Here a port's logical number is its number, so the two stay together.
    if (signal->m_logicalPortIndex == port) signal->m_logicalPortIndex = number;
    group->signals.push_back(std::move(signal));
}

// In a set of their own: the others of the block stay, and the whole set is walked once for all blocks.
void renumber(const kestrel::Model& model, const kestrel::Block& block, const Followers& followers) {
    std::vector<int> numbers;
    for (const auto& [port, number] : followers.numbers)
        while (static_cast<int>(numbers.size()) < port) numbers.push_back(static_cast<int>(numbers.size()) + 1);
    for (const auto& [port, number] : followers.numbers) numbers.at(static_cast<std::size_t>(port) - 1) = number;
    InstrumentedSignals set;
    set.setModelName(model.name());
    for (const auto& signal : followers.signals) set.add(signal);
    set.renumberPorts(block.handle, model.fullPath(block), ks_hmi_foundation::AddModelToEID(block.eid, model.name()),
                      std::move(numbers));
}

void followItem(SignalSpecification& signal, const NameCheck& name) {
    signal.m_domainParams[u"SSID"] = toUtf16(std::to_string(name.places.front()));
    signal.m_subPath = name.markedName;
}

}  // namespace

std::vector<FollowedMark> followNames(Session& session) {
    const kestrel::Model& model = session.model();
    std::vector<FollowedMark> followed;
    std::vector<UnsettledMark> marks = session.names().unsettled();
    std::erase_if(marks, [](const UnsettledMark& mark) { return mark.name.state != NameState::moved; });
    if (marks.empty()) return followed;
    const auto nameNow = [&](std::size_t position) {
        return fullName(model, sourceOf(model, *session.signals().get(position)));
    };
    FollowersOfBlocks blocks;
    for (UnsettledMark& mark : marks) {
        followed.push_back({mark.position, nameNow(mark.position), {}, mark.name.markedName});
        auto signal = session.signals().share(mark.position);
        if (mark.isItem) {
            followItem(*signal, mark.name);
        } else {
            const auto number = static_cast<int>(mark.name.places.front());
            const kestrel::Block* const block = blockOf(model, *signal);
            // What never was a port's number cannot be renumbered.
            if (signal->m_outputPortIndex < 1) signal->m_outputPortIndex = number;
            enter(blocks[block], std::move(signal), number);
        }
    }
    for (const auto& [block, groups] : blocks)
        for (const Followers& group : groups) renumber(model, *block, group);
    session.signals().updateObservedPortMap();
    for (FollowedMark& one : followed) one.to = nameNow(one.position);
    return followed;
}

}  // namespace workbench
