#include "fuzz/fuzz_host.h"
#include "memory_host/orvex/calls/functions.h"
#include "tests/support/compared_sets.h"

// Sequences of operations on two sets, some of which fail, beside the plain model.

namespace {

constexpr std::size_t kMostSteps = 100;

void play(ks_fuzz::Bytes& bytes) {
    ks_test::Totals totals;
    ks_test::ComparedSets sets(totals);
    ks_test::Draws draws([&bytes] { return bytes.byte(); });
    for (std::size_t step = 0; step < kMostSteps && bytes.areLeft(); ++step) sets.apply(draws.operation());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ks_fuzz::enterHost();
    // Paths are aligned to what they are, so that saving needs no open model.
    static const auto aligned = orvex::registerFunction(
        "getAlignedBlockPath", [](orvex::Call& call) { call.outs[0] = ks_test::property(call.ins[0], "BlockPath_"); });
    ks_fuzz::Bytes bytes(data, size);
    try {
        play(bytes);
    } catch (const ks_test::Disagreement& disagreement) {
        ks_fuzz::fail(disagreement.what());
    }
    ks_fuzz::requireNothingLives();
    return 0;
}
