#include "tests/support/host_test.h"

using namespace ks_test;
using ks_hmi::InstrumentedSignals;

namespace {

constexpr double kSwitchHandle = 20.25;
constexpr double kOtherHandle = 30.25;

class PortRenumbering : public ModelTest {
protected:
    /// Renumbers the block "Sub/Switch" with the identifier "3".
    void renumber(std::vector<int> newNumbers) {
        set().renumberPorts(kSwitchHandle, u"m1/Sub/Switch", "m1:3", std::move(newNumbers));
    }
    void addSwitch(int portIndex) { set().add(resolvedPort(u"Sub/Switch", portIndex, kSwitchHandle)); }
    std::vector<int> ports() const {
        std::vector<int> result;
        for (std::size_t i = 0; i < set().getCount(); ++i) result.push_back(set().get(i)->m_outputPortIndex);
        return result;
    }
    bool isFoundByPath(const std::u16string& path, int portIndex) {
        return set().isPortObserved(0.0, path, u"", portIndex, 0, 0);
    }
    using Ports = std::vector<int>;
};

TEST_F(PortRenumbering, signalsFollowTheirPorts) {
    struct Row {
        Ports before, newNumbers, after;
    };
    const Row rows[] = {
        {{1, 2}, {2, 1}, {2, 1}},           // swapped
        {{1, 2, 3}, {1, 0, 2}, {1, 2}},     // deleted, and the next one moves up
        {{2, 1, 2, 3, 2}, {1, 0}, {1, 3}},  // several on the deleted port; ports beyond the list stay
        {{3, 1}, {2, 3, 1}, {1, 2}},        // in a circle
        {{1, 2}, {0, 0}, {}},               // all deleted
        {{1}, {-4}, {-4}},                  // a negative number is taken as any other
        {{-1, 0, 1}, {5, 5}, {-1, 0, 5}},   // signals without a port stay
        {{1, 2}, {1, 2, 9}, {1, 2}},        // nothing moves
    };
    for (const Row& row : rows) {
        while (set().getCount() > 0) set().remove(std::size_t{0});
        for (const int before : row.before) addSwitch(before);
        renumber(row.newNumbers);
        EXPECT_EQ(ports(), row.after) << "row " << &row - rows;
        for (int number = -4; number <= 5; ++number) {
            const bool isExpected = std::count(row.after.begin(), row.after.end(), number) != 0;
            EXPECT_EQ(isFoundByPath(u"Sub/Switch", number), isExpected) << "row " << &row - rows << " port " << number;
            EXPECT_EQ(set().isPortObserved(kSwitchHandle, number), isExpected && number != 0)
                << "row " << &row - rows << " port " << number;
        }
    }
}

TEST_F(PortRenumbering, aSignalBelongsByHandleOrPathOrIdentifier) {
    const auto add = [&](double handle, const char16_t* path, const char* eid) {
        auto spec = port(path, 1, eid);
        spec->setCachedInfo(handle, 1);
        set().add(std::move(spec));
    };
    add(kSwitchHandle, u"Old/Path", "9");
    add(kOtherHandle, u"Sub/Switch", "9");  // a stale handle
    add(kOtherHandle, u"Old/Path", "3");
    add(kOtherHandle, u"Old/Path", "9");
    add(kOtherHandle, u"m2/Sub/Switch", "m2:3");
    add(kOtherHandle, u"Old/Path", "");
    renumber({2});
    EXPECT_EQ(ports(), (Ports{2, 2, 2, 1, 1, 1}));
}

TEST_F(PortRenumbering, handleZeroAndAnEmptyIdentifierMatchAllThatHaveNone) {
    const std::unique_ptr<ks_hmi::SignalSpecification> unresolved = port(u"Gain", 1, "1");
    auto withoutIdentifier = resolvedPort(u"Gain", 1, kOtherHandle);
    auto withBoth = resolvedPort(u"Gain", 1, kOtherHandle);
    withBoth->m_eid = "1";
    for (const auto* spec : {unresolved.get(), withoutIdentifier.get(), withBoth.get()}) set().add(spec->clone());
    set().renumberPorts(0.0, u"m1/Sub/Switch", "m1:3", {2});
    EXPECT_EQ(ports(), (Ports{2, 1, 1}));
    EXPECT_EQ(set().get(0)->m_cachedPortIdx, 2);
    EXPECT_TRUE(set().isPortObserved(0.0, 2)) << "a renumbered signal counts as resolved to its old handle";
    set().renumberPorts(kSwitchHandle, u"m1/Sub/Switch", "", {3, 2});
    EXPECT_EQ(ports(), (Ports{2, 3, 1}));
}

TEST_F(PortRenumbering, anUnresolvedSignalKeepsItsHandleAndIsNoLongerResolvedLazily) {
    set().add(port(u"Sub/Switch", 1));
    renumber({2});
    EXPECT_EQ(set().get(0)->m_cachedBlockHandle, 0.0);
    EXPECT_FALSE(set().isPortObserved(kSwitchHandle, u"Sub/Switch", u"", 2, 2, 0));
    set().setRebindingPending(true);
    EXPECT_TRUE(set().isPortObserved(kSwitchHandle, u"Sub/Switch", u"", 2, 2, 0));
}

TEST_F(PortRenumbering, aRecordListedTwiceIsRenumberedOnce) {
    const InstrumentedSignals::SignalPtr shared(resolvedPort(u"Sub/Switch", 1, kSwitchHandle).release());
    set().add(shared);
    addSwitch(2);
    set().add(shared);
    renumber({2, 3, 1});
    EXPECT_EQ(ports(), (Ports{2, 3, 2}));
    EXPECT_TRUE(set().isPortObserved(kSwitchHandle, 2));
    renumber({1, 0});
    EXPECT_EQ(ports(), (Ports{3})) << "both places of the record are removed";
}

}  // namespace
