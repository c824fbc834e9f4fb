#include "foundation/sparse.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

using ks_hmi_foundation::Sparse;

namespace {

TEST(Sparse, isTheValueAndHasItsOwn) {
    Sparse<std::u16string> text;
    EXPECT_TRUE(text.empty() && text.size() == 0 && text.begin() == text.end() && text == u"");
    text = u"ab";
    text.edit() += u"c";
    EXPECT_EQ(text.size(), 3U);
    EXPECT_EQ(std::u16string(text.begin(), text.end()), u"abc");
    EXPECT_EQ(std::u16string_view(text), u"abc");
    Sparse<std::u16string> copy = text;
    copy.edit().clear();
    EXPECT_TRUE(copy.empty() && text == u"abc" && !(copy == text) && copy == Sparse<std::u16string>());
    const Sparse<std::u16string> moved = std::move(text);
    EXPECT_TRUE(moved == u"abc" && text.empty());  // NOLINT(bugprone-use-after-move): it is empty, by its contract
    (copy = moved) = std::u16string();
    EXPECT_TRUE(copy.empty() && moved.size() == 3);
}

TEST(Sparse, takesOneEntryAfterAnother) {
    Sparse<std::map<int, int>> numbers;
    for (const int key : {1, 2, 1}) ++numbers[key];
    EXPECT_TRUE(numbers.find(1)->second == 2 && numbers.find(2)->second == 1 && numbers.size() == 2);
    numbers.clear();
    EXPECT_TRUE(numbers.find(1) == numbers.end());
}

}  // namespace
