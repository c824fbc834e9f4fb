#include <algorithm>
#include <string>

#include "tests/support/host_test.h"

using namespace ks_test;
using ks_hmi::SignalSpecification;
using Params = SignalSpecification::DomainParamsMap;
using Entries = std::vector<std::pair<std::u16string, std::u16string>>;

namespace {

Entries entries(std::size_t count) {
    Entries result;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string number = std::to_string(i * 7919 % 1009);
        result.emplace_back(u"p" + std::u16string(number.begin(), number.end()), u"v");
    }
    return result;
}

Params oneByOne(const Entries& entries) {
    Params params;
    for (const auto& [name, value] : entries) params[name] = value;
    return params;
}
Params backwards(const Entries& entries) { return oneByOne({entries.rbegin(), entries.rend()}); }
Params allAtOnce(const Entries& entries) { return {entries.begin(), entries.end()}; }
Params outOfMany(const Entries& kept) {
    Params params = oneByOne(entries(1009));
    std::erase_if(params, [&](const auto& param) {
        return std::find(kept.begin(), kept.end(), Entries::value_type(param)) == kept.end();
    });
    return params;
}

class DomainParams : public ModelTest {
protected:
    using Trip = std::unique_ptr<SignalSpecification> (*)(const SignalSpecification&);

    static std::unique_ptr<SignalSpecification> withParams(Params params) {
        auto spec = port(u"Sub/Switch", 2, "3");
        spec->m_uuid = "s";
        spec->m_domainParams = std::move(params);
        return spec;
    }
    static Entries walkOf(const SignalSpecification& spec) {
        return {spec.m_domainParams.begin(), spec.m_domainParams.end()};
    }
    static std::unique_ptr<SignalSpecification> throughAnObject(const SignalSpecification& spec) {
        return std::make_unique<SignalSpecification>(spec.getHOSObject(u"m1", false).get(), 0, u"m1");
    }
    static std::unique_ptr<SignalSpecification> savedAndLoaded(const SignalSpecification& spec) {
        const auto data = structOf(1, {SignalSpecification::getStructFields(), 16});
        spec.getPersistenceData(data.get(), 0, u"m1");
        return std::make_unique<SignalSpecification>(data.get(), 0, u"");
    }
};

TEST_F(DomainParams, tripsKeepTheOrderInWhichTheyAreWalked) {
    std::vector<std::size_t> counts = {100, 300, 541, 900};
    for (std::size_t count = 0; count <= 40; ++count) counts.push_back(count);
    std::size_t reordered = 0;
    for (const std::size_t count : counts) {
        const Entries some = entries(count);
        const auto first = withParams(oneByOne(some));
        for (const auto made : {&oneByOne, &backwards, &allAtOnce, &outOfMany}) {
            if (made == &outOfMany && count > 100) continue;
            const auto spec = withParams(made(some));
            for (const Trip trip : {&throughAnObject, &savedAndLoaded}) {
                const auto once = trip(*spec);
                ASSERT_TRUE(once->isEqual(spec.get())) << count;
                EXPECT_TRUE(trip(*once)->isEqual(spec.get())) << count;
            }
            const bool isSameWalk = walkOf(*spec) == walkOf(*first);
            EXPECT_EQ(spec->isEqual(first.get()), isSameWalk) << count;
            reordered += isSameWalk ? 0 : 1;
        }
    }
    EXPECT_GT(reordered, 80U) << "the same parameters in another order are unequal";
}

TEST_F(DomainParams, replaceThoseThatWereThereAndOfEqualNamesTheLastOneHolds) {
    // Both names are read as U+FFFD.
    const HvArrayPtr value = structOf(1, std::array{"\xC0", "\xC1", "a"});
    for (const char* const name : {"\xC0", "\xC1", "a"})
        hvReplaceField(value.get(), 0, name, text(std::string_view(name) == "\xC1" ? "last" : "x").release());
    SignalSpecification spec;
    spec.m_domainParams = {{u"old", u"1"}};
    Params ignored = {{u"kept", u"1"}};
    spec.extractDomainParamsFromHvArray(value.get(), ignored);
    EXPECT_EQ(spec.m_domainParams, (Params{{u"\uFFFD", u"last"}, {u"a", u"x"}}));
    EXPECT_EQ(ignored.size(), 1U);
    EXPECT_EQ(spec.getValueForDomainParams(u"absent"), u"");
    EXPECT_EQ(hvGetNumberOfFields(spec.getDomainParamsAsHvArray().get()), 2) << "asking adds nothing";
    for (const HvArrayPtr& nothing : {emptyDouble(), structOf(0, std::array{"a"}), structOf(1, {}), HvArrayPtr()}) {
        spec.m_domainParams = {{u"old", u"1"}};
        spec.extractDomainParamsFromHvArray(nothing.get(), ignored);
        EXPECT_TRUE(spec.m_domainParams.empty());
    }
    EXPECT_EQ(hvGetNumberOfElements(spec.getDomainParamsAsHvArray().get()), 1U);
}

}  // namespace
