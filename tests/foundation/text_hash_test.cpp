#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include <boost/container_hash/hash.hpp>

#include "foundation/ascii_hash.h"
#include "foundation/text_hash.h"
#include "host/text.h"

namespace {

using ks_hmi_foundation::TextHash;

// All texts of that many of the characters.
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
    addAll(u"\x8000\x8001\xA000", 1, 6);
    for (std::size_t length = 17; length <= 40; ++length)
        for (std::size_t place = 0; place < length; ++place) {
            std::u16string text(length, u'0');
            text[place] = u'1';
            hashes.push_back(TextHash().add(u"m").add(text).add(1).value());
        }
    for (const char16_t* const text : {u"", u"a", u"a0/a", u"a0/a2/1", u"010101010101"})
        hashes.push_back(TextHash().add(u"n").add(text).add(1).value());
    const std::size_t count = hashes.size();
    std::sort(hashes.begin(), hashes.end());
    hashes.erase(std::unique(hashes.begin(), hashes.end()), hashes.end());
    EXPECT_EQ(hashes.size(), count);
}

// At every place of a word, and whatever stands before and behind the text.
TEST(TextHashTest, takesLoneHalvesOfPairsForTheReplacementCharacter) {
    const auto hash = [](std::u16string_view text) { return TextHash().add(u"m").add(text).value(); };
    for (const std::u16string first : {u"", u"abcdefgh", u"abcdefg\xA000\xDFFF"})
        for (std::size_t length = 0; length <= 6; ++length)
            for (const std::u16string& text : textsOf(u"a\xD83D\xDE00\xFFFD", length)) {
                const std::u16string whole = u'\xD83D' + first + text + u'\xDE00';
                const auto cut = std::u16string_view(whole).substr(1, whole.size() - 2);
                ASSERT_EQ(hash(cut), hash(fl::i18n::to_ustring(fl::i18n::to_string(first + text).c_str())));
            }
}

// What is converted on the way has the hash of the narrow text, and says where there is none.
TEST(AsciiHash, isBoostsOfTheNarrowText) {
    using ks_hmi_foundation::AsciiHash;
    for (std::size_t first = 0; first < 9; ++first)
        for (std::size_t second = 0; second < 9; ++second) {
            const std::string narrow = std::string(first, 'a') + '/' + std::string(second, '\x7F');
            const std::u16string wide(narrow.begin() + static_cast<std::ptrdiff_t>(first) + 1, narrow.end());
            AsciiHash hash;
            EXPECT_TRUE(hash.add(std::u16string(first, u'a')) && hash.add('/').add(wide));
            if (AsciiHash::kIsBoosts) {
                EXPECT_EQ(hash.value(), boost::hash<std::string>()(narrow));
            }
            for (std::size_t i = 0; i < second; ++i)
                for (const char16_t other : {u'\x80', u'\x100', u'\xFFFF'}) {
                    std::u16string foreign = wide;
                    foreign[i] = other;
                    EXPECT_FALSE(AsciiHash().add(foreign));
                }
        }
}

}  // namespace
