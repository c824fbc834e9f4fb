#include <gtest/gtest.h>

#include <string>

#include "workbench/json/json_file.h"
#include "workbench/text/error.h"

namespace workbench {
namespace {

class Ignored final : public JsonSink {
    void beginObject() override {}
    void key(std::string_view) override {}
    void endObject() override {}
    void beginArray() override {}
    void endArray() override {}
    void string(std::string_view) override {}
    void number(std::string_view) override {}
    void boolean(bool) override {}
    void null() override {}
};

std::string mistakeIn(const std::string& text) {
    Ignored sink;
    try {
        JsonFile::ofText("f", text).read(sink);
        return "none";
    } catch (const Error& error) {
        return error.what();
    }
}

TEST(JsonMistakes, areCalledByTheirNames) {
    using namespace std::string_literals;
    const std::pair<std::string, const char*> cases[] = {
        {"{\"a\": 1,}", "f:1:9: not JSON: there is a comma before the \"}\""},
        {"{\"a\": [1,\n 2,\n]}", "f:3:1: not JSON: there is a comma before the \"]\""},
        {"{\"a\": 1 // why\n}", ":1:9: not JSON: JSON has no comments"},
        {"{\n# why\n}", ":2:1: not JSON: JSON has no comments"},
        {"{/* why */}", ":1:2: not JSON: JSON has no comments"},
        {"\xFF\xFE{\0}\0"s, "the file is in UTF-16"},
        {"\xFE\xFF\0{"s, "the file is in UTF-16"},
        {"{\0\"\0"s, "the file is in UTF-16"},
        {"\0{\0\""s, "the file is in UTF-16"},
        {"\xEF\xBB\xBF{}", "starts with a byte order mark"},
        {"{\"a\": \"b\n}", ":1:9: not JSON: the line ends inside a text"},
        {"{\"a\": \"b\r\n}", "the line ends inside a text"},
        {"{\"a\": \"b\tc\"}", "there is a tab in a text"},
        {"{\"a\": \"b\x01\"}", "there is a control character in a text"},
        {"{\"a\": \"C:\\models\"}", "in a text, a backslash must"},
        {"{\"a\": \"\\u12x4\"}", "four hexadecimal digits"},
        {"{\"a\": \"b", "the document ends inside a text"},
        {"{\"a\": 1", "the document ends too early"},
        {"", "there is nothing in it"},
        {" \n", "there is nothing in it"},
        {"{name: 1}", "need double quotes, which are missing"},
        {"{\"a\": scope}", "need double quotes, which are missing"},
        {"{\"a\": true1}", "missing"},
        {"{\"a\": truth}", "need double quotes, which are missing"},
        {"{'a': 1}", "not single ones"},
        {"{\"a\": 'b'}", "not single ones"},
        {"{\"a\": NaN}", "NaN and Infinity are not JSON numbers"},
        {"{\"a\": -Infinity}", "NaN and Infinity are not JSON numbers"},
        {"[nan]", "NaN and Infinity are not JSON numbers"},
        {"{\"a\": True}", "in lower case"},
        {"{\"a\": None}", "in lower case"},
        {"{\"a\": 1 \"b\": 2}", "a comma is missing"},
        {"{\"a\": 1\n\"b\": 2}", ":2:1: not JSON: a comma is missing"},
        {"[{} {}]", "a comma is missing"},
        {"[\"a\" \"b\"]", "a comma is missing"},
        {"[1 2]", "a comma is missing"},
        {"{\"a\" 1}", "a colon is missing after the key"},
        {"{\"a\" \"b\"}", "a colon is missing after the key"},
        {"{\"a\" = 1}", "a colon is missing after the key"},
        {"{\"a\"}", "a colon is missing after the key"},
        {"{\"a\": }", "a value is missing after the colon"},
        {"[,1]", "a value is missing before the comma"},
        {"[1,,2]", "there are two commas"},
        {"[1}", "\"}\" does not match the bracket that is open"},
        {"{\"a\": [1\n}", ":2:1: not JSON: \"}\" does not match"},
        {"{\"a\": 1]", "\"]\" does not match the bracket that is open"},
        {"[01]", "a number starts with a zero"},
        {"[0x1F]", "numbers must be decimal"},
        {"[+1]", "numbers must start with a digit or a minus sign"},
        {"[.5]", "numbers must start with a digit or a minus sign"},
    };
    for (const auto& [text, message] : cases) {
        const std::string said = mistakeIn(text);
        EXPECT_NE(said.find(message), std::string::npos) << text << "\n  " << said << "\n  " << message;
    }
}

TEST(JsonMistakes, areFoundInLongLines) {
    const std::string longText = "{\"a\": [\"" + std::string(200'000, 'x');
    EXPECT_NE(mistakeIn(longText + "\ty\"]}").find("there is a tab in a text"), std::string::npos);
    EXPECT_NE(mistakeIn(longText + "\\\"\"" + std::string(70'000, ' ') + "3]}").find("a comma is missing"),
              std::string::npos);
}

}  // namespace
}  // namespace workbench
