#include <fmt/format.h>

#include <bit>
#include <cmath>
#include <limits>
#include <map>
#include <random>

#include "report/page.h"
#include "report/plot/axis.h"
#include "report/plot/line.h"
#include "report/plot/thinning.h"
#include "tests/report/page_test.h"

namespace report {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinite = std::numeric_limits<double>::infinity();
constexpr double kLargest = std::numeric_limits<double>::max();

struct Series {
    std::vector<double> times;
    std::vector<double> values;
};

Series randomSeries(std::mt19937& random, std::size_t samples) {
    std::uniform_real_distribution<double> step(0.0, 0.02);
    std::normal_distribution<double> value(0.0, 1.0);
    Series series;
    double time = -3.0;
    for (std::size_t i = 0; i < samples; ++i) {
        series.times.push_back(time += random() % 5 == 0 ? 0.0 : step(random));
        series.values.push_back(random() % 97 == 0 ? 1000 * value(random) : value(random));
        if (random() % 61 == 0) series.values.back() = random() % 2 == 0 ? kNan : kInfinite;
    }
    return series;
}

// The extremes of each column, by its number.
std::map<std::size_t, std::pair<double, double>> extremes(const std::vector<Point>& points, double from, double to,
                                                          std::size_t columns) {
    std::map<std::size_t, std::pair<double, double>> found;
    for (const Point& point : points) {
        if (!std::isfinite(point.value)) continue;
        const auto column = static_cast<std::size_t>(shareOf(point.time, from, to) * static_cast<double>(columns));
        const auto [entry, isNew] =
            found.try_emplace(std::min(column, columns - 1), std::pair(point.value, point.value));
        entry->second.first = std::min(entry->second.first, point.value);
        entry->second.second = std::max(entry->second.second, point.value);
    }
    return found;
}

TEST(Thinning, keepsThePeaksOfEveryColumnAndInventsNothing) {
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        const Series series = randomSeries(random, random() % 3000);
        const std::size_t columns = 1 + random() % 120;
        const double to = series.times.empty() ? 1.0 : series.times.back();
        std::vector<Point> all;
        for (std::size_t i = 0; i < series.times.size(); ++i) all.push_back({series.times[i], series.values[i]});
        const std::vector<Point> thin = thinned(series.times, series.values, -3.0, to, columns);
        EXPECT_EQ(extremes(thin, -3.0, to, columns), extremes(all, -3.0, to, columns)) << round;
        EXPECT_LE(thin.size(), 6 * columns);
        auto from = all.begin();
        for (const Point& point : thin)
            if (!std::isnan(point.value)) {
                from = std::find(from, all.end(), point);
                ASSERT_NE(from, all.end()) << "out of order, or not a sample";
            }
    }
}

TEST(Thinning, breaksTheLineWhereThereIsNoNumber) {
    const std::vector<double> times{0, 1, 2, 3, 4, 5, 6, 7};
    const std::vector<Point> thin =
        thinned(times, std::vector<double>{1, 2, kNan, kNan, 3, kInfinite, 4, kNan}, 0, 7, 100);
    std::string drawn;
    for (const Point& point : thin) drawn += std::isnan(point.value) ? "|" : std::to_string(std::lround(point.value));
    EXPECT_EQ(drawn, "12|3|4|");
    EXPECT_EQ(thinned(times, std::vector<double>(8, kNan), 0, 7, 100).size(), 0U);
    EXPECT_EQ(thinned(std::vector<double>{0, 1, 2, 3, 4, 5, 6, 7}, std::vector<double>{5, 1, 9, 5, 5, 8, 2, 5}, 0, 8, 3,
                      true),
              (std::vector<Point>{{0, 5}, {1, 1}, {2, 9}, {3, 5}, {5, 8}, {6, 2}, {7, 5}}));
    EXPECT_EQ(thinned(std::vector<double>{0, kNan, 2, 1}, std::vector<double>{1, 2, 3, 4}, 0, 2, 100).size(), 2U);
}

TEST(Thinning, keepsTheFirstTheLastAndTheGapAtTheEndOfAColumn) {
    const std::vector<double> times{0, 1, 2, 3};
    EXPECT_EQ(thinned(times, std::vector<double>{5, 1, 9, 4}, 0, 4, 1),
              (std::vector<Point>{{0, 5}, {1, 1}, {2, 9}, {3, 4}}));
    const std::vector<Point> broken = thinned(times, std::vector<double>{1, kNan, 2, 3}, 0, 4, 2);
    ASSERT_EQ(broken.size(), 4U);
    EXPECT_TRUE(std::isnan(broken[1].value) && broken[2] == (Point{2, 2}));
}

TEST(Line, isShortAndLeavesBreaks) {
    const TimeAxis time{0.0, 10.0, {}};
    const ValueAxis values{0.0, 10.0, {}};
    const std::vector<Point> points{{0, 0}, {1, 5}, {2, 5}, {3, kNan}, {4, 1}, {5, kNan}, {9, 10}, {10, 0}};
    const DrawnLine straight = drawn(points, time, values, {100, 100, 100}, false);
    EXPECT_EQ(straight.line, "M0 100l10-50 10 0M90 0l10 100");
    EXPECT_EQ(straight.dots, "M40 90h0");
    EXPECT_EQ(drawn(points, time, values, {100, 100, 100}, true).line, "M0 100h10v-50h10M90 0h10v100");
}

TEST(Axis, hasRoundLabelsThatEncloseTheValues) {
    const struct {
        double least, greatest;
        bool isWhole;
        const char* labels;
    } cases[] = {
        {0, 27.8, false, "0 10 20 30"},
        {15.2, 27.2, false, "15 20 25 30"},
        {-7, 5, false, "-10 -5 0 5"},
        {3, 6, true, "3 4 5 6"},
        {0, 1, true, "0 1"},
        {5, 5, true, "4 5 6"},
        {0, 0, false, "-1.0 -0.5 0 0.5 1.0"},
        {-2.78e-5, 2.5e-5, false, "-4e-5 -2e-5 0 2e-5 4e-5"},
        {-3e6, 4e6, false, "-4e6 -2e6 0 2e6 4e6"},
        {1e9, 1e9 + 1, false, "1000000000.0 1000000000.5 1000000001.0"},
        {-kLargest, kLargest, false, "-1.7976931348623157e+308 1.7976931348623157e+308"},
        {0, 5e-324, false, "0 5e-324"},
        {1, std::nextafter(1, 2), false, "1 1.0000000000000002"},
    };
    for (const auto& one : cases) {
        const ValueAxis axis = valueAxis(one.least, one.greatest, one.isWhole);
        std::string labels;
        for (const std::string& label : axis.labels) labels += (labels.empty() ? "" : " ") + label;
        EXPECT_EQ(labels, one.labels);
        EXPECT_LE(axis.from, one.least);
        EXPECT_GE(axis.to, one.greatest);
    }
}

TEST(Axis, staysInOrderWhateverTheValues) {
    std::mt19937_64 random(3);
    for (int round = 0; round < 20000; ++round) {
        const auto number = [&] {
            const auto bits = std::bit_cast<double>(std::uint64_t{random()});
            return std::isfinite(bits) ? bits : 0.0;
        };
        const double one = number();
        const double other = round % 5 == 0 ? one : number();
        const auto [least, greatest] = std::minmax(one, other);
        const ValueAxis axis = valueAxis(least, greatest, round % 2 == 0);
        EXPECT_TRUE(axis.from <= least && axis.to >= greatest) << least << ' ' << greatest;
        EXPECT_TRUE(axis.labels.size() >= 2 && axis.labels.size() <= 7) << axis.labels.size();
        const TimeAxis time = timeAxis(least, greatest);
        EXPECT_LE(time.ticks.size(), 8U);
        for (std::size_t i = 1; i < time.ticks.size(); ++i) EXPECT_GE(time.ticks[i].at, time.ticks[i - 1].at);
    }
}

TEST(Axis, ofTimeHasTheUnitThatFits) {
    const struct {
        double from, to;
        const char* labels;
    } cases[] = {
        {0, 60, "0 10 20 30 40 50 60 s"}, {0, 1e-3, "0 0.5 1.0 ms"},
        {0, 3600, "0 20 40 60 min"},      {0, 1e6, "0 2 4 6 8 10 d"},
        {5, 5, "4.6 4.8 5.0 5.2 5.4 s"},  {1e6, 1e6 + 1, "1000000.0 1000000.5 1000001.0 s"},
        {0, 36000, "0 2 4 6 8 10 h"},     {0, 3.3e-7, "0 100 200 300 ns"},
    };
    for (const auto& one : cases) {
        std::string labels;
        for (const Tick& tick : timeAxis(one.from, one.to).ticks) labels += (labels.empty() ? "" : " ") + tick.text;
        EXPECT_EQ(labels, one.labels);
    }
    EXPECT_EQ(durationText(60), "60 s");
    EXPECT_EQ(durationText(9000), "150 min");
    EXPECT_EQ(numberText(-0.0), "0");
    EXPECT_EQ(numberText(1.5e-7), "1.5e-7");
    EXPECT_EQ(numberText(123456.7), "123457");
    EXPECT_EQ(numberText(kInfinite) + numberText(-kInfinite), "∞-∞");
}

class RunPage : public testing::PageTest {
protected:
    std::string pageOf(const std::string& csv) const {
        return page(kshmi::testing::kModel, {"--run", write(csv, "run.csv")});
    }
};

TEST_F(RunPage, plotsEachSignalWithItsFigures) {
    const std::string html =
        pageOf("time,\"speed \"\"ü\"\"\",Logic,other\n0,1,true,\"a\"\n1,4,,\"a\"\n2,NaN,false,\"<b>\"\n");
    expectParts(html, {"<b>2<i> s</i></b> <span>run</span><small>2 of 2 signals recorded</small>", "<dd>run.csv</dd>",
                       "<i>min <b>1</b></i><i>max <b>4</b></i><i>last <b>4</b></i><i>3 samples</i>"
                       "<i>1 gap</i>",
                       "<i>last <b>false</b></i><i>2 samples</i>", "<g id=\"t\">", "Recorded besides",
                       "<i>1 change</i><i>3 samples</i>", "<th scope=\"row\">2 s</th><td>&lt;b&gt;</td>"});
    EXPECT_EQ(count(html, "</div><svg role=\"img\" aria-label=\"speed &quot;ü&quot;\"><use href=\"#g4\"/>"), 1U);
    EXPECT_EQ(count(html, "<use href=\"#tl\"/>"), 1U);
}

TEST_F(RunPage, tellsUnitsElementsAndWhyItStoppedEarly) {
    page(kshmi::testing::kModel);
    const workbench::CheckedFile checked = workbench::checkFile(path());
    const workbench::Session session(path());
    workbench::RecordedRun run;
    run.file = "some/where/run.db";
    run.number = 2;
    run.runCount = 3;
    run.model = "<m>";
    run.started = "2026-03-01T12:34:56Z";
    run.start = -1.0;
    run.stop = 1.0;
    run.until = 2.0;
    run.outcome = "<failed>";
    run.message = "<too hot>";
    run.columns.resize(4);
    run.columns[0].unit = "<km/h>";
    run.columns[0].signal = "u-1";
    run.columns[0].element = "[<2>]";
    run.columns[0].times = {0.0, 1.0};
    run.columns[0].values = {3.0, 4.0};
    run.columns[1].signal = "u-2";
    run.columns[2].kind = workbench::ValueKind::enumeration;
    run.columns[2].times = {-1.0, 0.0};
    run.columns[2].values = {1.0, 3.0};
    run.columns[3].times = {-1.0, 0.0, 1.0};
    run.columns[3].values = {kInfinite, kInfinite, -kInfinite};
    std::string html;
    writePage({session, checked, [](const workbench::Finding&) { return ""; }, &run},
              [&](std::string_view piece) { html += piece; });
    expectParts(html, {"<dd>run.db, run 2 of 3</dd>", "-1 s to 1 s of 2 s", "<dd>2026-03-01 12:34:56 UTC</dd>",
                       "<path d=\"M600 560l600-560\"/>", "<path d=\"M0 560h600v-560\"/>",
                       "<path class=\"inf\" d=\"M0 0h0M600 0h0M1200 560h0\"/>", "2 × ∞", "1 × -∞",
                       "Stopped early (&lt;failed&gt;): &lt;too hot&gt;", "The run is of the model &lt;m&gt;.",
                       "<span class=\"unit\">&lt;km/h&gt;</span>", "<i class=\"which\">[&lt;2&gt;]</i>", "no samples",
                       "2 of 2 signals recorded, stopped early"});
    EXPECT_EQ(testing::Structure(html).faults(), std::vector<std::string>());
}

TEST_F(RunPage, saysWhatIsMissing) {
    expectParts(pageOf("time,other\n0,inf\n1,-inf\n"),
                {"None of what was recorded is a signal of this model.", "not recorded", "1 × ∞", "1 × -∞"});
    const kshmi::testing::Finished none = run({"report", path(), "--run", path("none.csv"), "-o", "-"});
    EXPECT_EQ(none.code, 3);
    EXPECT_EQ(none.out, "");
    EXPECT_EQ(run({"report", path(), "--run-number", "1", "-o", "-"}).code, 2);
    EXPECT_EQ(run({"report", "-", "--run", "-", "-o", "-"}).code, 2);
    const kshmi::testing::StandardInput input(path("run.csv"));
    expectParts(run({"report", path(), "--run", "-", "-o", "-"}).out, {"<dd>standard input</dd>", "1 × ∞"});
}

TEST_F(RunPage, showsTheFirstTexts) {
    std::string csv = "time,other\n";
    for (int i = 0; i < 26; ++i) csv += fmt::format("{0},\"t{0}\"\n", i);
    const std::string html = pageOf(csv);
    EXPECT_EQ(count(html, "<tr>"), 20U);
    expectParts(html, {"<i>25 changes</i>", "and 6 changes more"});
}

TEST_F(RunPage, staysSmallHoweverMuchWasRecorded) {
    std::string csv = "time,\"speed \"\"ü\"\"\"\n";
    for (int i = 0; i < 200000; ++i) csv += std::to_string(i) + "," + std::to_string(i * 7919 % 1000) + "\n";
    EXPECT_LT(pageOf(csv).size(), 60000U);
}

}  // namespace
}  // namespace report
