#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "streamout/stream_out_block_registry.h"
#include "streamout/wks_recording_context.h"

using streamout::StreamOutBlockContext;
using streamout::StreamOutBlockRegistry;

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 4000;

std::atomic<int> g_alive{0};

/// Uses the registry while it dies: takes its companion out and looks around.
class Context final : public StreamOutBlockContext {
public:
    Context(StreamOutBlockRegistry& registry, std::string id, std::shared_ptr<StreamOutBlockContext> companion)
        : m_registry(registry), m_id(std::move(id)), m_companion(std::move(companion)) {
        ++g_alive;
    }
    ~Context() override {
        m_registry.unregisterBlock(m_companion);
        m_registry.isBlockAlreadyRegistered(m_id);
        m_id = "dead";
        --g_alive;
    }

    std::string getSourceID() const override { return "source"; }
    std::string getBlockId() const override { return m_id; }

private:
    StreamOutBlockRegistry& m_registry;
    std::string m_id;
    std::shared_ptr<StreamOutBlockContext> m_companion;
};

/// Runs `work(number of the thread)` in all threads at once, as close together as they can start.
template <class Work>
void inAllThreads(Work work) {
    std::latch start(kThreads);
    std::vector<std::jthread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&start, &work, i] {
            start.arrive_and_wait();
            work(i);
        });
}

TEST(RegistryStress, everyThreadFindsItsOwnBlockAmongThoseOfTheOthers) {
    StreamOutBlockRegistry registry;
    std::atomic<int> wrong{0};
    inAllThreads([&](int thread) {
        const std::string own = "block " + std::to_string(thread);
        for (int round = 0; round < kRounds; ++round) {
            const auto companion = std::make_shared<streamout::WksRecordingContext>(u"variable", u"größe", "source",
                                                                                    "array", "1", "inf", false);
            registry.registerBlock(companion);
            auto context = std::make_shared<Context>(registry, own, companion);
            registry.registerBlock(context);
            if (registry.getBlockForBlockId(own) != context) ++wrong;
            if (!registry.getRegisteredBlocks().contains(companion)) ++wrong;
            registry.unregisterBlock(context);
            if (registry.isBlockAlreadyRegistered(own)) ++wrong;
            context.reset();
        }
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(g_alive, 0);
    EXPECT_TRUE(registry.getRegisteredBlocks().empty());
    EXPECT_FALSE(registry.isBlockAlreadyRegistered("größe"));
}

TEST(RegistryStress, contextsDieWhileOthersLookThemUp) {
    StreamOutBlockRegistry registry;
    std::atomic<int> wrong{0};
    inAllThreads([&](int thread) {
        for (int round = 0; round < kRounds; ++round) {
            const std::string id = "shared " + std::to_string((round + thread) % 3);
            registry.registerBlock(std::make_shared<Context>(registry, id, nullptr));
            if (const auto found = registry.getBlockForBlockId(id)) {
                if (found->getBlockId() != id) ++wrong;
                registry.unregisterBlock(found);
            }
            if (round % 16 != 0) continue;
            for (const auto& context : registry.getRegisteredBlocks()) {
                if (!context->getBlockId().starts_with("shared ")) ++wrong;
                registry.unregisterBlock(context);
            }
        }
    });
    for (const auto& context : registry.getRegisteredBlocks()) registry.unregisterBlock(context);
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(g_alive, 0);
}

}  // namespace
