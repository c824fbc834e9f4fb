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

TEST_F(PortRenumbering, aRecordListedTwiceIsRenumberedAtEachOfItsPlaces) {
    const InstrumentedSignals::SignalPtr shared(resolvedPort(u"Sub/Switch", 1, kSwitchHandle).release());
    set().add(shared);
    addSwitch(2);
    set().add(shared);
    renumber({2, 1});
    EXPECT_EQ(ports(), (Ports{1, 1, 1})) << "there and back again";
    renumber({2, 0});
    EXPECT_EQ(ports(), (Ports{2, 2})) << "moved at its first place, removed at its second";
    EXPECT_TRUE(set().isPortObserved(kSwitchHandle, 2));
}

}  // namespace
