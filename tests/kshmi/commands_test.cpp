#include "tests/kshmi/kshmi_test.h"

namespace kshmi {

using namespace workbench;
namespace {

using testing::contains;
using testing::kModel;
using testing::replaced;

class Commands : public testing::KshmiTest {
protected:
    Commands() { write(kModel); }
    int query(const std::string& words) const { return runOn("query " + words).code; }
};

TEST_F(Commands, referencesNameWhatTheySay) {
    const std::vector<std::pair<std::string, std::string>> references{
        {"A", "m/A:1\nnot observed  m/A:2"},
        {"m/A:y", "m/A:1"},
        {"A:valid", "m/A:2"},
        {"m/A:2", "m/A:2"},
        {"A/B:1", "m/A/B:1:1"},  // the block of that name, not the port
        {"A/B:1:y", "m/A/B:1:1"},
        {"A/B:p", "m/A/B:1"},
        {"Logic/On/Fast", "m/Logic/On/Fast"},
        {"m/Logic/limit", "m/Logic/limit"},
        {"Logic", "m/Logic"},
    };
    for (const auto& [reference, name] : references)
        expectParts(runOn("query " + reference).out, {"observed", "  " + name + "\n"});

    const std::vector<std::pair<std::string, std::string>> refusals{
        {"C", "no such block"},
        {"A:3", "has no output port 3; it has 1 (y), 2 (valid)"},
        {"A:0", "no output port 0"},
        {"Logic:1", "it has none"},
        {"Logic/Off", "\"Off\""},
        {"Logic/Both", "say which by its SSID, 5 or 8"},
        {"\"\"", "no such block"},
        {"*", "no such block"},
        {"\"\x1b[2J\n\t\xc2\x9b\"", "\"\\x1b[2J\\n\\t\\x9b\": the"},
    };
    for (const auto& [reference, message] : refusals) expectSaid("query -- " + reference, 2, message);
    write(replaced(kModel, "[\"p\", \"q\"]", "[\"p\", \"p\"]"));
    expectParts(runOn("query A/B:p").err, {"two ports of \"A/B\" are named \"p\"; use the number"});
}

TEST_F(Commands, queryTellsByItsExitCode) {
    EXPECT_EQ(query("A:1 Logic/On/Fast"), 0);
    EXPECT_EQ(query("A:1 A:2"), 1);
    EXPECT_EQ(query("A nowhere"), 2);
    EXPECT_EQ(query("Logic/On/Fast --activity Self"), 0);
    EXPECT_EQ(query("Logic/On/Fast --activity Leaf"), 1);
    EXPECT_EQ(query("Logic --ssid 4"), 0);
    EXPECT_EQ(query("Logic/On/Fast --activity Idle"), 2);
    EXPECT_EQ(query("Logic/On/Fast --activity Data"), 2);
    EXPECT_EQ(query("Logic/limit --activity Child"), 2);
    EXPECT_EQ(query("A --activity Self"), 2);
    EXPECT_EQ(query(""), 2);
}

TEST_F(Commands, markAddsWhatIsAskedForAndTheFileSaysSo) {
    expectSaid(
        "mark A/B:q --name flow --decimation 3 --max-points 7 --hide --frame-based --buffered "
        "--visual-type dial",
        0, "marked m/A/B:2 (q)");
    expectParts(read(), {"\"BlockPath_\": \"A/B\"", "\"EID_\": \"3\"", "\"OutputPortIndex_\": 2",
                         "\"SignalName_\": \"flow\"", "\"SubSysPath_\": \"A\"", "\"Decimation_\": 3",
                         "\"MaxPoints_\": 7", "\"TargetBufferedStreaming_\": 1", "\"HideInPLV_\": 1", "\"dial\""});
    EXPECT_EQ(query("A/B:q"), 0);
    EXPECT_EQ(query("A/B:p"), 1);

    EXPECT_EQ(runOn("mark Logic Logic/limit").code, 0);
    expectParts(read(), {R"("DomainParams_": {"Activity": "Self", "SSID": "0"})",
                         R"("DomainParams_": {"Activity": "Data", "SSID": "7"})"});
    EXPECT_EQ(query("Logic --activity Self"), 0);
}

TEST_F(Commands, whatIsMarkedStaysUnlessAgainIsSaid) {
    expectSaid("mark A:1 Logic/On/Fast", kNothing, "already marked m/A:1 (y)\nalready marked m/Logic/On/Fast (Self)\n");
    EXPECT_EQ(read(), kModel);
    expectParts(runOn("mark A:1 --again").out, {"saved with 3 signals"});
    expectParts(runOn("unmark A").out, {"saved with 1 signal and 2 clients\n"});
}

TEST_F(Commands, signalsExcludedFromSavingAreLeftOutAndTheUserIsTold) {
    expectSaid("mark A:2 --exclude-from-save", 0, "1 signal excluded from saving was left out");
    EXPECT_EQ(read(), kModel);
}

TEST_F(Commands, patternsMatchFullPathsNumbersAndNames) {
    expectParts(runOn("mark --all m/A* --except *:q").out, {"saved with 5 signals"});
    EXPECT_EQ(query("A:2 A/B:1:1 A/B:p"), 0);
    EXPECT_EQ(query("A/B:q"), 1);
    EXPECT_EQ(runOn("mark --all B*").code, kNothing);
    EXPECT_EQ(runOn("mark A --except A*").code, kNothing);
    expectParts(runOn("unmark --all m/Logic/* --all *:2").out, {"saved with 3 signals"});
    EXPECT_EQ(runOn("unmark --all m/Logic/*").code, kNothing);
    EXPECT_EQ(runOn("unmark Logic/On/Fast").code, kNothing);
    expectParts(runOn("unmark --all m/Logics*").err, {"nothing matches \"m/Logics*\"; did you mean \"m/Logic*\"?"});
    expectParts(runOn("unmark --all *lgoic/?n/*").err, {"did you mean \"*Logic/?n/*\"?"});
    expectParts(runOn("mark --all m/* --except m/Z*").err, {"\"m/Z*\" leaves nothing out"});
}

TEST_F(Commands, patternsCountCharacters) {
    write(replaced(replaced(kModel, "\"path\": \"A/B:1\"", "\"path\": \"Größe\""), "\"path\": \"A/B\"",
                   "\"path\": \"[a]b😀\""));
    const std::pair<std::string, bool> cases[] = {
        {"m/Gr??e", true},      {"m/Gr???e", false},      {"m/Gr[oö]ße", true},   {"m/Gr[!ö]ße", false},
        {"m/Gr[n-p]ße", false}, {"m/Gr[^a-z]*e:y", true}, {"m/*ö*ß*1", true},     {"m/*ö*x*", false},
        {"m/[a]b?", false},     {"m/\\[a]b?", true},      {"m/[[]a]b😀:p", true},  {"m/[]x[]*", true},
        {"m/[a", false},        {"m/Größe*?", true},      {"m/Größe??*?", false}, {"*", true},
    };
    for (const auto& [pattern, isMatch] : cases)
        EXPECT_EQ(runOn("mark --dry-run --all " + pattern).code, isMatch ? kSuccess : kNothing) << pattern;
}

TEST_F(Commands, chartOptionsApplyToAllThatIsSelectedOrAreRefused) {
    EXPECT_EQ(runOn("mark Logic/On/Fast --activity Child").code, 0);
    EXPECT_EQ(runOn("unmark --all m/* --activity Child").code, 0);
    EXPECT_EQ(read(), kModel);
    expectSaid("unmark --all m/* --activity Idle", 2, "is not one of Self, Child, Leaf, Data");
    expectSaid("unmark --all m/* --ssid 4", 2, "--ssid is for one chart");
    expectSaid("unobserve --all m/* --ssid 4", 2, "--ssid is for one chart");
    expectSaid("unmark --dangling --activity Self", 2, "name the chart as REF");
    expectSaid("query Logic/On/Fast --ssid 5", 2, "is 4, not 5");
    expectSaid("query Logic --ssid 9", 2, "the chart \"Logic\" has no item with the SSID 9");
    expectSaid("query A --ssid 4", 2, "the block \"A\" is not a chart");
    EXPECT_EQ(query("Logic/Both --ssid 5"), 1);
    EXPECT_EQ(read(), kModel);
}

TEST_F(Commands, danglingSignalsAreRemovedOnDemand) {
    write(replaced(kModel, "\"EID_\": \"1\"", "\"EID_\": \"9\""));
    EXPECT_EQ(runOn("unmark Logic/On/Fast").code, kBadFile);
    const testing::Finished finished = runOn("unmark --dangling");
    EXPECT_EQ(finished.code, 0);
    expectParts(finished.out, {"on A (gone)"});
    expectParts(finished.err, {"left without a signal: client 1"});
    EXPECT_EQ(query("Logic/On/Fast"), 0);
}

TEST_F(Commands, signalsFollowAMovedBlock) {
    write(replaced(kModel, "{\"path\": \"A\", ", "{\"path\": \"Z\", "));
    EXPECT_EQ(query("Z:1"), 0);
    expectParts(runOn("mark Z:1").out, {"already marked"});
    EXPECT_EQ(runOn("mark Z:2").code, 0);
    EXPECT_FALSE(contains(read(), "\"BlockPath_\": \"A\""));
}

TEST_F(Commands, aBlockAtTheOldPathOfAMovedOneIsNotObserved) {
    const std::string moved = replaced(kModel, "{\"path\": \"A\", \"eid\": \"1\"", "{\"path\": \"Z\", \"eid\": \"1\"");
    write(replaced(moved, "{\"path\": \"A/B:1\"", "{\"path\": \"A\""));
    EXPECT_EQ(query("Z:1"), 0);
    EXPECT_EQ(query("A:1"), 1);
    expectParts(runOn("mark A").out, {"marked m/A:1 (y) as signal 3"});
    EXPECT_EQ(runOn("unmark Z").code, 0);
    EXPECT_EQ(query("A:1"), 0);
}

TEST_F(Commands, portsWithAnotherLogicalNumberAreObserved) {
    for (const int port : {1, 2}) {
        const std::string moved =
            replaced(kModel, "\"OutputPortIndex_\": 1", "\"OutputPortIndex_\": " + std::to_string(port));
        write(replaced(moved, "\"LogicalPortIndex_\": 0", "\"LogicalPortIndex_\": " + std::to_string(3 - port)));
        EXPECT_EQ(query("A:1"), port - 1);
        EXPECT_EQ(query("A:2"), 2 - port);
    }
}

TEST_F(Commands, signalsTakeTheNewNameOfARenamedState) {
    write(replaced(kModel, "\"path\": \"On/Fast\"", "\"path\": \"On/Faster\""));
    expectParts(runOn("show").out, {"Logic/On/Faster "});
    EXPECT_EQ(runOn("mark A:2").code, 0);
    expectParts(read(), {"\"SubPath_\": \"On/Faster\""});
}

TEST_F(Commands, showListsSignalsAndBlocks) {
    expectParts(runOn("show").out, {"1  A:1 (y)               speed \"ü\"  decimation 2, max points 100, frame-based",
                                    "[x] 1 y  [ ] 2 valid", "(state) On/Fast #4  [x] Self"});
    expectParts(runOn("show --json").out, {R"("portName": "valid", "observed": false})"});
}

TEST_F(Commands, aSaveThatCannotBeToldIsNamed) {
    std::ostringstream err;
    std::ostringstream broken;
    broken.setstate(std::ios::badbit);
    EXPECT_EQ(runCommandLine({"mark", path(), "A:2"}, {broken, err}), kBadFile);
    EXPECT_TRUE(contains(err.str(), path() + ": saved, but")) << err.str();
    EXPECT_NE(read(), kModel);
}

TEST_F(Commands, tourTellsTheMainJobOnACopy) {
    const testing::Finished tour = runOn("tour");
    EXPECT_EQ(tour.code, 0) << tour.err;
    EXPECT_EQ(tour.err, "");
    EXPECT_EQ(read(), kModel);
    expectParts(
        tour.out,
        {"m/A:2 (valid): marked already, nothing added", "handles are new",
         "by handle not observed; by path observed; by handle again observed", "marked again: observed, the same UUID",
         "ks_scope_observer: m/A > m/A, port 1, decimation 2", "received m -> m_draft\n", "received m -> m_final\n",
         "split again: ", "received block_param_change for m_final/A", "client 2 (hmi_web_widget_observer) of",
         "of 4 clients, 2 are left", "received m_final -> m\n"});
    write("{\"kestrelModel\": 1, \"name\": \"e\", \"blocks\": [], \"signals\": [], \"clients\": []}");
    EXPECT_EQ(runOn("tour").code, 0);
    write("{");
    expectParts(runOn("tour").err, {path() + ":1:2: not JSON"});
    ::setenv("TMPDIR", path().c_str(), 1);
    expectParts(runOn("tour").err, {"no directory for the copy can be made: Not a directory; set TMPDIR to one"});
    ::unsetenv("TMPDIR");
}

TEST_F(Commands, usageErrorsAreErrors) {
    EXPECT_EQ(run({}).code, 2);
    EXPECT_TRUE(contains(run({"paint"}).err, "kshmi: there is no command \"paint\"; use one of tour, example, show"));
    EXPECT_TRUE(contains(run({"--nonsense"}).err, "no option \"--nonsense\" in front of a command; \"kshmi help\""));
    EXPECT_EQ(run({"--json", "show", path()}).code, 2);
    expectParts(runOn("query A --ssid -1").err, {"kshmi: --ssid: \"-1\": give a whole number from 0 to"});
    EXPECT_EQ(runOn("mark").code, 2);
    EXPECT_EQ(runOn("mark A --decimation 0").code, 2);
    EXPECT_EQ(runOn("mark A --frobnicate").code, 2);
    EXPECT_EQ(run({"--version"}).code, 0);
    EXPECT_TRUE(contains(run({"mark", "--help"}).out, "Examples:"));
}

}  // namespace
}  // namespace kshmi
