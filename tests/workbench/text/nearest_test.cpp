#include "workbench/text/nearest.h"

#include <gtest/gtest.h>

#include "workbench/text/text.h"

namespace workbench {
namespace {

TEST(NearestNames, areTheOnesWithTheFewestEdits) {
    struct Case {
        std::string written;
        std::vector<std::string> offered, found;
    };
    const Case cases[] = {
        {"markk", {"unmark", "mark", "move"}, {"mark"}},
        {"shwo", {"show", "shore"}, {"show"}},
        {"SPEED", {"Spied", "Speed"}, {"Speed", "Spied"}},
        {"Größer", {"Grösser", "Große"}, {"Grösser", "Große"}},
        {"x", {"abc", "y"}, {}},
        {"Speed", {"Torque", ""}, {}},
        {"", {"a"}, {}},
        {"aa", {"ab", "ab", "ac", "ad", "ae"}, {"ab", "ac", "ad"}},
        {std::string(5000, 'a'), {std::string(5000, 'a')}, {}},
    };
    for (const Case& one : cases) {
        Nearest nearest(one.written);
        for (const std::string& name : one.offered) nearest.offer(name);
        EXPECT_EQ(nearest.found(), one.found) << one.written;
    }
}

TEST(NearestNames, distancesCountSwapsAndStopAtTheLimit) {
    EXPECT_EQ(editDistance("ca", "ac", 9), 1U);
    EXPECT_EQ(editDistance("kitten", "sitting", 9), 3U);
    EXPECT_EQ(editDistance("kitten", "sitting", 2), 3U);
    EXPECT_EQ(editDistance("", "abc", 9), 3U);
    EXPECT_EQ(editDistance("same", "SAME", 0), 0U);
}

TEST(NearestNames, areAskedForInOneSentence) {
    Nearest nearest("Pump");
    EXPECT_EQ(nearest.question(), "");
    nearest.offer("Pumps");
    EXPECT_EQ(nearest.question(), "; did you mean \"Pumps\"?");
    nearest.offer("Pum\n");
    nearest.offer("Sump", "Tank/Sump");
    EXPECT_EQ(nearest.question(), "; did you mean \"Pumps\", \"Pum\\n\" or \"Tank/Sump\"?");
}

TEST(Quotes, keepAMessageReadable) {
    EXPECT_EQ(inQuotes(std::string_view("a\nb")), "\"a\\nb\"");
    std::string wide;
    for (int i = 0; i < 1000; ++i) wide += "ü";
    const std::string quoted = inQuotes(std::string_view(wide));
    EXPECT_LT(quoted.size(), 400U);
    EXPECT_EQ(toUtf8(toUtf16(quoted)), quoted);
    EXPECT_NE(quoted.find("ü...ü"), std::string::npos);
    EXPECT_NE(quoted.find("(1000 characters)"), std::string::npos);
}

}  // namespace
}  // namespace workbench
