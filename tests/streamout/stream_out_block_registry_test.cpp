#include "streamout/stream_out_block_registry.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <cerrno>
#include <functional>
#include <stdexcept>
#include <system_error>

using streamout::StreamOutBlockContext;
using streamout::StreamOutBlockRegistry;
using Blocks = StreamOutBlockRegistry::BlockContextSet;

namespace {

// How many locks this thread holds, and the error number that the next one fails with, if it is not 0.
thread_local int g_locked = 0;
thread_local int g_lockError = 0;

struct Context final : StreamOutBlockContext {
    explicit Context(
        std::string blockId, std::function<void()> atEnd = [] {})
        : id(std::move(blockId)), whenDestroyed(std::move(atEnd)) {}
    ~Context() override { whenDestroyed(); }

    std::string getSourceID() const override { return "source of " + id; }
    std::string getBlockId() const override {
        EXPECT_EQ(g_locked, 1) << "asked under the lock";
        if (answersFail) throw std::runtime_error("no identifier");
        return id;
    }

    std::string id;
    bool answersFail = false;
    std::function<void()> whenDestroyed;
};

class Registry : public ::testing::Test {
protected:
    StreamOutBlockRegistry registry;
    const std::shared_ptr<Context> first = std::make_shared<Context>("block");
    const std::shared_ptr<Context> second = std::make_shared<Context>("block");
};

TEST_F(Registry, findsNothingBeforeAnythingIsRegistered) {
    registry.registerBlock(nullptr);
    registry.unregisterBlock(nullptr);
    EXPECT_EQ(StreamOutBlockRegistry::getPluginName(), "StreamOutBlockRegistry");
    EXPECT_EQ(registry.getRegisteredBlocks(), Blocks{});
    EXPECT_FALSE(registry.isBlockAlreadyRegistered(""));
    EXPECT_EQ(registry.getBlockForBlockId("block"), nullptr);
}

TEST_F(Registry, sharesAContextOnceUntilItIsUnregistered) {
    registry.registerBlock(first);
    registry.registerBlock(first);
    EXPECT_EQ(first.use_count(), 3);  // ours, the set's and the identifier's
    EXPECT_EQ(registry.getRegisteredBlocks(), Blocks{first});
    EXPECT_EQ(registry.getBlockForBlockId("block"), first);
    EXPECT_TRUE(registry.isBlockAlreadyRegistered("block"));
    registry.unregisterBlock(first);
    EXPECT_EQ(first.use_count(), 1);
    EXPECT_FALSE(registry.isBlockAlreadyRegistered("block"));
}

TEST_F(Registry, keepsTheIdentifierForTheFirstAndErasesItWithEither) {
    registry.registerBlock(first);
    registry.registerBlock(second);
    EXPECT_EQ(registry.getRegisteredBlocks(), (Blocks{first, second}));
    EXPECT_EQ(registry.getBlockForBlockId("block"), first);

    registry.unregisterBlock(second);
    EXPECT_EQ(registry.getRegisteredBlocks(), Blocks{first});
    EXPECT_FALSE(registry.isBlockAlreadyRegistered("block"));

    registry.registerBlock(first);
    EXPECT_EQ(registry.getBlockForBlockId("block"), first);
    registry.unregisterBlock(second);  // registered no longer, and still takes the entry with it
    EXPECT_EQ(registry.getRegisteredBlocks(), Blocks{first});
    EXPECT_EQ(registry.getBlockForBlockId("block"), nullptr);
}

TEST_F(Registry, goesByTheIdentifierOfTheMoment) {
    registry.registerBlock(first);
    first->id = "moved";
    registry.unregisterBlock(first);
    EXPECT_EQ(registry.getRegisteredBlocks(), Blocks{});
    EXPECT_EQ(registry.getBlockForBlockId("block"), first);
}

TEST_F(Registry, isUnchangedWhenAContextCannotAnswer) {
    first->answersFail = true;
    EXPECT_THROW(registry.registerBlock(first), std::runtime_error);
    EXPECT_EQ(registry.getRegisteredBlocks(), Blocks{});
    EXPECT_EQ(first.use_count(), 1);

    first->answersFail = false;
    registry.registerBlock(first);
    first->answersFail = true;
    EXPECT_THROW(registry.registerBlock(first), std::runtime_error);
    EXPECT_EQ(registry.getRegisteredBlocks(), Blocks{first});
    EXPECT_EQ(registry.getBlockForBlockId("block"), first);
}

TEST_F(Registry, aContextHasLeftWhenItIsAskedForItsIdentifier) {
    registry.registerBlock(first);
    first->answersFail = true;
    EXPECT_THROW(registry.unregisterBlock(first), std::runtime_error);
    EXPECT_EQ(registry.getRegisteredBlocks(), Blocks{});
    EXPECT_EQ(registry.getBlockForBlockId("block"), first);
    EXPECT_EQ(first.use_count(), 2) << "ours and the identifier's";
}

TEST_F(Registry, letsADyingContextUseIt) {
    int died = 0;
    const auto useRegistry = [&] {
        ++died;
        registry.unregisterBlock(second);
        EXPECT_FALSE(registry.isBlockAlreadyRegistered("stale"));
    };
    auto dying = std::make_shared<Context>("stale", useRegistry);
    registry.registerBlock(dying);
    dying->id = "elsewhere";
    registry.unregisterBlock(dying);
    EXPECT_EQ(dying.use_count(), 2) << "the entry under the old identifier is the last one";
    dying.reset();
    EXPECT_EQ(died, 0);
    registry.unregisterBlock(std::make_shared<Context>("stale"));
    EXPECT_EQ(died, 1);
}

TEST_F(Registry, reportsALockThatFailsByItsErrorNumberAndReleasesItAtEveryExit) {
    const std::function<void()> operations[] = {
        [&] { registry.registerBlock(first); },
        [&] { registry.unregisterBlock(first); },
        [&] { static_cast<void>(registry.getRegisteredBlocks()); },
        [&] { static_cast<void>(registry.isBlockAlreadyRegistered("block")); },
        [&] { static_cast<void>(registry.getBlockForBlockId("block")); },
    };
    for (const auto& operation : operations) {
        g_lockError = EDEADLK;
        try {
            operation();
            g_lockError = 0;
            ADD_FAILURE() << &operation - operations;
        } catch (const std::system_error& error) {
            EXPECT_EQ(error.code().value(), EDEADLK);
        }
        operation();
        EXPECT_EQ(g_locked, 0);
    }
    first->answersFail = true;
    EXPECT_THROW(registry.registerBlock(first), std::runtime_error);
    EXPECT_EQ(g_locked, 0);
}

TEST(RegistryEnd, letsADyingContextUseIt) {
    bool died = false;
    {
        StreamOutBlockRegistry registry;
        registry.registerBlock(std::make_shared<Context>("last", [&] {
            died = true;
            EXPECT_EQ(registry.getBlockForBlockId("last"), nullptr);
            EXPECT_EQ(registry.getRegisteredBlocks(), Blocks{});
        }));
    }
    EXPECT_TRUE(died);
}

}  // namespace

// Both stand in front of the system's for the library, too.
extern "C" [[gnu::visibility("default")]] int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    static const auto real = reinterpret_cast<decltype(&pthread_mutex_lock)>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
    if (const int error = std::exchange(g_lockError, 0)) return error;
    ++g_locked;
    return real(mutex);
}
extern "C" [[gnu::visibility("default")]] int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
    static const auto real =
        reinterpret_cast<decltype(&pthread_mutex_unlock)>(dlsym(RTLD_NEXT, "pthread_mutex_unlock"));
    --g_locked;
    return real(mutex);
}
