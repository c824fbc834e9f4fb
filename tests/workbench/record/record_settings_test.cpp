#include <fmt/format.h>

#include <cmath>
#include <memory>

#include "signals/signal_specification.h"
#include "tests/support/json_schema.h"
#include "tests/workbench/record/record_test.h"
#include "workbench/record/engine_ports.h"
#include "workbench/record/record_model.h"
#include "workbench/record/recorded_run.h"
#include "workbench/record/stream_out_blocks.h"
#include "workbench/run_file/run_writer.h"
#include "workbench/run_file/sqlite.h"
#include "workbench/session/session.h"

namespace kshmi {
namespace {

using namespace testing;

class RecordSettings : public RecordTest {};

TEST_F(RecordSettings, decimationAndMaxPointsLeaveCellsEmpty) {
    import(probe2());
    mark("state:count --decimation 2");
    mark("state:mode --max-points 2");
    EXPECT_EQ(recorded(), "time,count,mode\r\n0,0,\r\n1,-2,\r\n1.5,,1\r\n2,-4,2\r\n");
    mark("state:even --decimation 3 --max-points 1");
    EXPECT_EQ(recorded("--until 2.5"),
              "time,count,mode,even\r\n0,0,,\r\n1,-2,,\r\n1.5,,,false\r\n2,-4,2,\r\n2.5,,3,\r\n");
    EXPECT_EQ(runOn("unmark state:count").code, 0);
    EXPECT_EQ(recorded("--until 4"), "time,mode,even\r\n3,,true\r\n3.5,2,\r\n4,3,\r\n");
}

TEST_F(RecordSettings, textsAreThinnedAsNumbersAre) {
    import(probe2());
    mark("state:text --decimation 2 --max-points 1");
    mark("state:count --decimation 3");
    mark("state:count --decimation 3 --again --name twin");
    EXPECT_EQ(recorded("--until 2.5"),
              "time,text,count,twin\r\n0,,0,0\r\n1.5,,-3,-3\r\n2,\"step \"\"4\"\",\nnext\",,\r\n");
    EXPECT_EQ(runOn("record --quiet -o " + path("run.sqlite3")).code, 0);
    const workbench::RecordedRun run = workbench::readRecordedRun(path("run.sqlite3"));
    EXPECT_EQ(run.columns[0].times, std::vector<double>{2});
    EXPECT_EQ(run.columns[1].times, (std::vector<double>{0, 1.5}));
    workbench::SqliteDatabase(path("run.sqlite3"), workbench::SqliteDatabase::Mode::write)
        .execute("UPDATE runs SET stop = NULL");
    EXPECT_EQ(workbench::readRecordedRun(path("run.sqlite3")).stop, 2.0);
}

TEST_F(RecordSettings, whatIsNoNumberOrNoTextIsKept) {
    const std::string none =
        R"(<ScalarVariable name="state.none" valueReference="1" causality="output"><String/></ScalarVariable>)";
    import(probe2("", none));
    mark("state:none");
    EXPECT_EQ(recorded("--until 0.5"), "time,none\r\n0,\"\"\r\n0.5,\"\"\r\n");
    EXPECT_EQ(runOn("unmark state:none").code, 0);
    mark("wave:fed");
    const std::string options = "--set gain=inf --inputs " + write("time,u\n0,1\n0.5,-1\n1,0\n", "in.csv") + " -o ";
    EXPECT_EQ(plain(recorded(options + "-")), "time fed\n0 Infinity\n0.5 Infinity\n1 -Infinity\n1.5 NaN\n2 NaN\n");
    for (const char* const name : {"run.csv", "run.db"}) {
        EXPECT_EQ(runOn("record --quiet " + options + path(name)).code, 0);
        const std::vector<double> values = workbench::readRecordedRun(path(name)).columns.at(0).values;
        ASSERT_EQ(values.size(), 5U);
        EXPECT_TRUE(std::isinf(values[0]) && values[0] > 0 && values[2] == -values[0] && std::isnan(values[4])) << name;
    }
}

// A writer that only says what it is given: the time, and which columns have a value.
class ToldRows final : public workbench::RunWriter {
public:
    explicit ToldRows(std::string& told) : m_told(told) {}
    void write(const std::vector<workbench::RunRow>& rows) override {
        for (const workbench::RunRow& row : rows)
            m_told += fmt::format("{}:{}{}{} ", row.time, row.isPresent[0], row.isPresent[1], row.texts);
    }
    void flush() override { m_told += "| "; }
    void finish(const workbench::UnitEnd& end) override { m_told += fmt::format("end {}", end.time); }
    std::optional<double> keptUntil() const noexcept override { return std::nullopt; }

private:
    std::string& m_told;
};

TEST_F(RecordSettings, lastPointsWaitNoLongerThanTheyMust) {
    std::vector<workbench::RunColumn> columns(2);
    columns[0].maxPoints = 2;
    std::string told;
    const auto writer = workbench::keepingLastPoints(std::make_unique<ToldRows>(told), columns, 1);
    const std::uint64_t slot = 0;
    const std::uint8_t present[][2] = {{0, 1}, {1, 0}, {0, 1}, {1, 1}, {1, 0}, {1, 1}};
    for (std::size_t i = 0; i < std::size(present); ++i) {
        writer->write({{static_cast<double>(i), &slot, std::string(1, static_cast<char>('a' + i)), present[i]}});
        writer->flush();
    }
    writer->finish({workbench::UnitEndKind::done, 5});
    EXPECT_EQ(told, "0:01a | | | | 2:01c | 3:01d | 4:10e 5:11f end 5");
}

TEST_F(RecordSettings, titlesAreNamesMadeUnique) {
    import(probe2());
    mark("state:count --name \"a, b\"");
    mark("state:mode --name \"a, b\"");
    mark("wave:fed --name time");
    EXPECT_EQ(recorded("--until 0 --step 1"), "time,\"a, b\",\"a, b (2)\",time (2)\r\n0,0,1,0\r\n");
}

TEST_F(RecordSettings, excludedSignalsAreLeftOut) {
    import(probe2());
    mark("state:count state:mode");
    enterHost(std::cerr);
    workbench::Session session(path());
    session.signals().get(0)->m_excludeForSave = true;
    workbench::RecordOptions options;
    std::string rows;
    std::string warnings;
    options.until = 0.5;
    options.target = {"-", false, [&](std::string_view text) { rows += text; }};
    options.warning = [&](const std::string& text) { warnings += text; };
    const workbench::RecordResult result = workbench::recordModel(session, options);
    EXPECT_EQ(rows, "time,mode\r\n0,1\r\n0.5,2\r\n");
    EXPECT_EQ(warnings, "\"count\" is not recorded: it is excluded");
    EXPECT_EQ(result.samples, 2U);
}

TEST_F(RecordSettings, theEngineHandsItsPortsOverAgainAfterAChange) {
    import(probe2());
    mark("state:count state:mode");
    enterHost(std::cerr);
    workbench::Session session(path());
    workbench::EnginePorts ports(session);
    const kestrel::Block& block = *session.model().findByPath(u"state");
    const ksPort* const count = ports.find(block, 1);
    ASSERT_NE(count, nullptr);
    EXPECT_TRUE(ports.isObserved(*count));
    session.signals().updateObservedPortMap();
    EXPECT_FALSE(session.signals().isKSPortObserved(count));
    EXPECT_TRUE(ports.isObserved(*count));
    const auto signal = session.signals().share(0);
    session.signals().remove(0);
    EXPECT_FALSE(ports.isObserved(*count));
    EXPECT_TRUE(ports.isObserved(*ports.find(block, 2)));
    session.signals().remove(0);
    EXPECT_FALSE(ports.isObserved(*ports.find(block, 2)));
    session.signals().add(signal);
    EXPECT_TRUE(ports.isObserved(*count));
    EXPECT_EQ(ports.find(block, 6), nullptr);
}

TEST_F(RecordSettings, blocksThatStreamAreEnteredWithWhereAndHow) {
    import(probe2());
    enterHost(std::cerr);
    const workbench::Session session(path());
    workbench::RunColumn count;
    count.title = "count";
    count.block = "probe/state";
    count.port = 1;
    count.decimation = 4;
    workbench::RunColumn mode = count;
    mode.title = "mode";
    mode.maxPoints = 7;
    const workbench::StreamOutBlocks blocks(session, {count, mode}, "/runs/a.db", {});
    const auto& eid = session.model().findByPath(u"state")->eid;
    const auto found = blocks.registry().getBlockForBlockId("probe:" + eid);
    const auto* const context = dynamic_cast<const workbench::RunFileContext*>(found.get());
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(context->getFileName(), u"a.db");
    EXPECT_EQ(context->getBlockPath(), u"probe/state");
    EXPECT_EQ(context->getDecimation(), "4");
    EXPECT_EQ(context->getMaxPoints(), "");
    const auto properties = context->getFilePropertiesMap();
    EXPECT_EQ(boost::get<double>(properties.at("column 2 maxPoints")), 7);
    EXPECT_EQ(boost::get<std::u16string>(properties.at("format")), u"sqlite");
    EXPECT_EQ(blocks.file().format, workbench::RunFormat::sqlite);
}

TEST_F(RecordSettings, aDatabaseTakesSeveralRuns) {
    import(probe2());
    mark("wave:sine --max-points 1");
    mark("state:even state:text");
    EXPECT_EQ(runOn("record --quiet --until 0.5 -o " + path("runs.db")).code, 0);
    EXPECT_EQ(runOn("record --quiet " + setTo(kCrash) + "-o " + path("runs.db")).code, kStoppedEarly);
    const workbench::RecordedRun first = workbench::readRecordedRun(path("runs.db"), 1);
    EXPECT_EQ(first.runCount, 2);
    EXPECT_EQ(first.model, "probe");
    EXPECT_EQ(first.outcome, "done");
    EXPECT_EQ(first.stop, 0.5);
    ASSERT_EQ(first.columns.size(), 3U);
    EXPECT_EQ(first.columns[0].unit, "rad");
    EXPECT_EQ(first.columns[0].times, std::vector<double>{0.5});
    EXPECT_EQ(first.columns[0].values, std::vector<double>{0.479425538604203});
    EXPECT_EQ(first.columns[1].kind, workbench::ValueKind::boolean);
    EXPECT_EQ(first.columns[1].values, (std::vector<double>{1, 0}));
    EXPECT_EQ(first.columns[2].texts[1], "step \"1\",\nnext");
    EXPECT_EQ(first.columns[2].block, "probe/state");
    const workbench::RecordedRun last = workbench::readRecordedRun(path("runs.db"));
    EXPECT_EQ(last.number, 2);
    EXPECT_EQ(last.outcome, "crashed");
    EXPECT_TRUE(last.stop == 1.0 && last.until == 2.0);
    expectParts(last.message, {"Segmentation fault"});
    EXPECT_EQ(last.columns[1].times, (std::vector<double>{0, 0.5, 1}));
    workbench::SqliteDatabase raw(path("runs.db"), workbench::SqliteDatabase::Mode::write);
    const auto row = [&](const char* statement) {
        workbench::SqliteStatement rows = raw.prepare(statement);
        return rows.step() ? std::string(rows.text(0)) : "";
    };
    EXPECT_EQ(row("SELECT start || ' ' || until || ' ' || step || ' ' || stop || ' ' || fmiVersion FROM runs"),
              "0.0 0.5 0.5 0.5 2.0");
    EXPECT_EQ(
        row("SELECT title || ' ' || kind || ' ' || block || ' ' || port || ' ' || portName || ' ' || element || ' ' "
            "|| variable || ' ' || decimation || ' ' || maxPoints FROM signals"),
        "sine real probe/wave 1 sine  wave.sine 1 1");
    raw.execute("UPDATE runs SET stop = NULL, outcome = 'running'");
    EXPECT_EQ(workbench::readRecordedRun(path("runs.db")).stop, 1.0);
    expectParts(runOn("report -o - --run " + path("runs.db")).out,
                {"Not ended: it is still being recorded", "recorded, not ended"});
    expectSaid("record -o " + write("not a database", "other.db"), kBadFile, "other.db");
    EXPECT_EQ(read("other.db"), "not a database");
}

TEST_F(RecordSettings, valuesOfEnumerationsHaveNames) {
    import(probe2());
    mark("state:mode state:wished");
    EXPECT_EQ(plain(recorded("--until 0.5 --set \"wish=eco, low\"")), "time mode wished\n0 1 2\n0.5 2 2\n");
    const std::string inputs = "--inputs " + write("time,wish\n0,off\n0.5,3\n1,\"eco, low\"\n", "in.csv");
    EXPECT_EQ(plain(recorded("--until 1.5 " + inputs)), "time mode wished\n0 1 1\n0.5 2 1\n1 3 3\n1.5 1 2\n");
    expectSaid("record --set wish=on", kWrongUsage,
               "start value of \"wish\": \"on\" is not a number or one of \"off\", \"eco, low\"");
    const Finished finished = runOn("record --json -o " + path("run.db"));
    expectParts(finished.out, {R"("items": [{"value": 1, "name": "off"}, {"value": 2, "name": "eco, low"}])"});
    const workbench::RecordedRun run = workbench::readRecordedRun(path("run.db"));
    ASSERT_EQ(run.columns[0].names.size(), 2U);
    EXPECT_EQ(*workbench::findName(run.columns[0].names, 2), "eco, low");
    EXPECT_EQ(workbench::findName(run.columns[0].names, 3), nullptr);
    const Finished report = runOn("report -o - --run " + path("run.db"));
    expectParts(report.out, {">\neco, low\noff</div>", "<b>eco, low</b>"});
}

TEST_F(RecordSettings, jsonTellsHowItWent) {
    import(probe2());
    mark("state:count state:mode --decimation 2");
    const Finished finished = runOn("record --json " + setTo(kFail) + "-o " + path("run.csv"));
    EXPECT_EQ(finished.code, kStoppedEarly);
    std::ifstream file(KSHMI_OUTPUT_SCHEMA);
    const std::string schema{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(ks_test::JsonSchema(schema).faultsOf(finished.out), std::vector<std::string>()) << finished.out;
    expectParts(finished.out,
                {R"("outcome": "failed")", R"("stop": 1)", R"("samples": 3)", R"("variable": "state.count")"});
}

TEST_F(RecordSettings, inputsAreInterpolatedOrHeld) {
    import(probe2());
    mark("wave:fed");
    const std::string inputs = "--inputs " + write("time, u ,gain\n0, 0,1\n1,1 , \n 2,3,\t10\n", "in.csv");
    EXPECT_EQ(plain(recorded(inputs)), "time fed\n0 0\n0.5 0\n1 0.5\n1.5 1\n2 2\n");
    EXPECT_EQ(plain(recorded(inputs + " --until 3")), "time fed\n0 0\n0.5 0\n1 0.5\n1.5 1\n2 2\n2.5 30\n3 30\n");
    write("time,u\n0,0\n1,2\n", "in.csv");
    EXPECT_EQ(plain(recorded(inputs + " --until 0.5 --step 0.25")), "time fed\n0 0\n0.25 0\n0.5 0.5\n");
    write("time,held\n0,0\n1,2\n", "in.csv");
    EXPECT_EQ(plain(recorded(inputs + " --until 1.5")), "time fed\n0 0\n0.5 0\n1 0\n1.5 2\n");
    const auto refused = [&](const std::string& text, const std::string& said) {
        expectSaid("record --inputs " + write(text, "in.csv"), kBadFile, said);
    };
    refused("t,u\n0,1\n", "in.csv:1: the first column of inputs is \"time\"; name it so");
    refused("time;u\n0;1\n", "in.csv:1: its cells are not separated by commas; have it written with commas");
    refused("time,v\n0,1\n", "in.csv:1: the unit has no input \"v\"");
    refused("time,behaviour\n0,1\n", "in.csv:1: \"behaviour\" is neither an input nor a tunable parameter");
    refused("time,u\n0,1\n0.5,x\n", "in.csv:3: \"u\": \"x\" is not a number");
    refused("time,u\n1,1\n0.5,2\n", "in.csv:3: \"0.5\" is not a time after the one above; sort the rows");
    refused("time,u\n0,\n", "in.csv:2: \"u\" has no first value");
    refused("time,u\n", "holds no row of values");
    refused("time,u,u\n0,1,2\n", "the title \"u\" is there twice");
}

}  // namespace
}  // namespace kshmi
