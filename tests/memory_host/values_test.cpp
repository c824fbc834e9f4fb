#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <span>
#include <vector>

#include "host/text.h"
#include "memory_host/orvex/values/small_storage.h"
#include "memory_host/orvex/values/values.h"
#include "tests/memory_host/ledger_test_base.h"

namespace {

using ks_test::logical;

using HostValues = LedgerTest;

double fieldOf(const HvArrayPtr& value, std::size_t index, const char* name) {
    return hvGetScalar(hvGetField(value.get(), index, name));
}

TEST_F(HostValues, dimensionsAreReal) {
    struct Case {
        std::vector<std::size_t> given, expected;
        std::size_t elements;
    };
    const Case cases[] = {
        {{3}, {3, 1}, 3},
        {{0}, {0, 1}, 0},
        {{2, 3, 4}, {2, 3, 4}, 24},
        {{2, 0, 4}, {2, 0, 4}, 0},
        {{2, 3, 1, 1}, {2, 3}, 6},
        {{1, 1, 2}, {1, 1, 2}, 2},
        {{SIZE_MAX, 0, SIZE_MAX}, {SIZE_MAX, 0, SIZE_MAX}, 0},
    };
    for (const Case& c : cases) {
        const HvArrayPtr numeric(matrix::create_numeric(c.given, hvINT16_CLASS, hvREAL));
        const HvArrayPtr cells(hvCreateCellArray(c.given.size(), c.given.data()));
        for (const hvArray* value : {numeric.get(), cells.get()}) {
            const std::size_t* dims = hvGetDimensions(value);
            EXPECT_EQ(std::vector(dims, dims + hvGetNumberOfDimensions(value)), c.expected);
            EXPECT_EQ(hvGetNumberOfElements(value), c.elements);
            EXPECT_EQ(hvIsEmpty(value), c.elements == 0);
        }
    }
}

TEST_F(HostValues, sharedCopyKeepsItsDataWhenTheOtherIsWritten) {
    const HvArrayPtr original = structOf(2);
    hvSetField(original.get(), 1, "b", number(1).release());
    HvArrayPtr copy(hvCreateSharedDataCopy(original.get()));
    EXPECT_EQ(hvGetField(copy.get(), 1, "b"), hvGetField(original.get(), 1, "b"));

    hvReplaceField(copy.get(), 1, "b", number(2).release());
    hvReplaceField(original.get(), 0, "a", number(3).release());
    EXPECT_EQ(fieldOf(original, 1, "b"), 1);
    EXPECT_EQ(fieldOf(copy, 1, "b"), 2);
    EXPECT_EQ(hvGetField(copy.get(), 0, "a"), nullptr);

    const hvArray* const borrowed = hvGetField(original.get(), 0, "a");
    copy.reset(hvCreateSharedDataCopy(original.get()));
    hvReplaceField(original.get(), 0, "b", number(8).release());
    copy.reset();
    EXPECT_EQ(hvGetScalar(borrowed), 3);
    EXPECT_EQ(borrowed, hvGetField(original.get(), 0, "a")) << "a field outlives the other copy";

    const HvArrayPtr one = text("more than fits in place");
    const HvArrayPtr other(hvCreateSharedDataCopy(one.get()));
    static_cast<char16_t*>(hvGetDataForWriting(other.get()))[0] = u'x';
    EXPECT_EQ(hvArrayToStdString(one.get()) + hvArrayToStdString(other.get()),
              "more than fits in placexore than fits in place");
}

TEST_F(HostValues, aStructColumnTakesItsValuesOver) {
    constexpr std::array kNames{"a", "b"};
    std::array<HvArrayPtr, 4> values{number(1), nullptr, text("two"), number(4)};
    const HvArrayPtr column = orvex::makeStructColumn(kNames, values);
    EXPECT_EQ(orvex::describeValue(column.get()), "struct 2x1");
    EXPECT_EQ(hvGetScalar(hvGetField(column.get(), 0, "a")), 1);
    EXPECT_EQ(hvGetField(column.get(), 0, "b"), nullptr);
    EXPECT_EQ(hvArrayToStdString(hvGetField(column.get(), 1, "a")), "two");
    EXPECT_EQ(hvGetScalar(hvGetField(column.get(), 1, "b")), 4);
    EXPECT_TRUE(std::none_of(values.begin(), values.end(), [](const HvArrayPtr& value) { return value != nullptr; }));
    EXPECT_EQ(orvex::describeValue(orvex::makeStructColumn(kNames, {}).get()), "struct 0x1");
    values[0] = number(1);
    const std::span three(values.begin(), 3);
    EXPECT_TRUE(failureOf([&] { orvex::makeStructColumn(kNames, three); }).starts_with("InvalidDimensions"));
}

TEST_F(HostValues, deepCopySharesNothingAndKeepsTheOrigin) {
    const HvArrayPtr outer = structOf(1);
    HvArrayPtr inner = structOf(1);
    hvSetField(inner.get(), 0, "a", number(4).release());
    hvSetField(outer.get(), 0, "b", inner.release());
    orvex::markAsPersisted(outer.get());

    const HvArrayPtr copy(hvCreateDeepCopy(outer.get()));
    const hvArray* copiedInner = hvGetField(copy.get(), 0, "b");
    EXPECT_NE(copiedInner, hvGetField(outer.get(), 0, "b"));
    EXPECT_NE(hvGetField(copiedInner, 0, "a"), hvGetField(hvGetField(outer.get(), 0, "b"), 0, "a"));
    EXPECT_EQ(hvGetScalar(hvGetField(copiedInner, 0, "a")), 4);
    EXPECT_EQ(hvGetClassWord(copy.get()), 18u);
    EXPECT_EQ(hvGetClassID(copy.get()), hvSTRUCT_CLASS);
    EXPECT_EQ(hvGetClassWord(copiedInner), 2u);
}

TEST_F(HostValues, structsThatShareAFieldReplaceItEachForItself) {
    const HvArrayPtr one = structOf(1);
    const HvArrayPtr other = structOf(1);
    hvSetField(one.get(), 0, "a", number(4).release());
    hvSetField(other.get(), 0, "a", number(5).release());
    orvex::shareField(other.get(), 0, "a", hvGetField(one.get(), 0, "a"));
    EXPECT_EQ(hvGetField(other.get(), 0, "a"), hvGetField(one.get(), 0, "a"));
    hvReplaceField(one.get(), 0, "a", number(6).release());
    EXPECT_EQ(hvGetScalar(hvGetField(other.get(), 0, "a")), 4);
    orvex::shareField(other.get(), 0, "a", nullptr);
    EXPECT_EQ(hvGetField(other.get(), 0, "a"), nullptr);
}

TEST_F(HostValues, equalNeighboursAreKeptOnceAndColumnsJoined) {
    const auto text = [](const char* one) { return hvCreateString(one); };
    const auto column = [](const std::array<hvArray*, 3>& values) {
        HvArrayPtr records = structOf(values.size());
        for (std::size_t i = 0; i < values.size(); ++i) hvSetField(records.get(), i, "a", values[i]);
        orvex::shareRepeats(records.get());
        return records;
    };
    const char* const longText = "a text that is too long to be in place";
    const std::array columns{column({text("short"), text(longText), text(longText)}),
                             column({number(0.0).release(), number(-0.0).release(), structOf(2).release()})};
    const HvArrayPtr all = orvex::joinedColumns(columns);
    const auto valueAt = [&](std::size_t i) { return hvGetField(all.get(), i, "a"); };
    EXPECT_EQ(hvGetNumberOfElements(all.get()), 6u);
    for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(valueAt(i) == valueAt(i + 1), i == 1) << i;
    EXPECT_EQ(hvArrayToStdString(valueAt(2)), longText);
    // Equal bytes of another class, and texts that differ in the last byte only.
    const std::u16string one(20, u'a'), other = std::u16string(19, u'a') + u'\x161';
    const auto words = column({ks_test::text(one).release(), ks_test::text(other).release(), nullptr});
    const auto zeros = column({number(0.0).release(), logical(false).release(), nullptr});
    for (const HvArrayPtr* const two : {&words, &zeros})
        EXPECT_NE(hvGetField(two->get(), 0, "a"), hvGetField(two->get(), 1, "a"));
}

TEST_F(HostValues, elementsAreGatheredWithWhatTheyHaveNotSet) {
    const HvArrayPtr records = structOf(2);
    const HvArrayPtr absent = structOf(1);
    hvSetField(records.get(), 1, "a", number(4).release());
    hvSetField(absent.get(), 0, "a", number(5).release());
    const std::array<orvex::StructElement, 3> elements{{{records.get(), 1}, {records.get(), 0}, {records.get(), 1}}};
    const HvArrayPtr gathered = orvex::gatheredElements(elements, absent.get());
    ASSERT_EQ(hvGetNumberOfElements(gathered.get()), 3u);
    const hvArray* const first = hvGetField(gathered.get(), 0, "a");
    EXPECT_EQ(first, hvGetField(records.get(), 1, "a"));
    EXPECT_EQ(hvGetField(gathered.get(), 2, "a"), first);
    EXPECT_EQ(hvGetField(gathered.get(), 1, "a"), hvGetField(absent.get(), 0, "a"));
    hvReplaceField(gathered.get(), 0, "a", number(6).release());
    EXPECT_EQ(hvGetScalar(hvGetField(records.get(), 1, "a")), 4);
    const std::array<orvex::StructElement, 1> missing{{{records.get(), 2}}};
    EXPECT_THROW(orvex::gatheredElements(missing, absent.get()), kssvIException);
    EXPECT_THROW(orvex::gatheredElements(elements, first), kssvIException);
}

TEST_F(HostValues, nullAndForeignValuesAreNeverUndefinedBehaviour) {
    const HvArrayPtr cell(hvCreateCellArray(1, std::array<std::size_t, 1>{2}.data()));
    for (const hvArray* value : {static_cast<const hvArray*>(nullptr), static_cast<const hvArray*>(cell.get())}) {
        EXPECT_EQ(hvGetField(value, 0, "a"), nullptr);
        EXPECT_EQ(hvGetNumberOfFields(value), 0);
        EXPECT_EQ(hvGetCell(value, 2), nullptr);
        EXPECT_EQ(hvGetData(value), nullptr);
        EXPECT_EQ(hvGetLogicals(value), nullptr);
        EXPECT_FALSE(hvIsLogicalScalarTrue(value));
        EXPECT_FALSE(hvIsA(value, "cell"));
        EXPECT_FALSE(failureOf([&] { hvGetScalar(value); }).empty());
        EXPECT_FALSE(failureOf([&] { hvArrayToStdString(value); }).empty());
    }
    EXPECT_EQ(hvGetCell(cell.get(), 1), nullptr);
    const HvArrayPtr records = structOf(1);
    EXPECT_EQ(hvGetField(records.get(), 1, "a"), nullptr);
    EXPECT_EQ(hvGetField(records.get(), 0, nullptr), nullptr);
    EXPECT_EQ(hvGetFieldNameByNumber(records.get(), 2), nullptr);
    EXPECT_STREQ(hvGetFieldNameByNumber(records.get(), 1), "b");
}

TEST_F(HostValues, wideStructsFindTheirFields) {
    constexpr std::size_t kWide = 200;
    std::vector<std::string> names;
    for (std::size_t i = 0; i < kWide; ++i) names.push_back("f" + std::to_string((i * 7) % kWide));
    std::vector<const char*> texts;
    for (const std::string& name : names) texts.push_back(name.c_str());
    const std::size_t one = 1;
    const HvArrayPtr record(hvCreateStructArray(1, &one, static_cast<int>(kWide), texts.data()));
    for (std::size_t i = 0; i < kWide; ++i)
        hvSetField(record.get(), 0, texts[i], number(static_cast<double>(i)).release());
    for (std::size_t i = 0; i < kWide; ++i) EXPECT_EQ(fieldOf(record, 0, texts[i]), static_cast<double>(i));
    EXPECT_EQ(hvGetField(record.get(), 0, "f"), nullptr);
    EXPECT_EQ(hvGetField(record.get(), 0, "g"), nullptr);
    EXPECT_STREQ(hvGetFieldNameByNumber(record.get(), 1), "f7");
    texts.back() = "f7";
    EXPECT_NE(failureOf([&] { hvCreateStructArray(1, &one, static_cast<int>(kWide), texts.data()); }), "");
}

// Names that are alike where names mostly differ, fewer and more than are told apart at a glance.
TEST_F(HostValues, fieldsAreFoundWhateverTheirNamesHaveInCommon) {
    for (const std::size_t count : {std::size_t{0}, std::size_t{1}, std::size_t{30}, std::size_t{33}}) {
        std::vector<std::string> names;
        for (std::size_t i = 0; i < count; ++i)
            names.push_back(std::string(1 + i / 10, 'x') + char('0' + i % 10) + "xx");
        std::vector<const char*> texts;
        for (const std::string& name : names) texts.push_back(name.c_str());
        const HvArrayPtr record = ks_test::structOf(1, texts);
        for (std::size_t i = 0; i < count; ++i)
            hvReplaceField(record.get(), 0, texts[i], number(static_cast<double>(i)).release());
        for (std::size_t i = 0; i < count; ++i)
            EXPECT_EQ(fieldOf(record, 0, texts[i]), static_cast<double>(i)) << count;
        for (const char* const other : {"", "x", "xx", "xxxx", "xaxx", "xxxxxxxxxxx"})
            EXPECT_EQ(hvGetField(record.get(), 0, other), nullptr) << count << other;
        // In orders that come and go, by names that are written elsewhere and by the struct's own.
        for (std::size_t step = 0; step < 20 * count; ++step) {
            const std::size_t i = step * (1 + step / count % 3) % count;
            EXPECT_EQ(fieldOf(record, 0, texts[i]), static_cast<double>(i)) << count << " at " << step;
            const std::size_t own = step % 5 == 0 ? 0 : i;
            EXPECT_EQ(fieldOf(record, 0, hvGetFieldNameByNumber(record.get(), static_cast<int>(own))),
                      static_cast<double>(own))
                << count << " at " << step;
        }
    }
}

TEST_F(HostValues, storageIsTakenAgainAndGoesBackWhenMuchOfItIsFree) {
    const auto makeMany = [] {
        std::vector<HvArrayPtr> values;
        for (std::size_t i = 0; i < 20'000; ++i) {
            values.push_back(structOf(i % 20));
            values.push_back(text(std::u16string(i % 300, u'x')));
            values.emplace_back(hvCreateSharedDataCopy(values.back().get()));
        }
        for (std::size_t i = 2; i < values.size(); i += 3)
            EXPECT_EQ(hvGetNumberOfElements(values[i].get()), i / 3 % 300);
    };
    const bool isIdle = orvex::storageCounts().inUse == 0;
    makeMany();
    EXPECT_TRUE(!isIdle || orvex::storageCounts().bytes == 0);
    const HvArrayPtr kept = text("keeps the storage from going back, being longer than what has room in place");
    const orvex::StorageCounts before = orvex::storageCounts();
    makeMany();
    const orvex::StorageCounts after = orvex::storageCounts();
    makeMany();
    EXPECT_EQ(orvex::storageCounts().bytes, after.bytes) << "the second time there is enough";
    EXPECT_EQ(orvex::storageCounts().inUse, before.inUse);
    if (before.inUse == 0) GTEST_SKIP() << "every piece comes from the heap here";
    EXPECT_GT(after.bytes, 1'000'000u);
}

TEST_F(HostValues, misuseIsRefusedAndNamed) {
    const HvArrayPtr records = structOf(2);
    const HvArrayPtr scalar = number(1);
    const HvArrayPtr cell(hvCreateCellArray(1, std::array<std::size_t, 1>{1}.data()));
    hvArray* const stored = number(5).release();
    hvSetCell(cell.get(), 0, stored);
    const std::array repeated{"a", "a"};
    const std::size_t one = 1;
    const std::array<std::size_t, 2> huge{SIZE_MAX, 2};
    const std::pair<std::function<void()>, const char*> cases[] = {
        {[&] { hvReplaceField(records.get(), 0, "c", number(1).release()); }, "UnknownField: There is no field \"c\""},
        {[&] { hvReplaceField(records.get(), 2, "a", number(1).release()); }, "IndexOutOfRange"},
        {[&] { hvReplaceField(scalar.get(), 0, "a", number(1).release()); }, "WrongClass"},
        {[&] { hvReplaceField(records.get(), 0, "a", stored); }, "InvalidArgument"},
        {[&] { orvex::shareField(records.get(), 0, "a", scalar.get()); }, "InvalidArgument"},
        {[&] { hvSetCell(cell.get(), 1, number(1).release()); }, "IndexOutOfRange"},
        {[&] { hvCreateStructArray(1, &one, 2, repeated.data()); }, "InvalidFieldName"},
        {[&] { hvCreateCellArray(2, huge.data()); }, "TooLarge"},
        {[&] { hvCreateCellArray(0, nullptr); }, "InvalidDimensions"},
        {[&] { hvCreateNumericScalar(hvSTRUCT_CLASS, hvREAL); }, "WrongClass"},
        {[&] { hvCreateNumericScalar(hvDOUBLE_CLASS, hvCOMPLEX); }, "InvalidArgument"},
        {[&] { orvex::markAsPersisted(scalar.get()); }, "WrongClass"},
    };
    for (const auto& [action, expected] : cases) EXPECT_TRUE(failureOf(action).starts_with(expected)) << expected;
    EXPECT_EQ(hvGetScalar(hvGetCell(cell.get(), 0)), 5);
}

template <class T>
std::int64_t asInteger(hvClassID classId, T value) {
    const HvArrayPtr scalar(hvCreateNumericScalar(classId, hvREAL));
    std::memcpy(hvGetDataForWriting(scalar.get()), &value, sizeof value);
    return hvGetScalarInt(scalar.get());
}

TEST_F(HostValues, integersAreTruncatedAndSaturated) {
    constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
    const std::pair<double, std::int64_t> cases[] = {
        {-1.9, -1},
        {1.9, 1},
        {std::nan(""), 0},
        {1e300, kMost},
        {-1e300, kLeast},
        {9223372036854775808.0, kMost},
        {-9223372036854775808.0, kLeast},
        {INFINITY, kMost},
        {4294967296.0, 4294967296},
    };
    for (const auto& [given, expected] : cases) EXPECT_EQ(asInteger(hvDOUBLE_CLASS, given), expected) << given;
    EXPECT_EQ(asInteger(hvSINGLE_CLASS, -1e30f), kLeast);
    EXPECT_EQ(asInteger(hvUINT64_CLASS, std::uint64_t{UINT64_MAX}), kMost);
    EXPECT_EQ(asInteger(hvINT64_CLASS, kLeast), kLeast);
    EXPECT_EQ(asInteger(hvUINT8_CLASS, std::uint8_t{200}), 200);
    EXPECT_EQ(hvGetScalarInt(logical(true).get()), 1);
    const HvArrayPtr two(hvCreateNumericMatrix(1, 2, hvLOGICAL_CLASS, hvREAL));
    *static_cast<bool*>(hvGetDataForWriting(two.get())) = true;
    const HvArrayPtr one = number(1), no = logical(false);
    for (const HvArrayPtr* const value : {&two, &one, &no}) EXPECT_FALSE(hvIsLogicalScalarTrue(value->get()));
    EXPECT_EQ(hvGetScalar(text("A").get()), 65);
    EXPECT_EQ(failureOf([] { hvGetScalar(text("").get()); }), "EmptyValue: A number is needed here, not char 1x0.");
}

TEST(HostText, illFormedUtf8GivesOneReplacementForEachMaximalSubpart) {
    const std::pair<const char*, std::u16string> cases[] = {
        {"", u""},
        {"a\u00e9\u20ac\U0001F600z", u"a\u00e9\u20ac\U0001F600z"},
        {"\xC0\xAF", u"\uFFFD\uFFFD"},
        {"\xE0\x80\x80", u"\uFFFD\uFFFD\uFFFD"},
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xF0\x9F\x98z", u"\uFFFDz"},
        {"\xE2\x82", u"\uFFFD"},
        {"\x80\xFF\xF4\x8F\xBF\xBF", u"\uFFFD\uFFFD\U0010FFFF"},
    };
    for (const auto& [given, expected] : cases) EXPECT_EQ(fl::i18n::to_ustring(given), expected);
    EXPECT_EQ(fl::i18n::to_ustring(nullptr), u"");
}

TEST(HostText, loneSurrogatesAreReplacedAndEverythingElseComesBack) {
    const std::u16string lone{u'a', 0xDC00, 0xD83D, u'b', 0xD83D};
    EXPECT_EQ(fl::i18n::to_string(lone),
              "a\xEF\xBF\xBD\xEF\xBF\xBD"
              "b\xEF\xBF\xBD");
    const std::u16string whole = u"\u007F\u0080\u07FF\u0800\uFFFF\U00010000\U0010FFFF";
    EXPECT_EQ(fl::i18n::to_ustring(fl::i18n::to_string(whole).c_str()), whole);
    EXPECT_EQ(fl::i18n::to_string(whole, {"UTF-8", true}), fl::i18n::to_string(whole));
    EXPECT_NE(failureOf([] { fl::i18n::to_string(u"", {"latin-1", true}); }).find("latin-1"), std::string::npos);
}

TEST_F(HostValues, charactersAreKeptExactly) {
    const std::u16string units{u'a', u'\0', 0xD800, u'\u00e9'};
    EXPECT_EQ(matrix::get_ustring(text(units).get()), units);
    EXPECT_EQ(hvArrayToStdString(text(std::string("a\0b", 3)).get()), std::string("a\0b", 3));
    EXPECT_EQ(hvGetDimensions(text("").get())[0], 1u);
    EXPECT_EQ(hvGetClassWord(HvArrayPtr(hvCreateString("x")).get()), 4u);
}

}  // namespace
