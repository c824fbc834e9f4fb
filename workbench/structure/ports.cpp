#include "workbench/structure/ports.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <set>
#include <utility>

#include "workbench/find/reference.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using kestrel::Block;

void requireFree(const Block& block, const std::u16string& name) {
    requireName(name);
    const auto there = std::find(block.outputs.begin(), block.outputs.end(), name);
    if (there != block.outputs.end())
        throw Error(fmt::format("the block {} has a port {} already, number {}; choose another name",
                                inQuotes(block.path), inQuotes(name), there - block.outputs.begin() + 1));
}

// 1, 2, ... for the block's ports; those from `first` on (0-based) are that many further.
std::vector<int> shiftedFrom(std::size_t first, int by, const Block& block) {
    std::vector<int> numbers(block.outputs.size());
    std::iota(numbers.begin(), numbers.end(), 1);
    for (std::size_t i = first; i < numbers.size(); ++i) numbers[i] += by;
    return numbers;
}

std::ptrdiff_t offsetOf(int port) { return static_cast<std::ptrdiff_t>(port) - 1; }

}  // namespace

void requireOutputs(const std::vector<std::u16string>& names) {
    std::set<std::u16string_view> known;
    for (const std::u16string& name : names) {
        requireName(name);
        if (!known.insert(name).second)
            throw Error(fmt::format("the port name {} appears twice; give each port its own", inQuotes(name)));
    }
}

int portCalled(const kestrel::Model& model, const Block& block, const std::string& text) {
    const std::string reference = fmt::format("{}:{}", toUtf8(model.fullPath(block)), text);
    const std::vector<SignalSource> sources = resolveReference(model, reference, {});
    const SignalSource& source = sources.front();
    if (sources.size() != 1 || source.block != &block || source.item)
        throw Error(fmt::format("{}: is not a port of {}", inQuotes(text), inQuotes(block.path)));
    return source.port;
}

Renumbering addPort(Session& session, const Block& block, const std::u16string& name, std::optional<int> number) {
    requireFree(block, name);
    const int last = static_cast<int>(block.outputs.size()) + 1;
    const int port = number.value_or(last);
    if (port < 1 || port > last)
        throw Error(
            fmt::format("{}: a new port can have a number from 1 to {}, not {}", inQuotes(block.path), last, port));
    std::vector<std::u16string> outputs = block.outputs;
    outputs.insert(outputs.begin() + offsetOf(port), name);
    if (port == last) {
        // No other port moves on, so there is nothing to follow.
        session.model().setOutputs(std::u16string(block.path), std::move(outputs));
        return {};
    }
    return replacePorts(session, block, shiftedFrom(static_cast<std::size_t>(offsetOf(port)), 1, block),
                        std::move(outputs));
}

Renumbering removePort(Session& session, const Block& block, int port, Marks marks) {
    const Positions signals =
        marksOn(session, [&](const SignalSource& source) { return source.block == &block && source.port == port; });
    const std::string what =
        fmt::format("port {} ({}) of {}", port, printable(portName({&block, port, {}})), inQuotes(block.path));
    settleMarks(session, signals, marks, what);
    std::vector<std::u16string> outputs = block.outputs;
    outputs.erase(outputs.begin() + offsetOf(port));
    std::vector<int> numbers = shiftedFrom(static_cast<std::size_t>(port), -1, block);
    numbers[static_cast<std::size_t>(offsetOf(port))] = 0;
    return replacePorts(session, block, numbers, std::move(outputs));
}

void renamePort(Session& session, const Block& block, int port, const std::u16string& name) {
    requireFree(block, name);
    std::vector<std::u16string> outputs = block.outputs;
    outputs[static_cast<std::size_t>(offsetOf(port))] = name;
    session.model().setOutputs(std::u16string(block.path), std::move(outputs));
}

}  // namespace workbench
