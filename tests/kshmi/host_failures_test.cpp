#include "memory_host/kestrel/loaded_models.h"
#include "memory_host/orvex/faults.h"
#include "tests/kshmi/kshmi_test.h"

namespace kshmi {
namespace {

using testing::Finished;
using testing::kModel;

/// Fails each of the host's operations in turn while the tool runs.
class HostFailures : public testing::KshmiTest {
protected:
    HostFailures() { write(kModel); }

    static orvex::LedgerCounts live() { return orvex::liveCounts(); }

    template <typename Check>
    void sweep(const std::vector<std::string>& words, orvex::FaultKind kind, Check check) const {
        run(words);  // enters the host, and makes what the host keeps
        const orvex::LedgerCounts before = live();
        for (std::size_t failAt = 1;; failAt += 1 + failAt / 64) {
            write(kModel);
            const orvex::FaultInjection faults({.failAt = failAt, .kind = kind});
            const Finished finished = run(words);
            if (faults.fired() == 0) return;
            check(finished);
            ASSERT_EQ(live(), before) << "operation " << failAt << '\n' << orvex::describeLive();
            ASSERT_TRUE(kestrel::loadedModels().all().empty()) << "operation " << failAt;
        }
    }
};

TEST_F(HostFailures, aModelIsSavedAsAskedForOrNotAtAll) {
    const std::vector<std::string> words{"mark", path(), "A:2", "Logic/limit"};
    for (const auto kind : {orvex::FaultKind::exception, orvex::FaultKind::outOfMemory, orvex::FaultKind::refusal})
        sweep(words, kind, [&](const Finished& finished) {
            const bool isSaved = testing::contains(read(), "\"OutputPortIndex_\": 2");
            EXPECT_EQ(finished.code, isSaved ? 0 : 2) << finished.err;
            EXPECT_EQ(testing::contains(read(), "\"SSID\": \"7\""), isSaved);
            EXPECT_FALSE(testing::contains(read(), "\"BlockPath_\": \"\""));
            EXPECT_EQ(isSaved, read() != kModel);
            EXPECT_TRUE(isSaved || !finished.err.empty());
        });
}

TEST_F(HostFailures, aQueryAnswersOrSaysThatItCannot) {
    const std::vector<std::string> words{"query", path(), "A", "Logic/On/Fast"};
    sweep(words, orvex::FaultKind::exception, [](const Finished& finished) {
        EXPECT_NE(finished.code, 1) << "an answer was made up";
        EXPECT_EQ(finished.code == 2, !finished.err.empty());
    });
}

}  // namespace
}  // namespace kshmi
