#include "benchmarks/sample_signals.h"

#include <algorithm>
#include <bit>
#include <map>
#include <random>
#include <utility>

namespace ks_bench {

namespace {

constexpr unsigned kSeed = 20260711;
constexpr std::size_t kFewestQuestions = std::size_t{1} << 16U;

std::u16string digits(std::size_t number, std::size_t width) {
    std::u16string text(width, u'0');
    for (std::size_t i = width; i-- > 0; number /= 10) text[i] = static_cast<char16_t>(u'0' + number % 10);
    return text;
}

std::string uuid(std::size_t number) {
    const std::u16string tail = digits(number, 12);
    return "0b5c1e2f-77aa-4c1d-9a3e-" + std::string(tail.begin(), tail.end());
}

}  // namespace

std::u16string blockPath(std::size_t number) {
    return u"Subsystem " + digits(number / 100, 6) + u"/Speed Controller/Gain " + digits(number % 1000, 9);
}

double blockHandle(std::size_t number) {
    constexpr double kFraction = 1.0 / 8192.0;
    return static_cast<double>(number + 1) + kFraction;
}

SignalPtr unresolvedSignal(std::size_t number) {
    auto signal = std::make_unique<ks_hmi::SignalSpecification>();
    signal->m_uuid = uuid(number);
    signal->m_blockPath = blockPath(number);
    signal->m_eid = std::to_string(number);
    signal->m_signalName = u"gain_" + digits(number, 7);
    signal->m_subSysPath = u"Speed Controller";
    signal->m_outputPortIndex = 1;
    signal->m_maxPoints = 1000;
    return SignalPtr(std::move(signal));
}

SignalPtr resolvedSignal(std::size_t number) {
    SignalPtr signal = unresolvedSignal(number);
    signal->setCachedInfo(blockHandle(number), 1);
    return signal;
}

SignalPtr chartSignal(std::size_t number) {
    SignalPtr signal = unresolvedSignal(number);
    signal->m_outputPortIndex = 0;
    signal->m_domainType = u"cw_state";
    signal->m_domainParams = {{u"SSID", u"7"}, {u"Activity", u"Self"}};
    return signal;
}

std::unique_ptr<ks_hmi::InstrumentedSignals> makeSet(std::size_t count, MakeSignal make) {
    auto set = std::make_unique<ks_hmi::InstrumentedSignals>();
    set->setModelName(kModelName);
    for (std::size_t i = 0; i < count; ++i) set->add(make(i));
    return set;
}

ks_hmi::InstrumentedSignals& sharedSet(std::size_t count, MakeSignal make) {
    static std::map<std::pair<std::size_t, MakeSignal>, std::unique_ptr<ks_hmi::InstrumentedSignals>> s_sets;
    auto& set = s_sets[{count, make}];
    if (!set) set = makeSet(count, make);
    return *set;
}

kestrel::Model makeModel(std::size_t blocks) {
    kestrel::Model model(kModelName);
    for (std::size_t i = 0; i < blocks; ++i) model.add({blockPath(i), std::to_string(i), 0.0, {u"out"}, {}});
    return model;
}

std::vector<std::size_t> randomBlocks(std::size_t count) {
    std::mt19937_64 random(kSeed);
    std::vector<std::size_t> numbers(std::max(kFewestQuestions, std::bit_ceil(count)));
    for (std::size_t& number : numbers) number = random() % (2 * count);
    return numbers;
}

std::string withSize(const char* name, std::size_t count) {
    return std::string(name) + ", " + std::to_string(count) + " signals";
}

}  // namespace ks_bench
