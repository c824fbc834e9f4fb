#include "tests/kshmi/kshmi_test.h"
#include "tests/support/json_schema.h"

// docs/model-file.schema.json says what a model file is, to editors and other programs.
namespace kshmi {
namespace {

using testing::kModel;
using testing::replaced;

class ModelFileSchema : public testing::KshmiTest {
protected:
    static std::string textOf(const std::string& file) {
        std::ifstream in(KSHMI_SOURCE_DIR "/" + file, std::ios::binary);
        EXPECT_TRUE(in) << file;
        return {std::istreambuf_iterator<char>(in), {}};
    }
    void expectValid(const std::string& text) const {
        EXPECT_EQ(m_schema.faultsOf(text), std::vector<std::string>()) << text;
    }

    const ks_test::JsonSchema m_schema{textOf("docs/model-file.schema.json")};
};

TEST_F(ModelFileSchema, holdsForExamplesAndForWhatIsSaved) {
    expectValid(textOf("examples/cruise_control.kestrel.json"));
    expectValid(textOf("examples/empty.kestrel.json"));
    expectValid(R"({"kestrelModel": 1, "name": "m", "blocks": []})");
    expectValid(replaced(kModel, "\"name\": \"m\",",
                         R"("name": "m", "origin": {"kind": "fmu", "version": "2.0", "file": "e", "hash": "sha1:0",
                            "locals": true, "gone": [{"source": "a", "eid": "9"}]},)"));
    write(replaced(kModel, "\"OutputPortIndex_\": 1",
                   R"("OutputPortIndex_": {"$class": "uint8", "size": [1, 1], "data": [1]})"));
    for (const char* const line : {"mark A:2 Logic Logic/limit", "mark --all m/A/*",
                                   "observe A:2 --type t --params [1]", "rename n", "move A B", "renumber B 2,1"}) {
        EXPECT_EQ(runOn(line).code, kSuccess) << line;
        expectValid(read());
    }
}

TEST_F(ModelFileSchema, refusesWhatTheToolRefuses) {
    const std::pair<const char*, const char*> wrong[] = {
        {"\"kestrelModel\": 1", "\"kestrelModel\": 2"},
        {"  \"name\": \"m\",\n", ""},
        {"\"name\": \"m\"", "\"name\": \"m/n\""},
        {"\"name\": \"m\"", "\"name\": 5"},
        {"\"name\": \"m\"", "\"name\": \"m\", \"color\": 3"},
        {"\"path\": \"A/B:1\"", "\"path\": \"A//B\""},
        {"\"eid\": \"2\"", "\"eid\": \"\""},
        {"\"eid\": \"2\", ", ""},
        {"\"ssid\": 5", "\"ssid\": 0"},
        {"[\"p\", \"q\"]", "[\"p\", true]"},
        {"\"SubPath_\": \"\"", "\"SubPath\": \"\""},
        {"      \"MaxPoints_\": 100,\n", ""},
        {"\"MaxPoints_\": 100", "\"MaxPoints_\": [1]"},
        {"\"MaxPoints_\": 100", "\"MaxPoints_\": 2147483648"},
        {"\"Decimation_\": 2", "\"Decimation_\": 0"},
        {"\"OutputPortIndex_\": 1", "\"OutputPortIndex_\": 1.5"},
        {"\"IsFrameBased_\": 1", "\"IsFrameBased_\": 7"},
        {"\"DomainType_\": \"\"", "\"DomainType_\": \"cw\""},
        {"\"DomainParams_\": {}", "\"DomainParams_\": {\"a\": 1}"},
        {"\"UUID\": \"u-2\"", "\"UUID\": \"\""},
        {"      \"SignalUUID_\": \"u-9\",\n", ""},
        {"[\"A\"]", "[3]"},
        {"\"UpdateRate_\": 1", "\"UpdateRate_\": 4294967296"},
        {"Part_\": true", "Part_\": \"on\""},
    };
    for (const auto& [what, with] : wrong) {
        const std::string text = replaced(kModel, what, with);
        EXPECT_FALSE(m_schema.faultsOf(text).empty()) << with;
        write(text);
        EXPECT_EQ(runOn("show").code, kBadFile) << with;
    }
}

}  // namespace
}  // namespace kshmi
