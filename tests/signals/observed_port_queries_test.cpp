#include <array>
#include <cmath>
#include <limits>

#include "tests/support/host_test.h"

using namespace ks_test;
using ks_hmi::InstrumentedSignals;

namespace {

using Source = InstrumentedSignals::Source;
using Results = std::array<HvArrayPtr, 10>;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

HvArrayPtr doubles(std::initializer_list<double> values) { return numbers(hvDOUBLE_CLASS, values); }

/// A null text leaves its cell unset.
HvArrayPtr cells(std::initializer_list<const char*> texts) {
    const std::size_t count = texts.size();
    HvArrayPtr column(hvCreateCellArray(1, &count));
    std::size_t i = 0;
    for (const char* const value : texts) {
        if (value != nullptr) hvSetCell(column.get(), i, text(value).release());
        ++i;
    }
    return column;
}

/// One row in which no two results could be taken for each other; the flags are 0.
Results oneRow() {
    return {cells({"uuid"}), doubles({12.5}), doubles({2}),      doubles({3}), doubles({4}),
            doubles({0}),    doubles({0}),    cells({"signal"}), doubles({0}), cells({"m1/Gain"})};
}

class ObservedPortQueries : public ModelTest {
protected:
    /// What the query makes of a host that answers with copies of `results`.
    std::vector<Source> sourcesFrom(const Results& results) {
        const auto answering = orvex::registerFunction("getObservedPorts", [&](orvex::Call& c) {
            for (std::size_t i = 0; i < results.size(); ++i) {
                if (results[i]) c.outs[i].reset(hvCreateDeepCopy(results[i].get()));
            }
        });
        std::vector<Source> sources(3);
        InstrumentedSignals::getObservedPorts(object(), "", "", sources, true, true);
        return sources;
    }
    /// What the query adds to `badges` when the host answers with a copy of `answer`.
    void addBadges(const hvArray* answer, std::set<double>& badges) {
        const auto answering = orvex::registerFunction("getPortsWithBadges", [&](orvex::Call& c) {
            if (answer != nullptr) c.outs[0].reset(hvCreateDeepCopy(answer));
        });
        InstrumentedSignals::getPortsWithBadges(object(), badges);
    }
};

TEST_F(ObservedPortQueries, eachFieldComesFromItsResult) {
    const auto expectTextsAndNumbers = [](const Source& source) {
        EXPECT_EQ(source.uuid, "uuid");
        EXPECT_EQ(source.blockHandle, 12.5);
        EXPECT_EQ(source.outputPortIndex, 2);
        EXPECT_EQ(source.decimation, 3);
        EXPECT_EQ(source.maxPoints, 4);
        EXPECT_EQ(source.signalName, u"signal");
        EXPECT_EQ(source.blockPath, u"m1/Gain");
    };
    struct Row {
        std::size_t result;
        bool Source::*flag;
    };
    const Row rows[] = {{6, &Source::isFrameBased}, {7, &Source::targetBufferedStreaming}, {9, &Source::hideInPLV}};
    for (const Row& row : rows) {
        Results results = oneRow();
        results[row.result - 1] = doubles({1});
        const std::vector<Source> sources = sourcesFrom(results);
        ASSERT_EQ(sources.size(), 1U);
        expectTextsAndNumbers(sources[0]);
        for (const Row& other : rows) EXPECT_EQ(sources[0].*other.flag, &row == &other) << row.result;
    }
}

TEST_F(ObservedPortQueries, argumentsReachTheHostInOrder) {
    std::string seen;
    const auto recording = orvex::registerFunction("getObservedPorts", [&](orvex::Call& c) {
        seen = std::to_string(c.nOut) + hvGetClassName(c.ins[0]);
        for (const std::size_t i : {1U, 2U}) seen += ' ' + hvArrayToStdString(c.ins[i]);
        for (const std::size_t i : {3U, 4U}) seen += hvIsLogicalScalarTrue(c.ins[i]) ? " yes" : " no";
        EXPECT_EQ(c.ins.size(), 5U);
        EXPECT_EQ(hvGetClassID(c.ins[3]), hvLOGICAL_CLASS);
    });
    std::vector<Source> sources(1);
    InstrumentedSignals::getObservedPorts(object(), "m1/Sub", "scope", sources, false, true);
    EXPECT_EQ(seen, "10Kestrel.HMI.InstrumentedSignals m1/Sub scope no yes");
    EXPECT_TRUE(sources.empty()) << "a result 2 that is not there has no elements";
}

TEST_F(ObservedPortQueries, numbersTruncateAndSaturateAndNaNIsATrueFlag) {
    struct Row {
        double number;
        std::int32_t integer;
        bool flag;
    };
    const Row rows[] = {
        {2.9, 2, true},    {-2.9, -2, true},        {0.0, 0, false},         {-0.0, 0, false},
        {1e-300, 0, true}, {std::nan(""), 0, true}, {1e10, INT32_MAX, true}, {-kInfinity, INT32_MIN, true},
    };
    for (const Row& row : rows) {
        Results results = oneRow();
        for (const std::size_t result : {2U, 3U, 4U, 5U, 6U, 7U, 9U}) results[result - 1] = doubles({row.number});
        const Source source = sourcesFrom(results).at(0);
        const std::string given = std::to_string(row.number);
        for (const auto field : {&Source::outputPortIndex, &Source::decimation, &Source::maxPoints}) {
            EXPECT_EQ(source.*field, row.integer) << given;
        }
        for (const auto field : {&Source::isFrameBased, &Source::targetBufferedStreaming, &Source::hideInPLV}) {
            EXPECT_EQ(source.*field, row.flag) << given;
        }
        EXPECT_TRUE(source.blockHandle == row.number || std::isnan(row.number)) << "the handle is taken as it is";
    }
}

TEST_F(ObservedPortQueries, logicalAndIntegerClassesConvert) {
    Results results = oneRow();
    results[1] = numbers<float>(hvSINGLE_CLASS, {1.5F, 2.5F});
    results[2] = numbers<std::int8_t>(hvINT8_CLASS, {-7, 3});
    results[3] = numbers<std::uint64_t>(hvUINT64_CLASS, {UINT64_MAX, 4});
    results[5] = logical(true);
    results[8] = numbers<std::uint16_t>(hvUINT16_CLASS, {0, 9});
    const std::vector<Source> sources = sourcesFrom(results);
    ASSERT_EQ(sources.size(), 2U);
    EXPECT_EQ(sources[1].blockHandle, 2.5);
    EXPECT_EQ(sources[0].outputPortIndex, -7);
    EXPECT_EQ(sources[0].decimation, INT32_MAX);
    EXPECT_EQ(sources[1].decimation, 4);
    EXPECT_TRUE(sources[0].isFrameBased);
    EXPECT_FALSE(sources[0].hideInPLV);
    EXPECT_TRUE(sources[1].hideInPLV);
}

TEST_F(ObservedPortQueries, whatAResultDoesNotHoldKeepsTheDefault) {
    Results missing;
    missing[1] = doubles({1.5, 2.5});
    Results shorter = oneRow();
    shorter[1] = doubles({1.5, 2.5});
    Results ofOtherClasses = oneRow();
    for (const std::size_t textResult : {1U, 8U, 10U}) ofOtherClasses[textResult - 1] = doubles({1, 2});
    for (const std::size_t number : {3U, 4U, 5U, 6U, 7U, 9U}) ofOtherClasses[number - 1] = cells({"1", "2"});
    ofOtherClasses[1] = doubles({1.5, 2.5});
    Results unset = oneRow();
    unset[1] = doubles({1.5, 2.5});
    unset[0] = cells({"uuid", nullptr});
    unset[7] = cells({"signal", nullptr});
    hvSetCell(unset[7].get(), 1, number(7).release());
    unset[9] = cells({"m1/Gain", nullptr});

    Results none = oneRow();
    none[1] = emptyDouble();
    EXPECT_TRUE(sourcesFrom(none).empty());
    for (const Results* const results : {&missing, &shorter, &ofOtherClasses, &unset}) {
        const std::vector<Source> sources = sourcesFrom(*results);
        ASSERT_EQ(sources.size(), 2U);
        const Source& source = sources[1];
        EXPECT_EQ(source.blockHandle, 2.5);
        EXPECT_EQ(source.uuid, "");
        EXPECT_EQ(source.signalName, u"");
        EXPECT_EQ(source.blockPath, u"");
        EXPECT_EQ(source.outputPortIndex + source.decimation + source.maxPoints, 0);
        EXPECT_FALSE(source.isFrameBased || source.targetBufferedStreaming || source.hideInPLV);
    }
    EXPECT_TRUE(orvex::warnings().empty());
}

TEST_F(ObservedPortQueries, aRefusalIsOneWarningAndEmptiesThePortsButNotTheBadges) {
    const auto refuse = [](orvex::Call&) { orvex::raise("no", "no ports today"); };
    const auto noPorts = orvex::registerFunction("getObservedPorts", refuse);
    const auto noBadges = orvex::registerFunction("getPortsWithBadges", refuse);
    std::vector<Source> sources(3);
    InstrumentedSignals::getObservedPorts(object(), "", "", sources, true, true);
    EXPECT_TRUE(sources.empty());
    ASSERT_EQ(orvex::warnings().size(), 1U);
    EXPECT_EQ(orvex::warnings()[0].text, "no ports today");

    std::set<double> badges = {1.5};
    InstrumentedSignals::getPortsWithBadges(object(), badges);
    EXPECT_EQ(badges, (std::set<double>{1.5}));
    EXPECT_EQ(orvex::warnings().size(), 2U);
}

TEST_F(ObservedPortQueries, badgesAreMergedInOrderWithoutNaN) {
    std::set<double> badges;
    addBadges(doubles({7.5, 1.5, 7.5, std::nan("")}).get(), badges);
    addBadges(doubles({3.5, kInfinity, 1.5}).get(), badges);
    addBadges(numbers<std::int32_t>(hvINT32_CLASS, {-4}).get(), badges);
    for (const HvArrayPtr& nothing : {emptyDouble(), cells({"9"}), HvArrayPtr()}) addBadges(nothing.get(), badges);
    EXPECT_EQ(badges, (std::set<double>{-4, 1.5, 3.5, 7.5, kInfinity}));
    const auto asked = orvex::registerFunction("getPortsWithBadges", [](orvex::Call&) { ADD_FAILURE(); });
    InstrumentedSignals::getPortsWithBadges(nullptr, badges);
    InstrumentedSignals::getPortsWithBadges(emptyDouble().get(), badges);
    EXPECT_EQ(badges.size(), 5U) << "without a model object the host is not asked";
    EXPECT_TRUE(orvex::warnings().empty());
}

TEST_F(ObservedPortQueries, anOpenModelListsItsOwnObservedPorts) {
    set().add(port(u"Gain", 1, "1"));
    set().add(resolvedPort(u"Sub/Switch", 3, handleOf(u"Sub/Switch")));
    set().get(1)->m_signalName = u"speed";
    set().get(1)->m_decimation = 5;
    set().get(1)->m_maxPoints = 100;
    set().get(1)->m_isFrameBased = true;
    set().add(port(u"Gain", 1, "1"));
    set().get(2)->m_hideInPLV = true;
    set().add(port(u"Gone", 1));
    set().add(chartItem(u"cw_state", u"7", u"Self"));
    kestrel::loadedModels().find(u"m1")->setSignals(HvArrayPtr(hvCreateSharedDataCopy(object())));
    const auto model = call("Kestrel.Model", {text("m1").get()});

    std::vector<Source> sources;
    InstrumentedSignals::getObservedPorts(model.get(), "", "", sources, false, true);
    ASSERT_EQ(sources.size(), 2U) << "neither the hidden signal, nor the one without a block, nor the chart's";
    EXPECT_EQ(sources[0].uuid, set().get(0)->m_uuid);
    EXPECT_EQ(sources[0].blockPath, u"m1/Gain");
    EXPECT_EQ(sources[1].blockHandle, handleOf(u"Sub/Switch"));
    EXPECT_EQ(sources[1].outputPortIndex, 3);
    EXPECT_EQ(sources[1].decimation, 5);
    EXPECT_EQ(sources[1].maxPoints, 100);
    EXPECT_EQ(sources[1].signalName, u"speed");
    EXPECT_TRUE(sources[1].isFrameBased);
    EXPECT_FALSE(sources[1].targetBufferedStreaming || sources[1].hideInPLV);
    InstrumentedSignals::getObservedPorts(model.get(), "m1/Sub", "", sources, true, true);
    EXPECT_EQ(sources.size(), 1U);
    InstrumentedSignals::getObservedPorts(model.get(), "m1/Su", "", sources, true, true);
    EXPECT_TRUE(sources.empty());

    std::set<double> badges;
    InstrumentedSignals::getPortsWithBadges(model.get(), badges);
    EXPECT_EQ(badges, (std::set<double>{handleOf(u"Gain"), handleOf(u"Sub/Switch")}));
    EXPECT_TRUE(orvex::warnings().empty());
}

}  // namespace
