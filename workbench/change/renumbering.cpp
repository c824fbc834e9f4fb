#include "workbench/change/renumbering.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <utility>

#include "foundation/model_path.h"
#include "signals/signal_specification.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using kestrel::Block;

// The numbers, and for the ports beyond them those that are left, in order.
std::string completed(std::vector<int> numbers, std::size_t count) {
    for (int number = 1; numbers.size() < count; ++number)
        if (std::find(numbers.begin(), numbers.end(), number) == numbers.end()) numbers.push_back(number);
    return fmt::format("{}", fmt::join(numbers, ","));
}

// The names of the outputs in their new order. What remains must be numbered 1, 2, ... without gaps.
std::vector<std::u16string> renumbered(const Block& block, const std::vector<int>& numbers) {
    const std::size_t count = block.outputs.size();
    if (numbers.size() > count)
        throw Error(fmt::format("{}: {} given, and the block has {}", inQuotes(block.path),
                                counted(numbers.size(), "number"), counted(count, "output port")));
    const auto deleted = static_cast<std::size_t>(std::count(numbers.begin(), numbers.end(), 0));
    std::vector<const std::u16string*> names(count - deleted);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t number = i < numbers.size() ? static_cast<std::size_t>(numbers[i]) : i + 1;
        if (number == 0) continue;
        const bool isTaken = number > names.size() || names[number - 1];
        if (isTaken && i >= numbers.size())
            throw Error(fmt::format("{}: port {} cannot keep its number; give numbers for all {}, e.g. {}",
                                    inQuotes(block.path), number, counted(count, "port"), completed(numbers, count)));
        if (isTaken)
            throw Error(
                fmt::format("{}: port {} would have the number {}{}; the {} that remain need the numbers from 1 "
                            "to {}, each once",
                            inQuotes(block.path), i + 1, number, number > names.size() ? "" : " like another one",
                            counted(names.size(), "port"), names.size()));
        names[number - 1] = &block.outputs[i];
    }
    std::vector<std::u16string> outputs;
    outputs.reserve(names.size());
    for (const std::u16string* const name : names) outputs.push_back(*name);
    return outputs;
}

using Signals = std::vector<ks_hmi::InstrumentedSignals::SignalPtr>;

// The signals on the block's ports that do not stay as they are.
Signals affected(const Session& session, const Block& block, const std::vector<int>& numbers) {
    Signals signals;
    for (std::size_t i = 0; i < session.signals().getCount(); ++i) {
        auto signal = session.signals().share(i);
        const auto port = static_cast<std::size_t>(signal->m_outputPortIndex);
        if (isChartSignal(*signal) || blockOf(session.model(), *signal) != &block || port > numbers.size()) continue;
        if (numbers[port - 1] != signal->m_outputPortIndex) signals.push_back(std::move(signal));
    }
    return signals;
}

// Here a port's logical number is its number, so the two stay together.
void followLogically(const Signals& signals, const std::vector<int>& numbers) {
    for (const auto& signal : signals) {
        const int number = numbers[static_cast<std::size_t>(signal->m_outputPortIndex) - 1];
        if (number > 0 && signal->m_logicalPortIndex == signal->m_outputPortIndex) signal->m_logicalPortIndex = number;
    }
}

int newNumberOf(int port, const std::vector<int>& numbers) { return numbers[static_cast<std::size_t>(port) - 1]; }

Renumbering changesOf(const Block& block, const std::vector<int>& numbers, const Signals& signals) {
    Renumbering changes;
    for (int port = 1; port <= static_cast<int>(numbers.size()); ++port) {
        const int number = newNumberOf(port, numbers);
        if (number != port) changes.ports.push_back({port, number, block.outputs[static_cast<std::size_t>(port) - 1]});
    }
    for (const auto& signal : signals) {
        const int port = signal->m_outputPortIndex;
        changes.signals.push_back({port, newNumberOf(port, numbers), signal->m_signalName});
    }
    return changes;
}

}  // namespace

Renumbering renumberPorts(Session& session, const Block& block, const std::vector<int>& numbers) {
    return replacePorts(session, block, numbers, renumbered(block, numbers));
}

Renumbering replacePorts(Session& session, const Block& block, const std::vector<int>& numbers,
                         std::vector<std::u16string> outputs) {
    const kestrel::Model& model = session.model();
    // What is bound answers by handle under its new number, whatever its logical number is.
    session.signals().applyRebindingRules(session.signalSet(), true);
    const Signals signals = affected(session, block, numbers);
    Renumbering changes = changesOf(block, numbers, signals);
    followLogically(signals, numbers);
    session.signals().renumberPorts(block.handle, model.fullPath(block),
                                    ks_hmi_foundation::AddModelToEID(block.eid, model.name()), numbers);
    session.model().setOutputs(std::u16string(block.path), std::move(outputs));
    return changes;
}

}  // namespace workbench
