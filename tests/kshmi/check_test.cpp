#include <boost/json.hpp>

#include "tests/workbench/check/name_test.h"
#include "workbench/check/check_file.h"
#include "workbench/session/session.h"
#include "workbench/text/error.h"

// What "check" finds, how it tells, and what "prune" removes.
namespace kshmi::testing {
namespace {

namespace json = boost::json;

constexpr const char* kSelf = R"("Activity": "Self", "SSID": "4")";
const std::string kParked = R"(, "parked": [{"signal": )" + textOf(Mark{"p", 3, "old"}) + R"(, "clients": [)" +
                            clientText("pc", "p") + R"(], "lost": "port", "from": "m0"}])";

Mark inChart(const std::string& uuid, const std::string& params, const std::string& domain = "cw_state") {
    return {uuid, 0, "On", "2", "L", "On", domain, params};
}

// Every fault once, with what is in order between.
const std::string kFaulty =
    modelText(R"("x", "y", "z")",
              {{"a", 1, "x"},
               {"b", 1, "x", "9", "Gone"},
               {"c", 4, "w"},
               inChart("d", R"("Activity": "Self", "SSID": "5")"),
               {"e", 1, "x", "1", "A", "", "other"},
               inChart("f", R"("Activity": "Self")"),
               inChart("g", R"("Activity": "Sleep", "SSID": "4")"),
               {"", 2, "y"},
               {"a", 3, "z"},
               {"h", 1, "x"},
               {"i", 3, "z", ""},
               inChart("j", R"("Activity": "Self", "SSID": "4", "no name": "")"),
               {"k", 2, "z"},
               {"l", 2, "gone"},
               {"m", 2}},
              {clientText("1", "a"), clientText("2", "?"), clientText("3", "a", "t", "other"),
               clientText("4", "a", "hmi_web_widget_observer"), clientText("", "a"), clientText("1", "a"),
               clientText("7", "a", "t", "m", R"("a b": 1, "ok": {"in side": 2, "rows": [{"x y": 3}]})"),
               replaced(clientText("8", "a"), R"("ModelPathEID_": ["1"])", R"("ModelPathEID_": [])")},
              kParked);

class CheckCommand : public KshmiTest {
protected:
    static std::string codesIn(const std::string& out) {
        std::string codes;
        for (std::size_t at = out.find(" KS"); at != std::string::npos; at = out.find(" KS", at + 1))
            codes += out.substr(at, 6);
        return codes;
    }
    std::string codes(const std::string& name = "model.json") const { return codesIn(run({"check", path(name)}).out); }
};

TEST_F(CheckCommand, everyFaultIsFoundAtItsPlaceWithItsRemedy) {
    write(kFaulty);
    const Finished finished = runOn("check");
    EXPECT_EQ(finished.code, 1);
    EXPECT_EQ(codesIn(finished.out),
              " KS201 KS202 KS301 KS204 KS205 KS206 KS207 KS208 KS209 KS210 KS209 KS211 KS301 KS209 KS303 KS209 KS209"
              " KS304 KS401 KS402 KS403 KS404 KS405 KS407 KS407 KS407 KS406 KS501");
    expectParts(
        finished.out,
        {path() +
             ":3: error KS201: the model has no block with the element identifier \"9\" (path \"Gone\") "
             "[/signals/1/EID_]\n    kshmi prune " +
             path() + " --kinds gone\n",
         "error KS205: \"SSID\" is not a plain whole number [/signals/5/DomainParams_]\n    kshmi check",
         "error KS206: the activity \"Sleep\" is not one of the item's: Self, Child, Leaf "
         "[/signals/6/DomainParams_]\n    kshmi prune ",
         "KS208: signal 1 has the UUID \"a\" already [/signals/8/UUID]\n    kshmi check ", " --mend uuids\n",
         "KS301: the signal was marked as \"z\", which is port 3 now (\"y\" is here now) "
         "[/signals/12/OutputPortIndex_]",
         "KS303: the signal was marked as \"gone\", which the block does not have any more (\"y\" is here now)",
         "    kshmi set " + path() + " m/A:2 --confirm\n",
         "KS304: 1 signal was marked before names were kept [/signals/14]",
         "KS407: the parameter name \"ok.rows.x y\" cannot be a field name [/clients/6/ObserverParams_]",
         "KS402: the client belongs to the model \"other\", but this is \"m\" [/clients/2/SourceModel_]",
         "note KS501: the mark on \"old\" of \"A\" is parked with 1 client: its port was lost after \"m0\" [/parked/0]",
         "1 file: 12 errors, 15 warnings, 1 note\n"});
    EXPECT_EQ(read(), kFaulty);
}

TEST_F(CheckCommand, aPortAndAnItemOfOneNumberAreTwo) {
    Mark item = inChart("i", kSelf);
    item.markedName = "On";
    write(replaced(modelText(R"("x")", {{"p", 4, "d", "2", "L"}, item}), R"("outputs": [], "c)",
                   R"("outputs": ["a", "b", "c", "d"], "c)"));
    EXPECT_EQ(codes(), "");
}

TEST_F(CheckCommand, whatDoesNotOpenHasAnErrorAndWhatHasNoneOpens) {
    Mark state = inChart("b", kSelf);
    state.markedName = "On";
    const std::string good = modelText(R"("x", "y")", {{"a", 1, "x"}, state}, {clientText("1", "a")});
    const std::pair<const char*, const char*> edits[] = {
        {"\"name\"", "\"nam\""},
        {"\"eid\": \"2\"", "\"eid\": \"1\""},
        {"\"eid\": \"2\"", "\"eid\": \"\""},
        {"\"path\": \"L\"", "\"path\": \"A\""},
        {"\"path\": \"L\"", "\"path\": \"a//b\""},
        {"\"ssid\": 7", "\"ssid\": 4"},
        {"\"ssid\": 7", "\"ssid\": 0"},
        {"\"path\": \"On\"", "\"path\": \"\""},
        {"\"UUID\": \"a\"", "\"UUID\": \"\""},
        {"\"UUID\": \"a\"", "\"UUID\": \"b\""},
        {"\"UUID\": \"a\", ", ""},
        {"\"UUID\": \"a\"", "\"UUID\": null"},
        {"\"Decimation_\": 1", "\"Decimation_\": 0"},
        {"\"Decimation_\": 1, ", ""},
        {"\"OutputPortIndex_\": 1", "\"OutputPortIndex_\": 3"},
        {"\"OutputPortIndex_\": 1", "\"OutputPortIndex_\": -1"},
        {"\"SubPath_\": \"\"", "\"SubPath_\": \"s\""},
        {"\"EID_\": \"1\"", "\"EID_\": \"7\""},
        {"\"EID_\": \"1\"", "\"EID_\": \"2\""},
        {"cw_state", "cw_data"},
        {"cw_state", "x"},
        {"\"SSID\": \"4\"", "\"SSID\": \"04\""},
        {"\"SSID\": \"4\"", "\"SSD\": \"4\""},
        {"\"Self\"", "\"self\""},
        {"\"UUID\": \"1\"", "\"UUID\": \"\""},
        {"\"SourceModel_\": \"m\", ", ""},
        {"\"ModelPath_\": [\"A\"]", "\"ModelPath_\": \"A\""},
        {"\"SignalUUID_\": \"a\"", "\"SignalUUID_\": \"z\""},
        {"\"ModelPathEID_\": [\"1\"]", "\"ModelPathEID_\": []"},
    };
    workbench::enterHost({});
    const auto opens = [&] {
        try {
            workbench::Session session(path());
            return true;
        } catch (const workbench::Error&) {
            return false;
        }
    };
    for (const auto& [what, with] : edits) {
        write(replaced(good, what, with));
        const workbench::CheckedFile checked = workbench::checkFile(path());
        EXPECT_EQ(checked.count(workbench::FindingLevel::error) == 0, opens()) << with;
        EXPECT_FALSE(checked.findings.empty()) << with;
        EXPECT_LE(checked.findings.size(), 2U) << with;
    }
    write(good);
    EXPECT_EQ(codes(), "");
}

TEST_F(CheckCommand, filesAreCheckedEachOnItsOwnAndTheWorstCounts) {
    write(modelText("\"x\"", {{"a", 1}}));
    write(modelText("\"x\"", {{"a", 1, "x"}}), "clean.json");
    write("{\n  \"kestrelModel\": 1,\n  oops", "broken.json");
    const auto check = [](std::vector<std::string> words) {
        words.insert(words.begin(), "check");
        return run(std::move(words));
    };
    EXPECT_EQ(check({path(), path("clean.json")}).code, 0);
    EXPECT_EQ(check({path(), path("clean.json"), "--fail-on", "warning"}).code, 1);
    EXPECT_EQ(check({path("clean.json"), "--fail-on", "warning"}).code, 0);
    const Finished broken = check({path("broken.json"), path()});
    EXPECT_EQ(broken.code, 1);
    expectParts(broken.out,
                {path("broken.json") + ":3:3: error KS102: ", path() + ":", "2 files: 1 error, 1 warning\n"});
    const Finished absent = check({path("absent.json"), path("broken.json")});
    EXPECT_GT(absent.code, 1);
    expectParts(absent.out, {"absent.json: error KS101: cannot be opened", "KS102"});
    EXPECT_GT(check({path(), "--mend", "gone"}).code, 1);
    EXPECT_EQ(check({"-", "--mend", "names"}).code, 2);
    EXPECT_GT(check({path(), "--dry-run"}).code, 1);
    EXPECT_EQ(check({path("broken.json"), "--mend", "all"}).code, 1);
}

TEST_F(CheckCommand, mendingAndPruningLeaveNothingToSettle) {
    write(kFaulty);
    const Finished mended = runOn("check --mend all");
    EXPECT_EQ(codesIn(mended.out),
              " KS201 KS202 KS204 KS209 KS206 KS209 KS209 KS211 KS209 KS209 KS303 KS209 KS209 KS304"
              " KS401 KS402 KS403 KS407 KS407 KS407 KS501")
        << mended.out;
    expectParts(mended.out, {"mended signal 6 (m/L/On): SSID 4, activity Self", "signal 13: from m/A:2 to m/A:3",
                             "mended client 8 (ks_scope_observer): element identifier \"1\""});
    EXPECT_EQ(run({"prune", path(), "--kinds", "parked", "--dry-run"}).code, 0);
    expectParts(runOn("prune").out, {"removed signal 2 (m/Gone) (gone)", "(duplicates)", "(dangling)", "(deprecated)"});
    EXPECT_EQ(codes(), " KS204 KS206 KS402 KS407 KS407 KS407 KS501") << read();
    expectParts(runOn("prune --kinds all").out, {"removed the parameter \"a b\" of client 5 (t) (parameters)",
                                                 "removed the mark on \"old\" of \"A\" (parked)"});
    EXPECT_EQ(codes(), "");
    EXPECT_FALSE(contains(read(), "no name") || contains(read(), "a b") || contains(read(), "x y") ||
                 contains(read(), "parked"));
    EXPECT_EQ(runOn("prune --kinds all").code, 1);
    EXPECT_EQ(runOn("mark L/n").code, 0);
}

TEST_F(CheckCommand, clientsOfDuplicatesGoToTheMarkThatStays) {
    write(modelText(R"("x")", {{"a", 1, "x"}, {"b", 1, "x"}}, {clientText("1", "b"), clientText("2", "a")}));
    EXPECT_EQ(runOn("prune").code, 0);
    EXPECT_FALSE(contains(read(), "\"SignalUUID_\": \"b\""));
    EXPECT_EQ(codes(), "");
    EXPECT_TRUE(contains(read(), "\"UUID\": \"1\"") && contains(read(), "\"UUID\": \"2\""));
}

// A mark's clients go to one on the same activity, stay with another of its UUID, and go with it only when asked to.
TEST_F(CheckCommand, clientsGoWithAndToTheRightMarks) {
    const auto other = [](const std::string& uuid, const char* activity) {
        return inChart(uuid, R"("Activity": ")" + std::string(activity) + R"(", "SSID": "4")");
    };
    const std::vector<Mark> marks{
        {"a", 1, "x"}, other("s", "Self"),         other("c", "Child"),        other("d", "Child"), {"t", 1, "x"},
        {"t", 2, "y"}, {"g", 1, "x", "9", "Gone"}, {"k", 1, "x", "9", "Gone"}, {"k", 3, "z"}};
    const std::vector<std::string> clients{clientText("1", "d"), clientText("2", "t"), clientText("3", "g"),
                                           clientText("4", "k")};
    const std::string text = modelText(R"("x", "y", "z")", marks, clients);
    const auto watched = [&](const std::string& kinds) {
        write(text);
        const Finished finished = runOn("prune --kinds " + kinds);
        std::string uuids;
        const json::value saved = json::parse(read());
        for (const json::value& one : saved.at("clients").as_array())
            uuids += std::string(one.at("SignalUUID_").as_string()) + " ";
        return uuids;
    };
    write(text);
    EXPECT_EQ(codes(), " KS209 KS209 KS208 KS201 KS201 KS208") << run({"check", path()}).out;
    EXPECT_EQ(watched("duplicates"), "c t g k ");
    EXPECT_EQ(watched("gone"), "d t g k ");
    EXPECT_EQ(watched("gone,dangling"), "d t k ");
    write(modelText(R"("x", "y")", {{"a", 1}, {"b", 2}}));
    expectParts(run({"check", path()}).out,
                {"KS304: 2 signals, this one first, were marked before names were kept [/signals/0]"});
}

TEST_F(CheckCommand, whatIsToldOnceIsNotToldTwice) {
    const std::string chart =
        modelText(R"("x")", {inChart("a", R"("Activity": "Run", "SSID": "7", "1st": "")", "cw_data")},
                  {replaced(clientText("1", "a", "t", "else"), R"(["A"])", "[]"),
                   replaced(clientText("2", "z"), R"(["A"])", R"(["A", "B"])"),
                   clientText("3", "a", "t", "m", R"("cells": [{"2 b": 1}])")});
    write(chart);
    EXPECT_EQ(codes(), " KS206 KS211 KS407");
    EXPECT_EQ(runOn("check --mend charts").code, 1);
    EXPECT_TRUE(contains(read(), R"("Activity": "Data")")) << read();
    // A record whose field has no value that it could have is told of that only, and signals of a lost block not at
    // all.
    write(replaced(replaced(chart, R"("Decimation_": 1)", R"("Decimation_": 0)"), R"("SSID": "7")", R"("SSID": "x")"));
    EXPECT_EQ(codes(), " KS105 KS407");
    write(replaced(modelText(R"("x")", {{"a", 1, "x"}, {"a", 1, "x"}}), R"("eid": "1")", R"("eid": "")"));
    EXPECT_EQ(codes(), " KS103 KS208");
    write(replaced(modelText(R"("x")", {}), R"("ssid": 7)", R"("ssid": 4)"));
    EXPECT_EQ(codes(), " KS104");
}

TEST_F(CheckCommand, whatCannotBeReadIsNotChanged) {
    const std::string text = replaced(kFaulty, "\"Decimation_\": 1", "\"Decimation_\": 0");
    write(text);
    EXPECT_NE(runOn("prune").code, 0);
    const Finished finished = runOn("check --mend all");
    expectParts(finished.err, {"correct by hand what could not be read"});
    expectParts(finished.out, {"KS105", "KS501"});
    EXPECT_EQ(read(), text);
}

TEST_F(CheckCommand, jsonAndSarifTellTheSame) {
    write(kFaulty, "a b.json");
    const std::string& file = path("a b.json");
    const json::object told = json::parse(run({"check", file, file, "--json"}).out).as_object();
    EXPECT_EQ(told.at("kshmi"), 1);
    EXPECT_EQ(told.at("errors"), 24);
    const json::array& findings = told.at("files").at(1).at("findings").as_array();
    const json::object log = json::parse(run({"check", file, "--sarif"}).out).as_object();
    EXPECT_EQ(log.at("version"), "2.1.0");
    EXPECT_TRUE(log.at("$schema").is_string());
    const json::object& sarif = log.at("runs").at(0).as_object();
    const json::object& driver = sarif.at("tool").at("driver").as_object();
    EXPECT_EQ(driver.at("name"), "kshmi");
    const json::array& rules = driver.at("rules").as_array();
    const json::array& results = sarif.at("results").as_array();
    // In the next version of the file a finding is recognised, wherever it stands.
    const json::value next = json::parse(run({"check", write("\n" + kFaulty, "moved.json"), "--sarif"}).out);
    ASSERT_EQ(results.size(), findings.size());
    for (std::size_t i = 0; i < results.size(); ++i) {
        const json::object& result = results[i].as_object();
        const json::object& finding = findings[i].as_object();
        EXPECT_EQ(result.at("partialFingerprints"),
                  next.at("runs").at(0).at("results").at(i).at("partialFingerprints"));
        EXPECT_EQ(result.at("ruleId"), finding.at("code"));
        EXPECT_EQ(rules.at(static_cast<std::size_t>(result.at("ruleIndex").as_int64())).at("id"), finding.at("code"));
        EXPECT_EQ(result.at("level"), finding.at("level"));
        EXPECT_TRUE(contains(std::string(result.at("message").at("text").as_string()),
                             std::string(finding.at("text").as_string())));
        const json::object& location = result.at("locations").at(0).as_object();
        const json::object& physical = location.at("physicalLocation").as_object();
        EXPECT_TRUE(physical.at("artifactLocation").at("uri").as_string().ends_with("/a%20b.json"));
        if (const json::value* const line = finding.if_contains("line")) {
            EXPECT_EQ(physical.at("region").at("startLine"), *line);
        }
        EXPECT_EQ(location.at("logicalLocations").at(0).at("fullyQualifiedName"), finding.at("pointer"));
    }
    EXPECT_NE(run({"check", file, "--sarif", "--json"}).code, 1);
}

}  // namespace
}  // namespace kshmi::testing
