#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include "benchmarks/plain_form.h"
#include "benchmarks/sample_signals.h"
#include "benchmarks/suite.h"
#include "host/text.h"

// The text keys that are given to those who ask for them.
namespace ks_bench {

namespace {

using ks_hmi::SignalSpecification;

constexpr std::size_t kKeys = std::size_t{1} << 16U;

enum class Handles { engineLike, random };

// Whole numbers and whole numbers with some 1024ths, as engines number blocks; or any bits at all.
double drawHandle(std::mt19937_64& random, Handles kind) {
    const std::uint64_t bits = random();
    if (kind == Handles::random) return std::bit_cast<double>(bits);
    const auto whole = static_cast<double>(bits >> 40U);
    return bits % 2 == 0 ? whole : whole + static_cast<double>(bits % 1024) / 1024.0;
}

std::u16string drawText(std::mt19937_64& random) {
    std::u16string text(random() % 64, u'\0');
    const bool isAnything = random() % 2 == 0;
    // Around the surrogates half of the units are lone ones.
    for (char16_t& unit : text) unit = static_cast<char16_t>(isAnything ? random() : 0xD7F0 + random() % 0x830);
    return text;
}

bool areHandleKeysEqual() {
    constexpr double kSpecial[] = {0.0,
                                   -0.0,
                                   std::numeric_limits<double>::quiet_NaN(),
                                   -std::numeric_limits<double>::quiet_NaN(),
                                   std::numeric_limits<double>::infinity(),
                                   -std::numeric_limits<double>::infinity(),
                                   std::numeric_limits<double>::denorm_min(),
                                   std::numeric_limits<double>::min(),
                                   std::numeric_limits<double>::max(),
                                   std::numeric_limits<double>::lowest(),
                                   0.1,
                                   1e16,
                                   1e17,
                                   9007199254740993.0};
    const auto isEqual = [](double handle, int port) {
        return SignalSpecification::getCachedInfoHash(handle, port) == plain::handleKey(handle, port);
    };
    for (const double handle : kSpecial)
        if (!isEqual(handle, 1)) return false;
    std::mt19937_64 random(1);
    for (int i = 0; i < 1'000'000; ++i) {
        if (!isEqual(drawHandle(random, Handles::engineLike), static_cast<std::int32_t>(random()))) return false;
        if (!isEqual(drawHandle(random, Handles::random), static_cast<std::int32_t>(random()))) return false;
    }
    return true;
}

bool arePathKeysEqual() {
    std::mt19937_64 random(2);
    for (int i = 0; i < 500'000; ++i) {
        const std::u16string path = drawText(random);
        const std::u16string subPath = drawText(random);
        const std::u16string model = i % 3 == 0 ? u"" : drawText(random);
        const int port = static_cast<std::int32_t>(random());
        const int logicalPort = static_cast<int>(random() % 5) - 2;
        const std::uint64_t key = SignalSpecification::getNonCachedInfoHash(path, subPath, port, logicalPort, model);
        if (key != plain::pathKey(path, subPath, port, logicalPort, model) ||
            key != plain::pathKey(path, subPath, port, logicalPort, model, fl::i18n::to_string))
            return false;
    }
    return true;
}

template <class Argument, class Hash>
void hashAll(benchmark::State& state, const std::vector<Argument>& arguments, Hash hash) {
    std::size_t at = 0;
    std::uint64_t sum = 0;
    for ([[maybe_unused]] auto _ : state) {
        sum += hash(arguments[at]);
        at = (at + 1) & (arguments.size() - 1);
    }
    benchmark::DoNotOptimize(sum);
}

void addHandleKeys(Suite& suite, const std::string& kindName, Handles kind, Limit limit) {
    std::mt19937_64 random(3);
    std::vector<double> handles(kKeys);
    for (double& handle : handles) handle = drawHandle(random, kind);
    const auto addForm = [&](const char* name, std::uint64_t (*hash)(double, int)) {
        Suite::time(name + kindName, [=](benchmark::State& state) {
            hashAll(state, handles, [&](double handle) { return hash(handle, 1); });
        });
    };
    addForm("handle key: library, ", &SignalSpecification::getCachedInfoHash);
    addForm("handle key: plain form, ", &plain::handleKey);
    suite.speedUp(4, "handle key, plain form, " + kindName, "handle key: library, " + kindName,
                  "handle key: plain form, " + kindName, limit);
}

void addPathKeys(Suite& suite) {
    std::vector<std::u16string> paths(kKeys);
    for (std::size_t i = 0; i < kKeys; ++i) paths[i] = blockPath(i);
    const std::u16string model = kModelName;
    const auto addForm = [&](const char* name, auto hash) {
        Suite::time(name, [=](benchmark::State& state) {
            hashAll(state, paths,
                    [&](const std::u16string& path) { return hash(path, std::u16string(), 1, 0, model); });
        });
    };
    addForm("path key: library", &SignalSpecification::getNonCachedInfoHash);
    const auto addPlain = [&](const char* name, plain::Convert convert) {
        addForm(name, [=](const auto&... parts) { return plain::pathKey(parts..., convert); });
    };
    addPlain("path key: plain form", plain::unitByUnit);
    addPlain("path key: plain form, the host converts", fl::i18n::to_string);
    suite.speedUp(4, "path key of 59 characters, plain form", "path key: library", "path key: plain form",
                  Limit::atLeast(3));
    suite.speedUp(4, "the same, converted by the memory host (quick for ASCII)", "path key: library",
                  "path key: plain form, the host converts", Limit{});
}

}  // namespace

void addKeyHashes(Suite& suite) {
    addHandleKeys(suite, "engine-like handles", Handles::engineLike, Limit::atLeast(8));
    addHandleKeys(suite, "random bits", Handles::random, Limit{});
    addPathKeys(suite);
    const auto differing = [](bool (*areEqual)()) { return [=] { return areEqual() ? 0.0 : 1.0; }; };
    suite.figure(4, "handle keys that differ from the plain form's, of 2 million", "", differing(areHandleKeysEqual),
                 Limit::atMost(0));
    suite.figure(4, "path keys that differ from the plain form's, of 0.5 million", "", differing(arePathKeysEqual),
                 Limit::atMost(0));
}

}  // namespace ks_bench
