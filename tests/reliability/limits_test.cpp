#include <climits>
#include <clocale>
#include <cstdint>
#include <limits>
#include <locale>

#include "observers/streaming_clients.h"
#include "tests/support/host_test.h"

using namespace ks_test;
using ks_hmi::InstrumentedSignals;
using ks_hmi::SignalSpecification;

namespace {

class Limits : public ModelTest {};

TEST_F(Limits, portsAndHandlesAreToldApartAtTheirEdges) {
    constexpr double kHandles[] = {
        0.0, std::numeric_limits<double>::denorm_min(), std::numeric_limits<double>::max(),
        1.0, std::numeric_limits<double>::infinity(),   -std::numeric_limits<double>::infinity()};
    constexpr int kPorts[] = {INT_MIN, -1, 1, INT_MAX};
    for (const double handle : kHandles) {
        for (const int number : kPorts) {
            InstrumentedSignals signals;
            auto spec = port(u"Gain", number);
            spec->setCachedInfo(handle, number);
            signals.add(std::move(spec));
            for (const double asked : kHandles)
                for (const int askedNumber : kPorts)
                    EXPECT_EQ(signals.isPortObserved(asked, askedNumber), asked == handle && askedNumber == number)
                        << handle << ' ' << number << ' ' << asked << ' ' << askedNumber;
            EXPECT_FALSE(signals.isPortObserved(std::numeric_limits<double>::quiet_NaN(), number));
            signals.renumberPorts(handle, u"m1/Gain", "m1:none", {INT_MAX});
            EXPECT_EQ(signals.get(0)->m_outputPortIndex, number == 1 ? INT_MAX : number);
            EXPECT_FALSE(SignalSpecification::getUUIDFromBlockHandle(number, handle, true).empty());
        }
    }
}

class DecimalComma : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST_F(Limits, aDecimalCommaChangesNoKey) {
    const auto keys = [] {
        SignalSpecification::getBlockUUIDmap().clear();
        SignalSpecification::addToBlockHandleUUIDmap(1000, 1234567.5, "u");
        return std::pair(SignalSpecification::getCachedInfoHash(1234567.5, 1000),
                         SignalSpecification::getBlockUUIDmap().begin()->first);
    };
    set().add(chartItem(u"cw_state", u"1234.5", u"Self"));
    const auto before = keys();
    const std::locale locale = std::locale::global(std::locale(std::locale(), new DecimalComma));
    // In C as well, where the system has such a locale.
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    EXPECT_EQ(keys(), before);
    EXPECT_TRUE(set().isCWActivityObserved(u"m1:4", 1234.5, u"Self"));
    EXPECT_TRUE(set().isAnyCWActivityObserved(u"m1:4", 1234.5));
    std::locale::global(locale);
    std::setlocale(LC_ALL, "C");
}

}  // namespace
