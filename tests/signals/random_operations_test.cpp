#include <cstdlib>
#include <iostream>
#include <optional>

#include "tests/support/compared_sets.h"

using namespace ks_test;

namespace {

constexpr std::size_t kSteps = 50;

// Where a sequence went wrong, and how.
struct Failure {
    std::size_t step;
    std::string text;
};

std::optional<Failure> play(const std::vector<Operation>& operations, Totals& totals) {
    ComparedSets sets(totals);
    for (std::size_t step = 0; step < operations.size(); ++step) {
        try {
            sets.apply(operations[step]);
        } catch (const Disagreement& error) {
            return Failure{step, error.what()};
        } catch (const kssvIException& error) {
            return Failure{step, "The set raised " + error.messageId().key()};
        } catch (const std::exception& error) {
            return Failure{step, std::string("The set threw ") + error.what()};
        }
    }
    return std::nullopt;
}

unsigned fromEnvironment(const char* name, unsigned otherwise) {
    const char* const value = std::getenv(name);
    return value == nullptr ? otherwise : static_cast<unsigned>(std::strtoul(value, nullptr, 10));
}

// Leaves operations out one by one, as long as it still goes wrong.
std::string shortest(std::vector<Operation> operations, Failure failure) {
    Totals ignored;
    operations.resize(failure.step + 1);
    const unsigned most = fromEnvironment("KS_HMI_RANDOM_SHRINKING", 2000);
    unsigned runs = 0;
    for (bool isShorter = true; isShorter;) {
        isShorter = false;
        for (std::size_t i = operations.size(); i-- > 0 && runs < most; ++runs) {
            std::vector<Operation> fewer = operations;
            fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(i));
            const auto stillFails = play(fewer, ignored);
            if (!stillFails) continue;
            fewer.resize(stillFails->step + 1);
            operations = std::move(fewer);
            failure = *stillFails;
            isShorter = true;
            i = std::min(i, operations.size());
        }
    }
    std::string result = failure.text + " after:\n";
    for (const Operation& operation : operations) result += "  " + describe(operation) + "\n";
    return result;
}

class RandomOperations : public HostTest {};

// KS_HMI_RANDOM_SEQUENCES says how many sequences are played, KS_HMI_RANDOM_SEED which seed is the first, and
// KS_HMI_RANDOM_SHRINKING how many runs may go into the shortest one that fails.
TEST_F(RandomOperations, theSetAgreesWithItsPlainModel) {
    // Paths are aligned to what they are, so that saving needs no open model.
    const auto aligned = orvex::registerFunction("getAlignedBlockPath",
                                                 [](orvex::Call& c) { c.outs[0] = property(c.ins[0], "BlockPath_"); });
    const unsigned first = fromEnvironment("KS_HMI_RANDOM_SEED", 1);
    const unsigned count = fromEnvironment("KS_HMI_RANDOM_SEQUENCES", 150);
    Totals totals;
    for (unsigned seed = first; seed < first + count; ++seed) {
        Draws draws(seed);
        std::vector<Operation> operations;
        while (operations.size() < kSteps) operations.push_back(draws.operation());
        if (const auto failure = play(operations, totals))
            FAIL() << "Seed " << seed << ": " << shortest(operations, *failure);
    }
    EXPECT_TRUE(orvex::warnings().empty());
    EXPECT_EQ(totals.steps, count * kSteps);
    EXPECT_TRUE(totals.failures > 0 && totals.yes > 0 && totals.questions > totals.yes);
    std::cout << count << " sequences, " << totals.steps << " steps, " << totals.failures << " of them failed, "
              << totals.questions << " questions, " << totals.yes << " of them answered yes\n";
}

}  // namespace
