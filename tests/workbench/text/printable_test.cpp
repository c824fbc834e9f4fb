#include <gtest/gtest.h>

#include <set>
#include <utility>

#include "workbench/text/columns.h"
#include "workbench/text/text.h"

namespace workbench {
namespace {

TEST(Printable, showsWhatATerminalHidesOrObeys) {
    const std::pair<const char*, const char*> cases[] = {
        {"größe 速度 😀 é", "größe 速度 😀 é"},
        {"\x1b[2J\n\t\x7f\xc2\x9b", "\\x1b[2J\\n\\t\\x7f\\x9b"},
        {"a\u202Eb\u200Bc\u2028d\u2029", "a\\u{202e}b\\u{200b}c\\u{2028}d\\u{2029}"},
        {"\uFEFFa\u00ADb\u00A0c\u3000", "\\u{feff}a\\xadb\\xa0c\\u{3000}"},
        {"\uE000\U000F0000\U000E0041\uFE0F", "\\u{e000}\\u{f0000}\\u{e0041}\\u{fe0f}"},
        {"a\xff\xc3(", "a\\xff\\xc3("},
        {"C:\\Motor\\", "C:\\Motor\\"},
        {"\\\\", "\\\\\\"},
    };
    for (const auto& [text, shown] : cases) EXPECT_EQ(printable(std::string_view(text)), shown);
    EXPECT_EQ(printableMessage("\"a\\nb\": \u202E"), "\"a\\nb\": \\u{202e}");
}

TEST(Printable, differsForDifferentTexts) {
    const std::string pieces[] = {"\\", "n", "\n", "\t", "t", "x1b", "\x1b", "u{202e}", "\u202E"};
    std::set<std::string> texts;
    std::set<std::string> shown;
    for (const std::string& a : pieces)
        for (const std::string& b : pieces)
            for (const std::string& c : pieces)
                for (const std::string& d : pieces) {
                    texts.insert(a + b + c + d);
                    shown.insert(printable(std::string_view(a + b + c + d)));
                }
    EXPECT_EQ(texts.size(), shown.size());
}

TEST(Printable, keepsJsonWhatItIs) {
    EXPECT_EQ(printableJson("[\n  \"a\u202E\x7f\U000E0041ü\\n\"]\n"), "[\n  \"a\\u202e\\u007f\\udb40\\udc41ü\\n\"]\n");
}

TEST(Columns, areCountedAsATerminalDoes) {
    const std::pair<const char*, std::size_t> cases[] = {
        {"", 0}, {"speed", 5}, {"größe", 5}, {"速度 v", 6}, {"😀", 2}, {"e\u0301a\u0308", 2}, {"한", 2},
    };
    for (const auto& [text, columns] : cases) EXPECT_EQ(columnsOf(text), columns) << text;
}

TEST(Columns, longTextsAreShortenedAndWrapped) {
    EXPECT_EQ(shortened("abcdefgh", 8), "abcdefgh");
    EXPECT_EQ(shortened("abcdefghi", 8), "abc...hi");
    EXPECT_EQ(shortened("速度速度速度", 8), "速...度");
    EXPECT_EQ(shortened("e\u0301e\u0301e\u0301e\u0301e\u0301", 4), "e\u0301...");
    EXPECT_EQ(wrapped("", 8, 4), std::vector<std::string>{""});
    EXPECT_EQ(wrapped("Engine/Speed sensor", 10, 4), (std::vector<std::string>{"Engine/", "Speed ", "sensor"}));
    EXPECT_EQ(wrapped("abcdefghijklmno", 6, 4), (std::vector<std::string>{"abcdef", "ghijkl", "mno"}));
    std::vector<std::string> texts;
    texts.emplace_back(10'000, 'x');
    texts.emplace_back(5'000, '/');
    texts.emplace_back(1'000, ' ');
    for (const std::string& text : texts) {
        const std::vector<std::string> lines = wrapped(text, 10, 4);
        EXPECT_LE(lines.size(), 4U);
        for (const std::string& line : lines) EXPECT_LE(columnsOf(line), 10U);
    }
    const std::string quoted = inQuotes(std::string(1'000'000, '7'));
    EXPECT_LT(quoted.size(), 160U);
    EXPECT_NE(quoted.find("(1000000 characters)"), std::string::npos) << quoted;
}

}  // namespace
}  // namespace workbench
