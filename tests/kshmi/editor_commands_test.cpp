#include "tests/kshmi/kshmi_test.h"

namespace kshmi {

using namespace workbench;
namespace {

using testing::contains;
using testing::Finished;
using testing::kModel;
using testing::replaced;

// What an editor does besides marking. Every command runs on a fresh copy of the model unless a test says otherwise.
class EditorCommands : public testing::KshmiTest {
protected:
    EditorCommands() { write(kModel); }
};

TEST_F(EditorCommands, whatCannotBeDoneIsRefusedAndChangesNothing) {
    const std::pair<const char*, const char*> refusals[] = {
        {"observe A:2 --type t", "\"A:2\": is not marked; mark it first"},
        {"observe A", "--type"},
        {"observe A --type \"\"", "the kind of client is empty"},
        {"observe A --type t --update-rate -1", "--update-rate: \"-1\": give a whole number from 0 to 4294967295"},
        {"observe A --type t --channel 4294967296", "--channel: \"4294967296\": give a whole number"},
        {"observe A --type t --update-rate 0x10", "--update-rate: \"0x10\": give a whole number"},
        {"mark A --decimation 1e3", "--decimation: \"1e3\": give a whole number from 1 to 2147483647"},
        {R"(observe A --type t --params {"a":[1,})", "--params:1:9: not JSON"},
        {R"(observe A --type t --params {"a":{"$class":"b"}})", "--params:1: /a: the class \"b\""},
        {"unobserve", "nothing to work on"},
        {"unobserve A:2", "\"A:2\": has no client"},
        {"unobserve Logic/On/Fast", "\"Logic/On/Fast\": has no client"},
        {"unobserve --uuid c-3", "no client has the UUID or position \"c-3\""},
        {"unobserve --type t", "no client has the type \"t\""},
        {"unobserve A --unused", "give it alone"},
        {"rename \xFF", "argument 3, "},
        {"rename x a/b", "\"a/b\" contains '/' or ':'"},
        {"rename \"\"", "A model needs a name"},
        {"move C D", "\"C\": the model \"m\" has no such block"},
        {"move A Logic", "has a block with the path \"Logic\""},
        {"move A A/C", "cannot move below itself"},
        {"move A C//D", "model.json: \"C//D\": is not a path"},
        {"renumber C 1", "has no such block"},
        {"renumber A 1,x", "give the ports' new numbers"},
        {"renumber A 1,", "give the ports' new numbers"},
        {"renumber A 1,1", "port 2 would have the number 1 like another one"},
        {"renumber A 0", "port 2 cannot keep its number; give numbers for all 2 ports, e.g. 0,1"},
        {"renumber A 1,2,3", "3 numbers given, and the block has 2 output ports"},
        {"ports --below C", "the model \"m\" has no such block"},
    };
    for (const auto& [line, message] : refusals) {
        const std::string said = message;
        const bool isMiss = contains(said, "no client");
        expectSaid(line, isMiss ? kNothing : kWrongUsage, said);
        EXPECT_EQ(read(), kModel) << line;
    }
}

TEST_F(EditorCommands, dryRunsAndWhatIsSoAlreadyChangeNothing) {
    const std::pair<std::string, const char*> cases[] = {
        {"observe A --type t --dry-run", "would add client 3 (t) on m/A:1"},
        {"unobserve A --dry-run", "would remove client 1 (ks_scope_observer) on m/A:1"},
        {"unobserve --unused --dry-run", "would drop client 2 (hmi_web_widget_observer) of the absent signal"},
        {"rename n --dry-run", "the interface manager would receive m -> n"},
        {"renumber A 0,1 --dry-run", "on port 1 would be lost"},
        {"rename n --dry-run", "would rename m to n"},
        {"rename m", "already named m"},
        {"move A C --dry-run", "would move A/B to C/B"},
        {"move A m/A", "nothing to change"},
        {"renumber A 2,1 --dry-run", "would renumber port 1 (y) to 2"},
        {"renumber A \"\"", "nothing to change"},
        {"renumber A 1,2", "nothing to change"},
        {"unmark A --dry-run", "would remove signal 1"},
        {"mark --all * --dry-run", "would mark m/A:2 (valid)"},
    };
    for (const auto& [line, said] : cases) {
        expectSaid(line, line.ends_with("--dry-run") ? kSuccess : kNothing, said);
        EXPECT_EQ(read(), kModel) << line;
    }
}

TEST_F(EditorCommands, observeAddsAClientThatTheFileKeeps) {
    runOn("set --all * --confirm");
    const Finished finished = runOn(
        "observe Logic/On/Fast --type ks_lamp_observer --params {\"on\":[true]} --update-rate 4294967295 "
        "--channel 010 --imaginary --bus-leaf a.b");
    EXPECT_EQ(finished.err, "");
    expectParts(finished.out, {"added client 3 (ks_lamp_observer) on m/Logic/On/Fast (Self)"});
    expectParts(read(), {R"("ModelPath_": ["Logic"],
      "ModelPathEID_": ["4"],
      "SourceModel_": "m",
      "SignalUUID_": "u-2",
      "ObserverType_": "ks_lamp_observer",
      "ObserverParams_": {"on": [true]},
      "UpdateRate_": 4294967295,
      "DimensionChannel_": 10,
      "ObserveImaginaryPart_": true,
      "BusLeafPath_": "a.b"
    })"});
    const std::string saved = read();
    EXPECT_EQ(runOn("mark A:2 --exclude-from-save").code, 0);
    EXPECT_EQ(read(), saved);

    const Finished deprecated = runOn("observe A --type hmi_web_widget_observer");
    EXPECT_EQ(deprecated.code, 0);
    EXPECT_TRUE(contains(deprecated.err, "warning: clients of the type \"hmi_web_widget_observer\" are deprecated"));
}

TEST_F(EditorCommands, observeWithoutAnActivityMeansTheOneThatMarkMeans) {
    EXPECT_EQ(runOn("mark Logic/On/Fast --activity Child").code, 0);
    EXPECT_EQ(runOn("mark Logic --activity Leaf").code, 0);
    const auto observed = [&](const char* reference) { return runOn("observe --type t " + std::string(reference)); };
    EXPECT_TRUE(contains(observed("Logic").out, "on m/Logic (Leaf)"));
    EXPECT_EQ(runOn("mark Logic --activity Child").code, 0);
    EXPECT_TRUE(contains(observed("Logic").err, "say which activity: Leaf, Child"));
    EXPECT_EQ(runOn("mark Logic --activity Self").code, 0);
    EXPECT_TRUE(contains(observed("Logic").out, "on m/Logic (Self)"));
    EXPECT_TRUE(contains(observed("Logic/On/Fast").out, "(Self)"));
    expectParts(runOn("clients").out, {"m/Logic/On/Fast (Self)"});
    expectParts(runOn("clients --json").out, {R"("activity": "Leaf")"});
}

TEST_F(EditorCommands, unobserveRemovesWhatIsSelected) {
    write(replaced(kModel, "hmi_web_widget_observer", "ks_gauge_observer"));
    const std::string model = read();
    struct Case {
        const char* line;
        bool firstStays, secondStays;
    };
    const Case cases[] = {
        {"unobserve A", false, true},
        {"unobserve A --type ks_gauge_observer", true, true},
        {"unobserve --type ks_gauge_observer", true, false},
        {"unobserve --type ks_gauge_observer --type ks_scope_observer", false, false},
        {"unobserve --uuid c-2", true, false},
        {"unobserve --all m/A*", false, true},
        {"unobserve --all m/A* --except *:1", true, true},
        {"unobserve --dangling", true, false},
        {"unobserve --unused", true, false},
        {"unobserve A --dangling", false, false},
    };
    for (const Case& one : cases) {
        write(model);
        EXPECT_EQ(runOn(one.line).code, one.firstStays && one.secondStays ? kNothing : kSuccess) << one.line;
        EXPECT_EQ(contains(read(), "\"c-1\""), one.firstStays) << one.line;
        EXPECT_EQ(contains(read(), "\"c-2\""), one.secondStays) << one.line;
    }
}

TEST_F(EditorCommands, validationLeavesClientsOfModelsThatAreNotOpen) {
    const std::string unknown = replaced(kModel, "\"SignalUUID_\": \"u-1\"", "\"SignalUUID_\": \"u-8\"");
    for (const std::string& elsewhere : {replaced(unknown, "\"SourceModel_\": \"m\"", "\"SourceModel_\": \"other\""),
                                         replaced(unknown, "[\"A\"]", "[\"A\", \"other/A\"]")}) {
        write(elsewhere);
        expectParts(runOn("clients").out, {"in a model that is not open"});
        runOn("unobserve --dangling");
        expectParts(read(), {"\"c-1\""});
        write(elsewhere);
        runOn("unobserve --unused");
        expectParts(read(), {"\"c-1\""});
        EXPECT_FALSE(contains(read(), "\"c-2\""));
    }
}

TEST_F(EditorCommands, clientsTellsWhoWatchesWhatWhereItIsNow) {
    write(replaced(kModel, "{\"path\": \"A\", ", "{\"path\": \"Z\", "));
    const Finished listed = runOn("clients");
    EXPECT_EQ(listed.err, "");
    expectParts(listed.out, {"ks_scope_observer        m/Z:1",
                             "channel 4294967295, decimation 2, max points 100  imaginary part, leaf bus.leaf",
                             "signal \"u-9\"", "dangling, deprecated"});
    expectParts(runOn("clients --json").out, {R"("path": ["m/Z", "m/Z"], "block": "m/Z", "port": 1, "decimation": 2)",
                                              R"("path": [], "decimation": 1, "maxPoints": 0)"});
    expectParts(runOn("show").out, {"1  ks_scope_observer                1  speed \"ü\""});
    expectParts(runOn("show --json").out,
                {R"("signal": {"uuid": "u-9", "position": null}, "state": "dangling", "deprecated": true)"});
}

TEST_F(EditorCommands, unmarkingAndDeletingPortsNamesTheClientsLeftWithoutASignal) {
    const char* const kWarning = "warning: left without a signal: client 1 (ks_scope_observer); \"kshmi unobserve";
    expectParts(runOn("unmark A").err, {kWarning});
    write(kModel);
    expectParts(runOn("renumber A 0,1").err, {kWarning});
    write(kModel);
    runOn("set --all * --confirm");
    EXPECT_EQ(runOn("unmark A --dry-run").err,
              "kshmi: warning: would be left without a signal: client 1 (ks_scope_observer)\n");
    EXPECT_EQ(runOn("unmark Logic/On/Fast").err, "");
}

TEST_F(EditorCommands, renamingTwiceTellsTheManagerTheNameThatItKnows) {
    const Finished finished = runOn("rename n o");
    // A file that was written before names were kept says so.
    EXPECT_TRUE(finished.err.starts_with("notice: ") && finished.err.ends_with(" keeps the names of today\n"));
    expectParts(finished.err, {": 2 marks are without a name, "});
    expectParts(finished.out, {"renamed m to n\n  renamed in clients: 1 source model and 1 \"ModelName\"",
                               "the interface manager received m -> n\n", "renamed n to o\n",
                               "the interface manager received m -> o\n"});
    expectParts(read(), {"\"name\": \"o\"", "\"SourceModel_\": \"o\"", "{\"ModelName\": \"o\", \"range\""});
    EXPECT_EQ(runOn("query o/A:1 o/Logic/On/Fast").code, 0);
    EXPECT_EQ(runOn("rename m").code, 0);
    EXPECT_EQ(read(), kModel);
    expectParts(runOn("rename n m").out, {"is not told: the set was last known by this name"});
    EXPECT_EQ(read(), kModel);
}

TEST_F(EditorCommands, signalsAndClientsFollowAMovedSubtree) {
    runOn("set --all * --confirm");
    EXPECT_EQ(runOn("mark A/B:q").code, 0);
    EXPECT_EQ(runOn("observe A/B:q --type t").code, 0);
    const std::string before = read();
    const Finished finished = runOn("move m/A Top/New");
    EXPECT_EQ(finished.err, "");
    expectParts(finished.out, {"moved A/B to Top/New/B\nfollowing: 2 signals, 2 clients\n"});
    expectParts(read(), {"{\"path\": \"Top/New/B:1\"", "\"BlockPath_\": \"Top/New\"", "\"SubSysPath_\": \"Top\"",
                         "\"BlockPath_\": \"Top/New/B\"", "\"SubSysPath_\": \"Top/New\"",
                         "\"ModelPath_\": [\"Top/New\"]", "\"ModelPath_\": [\"Top/New/B\"]"});
    EXPECT_EQ(runOn("query Top/New:1 Top/New/B:q").code, 0);
    EXPECT_EQ(runOn("move Top/New A").code, 0);
    EXPECT_EQ(read(), before);
}

TEST_F(EditorCommands, aSubsystemPathFartherUpFollows) {
    EXPECT_EQ(runOn("mark A/B:1:1").code, 0);
    EXPECT_EQ(runOn("move A/B:1 A/B/C").code, 0);
    write(replaced(read(), "\"SubSysPath_\": \"A/B\"", "\"SubSysPath_\": \"A\""));
    EXPECT_EQ(runOn("move A Top/New").code, 0);
    expectParts(read(), {"\"SubSysPath_\": \"Top/New\""});
}

TEST_F(EditorCommands, aBlockWithTheModelsNameIsMovedAndListedByItsOwnPath) {
    write(replaced(kModel, "{\"path\": \"A/B\"", "{\"path\": \"m/D\""));
    EXPECT_EQ(runOn("move m/D m/E").code, 0);
    expectParts(read(), {"{\"path\": \"m/E\""});
    EXPECT_EQ(runOn("mark m/m/E:1").code, 0);
    expectParts(runOn("ports --below m/m").out, {"model m: 1 observed port"});
    expectParts(runOn("ports --below /m").out, {"model m: 1 observed port"});
    expectParts(runOn("ports --below m").err, {"can be the whole model or \"m/m\""});
}

TEST_F(EditorCommands, recordsWithoutIdentifiersFollowByPath) {
    write(replaced(replaced(kModel, "\"EID_\": \"1\"", "\"EID_\": \"\""), "[\"1\"]", "[]"));
    EXPECT_EQ(runOn("move A C").code, 0);
    expectParts(read(), {"\"BlockPath_\": \"C\""});
    expectParts(read(), {"\"ModelPath_\": [\"C\"]"});
}

TEST_F(EditorCommands, signalsFollowRenumberedPorts) {
    struct Case {
        std::string numbers, outputs;
        std::string observed;  // of the ports p, q and r, all of which were, by name
        std::size_t signals;
    };
    const Case cases[] = {
        {"2,1", R"(["q", "p", "r"])", "A/B:p A/B:q A/B:r", 3},
        {"1,0,2", R"(["p", "r"])", "A/B:p A/B:r", 2},
        {"\"\"", R"(["p", "q", "r"])", "A/B:p A/B:q A/B:r", 3},
        {"3,1,2", R"(["q", "r", "p"])", "A/B:p A/B:q A/B:r", 3},
        {"0,0,0", "[]", "", 0},
    };
    // With and without logical port numbers, which come first where a port is looked up by path.
    for (const bool isLogical : {false, true}) {
        write(replaced(kModel, R"(["p", "q"])", R"(["p", "q", "r"])"));
        EXPECT_EQ(runOn("mark A/B:p A/B:q A/B:r").code, 0);
        std::string model = read();
        for (int port = 1; isLogical && port <= 3; ++port) {
            const std::string line =
                "\"OutputPortIndex_\": " + std::to_string(port) + ",\n      \"LogicalPortIndex_\": ";
            const std::size_t from = model.find("\"BlockPath_\": \"A/B\"");
            model = model.substr(0, from) + replaced(model.substr(from), line + "0", line + std::to_string(port));
        }
        for (const Case& one : cases) {
            write(model);
            EXPECT_LE(runOn("renumber A/B " + one.numbers).code, kNothing) << one.numbers;
            expectParts(read(), {one.outputs});
            EXPECT_EQ(runOn("query A:1 " + one.observed).code, 0) << one.numbers;
            expectSaid("ports --below A/B", 0, "model m: " + std::to_string(one.signals) + " observed port");
        }
    }
}

TEST_F(EditorCommands, portsListsWhatAnEditorAsksFor) {
    EXPECT_EQ(runOn("mark A/B:q --hide --visual-type dial").code, 0);
    expectSaid("ports", 0, "model m: 2 observed ports\n");
    expectSaid("ports --no-hidden", 0, "model m: 1 observed port\n");
    expectSaid("ports --hidden --below m/A/B", 0, "model m: 1 observed port\n");
    expectSaid("ports --visual-type scope", 0, "model m: 1 observed port\n");
    expectSaid("ports --below Logic", 0, "model m: 0 observed ports\n");
    expectSaid("ports --json", 0, R"("block": "m/A/B", "port": 2, "portName": "q", "name": "q")");
    expectParts(runOn("show").out, {"\nA * ", "\n  B * ", "\n  B:1  ", "\nLogic\n"});
}

TEST_F(EditorCommands, everyCommandExplainsItselfWithExamples) {
    for (const char* command : {"observe", "unobserve", "clients", "ports", "rename", "move", "renumber"})
        expectParts(run({command, "--help"}).out, {std::string("kshmi ") + command + " cruise.json"});
}

}  // namespace
}  // namespace kshmi
