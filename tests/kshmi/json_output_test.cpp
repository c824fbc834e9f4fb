#include <boost/json.hpp>

#include "tests/kshmi/kshmi_test.h"
#include "tests/support/json_schema.h"

namespace kshmi {
namespace {

using testing::Finished;
using testing::kModel;
using testing::replaced;
namespace json = boost::json;

class JsonOutput : public testing::KshmiTest {
protected:
    JsonOutput() : m_schema(schemaText()) { write(kModel); }

    static std::string schemaText() {
        std::ifstream file(KSHMI_OUTPUT_SCHEMA, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    // What the command prints, which fits the schema.
    json::value told(const std::vector<std::string>& words) const {
        const Finished finished = run(words);
        boost::system::error_code code;
        json::value value = json::parse(finished.out, code);
        EXPECT_FALSE(code) << words.front() << '\n' << finished.out << finished.err;
        EXPECT_EQ(m_schema.faultsOf(finished.out), std::vector<std::string>()) << words.front() << finished.out;
        return value;
    }
    json::value output(const std::string& line) const {
        std::istringstream in(line);
        std::vector<std::string> words;
        for (std::string word; in >> word;) words.push_back(word);
        const bool isMember = words[0] == "block" || words[0] == "port" || words[0] == "chart";
        words.insert(words.begin() + (isMember ? 2 : 1), path());
        words.push_back("--json");
        json::value value = told(words);
        EXPECT_EQ(value.at("command").as_string(), words[0] + (isMember ? " " + words[1] : ""));
        return value;
    }
    // The kinds of things in a list, with what `name` says of them.
    static std::string listed(const json::value& list, const char* name) {
        std::string text;
        for (const json::value& one : list.as_array()) {
            text += (text.empty() ? "" : " ") + std::string(one.at("kind").as_string());
            if (const json::value* const member = one.as_object().if_contains(name)) text += " " + serialize(*member);
        }
        return text;
    }

    const ks_test::JsonSchema m_schema;
};

TEST_F(JsonOutput, ofEveryCommandFitsTheSchema) {
    write(replaced(replaced(kModel, "\"outputs\": [], \"chart\"", "\"outputs\": [\"mode\"], \"chart\""),
                   "\"SourceModel_\": \"m\"", "\"SourceModel_\": \"other\""));
    const char* const lines[] = {
        "show",
        "ports",
        "clients",
        "query Logic --activity Leaf",
        "mark --all * --dry-run",
        "mark A Logic",
        "set A --decimation 3 --clients --update-rate 4",
        "observe A:1 Logic --type t --params {\"a\":[1,{}]}",
        "check --mend all --dry-run",
        "prune --dry-run",
        "unobserve --type t --dry-run",
        "unobserve --unused",
        "move A B/C",
        "move B/C B/C",
        "renumber B/C 2,1",
        "renumber B/C 0,1",
        "rename n",
        "rename n",
        "unmark --all *",
    };
    for (const std::string line : lines) output(line);
    write(R"(<fmiModelDescription fmiVersion="2.0" modelName="u"><ModelVariables>
        <ScalarVariable name="a.x" causality="output"/><ScalarVariable name="" causality="output"/>
        <ScalarVariable name="i" causality="input"/></ModelVariables></fmiModelDescription>)",
          "unit.xml");
    told({"import", path("unit.xml"), "-o", path("unit.json"), "--json"});
    told({"report", path("unit.json"), "-o", path("page.html"), "--json"});
    const std::string base = write(kModel, "base.json");
    const std::string ours = write(replaced(kModel, "\"Decimation_\": 2", "\"Decimation_\": 3"), "ours.json");
    const std::string theirs = write(replaced(kModel, "\"Decimation_\": 2", "\"Decimation_\": 4"), "theirs.json");
    told({"diff", base, ours, "--json"});
    told({"merge", base, ours, theirs, "-o", path("merged.json"), "--json"});
    const std::string next = write(replaced(replaced(kModel, "\"y\", \"valid\"", "\"valid\", \"y\""),
                                            "{\"path\": \"On/Fast\", \"ssid\": 4}, ", ""),
                                   "next.json");
    run({"unmark", next, "--dangling"});
    run({"unmark", next, "--all", "*"});
    run({"unobserve", next, "--client", "1", "--client", "2"});
    told({"carry", base, next, "-o", path("carried.json"), "--json"});
    for (const char* const wrong : {R"({"kshmi": 1, "command": "query", "model": "m"})", R"({"kshmi": 2})"})
        EXPECT_FALSE(m_schema.faultsOf(wrong).empty());
}

TEST_F(JsonOutput, listsWhatFollowsAndWhatGoesAlong) {
    json::value moved = output("move A X/Y");
    EXPECT_EQ(listed(moved.at("changed"), "from"),
              "block \"m/A\" block \"m/A/B:1\" block \"m/A/B\" "
              "signal \"m/A:1\" client \"m/A\"");
    EXPECT_EQ(moved.at("changed").at(3).at("block"), "m/X/Y");
    output("move X/Y A");
    moved = output("renumber A 2,1");
    EXPECT_EQ(listed(moved.at("changed"), "from"), "port 1 port 2 signal \"m/A:1\"");
    EXPECT_EQ(moved.at("changed").at(2).at("portName"), "y");
    EXPECT_EQ(listed(output("port add A z --at 1").at("changed"), "from"), "port 1 port 2 signal \"m/A:2\"");
    const json::value removed = output("port remove A y --unmark");
    EXPECT_EQ(listed(removed.at("removed"), "name"), R"(port signal "speed \"ü\"")");
    EXPECT_EQ(listed(removed.at("changed"), "state"), R"(client "dangling")");
    EXPECT_EQ(listed(output("chart rename Logic/On/Fast Quick").at("changed"), "from"),
              R"(item "On/Fast" signal "m/Logic/On/Fast")");
    EXPECT_EQ(listed(output("block remove Logic --unmark").at("removed"), "name"), "block signal \"\"");
    EXPECT_EQ(listed(output("rename n").at("changed"), "from"), "model \"m\" client client");
}

TEST_F(JsonOutput, ofSeveralFilesIsOneDocument) {
    write("{", "bad.json");
    const json::value both = told({"query", path(), path("bad.json"), path(), "A", "--json"});
    EXPECT_EQ(both.at("files").as_array().size(), 3U);
    EXPECT_EQ(both.at("files").at(0).at("answers").as_array().size(), 2U);
    EXPECT_EQ(both.at("files").at(1).at("error").at("code"), 3);
    EXPECT_EQ(told({"show", path(), "--limit", "1", "--json"}).at("files").at(0).at("leftOut"),
              json::parse(R"({"signals": 1, "clients": 1, "blocks": 3, "ports": 4, "items": 5})"));
    const json::value wanted = told({"show", path(), path("none.json"), "--json"}).at("files").at(1).at("error");
    expectParts(std::string(wanted.at("text").as_string()), {"cannot be opened"});
    EXPECT_EQ(told({"show", path("none.json"), "--json"}).at("files").at(0).at("error"), wanted);
}

TEST_F(JsonOutput, tellsWhatWasChangedByUuidAndPosition) {
    const json::value marked = output("mark A");
    EXPECT_EQ(marked.at("saved"), true);
    EXPECT_EQ(marked.at("unchanged").as_array().size(), 1U);
    const json::value& signal = marked.at("added").at(0);
    EXPECT_EQ(signal.at("block"), "m/A");
    EXPECT_EQ(signal.at("port"), 2);
    EXPECT_EQ(signal.at("signal").at("position"), 3);
    const std::string uuid(signal.at("signal").at("uuid").as_string());
    expectParts(read(), {"\"" + uuid + "\""});

    const json::value changed = output("set A:2 --name x --hide");
    EXPECT_EQ(changed.at("changed").at(0).at("signal"), signal.at("signal"));
    EXPECT_EQ(changed.at("changed").at(0).at("name"), "x");
    EXPECT_EQ(changed.at("changed").at(0).at("hidden"), true);
    EXPECT_EQ(changed.at("changed").at(0).at("buffered"), false);
    EXPECT_EQ(output("unmark A:2 --dry-run").at("dryRun"), true);
    EXPECT_EQ(output("unmark A:2").at("removed").at(0).at("signal"), signal.at("signal"));
    EXPECT_EQ(output("query Logic/On/Fast").at("files").at(0).at("answers").at(0),
              json::parse(R"({"block": "m/Logic", "item": "On/Fast",
        "domain": "cw_state", "ssid": 4, "observed": true})"));
    EXPECT_EQ(output("renumber A 0,1").at("removed").as_array().size(), 2U);
    write(replaced(kModel, "\"EID_\": \"1\"", "\"EID_\": \"77\""));
    const json::array removed = output("unmark Logic/On/Fast --dangling").at("removed").as_array();
    ASSERT_EQ(removed.size(), 2U);
    const json::value& gone = removed[0];
    EXPECT_EQ(serialize(gone.at("block")) + serialize(gone.at("gone")) + serialize(gone.at("port")), "\"m/A\"true1");
}

TEST_F(JsonOutput, isWholeHoweverLongItIs) {
    std::string blocks;
    for (int i = 0; i < 2'000; ++i)
        blocks += "{\"path\": \"B" + std::to_string(i) + "\", \"eid\": \"b" + std::to_string(i) +
                  "\", \"outputs\": [\"y\", \"z\"]}, ";
    write(replaced(kModel, "{\"path\": \"A\"", blocks + "{\"path\": \"A\""));
    EXPECT_EQ(output("query --all B*").at("files").at(0).at("answers").as_array().size(), 4'000U);
}

}  // namespace
}  // namespace kshmi
