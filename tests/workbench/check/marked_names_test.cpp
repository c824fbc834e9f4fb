#include "signals/signal_specification.h"
#include "tests/workbench/check/name_test.h"
#include "workbench/change/marking.h"
#include "workbench/change/renaming.h"
#include "workbench/check/check_file.h"
#include "workbench/session/session.h"
#include "workbench/text/error.h"

// No mark slides silently: what a file was changed to between two openings, and what becomes of it.
namespace kshmi::testing {
namespace {

class MarkedNames : public KshmiTest {};

// What became of the ports of "A", which had "x", "y" and "z", marked at 1 and 2; and what follows.
struct Edit {
    const char* outputs;
    const char* codes;   // what check finds
    const char* mended;  // ports of the two signals afterwards; empty where nothing is to be mended
    const char* left;    // what check finds then
    bool isOpened = true;
};

std::string codesOf(const workbench::CheckedFile& checked) {
    std::string codes;
    for (const workbench::Finding& finding : checked.findings)
        codes += (codes.empty() ? "" : " ") + std::string(workbench::ruleOf(finding.code).id);
    return codes;
}

// The values of a field in all records of a text, one after the other.
std::string valuesIn(const std::string& text, const std::string& field) {
    std::string values;
    const std::string start = "\"" + field + "\": ";
    for (std::size_t at = text.find(start); at != std::string::npos; at = text.find(start, at + 1)) {
        const std::size_t value = at + start.size();
        values += text.substr(value, text.find_first_of(",\n}", value) - value);
    }
    return values;
}

TEST_F(MarkedNames, noEditOfPortsLetsAMarkSlide) {
    const Edit edits[] = {
        {R"("x", "y", "z")", "", "", ""},
        {R"("x", "y")", "", "", ""},
        {R"("x", "y", "new", "z")", "", "", ""},
        {R"("x", "y", "x")", "", "", ""},
        {R"("y", "x", "z")", "KS301 KS301", "21", ""},
        {R"("z", "x", "y")", "KS301 KS301", "23", ""},
        {R"("x", "new", "y", "z")", "KS301", "13", ""},
        {R"("y", "z")", "KS303 KS301", "11", "KS303 KS209"},
        {R"("y", "x", "x")", "KS302 KS301", "11", "KS302 KS209"},
        {R"("a", "y", "z")", "KS303", "", "KS303"},
        {R"("a", "b", "z")", "KS303 KS303", "", "KS303 KS303"},
        {R"("x", "z")", "KS303", "", "KS303"},
        {R"("y")", "KS303 KS301", "11", "KS303 KS209", false},
        {R"("x")", "KS202", "", "KS202", false},
        {"", "KS202 KS202", "", "KS202 KS202", false},
    };
    for (const Edit& edit : edits) {
        SCOPED_TRACE(edit.outputs);
        const std::string text = modelText(edit.outputs, {{"u-1", 1, "x"}, {"u-2", 2, "y"}});
        const bool isNoticed = *edit.codes != '\0';
        write(text);
        EXPECT_EQ(codesOf(workbench::checkFile(path())), edit.codes);
        const Finished read1 = runOn("query A:1");
        EXPECT_EQ(read1.code == 0, edit.isOpened) << read1.err;
        EXPECT_EQ(read1.err.empty(), !isNoticed) << read1.err;
        const Finished dry = runOn("check --mend names --dry-run");
        EXPECT_EQ(read(), text);
        for (const char* const line : {"mark L/On --dry-run", "mark L/On"}) {
            const Finished changed = runOn(line);
            EXPECT_EQ(changed.code == 0, !isNoticed) << changed.err;
            if (isNoticed && edit.isOpened) expectParts(changed.err, {"was marked as ", "--mend names", "--confirm"});
            if (isNoticed) {
                EXPECT_EQ(read(), text);
            }
        }
        write(text);
        const Finished mended = runOn("check --mend names");
        EXPECT_EQ(mended.code, dry.code);
        EXPECT_EQ(mended.code, contains(edit.left, "KS3") || contains(edit.left, "KS202") ? 1 : 0) << mended.out;
        EXPECT_EQ(contains(dry.out, "would mend signal"), *edit.mended != '\0') << dry.out;
        EXPECT_EQ(codesOf(workbench::checkFile(path())), edit.left);
        if (*edit.mended) {
            EXPECT_EQ(valuesIn(read(), "OutputPortIndex_"), edit.mended);
        } else {
            EXPECT_EQ(read(), text);
        }
    }
}

TEST_F(MarkedNames, placesThatMayBeMeantAreNamed) {
    for (const auto& [outputs, places] : {std::pair{R"("y", "x", "x", "x")", "2, 3 or 4"},
                                          {R"("y", "x", "x", "x", "x")", "2, 3, 4 or 5"},
                                          {R"("y", "x", "x", "x", "x", "x")", "2, 3, 4, 5 and 1 more"}}) {
        write(modelText(outputs, {{"u-1", 1, "x"}}));
        expectSaid("check", 1, std::string("which may be port ") + places + " now (\"y\" is here now)");
    }
}

TEST_F(MarkedNames, ofChartsItemsAreFollowedBySsid) {
    const Mark state{"u-1", 0, "On", "2", "L", "On", "cw_state", R"("Activity": "Self", "SSID": "4")"};
    const Mark chart{"u-2", 0, "", "2", "L", "", "cw_chart", R"("Activity": "Self", "SSID": "0")"};
    // A datum of the state's name is no place for it.
    const std::string before = replaced(modelText("", {state, chart}), R"("name": "n")", R"("name": "On")");
    struct {
        const char* states;
        const char* codes;
        const char* ssids;
    } const edits[] = {
        {R"({"path": "Off", "ssid": 4}, {"path": "On", "ssid": 5})", "KS301", R"("5""0")"},
        {R"({"path": "Off", "ssid": 4})", "KS303", R"("4""0")"},
        {R"({"path": "On", "ssid": 5})", "KS301", R"("5""0")"},
        {R"({"path": "Off", "ssid": 5})", "KS203", R"("4""0")"},
        {R"({"path": "On", "ssid": 4}, {"path": "Off", "ssid": 5})", "", R"("4""0")"},
    };
    for (const auto& edit : edits) {
        write(replaced(before, R"({"path": "On", "ssid": 4})", edit.states));
        EXPECT_EQ(codesOf(workbench::checkFile(path())), edit.codes) << edit.states;
        runOn("check --mend names");
        EXPECT_EQ(valuesIn(read(), "SSID"), edit.ssids) << edit.states;
    }
}

TEST_F(MarkedNames, theToolsOwnChangesKeepThemRight) {
    write(modelText(R"("x", "y")", {{"u-1", 1, "x"}, {"u-2", 2}}));
    runOn("mark L/On L/n");
    EXPECT_EQ(valuesIn(read(), "markedName"), R"("x""On""n")");
    for (const char* const line : {"renumber A 2,1", "move A B/C", "move L A", "rename k", "unmark B/C:y"})
        EXPECT_EQ(runOn(line).code, 0) << line;
    EXPECT_EQ(codesOf(workbench::checkFile(path())), "");
    EXPECT_EQ(valuesIn(read(), "markedName"), R"("x""On""n")");
    EXPECT_EQ(valuesIn(read(), "OutputPortIndex_"), "200");
}

TEST_F(MarkedNames, oldFilesKeepTheirBytesAndAreUnconfirmed) {
    write(kModel);
    runOn("mark A:2 --name v");
    runOn("unmark A:2");
    EXPECT_EQ(read(), kModel);
    expectParts(runOn("check").out, {"warning KS304: 2 signals, this one first", "set " + path() + " --all '*'"});
    runOn("mark A:2");
    EXPECT_EQ(valuesIn(read(), "markedName"), R"("valid")");
}

TEST_F(MarkedNames, areConfirmedOneByOneAndTheFileIsFreeThen) {
    write(modelText(R"("a", "b")", {{"u-1", 1, "x"}, {"u-2", 2, "y"}, {"u-3", 2}}));
    const std::string text = read();
    EXPECT_GT(runOn("set A:1 --decimation 2").code, 1);
    EXPECT_EQ(read(), text);
    expectParts(runOn("set A:1 --confirm --dry-run").out, {"would confirm"});
    expectParts(runOn("query A:1 --json").out, {"\"unsettled\": [", "\"markedName\": \"y\""});
    EXPECT_EQ(runOn("set A:1 --confirm").code, 0);
    EXPECT_EQ(valuesIn(read(), "markedName"), R"("a""y")");
    expectParts(runOn("show").err, {"1 mark does not stand where it was marked", "1 mark is without a name"});
    EXPECT_EQ(runOn("set --all * --confirm").code, 0);
    EXPECT_EQ(valuesIn(read(), "markedName"), R"("a""b""b")");
    EXPECT_EQ(runOn("set --all * --confirm").code, kNothing);
    EXPECT_EQ(runOn("show").err, "");
    EXPECT_EQ(runOn("set A:1 --decimation 2").code, 0);
}

TEST_F(MarkedNames, whatElseIsWrongIsStillFoundWhenTheyAreMended) {
    write(replaced(modelText(R"("y", "x")", {{"u-1", 1, "x"}}, {clientText("c", "gone")}), R"("SignalName_")",
                   R"("LogicalPortIndex_": 1, "SignalName_")"));
    const std::string mended = runOn("check --mend names").out;
    const std::string left = runOn("check").out;
    expectParts(mended, {"mended signal 1", "KS401", left.substr(0, left.find('\n'))});
    EXPECT_EQ(valuesIn(read(), "LogicalPortIndex_"), "2");
}

// Two marks on one port, one of them from before the ports changed places, with one UUID.
TEST_F(MarkedNames, marksOnOnePortGoTheirOwnWays) {
    write(modelText(R"("y", "x")", {{"u", 1, "x"}, {"u", 1, "y"}, {"u", 1, "x"}}, {clientText("c", "u")}));
    EXPECT_EQ(codesOf(workbench::checkFile(path())), "KS301 KS208 KS209 KS208 KS301 KS209");
    expectParts(runOn("check --mend names,uuids").out, {"KS209"});
    EXPECT_EQ(valuesIn(read(), "OutputPortIndex_"), "212");
    EXPECT_EQ(valuesIn(read(), "markedName"), R"("x""y""x")");
    EXPECT_EQ(codesOf(workbench::checkFile(path())), "KS209");
}

TEST_F(MarkedNames, areConfirmedByPositionAndForgottenWithTheirMarks) {
    workbench::enterHost({});
    write(modelText(R"("a", "b")", {{"u-1", 1, "x"}, {"u-2", 2, "y"}, {"u-3", 2}}));
    workbench::Session session(path());
    EXPECT_EQ(session.names().unsettled().size(), 2U);
    EXPECT_EQ(session.names().confirm({0, 2}), (std::vector<std::size_t>{0, 2}));
    EXPECT_EQ(session.names().confirm({0}), std::vector<std::size_t>());
    EXPECT_THROW(session.save(), workbench::Error);
    workbench::removeSignals(session, {1});
    session.save();
    EXPECT_EQ(valuesIn(read(), "markedName"), R"("a""b")");
    // Under the UUID that the port's mark had.
    workbench::addSignal(session, {session.model().findByPath(u"A"), 2, {}}, u"", {});
    session.save();
    EXPECT_EQ(valuesIn(read(), "UUID"), R"("u-1""u-3""u-2")");
    EXPECT_EQ(valuesIn(read(), "markedName"), R"("a""b""b")");
    write(modelText(R"("a", "b")", {{"u-1", 1, "a"}, {"u-2", 2}, {"u-3", 2, "b"}}), "other.json");
    workbench::renameModel(session, u"n");
    workbench::Session other(path("other.json"));
    other.signals().get(0)->m_excludeForSave = true;
    other.save();
    EXPECT_EQ(valuesIn(read("other.json"), "markedName"), R"("b")") << "of the last, not of the one without a name";
}

}  // namespace
}  // namespace kshmi::testing
