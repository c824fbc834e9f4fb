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

/// Texts as long, empty and ill-formed as can be.
const std::vector<std::u16string>& texts() {
    static const std::vector<std::u16string> values{
        std::u16string(1U << 20U, u'p'), u"", u"\xd800", u"a\xdc00z", std::u16string(u"a\0b\0", 4), u"$$", u"m1/", u"/",
    };
    return values;
}

TEST_F(Limits, textsOfAnyKindAreObservedSavedAndLoaded) {
    for (const std::u16string& value : texts()) {
        InstrumentedSignals signals;
        signals.setModelName(value);
        const InstrumentedSignals::SignalPtr spec(new SignalSpecification);
        spec->m_blockPath = spec->m_subPath = spec->m_signalName = spec->m_visualType = value;
        spec->m_eid = spec->m_uuid = std::string(value.size(), '\xff');
        spec->m_domainParams = {{u"Unit", value}};
        signals.add(spec);
        EXPECT_TRUE(signals.isPortObserved(0.0, value, value, 0, 0, 0)) << value.size();
        EXPECT_FALSE(signals.isPortObserved(0.0, value + u"x", value, 0, 0, 0));
        EXPECT_FALSE(signals.isAnyCWActivityObserved(value, 1.0));
        const auto object = spec->getHOSObject(u"m1", false);
        EXPECT_EQ(SignalSpecification(object.get(), 0, u"m1").m_signalName, value);
        const auto name = text(value);
        const auto set = call("Kestrel.HMI.InstrumentedSignals", {name.get()});
        EXPECT_EQ(InstrumentedSignals::getFromHvArray(set.get())->getModelName(), value);
    }
}

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

TEST_F(Limits, numbersOfEveryClassAreReadUpToTheirEnds) {
    set().add(port(u"Gain", 1));
    const auto record = set().getPersistenceData();
    const auto portRead = [&record](HvArrayPtr field) {
        hvReplaceField(record.get(), 0, "OutputPortIndex_", field.release());
        return SignalSpecification(record.get(), 0, u"m1").m_outputPortIndex;
    };
    EXPECT_EQ(portRead(numbers<std::int8_t>(hvINT8_CLASS, {INT8_MIN})), INT8_MIN);
    EXPECT_EQ(portRead(numbers<std::uint8_t>(hvUINT8_CLASS, {UINT8_MAX})), UINT8_MAX);
    EXPECT_EQ(portRead(numbers<std::int16_t>(hvINT16_CLASS, {INT16_MIN})), INT16_MIN);
    EXPECT_EQ(portRead(numbers<std::uint16_t>(hvUINT16_CLASS, {UINT16_MAX})), UINT16_MAX);
    EXPECT_EQ(portRead(numbers<std::int32_t>(hvINT32_CLASS, {INT_MIN})), INT_MIN);
    EXPECT_EQ(portRead(numbers<std::uint32_t>(hvUINT32_CLASS, {INT_MAX})), INT_MAX);
    EXPECT_EQ(portRead(numbers<std::int64_t>(hvINT64_CLASS, {INT_MIN})), INT_MIN);
    EXPECT_EQ(portRead(numbers<std::uint64_t>(hvUINT64_CLASS, {INT_MAX})), INT_MAX);
    EXPECT_EQ(portRead(numbers<float>(hvSINGLE_CLASS, {-1.5F})), -1);
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
