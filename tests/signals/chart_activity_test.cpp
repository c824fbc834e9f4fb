#include "tests/support/host_test.h"

using namespace ks_test;

namespace {

class ChartActivity : public ModelTest {
protected:
    bool isObserved(double ssid, const char16_t* activity) {
        return set().isCWActivityObserved(u"m1:4", ssid, activity);
    }
    bool isAnyObserved(double ssid) { return set().isAnyCWActivityObserved(u"m1:4", ssid); }
    void add(const char16_t* domain, const char16_t* ssid, const char16_t* activity) {
        set().add(chartItem(domain, ssid, activity));
    }
};

TEST_F(ChartActivity, isObservedByObjectAndActivity) {
    add(u"cw_state", u"7", u"Child");
    add(u"cw_data", u"9", u"Data");
    add(u"cw_chart", u"0", u"Leaf");
    EXPECT_TRUE(isObserved(7.0, u"Child"));
    EXPECT_FALSE(isObserved(7.0, u"Self"));
    EXPECT_FALSE(isObserved(8.0, u"Child"));
    EXPECT_TRUE(isObserved(9.0, u"Data"));
    EXPECT_TRUE(isObserved(0.0, u"Leaf"));
    EXPECT_TRUE(isAnyObserved(7.0));
    EXPECT_FALSE(isAnyObserved(8.0));
    EXPECT_TRUE(set().isCWActivityObserved(u"4", 7.0, u"Child")) << "the model's name may be left out";
    EXPECT_FALSE(set().isCWActivityObserved(u"m2:4", 7.0, u"Child"));
    EXPECT_FALSE(isObserved(7.5, u"Child"));
}

TEST_F(ChartActivity, fractionalIdentifiersAreTextsLikeAnyOther) {
    add(u"cw_state", u"0.10000000000000001", u"Self");
    EXPECT_TRUE(isObserved(0.1, u"Self"));
}

TEST_F(ChartActivity, unknownActivitiesAreNotRecorded) {
    add(u"cw_state", u"7", u"Entry");
    EXPECT_FALSE(isObserved(7.0, u"Entry"));
    EXPECT_FALSE(isAnyObserved(7.0));
    set().remove(std::size_t{0});
    EXPECT_EQ(set().getCount(), 0U);
}

TEST_F(ChartActivity, removalByPositionClearsTheActivityForAllSignalsOnIt) {
    add(u"cw_state", u"7", u"Self");
    add(u"cw_state", u"7", u"Leaf");
    add(u"cw_state", u"7", u"Leaf");
    set().remove(std::size_t{0});
    EXPECT_FALSE(isObserved(7.0, u"Self"));
    EXPECT_TRUE(isObserved(7.0, u"Leaf"));
    EXPECT_TRUE(isAnyObserved(7.0));
    set().remove(std::size_t{0});
    EXPECT_FALSE(isObserved(7.0, u"Leaf"));
    EXPECT_FALSE(isAnyObserved(7.0));
    set().updateObservedPortMap();
    EXPECT_TRUE(isObserved(7.0, u"Leaf"));
}

TEST_F(ChartActivity, replacingAndRemovingByValueLeaveTheEntry) {
    add(u"cw_state", u"7", u"Self");
    set().set(0, port(u"Gain", 1));
    EXPECT_TRUE(isObserved(7.0, u"Self"));
    add(u"cw_state", u"8", u"Self");
    set().remove(*set().get(1));
    EXPECT_EQ(set().getCount(), 1U);
    EXPECT_TRUE(isObserved(8.0, u"Self"));
}

TEST_F(ChartActivity, lookupListsAppend) {
    std::vector<std::string> list = {"kept"};
    set().constructCWLookupStrUsingActivity(list, "4", "7", "Self");
    ASSERT_EQ(list.size(), 5U);
    EXPECT_EQ(list.front(), "kept");
}

TEST_F(ChartActivity, differenceMatchesChartsByActivityAndTheirPartsByIdentifier) {
    struct Row {
        const char16_t *domainA, *ssidA, *activityA, *domainB, *ssidB, *activityB;
        std::size_t difference;
    };
    const Row rows[] = {
        {u"cw_chart", u"0", u"Self", u"cw_chart", u"0", u"Child", 1},
        {u"cw_chart", u"0", u"Self", u"cw_chart", u"0", u"Self", 0},
        {u"cw_state", u"7", u"Self", u"cw_state", u"7", u"Leaf", 0},
        {u"cw_state", u"7", u"Self", u"cw_state", u"8", u"Self", 1},
        {u"cw_state", u"7", u"Self", u"", u"7", u"Self", 1},
        {u"", u"7", u"Self", u"cw_state", u"8", u"Self", 0},
    };
    for (const Row& row : rows) {
        ks_hmi::InstrumentedSignals a;
        ks_hmi::InstrumentedSignals b;
        a.add(chartItem(row.domainA, row.ssidA, row.activityA));
        b.add(port(u"Gain", 1));
        b.add(chartItem(row.domainB, row.ssidB, row.activityB));
        EXPECT_EQ(a.setDifference_cw(&b).size(), row.difference) << &row - rows;
        EXPECT_TRUE(a.setDifference_cw(&a).empty());
    }
    add(u"cw_state", u"7", u"Self");
    set().add(port(u"Gain", 1));
    add(u"cw_data", u"9", u"Data");
    const auto all = set().setDifference_cw(nullptr);
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[1], set().share(2));
}

}  // namespace
