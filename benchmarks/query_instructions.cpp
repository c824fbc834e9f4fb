#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "benchmarks/bare_tables.h"
#include "benchmarks/sample_signals.h"
#include "workbench/session/host_process.h"

#include <iostream>

// Asks one kind of question a given number of times, for a tool that counts instructions. Two runs with different
// numbers tell what one question takes.
namespace {

using namespace ks_bench;

constexpr std::size_t kCount = 10'000;

std::size_t ask(std::string_view kind, std::size_t times) {
    const std::vector<std::size_t> blocks = randomBlocks(kCount);
    std::size_t hits = 0;
    const auto repeat = [&](auto question) {
        for (std::size_t i = 0; i < times; ++i) hits += static_cast<std::size_t>(question(blocks[i % blocks.size()]));
    };
    auto& resolved = sharedSet(kCount, resolvedSignal);
    bare::Table<bare::HandleKey> table;
    for (std::size_t i = 0; i < kCount; ++i) table.emplace(bare::HandleKey(blockHandle(i), 1), resolved.get(i));
    std::vector<std::u16string> paths;
    for (std::size_t i = 0; i < 2 * kCount; ++i) paths.push_back(blockPath(i));

    if (kind == "nothing") repeat([](std::size_t block) { return blockHandle(block) < 0; });
    if (kind == "bare") repeat([&](std::size_t b) { return bare::isPortObserved(table, blockHandle(b), 1); });
    if (kind == "handle") repeat([&](std::size_t b) { return resolved.isPortObserved(blockHandle(b), 1); });
    const std::u16string noSubPath;
    if (kind == "path")
        repeat([&](std::size_t b) { return resolved.isPortObserved(0.25, paths[b], noSubPath, 1, 0, 0); });
    if (kind == "engine port") repeat([&](std::size_t) { return resolved.isKSPortObserved(nullptr); });
    if (kind == "chart") {
        const std::u16string eid = u"plant:1234";
        const std::u16string activity = u"Self";
        auto& charts = sharedSet(kCount, chartSignal);
        repeat([&](std::size_t) { return charts.isCWActivityObserved(eid, 7.0, activity); });
    }
    return hits;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    workbench::enterHost([](const std::string& text) { std::cerr << "warning: " << text << '\n'; });
    std::printf("%zu\n", ask(argv[1], std::strtoull(argv[2], nullptr, 10)));
    return 0;
}
