#include "memory_host/kestrel/loaded_models.h"
#include "memory_host/orvex/account/faults.h"
#include "tests/kshmi/kshmi_test.h"

namespace kshmi {

using namespace workbench;
namespace {

using testing::Finished;
using testing::kModel;

// Fails each of the host's operations in turn while the tool runs.
// What the host refuses to read looks like a bad file.
bool isFailure(int code) { return code == kHostRefused || code == kBadFile; }

class HostFailures : public testing::KshmiTest {
protected:
    static constexpr std::size_t kFewestOperations = 50;

    HostFailures() { write(kModel); }

    template <class Check>
    void sweep(const std::string& command, orvex::FaultKind kind, Check check) const {
        runOn(command);  // enters the host, and makes what the host keeps
        const orvex::LedgerCounts before = orvex::liveCounts();
        for (std::size_t failAt = 1;; failAt += 1 + failAt / 64) {
            write(kModel);
            const orvex::FaultInjection faults({.failAt = failAt, .kind = kind});
            const Finished finished = runOn(command);
            if (faults.fired() == 0) {
                EXPECT_GT(failAt, kFewestOperations) << command << " hardly met the host";
                return;
            }
            SCOPED_TRACE(command + ", operation " + std::to_string(failAt));
            check(finished);
            ASSERT_EQ(orvex::liveCounts(), before) << orvex::describeLive();
            ASSERT_TRUE(kestrel::loadedModels().all().empty());
        }
    }
};

TEST_F(HostFailures, whatIsChangedIsSavedAsAskedForOrNotAtAll) {
    for (const char* const command :
         {"mark A:2 Logic/limit", "observe A --type t", "unobserve A", "set A --hide --clients --update-rate 7",
          "rename n", "move A C", "renumber A 2,1"}) {
        const auto doneNow = [&] {
            write(kModel);
            runOn(command);
            return read();
        };
        const std::string done = doneNow();
        const bool isMinted = doneNow() != done;  // with another UUID each time
        const auto check = [&](const Finished& finished) {
            const std::string now = read();
            ASSERT_TRUE(now == kModel || now == done || (isMinted && now.size() == done.size())) << finished.err << now;
            ASSERT_TRUE(now == kModel ? isFailure(finished.code) : finished.code == kSuccess) << finished.err;
            ASSERT_TRUE(now != kModel || !finished.err.empty());
        };
        for (const auto kind : {orvex::FaultKind::exception, orvex::FaultKind::outOfMemory, orvex::FaultKind::refusal})
            sweep(command, kind, check);
    }
}

TEST_F(HostFailures, aQueryAnswersOrSaysThatItCannot) {
    sweep("query A:1 Logic/On/Fast", orvex::FaultKind::exception, [](const Finished& finished) {
        EXPECT_NE(finished.code, 1) << "an answer was made up";
        EXPECT_EQ(isFailure(finished.code), !finished.err.empty());
    });
}

}  // namespace
}  // namespace kshmi
