#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "streamout/stream_out_block_registry.h"

using streamout::StreamOutBlockContext;
using streamout::StreamOutBlockRegistry;

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 4000;

std::atomic<int> g_alive{0};

// Uses the registry while it dies.
class Context final : public StreamOutBlockContext {
public:
    Context(StreamOutBlockRegistry& registry, std::string id) : m_registry(registry), m_id(std::move(id)) { ++g_alive; }
    ~Context() override {
        m_registry.isBlockAlreadyRegistered(m_id);
        m_id = "dead";
        --g_alive;
    }

    std::string getSourceID() const override { return "source"; }
    std::string getBlockId() const override { return m_id; }

private:
    StreamOutBlockRegistry& m_registry;
    std::string m_id;
};

TEST(RegistryStress, everyThreadFindsItsOwnBlockWhileContextsDieAndOthersLookThemUp) {
    StreamOutBlockRegistry registry;
    std::atomic<int> wrong{0};
    std::latch start(kThreads);
    const auto work = [&](int thread) {
        start.arrive_and_wait();  // as close together as they can
        const std::string own = "own " + std::to_string(thread);
        for (int round = 0; round < kRounds; ++round) {
            const std::string id = "shared " + std::to_string((round + thread) % 3);
            registry.registerBlock(std::make_shared<Context>(registry, id));
            if (const auto found = registry.getBlockForBlockId(id)) {
                if (found->getBlockId() != id) ++wrong;
                registry.unregisterBlock(found);
            }
            const auto context = std::make_shared<Context>(registry, own);
            registry.registerBlock(context);
            if (registry.getBlockForBlockId(own) != context || !registry.getRegisteredBlocks().contains(context))
                ++wrong;
            registry.unregisterBlock(context);
            if (registry.isBlockAlreadyRegistered(own)) ++wrong;
            if (round % 16 != 0) continue;
            for (const auto& other : registry.getRegisteredBlocks())
                if (other->getBlockId().starts_with("shared ")) registry.unregisterBlock(other);
        }
    };
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < kThreads; ++i) threads.emplace_back(work, i);
    }
    for (const auto& context : registry.getRegisteredBlocks()) registry.unregisterBlock(context);
    EXPECT_EQ(wrong, 0);
    EXPECT_TRUE(registry.getRegisteredBlocks().empty());
    EXPECT_EQ(g_alive, 0);
}

}  // namespace
