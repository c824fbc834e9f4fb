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

TEST_F(ChartActivity, identifiersMatchByTheirTexts) {
    add(u"cw_state", u"0.10000000000000001", u"Self");
    EXPECT_TRUE(isObserved(0.1, u"Self"));
    add(u"cw_state", u"-0", u"Self");
    EXPECT_TRUE(isObserved(-0.0, u"Self") && isAnyObserved(-0.0));
    EXPECT_FALSE(isObserved(0.0, u"Self") || isAnyObserved(0.0));
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

}  // namespace
