#include "workbench/record/recorded_run.h"

#include <cmath>

#include "tests/kshmi/kshmi_test.h"
#include "workbench/session/session.h"
#include "workbench/text/error.h"

namespace workbench {
namespace {

class RecordedRunFile : public kshmi::testing::KshmiTest {
protected:
    std::string refusal(const std::string& text, std::optional<int> number = std::nullopt) const {
        try {
            readRecordedRun(write(text, "run.csv"), number);
        } catch (const Error& error) {
            return error.text();
        }
        return "";
    }
};

TEST_F(RecordedRunFile, csvGivesColumnsWithTheirOwnTimesAndKinds) {
    const RecordedRun run = readRecordedRun(
        write("time,speed,\"a \"\"b\"\", c\",on,text\r\n0,1.5,,true,\"\"\r\n0.5,NaN,-2e-07,,\"x\ny\"\r\n", "run.csv"));
    ASSERT_EQ(run.columns.size(), 4U);
    EXPECT_EQ(run.columns[0].times, (std::vector<double>{0, 0.5}));
    EXPECT_EQ(run.columns[0].values[0], 1.5);
    EXPECT_TRUE(std::isnan(run.columns[0].values[1]));
    EXPECT_EQ(run.columns[1].title, "a \"b\", c");
    EXPECT_EQ(run.columns[1].times, std::vector<double>{0.5});
    EXPECT_EQ(run.columns[2].kind, ValueKind::boolean);
    EXPECT_EQ(run.columns[2].values, std::vector<double>{1});
    EXPECT_EQ(run.columns[3].kind, ValueKind::text);
    EXPECT_EQ(run.columns[3].texts, (std::vector<std::string>{"", "x\ny"}));
    EXPECT_EQ(run.start, 0.0);
    EXPECT_EQ(run.stop, 0.5);
}

TEST_F(RecordedRunFile, whatIsNoRunIsRefused) {
    EXPECT_EQ(refusal("speed\n1\n"), "is not a recorded run: its first column is not \"time\"");
    EXPECT_EQ(refusal("time,a\n0\n"), "has 1 cell, but there are 2 titles; correct the row, or delete it");
    EXPECT_EQ(refusal("time,a\n0,1,2\n"), "has 3 cells, but there are 2 titles; correct the row, or delete it");
    EXPECT_EQ(refusal("time,a\n0,1\n", 2), "holds one run, as a CSV file does; ask for run 1, or for none");
    EXPECT_EQ(refusal("time,a\n0,1\n1,b\n"), "\"b\" is not a number, but others in column \"a\" are");
    EXPECT_EQ(refusal("time,a\nx,1\n"), "the time \"x\" is not a number");
}

TEST_F(RecordedRunFile, titlesLeadBackToSignals) {
    kshmi::enterHost(std::cerr);
    write(kshmi::testing::kModel);
    ASSERT_EQ(runOn("mark A:2 A/B:p --name valid").code, 0);
    const Session session(path());
    EXPECT_EQ(columnTitles(session), (std::vector<std::string>{"speed \"ü\"", "Logic", "valid", "valid (2)"}));
    RecordedRun run = readRecordedRun(write("time,valid (2),valid[3],other\n0,1,2,3\n", "run.csv"));
    EXPECT_FALSE(identifyColumns(run, session));
    EXPECT_EQ(run.columns[0].block, "m/A/B");
    EXPECT_EQ(run.columns[0].port, 1);
    EXPECT_EQ(run.columns[1].block, "m/A");
    EXPECT_EQ(run.columns[1].element, "[3]");
    EXPECT_EQ(run.columns[2].signal, "");
}

}  // namespace
}  // namespace workbench
