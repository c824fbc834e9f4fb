#include <array>
#include <cmath>
#include <limits>
#include <tuple>

#include "tests/support/host_test.h"

using namespace ks_test;
using ks_hmi::InstrumentedSignals;

namespace {

using Source = InstrumentedSignals::Source;
using Results = std::array<HvArrayPtr, 10>;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

HvArrayPtr doubles(std::initializer_list<double> values) { return numbers(hvDOUBLE_CLASS, values); }

// A null text leaves its cell unset.
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

// Two rows: one that holds nothing, and one in which no two results could be taken for each other; flags are 0.
Results twoRows() {
    return {cells({nullptr, "uuid"}), doubles({0, 12.5}),
            doubles({0, 2}),          doubles({0, 3}),
            doubles({0, 4}),          doubles({1, 0}),
            doubles({1, 0}),          cells({nullptr, "name"}),
            doubles({1, 0}),          cells({nullptr, "m1/Gain"})};
}

class ObservedPortQueries : public ModelTest {
protected:
    // What the query makes of a host that answers with copies of `results`.
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
    // What the query adds to `badges` when the host answers with a copy of `answer`.
    void addBadges(const hvArray* answer, std::set<double>& badges) {
        const auto answering = orvex::registerFunction("getPortsWithBadges", [&](orvex::Call& c) {
            if (answer != nullptr) c.outs[0].reset(hvCreateDeepCopy(answer));
        });
        InstrumentedSignals::getPortsWithBadges(object(), badges);
    }
};

TEST_F(ObservedPortQueries, eachFieldComesFromItsResult) {
    struct Row {
        std::size_t result;
        bool Source::*flag;
    };
    const Row rows[] = {{6, &Source::isFrameBased}, {7, &Source::targetBufferedStreaming}, {9, &Source::hideInPLV}};
    for (const Row& row : rows) {
        Results results = twoRows();
        results[row.result - 1] = doubles({0, 1});
        const std::vector<Source> sources = sourcesFrom(results);
        ASSERT_EQ(sources.size(), 2U);
        const Source& s = sources[1];
        EXPECT_EQ(std::tie(s.uuid, s.signalName, s.blockPath), std::tuple("uuid", u"name", u"m1/Gain"));
        EXPECT_EQ(std::tie(s.blockHandle, s.outputPortIndex, s.decimation, s.maxPoints), std::tuple(12.5, 2, 3, 4));
        for (const Row& other : rows) EXPECT_EQ(s.*other.flag, &row == &other) << row.result;
    }
}

TEST_F(ObservedPortQueries, numbersOfAnyClassTruncateAndSaturateAndWhatIsNoNumberIsTheDefault) {
    struct Row {
        HvArrayPtr given;
        std::int32_t integer;
        bool flag;
    };
    const Row rows[] = {
        {doubles({2.9}), 2, true},
        {doubles({-2.9}), -2, true},
        {doubles({-0.0}), 0, false},
        {doubles({1e-300}), 0, true},
        {doubles({std::nan("")}), 0, true},
        {doubles({1e10}), INT32_MAX, true},
        {doubles({-kInfinity}), INT32_MIN, true},
        {logical(true), 1, true},
        {numbers<float>(hvSINGLE_CLASS, {2.5F}), 2, true},
        {numbers<std::int8_t>(hvINT8_CLASS, {-7}), -7, true},
        {numbers<std::uint16_t>(hvUINT16_CLASS, {0}), 0, false},
        {numbers<std::uint64_t>(hvUINT64_CLASS, {UINT64_MAX}), INT32_MAX, true},
        {nullptr, 0, false},
        {emptyDouble(), 0, false},
        {cells({"1"}), 0, false},
    };
    for (const Row& row : rows) {
        Results results;
        results[1] = doubles({1.5});
        for (const std::size_t result : {3U, 4U, 5U, 6U, 7U, 9U})
            if (row.given) results[result - 1].reset(hvCreateDeepCopy(row.given.get()));
        const Source s = sourcesFrom(results).at(0);
        for (const auto field : {&Source::outputPortIndex, &Source::decimation, &Source::maxPoints})
            EXPECT_EQ(s.*field, row.integer) << &row - rows;
        for (const auto field : {&Source::isFrameBased, &Source::targetBufferedStreaming, &Source::hideInPLV})
            EXPECT_EQ(s.*field, row.flag) << &row - rows;
    }
    const Source fresh;
    EXPECT_EQ(std::tie(fresh.blockHandle, fresh.outputPortIndex, fresh.decimation, fresh.maxPoints),
              std::tuple(0.0, 0, 0, 0));
    EXPECT_FALSE(fresh.isFrameBased || fresh.targetBufferedStreaming || fresh.hideInPLV);
    Results results;
    EXPECT_TRUE(sourcesFrom(results).empty()) << "as many ports as result 2 has numbers";
    results[1] = numbers<float>(hvSINGLE_CLASS, {1.5F, 2.5F});
    EXPECT_EQ(sourcesFrom(results).at(1).blockHandle, 2.5);
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
    addBadges(doubles({std::nan(""), 7.5, 1.5, 7.5}).get(), badges);
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

}  // namespace
