#include "tests/kshmi/kshmi_test.h"

namespace kshmi {
namespace {

using testing::contains;
using testing::Finished;
using testing::kModel;
using testing::replaced;

// Signals and clients that are changed where they are. Every case starts with a fresh copy of the model.
class Settings : public testing::KshmiTest {
protected:
    Settings() { write(kModel); }
};

TEST_F(Settings, areChangedInPlaceAndNothingElse) {
    struct Case {
        const char* words;
        std::pair<std::string, std::string> first, second;  // what is replaced in the file; nothing for empty
    };
    const Case cases[] = {
        {"A --decimation 7 --max-points 9", {"\"Decimation_\": 2", "\"Decimation_\": 7"}, {": 100,", ": 9,"}},
        {"A --name flow", {R"("speed \"ü\"")", "\"flow\""}, {}},
        {"A --hide --no-frame-based", {"\"HideInPLV_\": 0", "\"HideInPLV_\": 1"}, {"Based_\": 1", "Based_\": 0"}},
        {"--all A:1 --buffered --visual-type dial", {"Streaming_\": 0", "Streaming_\": 1"}, {"\"scope\"", "\"dial\""}},
        {"--signal u-1 --decimation 3", {"\"Decimation_\": 2", "\"Decimation_\": 3"}, {}},
        {"--signal 2 --name On", {"\"SignalName_\": \"\"", "\"SignalName_\": \"On\""}, {}},
        {"Logic/On/Fast --max-points 5", {"\"MaxPoints_\": 0", "\"MaxPoints_\": 5"}, {}},
        {"A --clients --update-rate 5", {"\"UpdateRate_\": 1", "\"UpdateRate_\": 5"}, {}},
        {"--client c-2 --params [7]", {"[null, -0.0, \"x\"]", "[7]"}, {}},
        {"--client 2 --bus-leaf b --imaginary",
         {"\"BusLeafPath_\": \"\"", "\"BusLeafPath_\": \"b\""},
         {"Part_\": false", "Part_\": true"}},
        {"--client 1 --dimension 3 --no-imaginary", {"4294967295", "3"}, {"Part_\": true", "Part_\": false"}},
        {"A --clients --decimation 4 --channel 2", {"\"Decimation_\": 2", "\"Decimation_\": 4"}, {"4294967295", "2"}},
        {"--client 1 --new-type ks_gauge_observer", {"ks_scope_observer", "ks_gauge_observer"}, {}},
        {"A --show --decimation 2", {}, {}},
        {"A --clients --type none --update-rate 5", {}, {}},
        {"A --include-in-save", {}, {}},
    };
    for (const Case& one : cases) {
        write(kModel);
        std::string expected = kModel;
        for (const auto& [from, to] : {one.first, one.second})
            if (!from.empty()) expected = replaced(expected, from, to);
        const Finished finished = runOn("set " + std::string(one.words));
        EXPECT_EQ(finished.code, expected == kModel ? kNothing : kSuccess) << one.words << '\n' << finished.err;
        EXPECT_EQ(read(), expected) << one.words << '\n' << finished.out << finished.err;
    }
}

TEST_F(Settings, belongToWhatTheyAreSaidOf) {
    const std::pair<const char*, const char*> refusals[] = {
        {"set A", "nothing to set"},
        {"set --decimation 2", "nothing to work on"},
        {"set A --update-rate 2", "need --clients"},
        {"set A --clients", "nothing to set"},
        {"set A --clients --hide", "say what to set of them"},
        {"set --client 1 --decimation 2 --update-rate 1", "need a signal"},
        {"set --clients --client 1 --update-rate 1", "--clients means the clients of what is selected"},
        {"set A:2 --decimation 2", "\"A:2\": is not marked"},
        {"set A --decimation 0", "--decimation"},
        {"set A --hide --show", "excludes"},
        {"set A --clients --new-type \"\"", "the kind of client is empty"},
        {"set --signal u-9 --name x", "no signal has the UUID or position \"u-9\""},
        {R"(set A --clients --params "{\"a b\": 1}")", "\"a b\" cannot be the name of a parameter"},
        {"set --client 0 --params 1", "no client has the UUID or position \"0\""},
    };
    for (const auto& [line, message] : refusals) {
        const Finished finished = runOn(line);
        EXPECT_NE(finished.code, 0) << line;
        expectParts(finished.err, {message});
        EXPECT_EQ(read(), kModel) << line;
    }
}

TEST_F(Settings, ofMarkAreNeverIgnored) {
    const Finished refused = runOn("mark A:1 --decimation 7");
    EXPECT_EQ(refused.code, 2);
    expectParts(refused.err, {"m/A:1 (y) is marked already; \"kshmi set\" changes the settings"});
    expectParts(runOn("mark --all * --hide").err, {"m/A:1 (y) and 1 more are marked already"});
    EXPECT_EQ(read(), kModel);
    expectParts(runOn("mark A --skip-marked --decimation 7").out, {"already marked m/A:1", "marked m/A:2 (valid)"});
    expectParts(runOn("mark A:1 --again --decimation 7").out, {"as signal 4"});
}

TEST_F(Settings, thatLeaveASignalOutOfTheFileAreWarnedOf) {
    expectParts(runOn("mark A:2 --exclude-from-save").err,
                {"warning: the saved file does not have what is excluded from saving"});
    expectParts(runOn("set A --exclude-from-save").err,
                {"warning: 1 client watched what is excluded from saving and will find no signal in the file"});
    EXPECT_FALSE(contains(read(), "\"UUID\": \"u-1\""));
    expectParts(runOn("clients").out, {"dangling"});
}

TEST_F(Settings, aDeprecatedKindOfClientIsWarnedOf) {
    for (const char* line :
         {"set --client 1 --new-type hmi_web_widget_observer", "observe A:1 --type hmi_web_widget_observer"})
        expectParts(runOn(line).err, {"warning: clients of the type \"hmi_web_widget_observer\" are deprecated"});
}

TEST_F(Settings, clientsOfAnotherModelAreToldAndCanBeRemoved) {
    write(replaced(kModel, "\"SourceModel_\": \"m\"", "\"SourceModel_\": \"other\""));
    expectParts(runOn("clients").out, {"foreign: of the model other", "dangling, deprecated"});
    expectParts(runOn("clients --json").out, {R"("state": "foreign")", R"("state": "dangling")"});
    const std::pair<const char*, const char*> counts[] = {
        {"clients --state foreign", "1 client\n"},
        {"clients --foreign --dangling", "2 clients\n"},
        {"clients --state watching", "0 clients\n"},
        {"clients --state deprecated", "1 client\n"},
        {"clients A --type ks_scope_observer", "1 client\n"},
    };
    for (const auto& [line, count] : counts) expectParts(runOn(line).out, {count});
    EXPECT_EQ(runOn("unobserve --foreign").code, 0);
    EXPECT_FALSE(contains(read(), "\"c-1\""));
    EXPECT_TRUE(contains(read(), "\"c-2\""));
}

TEST_F(Settings, longReportsAreCutUnlessAllLinesAreAskedFor) {
    std::string ports = "\"p0\"";
    for (int i = 1; i < 60; ++i) ports += ", \"p" + std::to_string(i) + "\"";
    const std::string wide = replaced(kModel, "\"p\", \"q\"", ports);
    write(wide);
    const std::string rest = "... and 10 more lines; --all-lines prints them\n";
    expectParts(runOn("mark A/B --dry-run").out, {"would mark m/A/B:50 (p49)", rest});
    EXPECT_FALSE(contains(runOn("mark A/B --dry-run").out, "m/A/B:51 "));
    expectParts(runOn("mark A/B --dry-run --all-lines").out, {"would mark m/A/B:60 (p59) as signal 62\n"});
    expectParts(runOn("mark A/B").out, {rest});
    write(wide);
    runOn("set --all * --confirm");
    const Finished quiet = runOn("mark A/B --quiet");
    EXPECT_EQ(quiet.out + quiet.err, "");
    EXPECT_NE(read(), wide);
    EXPECT_EQ(runOn("query A/B -q").out, "");
}

}  // namespace
}  // namespace kshmi
