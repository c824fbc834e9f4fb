#include <bit>
#include <cstdint>
#include <limits>

#include "host/hv_array.h"
#include "tests/kshmi/kshmi_test.h"
#include "workbench/text/error.h"
#include "workbench/values/host_value_builder.h"
#include "workbench/values/host_value_writer.h"
#include "workbench/values/number_text.h"

namespace workbench {
namespace {

class HostValueJson : public kshmi::testing::KshmiTest {
protected:
    HvArrayPtr parse(const std::string& text) const {
        JsonFile file(write(text, "value.json"));
        HostValueBuilder builder;
        file.read(builder);
        return builder.take();
    }
    static std::string written(const hvArray* value) {
        std::string text;
        appendJsonValue(text, value);
        return text;
    }
};

TEST_F(HostValueJson, canonicalFormsReadAndWriteBackTheSame) {
    const std::vector<std::string> texts{
        "null",
        "true",
        R"("")",
        R"("a\"\\\n\t\u0000\u001f ü 😀")",
        "0",
        "-0.0",
        "9007199254740992",
        "-9007199254740994",
        "0.1",
        "5e-324",
        "1.7976931348623157e+308",
        "[]",
        R"([null, [1], "x", false])",
        "{}",
        R"({"b": 1, "a": {"c": null}, "x y": []})",
        std::string(200, '[') + std::string(200, ']'),
        R"({"$class": "double", "size": [1, 1], "data": ["NaN"]})",
        R"({"$class": "double", "size": [1, 3], "data": ["NaN:fff8000000000001", "Infinity", "-Infinity"]})",
        R"({"$class": "double", "size": [0, 0], "data": []})",
        R"({"$class": "double", "size": [2, 1, 2], "data": [1, -0.0, 3, 4.5]})",
        R"({"$class": "single", "size": [1, 3], "data": [0.1, "NaN:ffc00001", -0.0]})",
        R"({"$class": "logical", "size": [2, 1], "data": [true, false]})",
        R"({"$class": "int64", "size": [1, 2], "data": [-9223372036854775808, 9223372036854775807]})",
        R"({"$class": "uint64", "size": [1, 1], "data": [18446744073709551615]})",
        R"({"$class": "int8", "size": [1, 2], "data": [-128, 127]})",
        R"({"$class": "uint16", "size": [0, 3], "data": []})",
        R"({"$class": "char", "size": [0, 0], "data": ""})",
        R"({"$class": "char", "size": [2, 2], "data": "acbd"})",
        R"({"$class": "char", "size": [1, 2], "data": [55296, 97]})",
        R"({"$class": "cell", "size": [1, 2], "data": [{"a": 1}, null]})",
        R"({"$class": "struct", "size": [2, 1], "fields": ["a", "b"], "data": [1, null, "x", []]})",
        R"({"$class": "struct", "size": [0, 1], "fields": ["a"], "data": []})",
        R"({"$class": "struct", "size": [1, 1], "fields": ["$class"], "data": [1]})",
    };
    for (const std::string& text : texts) EXPECT_EQ(written(parse(text).get()), text);
}

TEST_F(HostValueJson, plainFormIsWrittenWhereItSaysEverything) {
    EXPECT_EQ(written(parse(R"({"$class": "char", "size": [1, 2], "data": [97, 98]})").get()), R"("ab")");
    EXPECT_EQ(written(parse(R"({"$class": "double", "data": [2], "size": [1, 1, 1]})").get()), "2");
    EXPECT_EQ(written(parse("1.0e2").get()), "100");
}

TEST_F(HostValueJson, everyBitOfADoubleSurvives) {
    using Limits = std::numeric_limits<double>;
    std::uint64_t state = 1;
    for (int i = 0; i < 20000; ++i) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        const std::uint64_t bits = i < 3 ? std::bit_cast<std::uint64_t>(i == 0   ? Limits::min()
                                                                        : i == 1 ? Limits::denorm_min()
                                                                                 : Limits::signaling_NaN())
                                         : state;
        const std::string text = textOfElement(hvDOUBLE_CLASS, bits);
        const bool isQuoted = text.front() == '"';
        const std::uint64_t back = isQuoted ? elementOfText(hvDOUBLE_CLASS, text.substr(1, text.size() - 2))
                                            : elementOfNumber(hvDOUBLE_CLASS, text);
        ASSERT_EQ(back, bits) << text;
    }
}

TEST_F(HostValueJson, aPieceOfTheFileMayEndAnywhere) {
    const std::string value = R"([{"a": "x"}, {}, [], -1.5, true])";
    for (std::size_t end = 0; end <= value.size(); ++end)
        EXPECT_EQ(written(parse(std::string((std::size_t{1} << 16U) - end, ' ') + value).get()), value) << end;
}

TEST_F(HostValueJson, formsThatNoValueHasAreRefused) {
    const std::vector<std::pair<std::string, std::string>> refusals{
        {"1e999", "not a valid double; give a number from"},
        {"9007199254740993", R"(would be saved as 9007199254740992; write it as {"$class": "int64")"},
        {R"({"a": [-9007199254740993]})", "would be saved as -9007199254740992"},
        {"-0", "the number -0 would be saved as -0.0"},
        {R"({"$class": "single", "size": [1, 1], "data": [16777217]})", "would be saved as 16777216"},
        {R"({"$class": "double", "size": [1, 1], "data": [-0]})", "write -0.0, or 0"},
        {R"({"a": 1, "a": 2})", "twice"},
        {R"({"$size": 1})", "\"$class\" first"},
        {R"({"a\u0000": 1})", "NUL"},
        {R"({"a": {"": 1}})", "a key is empty"},
        {R"({"$class": "matrix"})", "\"matrix\" is unknown; use one of double, struct"},
        {R"({"$class": "double", "data": [1]})", "needs \"size\""},
        {R"({"$class": "double", "size": [3], "data": [1, 2, 3]})", "two lengths"},
        {R"({"$class": "double", "size": [2, 2], "data": [1]})", "needs 4"},
        {R"({"$class": "double", "size": [1, -1], "data": []})",
         "the number -1 is not a valid length; give a whole number"},
        {R"({"$class": "double", "size": [4294967296, 4294967296, 2], "data": []})", "too large"},
        {R"({"$class": "double", "size": [1, 1]})", "needs \"data\""},
        {R"({"$class": "double", "size": [1, 1], "data": ["nan"]})", "not a number"},
        {R"({"$class": "double", "size": [1, 1], "data": [null]})", "null appears"},
        {R"({"$class": "int8", "size": [1, 1], "data": [128]})",
         "not a valid int8; give a whole number from -128 to 127"},
        {R"({"$class": "uint8", "size": [1, 1], "data": [1.5]})", "not a valid uint8"},
        {R"({"$class": "logical", "size": [1, 1], "data": [1]})", "true or false"},
        {std::string(252, '[') + std::string(252, ']'), "more than 251 levels of nesting in one value"},
        {R"({"$class": "cell", "size": [1, 1], "data": 3})", "appears where"},
        {R"({"$class": "cell", "size": [1, 1], "fields": []})", "\"fields\" is unknown"},
        {R"({"$class": "struct", "size": [1, 2], "fields": ["a"], "data": [1]})", "needs 2"},
        {std::string(300, '[') + std::string(300, ']'), "levels of nesting"},
    };
    for (const auto& [text, message] : refusals) try {
            parse(text);
            ADD_FAILURE() << "accepted: " << text;
        } catch (const Error& error) {
            EXPECT_TRUE(kshmi::testing::contains(error.what(), message)) << text << ": " << error.what();
        }
}

}  // namespace
}  // namespace workbench
