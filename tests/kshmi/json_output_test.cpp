#include <boost/json.hpp>

#include "tests/kshmi/kshmi_test.h"

namespace kshmi {
namespace {

using testing::Finished;
using testing::kModel;
using testing::replaced;
namespace json = boost::json;

// As much of JSON Schema as docs/kshmi-output.schema.json uses.
class Schema {
public:
    explicit Schema(json::value document) : m_document(std::move(document)) {}

    // What of the value does not fit, by JSON pointer; empty when all does.
    std::vector<std::string> faults(const json::value& value) const {
        std::vector<std::string> found;
        check(m_document.as_object(), value, "", found);
        return found;
    }

private:
    using Faults = std::vector<std::string>;

    static bool isOfType(const json::value& value, std::string_view type) {
        if (type == "object") return value.is_object();
        if (type == "array") return value.is_array();
        if (type == "string") return value.is_string();
        if (type == "boolean") return value.is_bool();
        if (type == "null") return value.is_null();
        return type == "integer" && (value.is_int64() || value.is_uint64());
    }

    void check(const json::object& schema, const json::value& value, const std::string& at, Faults& faults) const {
        for (const auto& [key, rule] : schema) {
            if (key == "$ref") check(definition(rule.as_string()), value, at, faults);
            if (key == "type" && !isOfType(value, rule.as_string())) faults.push_back(at + ": no " + serialize(rule));
            if (key == "const" && value != rule) faults.push_back(at + ": is not " + serialize(rule));
            if (key == "enum" && !contains(rule.as_array(), value))
                faults.push_back(at + ": not in " + serialize(rule));
            if (key == "minimum" && value.is_int64() && value.as_int64() < rule.as_int64())
                faults.push_back(at + ": too small");
            if (key == "oneOf") checkOne(rule.as_array(), value, at, faults);
            if (key == "items" && value.is_array())
                for (std::size_t i = 0; i < value.as_array().size(); ++i)
                    check(rule.as_object(), value.as_array()[i], at + "/" + std::to_string(i), faults);
        }
        if (value.is_object()) checkMembers(schema, value.as_object(), at, faults);
    }

    void checkMembers(const json::object& schema, const json::object& value, const std::string& at,
                      Faults& faults) const {
        const json::value* const required = schema.if_contains("required");
        const json::value* const properties = schema.if_contains("properties");
        if (required)
            for (const json::value& name : required->as_array())
                if (!value.contains(name.as_string())) faults.push_back(at + ": has no " + serialize(name));
        if (!properties) return;
        for (const auto& [name, member] : value) {
            const json::value* const rule = properties->as_object().if_contains(name);
            if (rule)
                check(rule->as_object(), member, at + "/" + std::string(name), faults);
            else if (schema.contains("additionalProperties"))
                faults.push_back(at + ": unknown " + std::string(name));
        }
    }

    // The alternative with the fewest faults has none.
    void checkOne(const json::array& alternatives, const json::value& value, const std::string& at,
                  Faults& faults) const {
        std::size_t fitting = 0;
        Faults fewest;
        for (const json::value& one : alternatives) {
            Faults own;
            check(one.as_object(), value, at, own);
            fitting += own.empty() ? 1U : 0U;
            if (fewest.empty() || own.size() < fewest.size()) fewest = own;
        }
        if (fitting > 1) faults.push_back(at + ": fits several");
        if (fitting == 0) faults.insert(faults.end(), fewest.begin(), fewest.end());
    }

    const json::object& definition(std::string_view reference) const {
        constexpr std::string_view kPrefix = "#/$defs/";
        return m_document.at("$defs").at(reference.substr(kPrefix.size())).as_object();
    }

    static bool contains(const json::array& values, const json::value& value) {
        return std::find(values.begin(), values.end(), value) != values.end();
    }

    json::value m_document;
};

class JsonOutput : public testing::KshmiTest {
protected:
    JsonOutput() : m_schema(json::parse(schemaText())) { write(kModel); }

    static std::string schemaText() {
        std::ifstream file(KSHMI_OUTPUT_SCHEMA, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    json::value output(const std::string& line) const {
        const Finished finished = runOn(line + " --json");
        boost::system::error_code code;
        json::value value = json::parse(finished.out, code);
        EXPECT_FALSE(code) << line << '\n' << finished.out << finished.err;
        return value;
    }

    Schema m_schema;
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
    for (const std::string line : lines) {
        const json::value value = output(line);
        EXPECT_EQ(m_schema.faults(value), std::vector<std::string>()) << line << '\n' << serialize(value);
        EXPECT_EQ(value.at("command").as_string(), line.substr(0, line.find(' '))) << line;
    }
    write(R"(<fmiModelDescription fmiVersion="2.0" modelName="u"><ModelVariables>
        <ScalarVariable name="a.x" causality="output"/><ScalarVariable name="" causality="output"/>
        <ScalarVariable name="i" causality="input"/></ModelVariables></fmiModelDescription>)",
          "unit.xml");
    const json::value imported = json::parse(run({"import", path("unit.xml"), "-o", path("unit.json"), "--json"}).out);
    EXPECT_EQ(m_schema.faults(imported), std::vector<std::string>()) << serialize(imported);
    const json::value report = json::parse(run({"report", path("unit.json"), "-o", path("page.html"), "--json"}).out);
    EXPECT_EQ(m_schema.faults(report), std::vector<std::string>()) << serialize(report);
    EXPECT_FALSE(m_schema.faults(json::parse(R"({"kshmi": 1, "command": "query", "model": "m"})")).empty());
    EXPECT_FALSE(m_schema.faults(json::parse(R"({"kshmi": 2})")).empty());
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

    const json::value changed = output("set A:2 --name x");
    EXPECT_EQ(changed.at("changed").at(0).at("signal"), signal.at("signal"));
    EXPECT_EQ(changed.at("changed").at(0).at("name"), "x");
    EXPECT_EQ(output("unmark A:2 --dry-run").at("dryRun"), true);
    EXPECT_EQ(output("unmark A:2").at("removed").at(0).at("signal"), signal.at("signal"));
    EXPECT_EQ(output("query Logic/On/Fast").at("answers").at(0), json::parse(R"({"block": "m/Logic", "item": "On/Fast",
        "domain": "cw_state", "ssid": 4, "observed": true})"));
    EXPECT_EQ(output("renumber A 0,1").at("removed").as_array().size(), 2U);
}

}  // namespace
}  // namespace kshmi
