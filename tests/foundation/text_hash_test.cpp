#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "foundation/text_hash.h"

namespace {

using ks_hmi_foundation::TextHash;

/// All texts of that many of the characters.
std::vector<std::u16string> textsOf(std::u16string_view characters, std::size_t length) {
    if (length == 0) return {u""};
    std::vector<std::u16string> texts;
    for (const std::u16string& shorter : textsOf(characters, length - 1))
        for (const char16_t character : characters) texts.push_back(shorter + character);
    return texts;
}

// Paths differ in little: a digit more, a letter doubled. The index takes equal hashes for equal sub-paths.
TEST(TextHashTest, tellsTextsApartThatDifferInLittle) {
    std::vector<std::uint64_t> hashes;
    const auto addAll = [&](std::u16string_view characters, std::size_t fewest, std::size_t most) {
        for (std::size_t length = fewest; length <= most; ++length)
            for (const std::u16string& text : textsOf(characters, length))
                hashes.push_back(TextHash().add(u"m").add(text).add(1).value());
    };
    addAll(u"01/a2", 0, 7);
    addAll(u"01", 8, 16);
    const std::size_t count = hashes.size();
    std::sort(hashes.begin(), hashes.end());
    hashes.erase(std::unique(hashes.begin(), hashes.end()), hashes.end());
    EXPECT_EQ(hashes.size(), count);
}

}  // namespace
