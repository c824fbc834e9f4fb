#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "workbench/json/json_file.h"
#include "workbench/text/error.h"

// Elements that are read in one go are the same to whoever receives them.
namespace workbench {
namespace {

class Events final : public JsonSink {
public:
    void beginObject() override { put("{"); }
    void key(std::string_view name) override { put(std::string(name) + ":"); }
    void endObject() override { put("}"); }
    void beginArray() override { put("["); }
    void endArray() override { put("]"); }
    void string(std::string_view text) override { put('"' + std::string(text) + '"'); }
    void number(std::string_view text) override { put(std::string(text)); }
    void boolean(bool value) override { put(value ? "yes" : "no"); }
    void null() override { put("null"); }

    std::string told;
    const JsonFile* file = nullptr;  // where lines are wanted
private:
    void put(const std::string& event) { told += (file ? std::to_string(file->line()) + ' ' : "") + event + '\n'; }
};

// What a sink is told of a document, and whether all of it is one.
std::string eventsOf(const std::string& document, bool withLines) {
    Events events;
    JsonFile file = JsonFile::ofText("f", document);
    if (withLines) events.file = &file;
    try {
        file.read(events);
    } catch (const Error&) {
        events.told += "refused";
    }
    return events.told;
}

std::string inOneLine(std::string document) {
    std::replace(document.begin(), document.end(), '\n', '\t');
    return document;
}

constexpr const char* kDocument =
    "{\"a\": [\n  1,\n  {\n    \"x\": \"é\",\n    \"y\": [true, {\"z\": -7}, []],\n\n    \"n\": null\n  },\n"
    "  {},\n  [\n  [0,\n  12], \"t\"],\n  false,\n\"u\",\n {\"k\": {\"l\": {}}},\n  {\"x\": 1}\n], \"b\": 2}\n";

TEST(PlainElement, isToldAsTheParserTellsIt) {
    EXPECT_EQ(eventsOf(kDocument, false), eventsOf(inOneLine(kDocument), false));
    // An escape in each leaves them to the parser.
    std::string escaped = kDocument;
    for (const auto& [what, with] : {std::pair{"\"x\": \"é\"", R"("\u0078": "é")"},
                                     {"\"t\"", R"("\u0074")"},
                                     {"\"k\"", R"("\u006b")"},
                                     {"\"u\"", R"("\u0075")"}})
        escaped.replace(escaped.find(what), std::string(what).size(), with);
    EXPECT_EQ(eventsOf(kDocument, true), eventsOf(escaped, true));
    std::string deep = "[1,\n2,\n" + std::string(300, '[') + std::string(300, ']') + ",\n3]";
    EXPECT_EQ(eventsOf(deep, false), eventsOf(inOneLine(deep), false));
}

TEST(PlainElement, takesNothingThatTheParserRefuses) {
    const std::string document = kDocument;
    for (std::size_t at = 0; at < document.size(); ++at) {
        if (document[at] == '\n') continue;
        for (const char c : {'"', '\\', '{', '}', '[', ']',  ',',    ':',    '0',    '9',
                             '-', '.',  'e', 't', ' ', '\t', '\x01', '\xC3', '\xFF', 'a'}) {
            std::string changed = document;
            changed[at] = c;
            ASSERT_EQ(eventsOf(changed, false), eventsOf(inOneLine(changed), false)) << changed;
        }
        ASSERT_EQ(eventsOf(document.substr(0, at), false), eventsOf(inOneLine(document.substr(0, at)), false)) << at;
    }
}

}  // namespace
}  // namespace workbench
