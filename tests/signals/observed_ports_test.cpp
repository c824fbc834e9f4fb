#include <cmath>

#include "tests/support/host_test.h"

using namespace ks_test;

namespace {

class ObservedPorts : public ModelTest {
protected:
    bool byPath(double handle, const std::u16string& path, int outputPort, int portIdx) {
        return set().isPortObserved(handle, path, u"", outputPort, portIdx, 0);
    }
};

TEST_F(ObservedPorts, pathQueryRecordsTheHandleOnceAndThenAnswersByHandle) {
    set().add(port(u"Gain", 1));
    EXPECT_TRUE(byPath(12.5, u"Gain", 1, 0));
    EXPECT_EQ(set().get(0)->m_cachedPortIdx, 0) << "asking without a port resolves nothing";
    EXPECT_FALSE(set().isPortObserved(12.5, 5));
    EXPECT_TRUE(byPath(12.5, u"Gain", 1, 5));
    EXPECT_EQ(set().get(0)->m_cachedBlockHandle, 12.5);
    EXPECT_EQ(set().get(0)->m_cachedPortIdx, 5);
    EXPECT_TRUE(set().isPortObserved(12.5, 5));
    EXPECT_FALSE(byPath(13.5, u"Gain", 1, 5)) << "resolved to another handle";
    EXPECT_FALSE(byPath(12.5, u"Gain", 2, 0));
    EXPECT_FALSE(byPath(12.5, u"Sub", 1, 0));
}

TEST_F(ObservedPorts, aRecordAsksForWhatItSaysItself) {
    const auto watched = [] {
        auto spec = port(u"Gain", 2);
        spec->m_subPath = u"in/x";
        spec->m_logicalPortIndex = 3;
        return spec;
    };
    set().add(watched());
    const auto asks = [&](auto change) {
        const auto asked = watched();
        change(*asked);
        return set().isPortObserved(asked.get());
    };
    EXPECT_TRUE(asks([](auto&) {}));
    EXPECT_FALSE(asks([](auto& s) { s.m_blockPath = u"Sub"; }));
    EXPECT_FALSE(asks([](auto& s) { s.m_subPath = u"in"; }));
    EXPECT_FALSE(asks([](auto& s) { s.m_outputPortIndex = 3; }));
    EXPECT_FALSE(asks([](auto& s) { s.m_logicalPortIndex = 2; }));
    EXPECT_TRUE(asks([](auto& s) { s.setCachedInfo(12.5, 5); }));
    EXPECT_EQ(set().get(0)->m_cachedBlockHandle, 12.5);
    EXPECT_EQ(set().get(0)->m_cachedPortIdx, 5);
    EXPECT_FALSE(asks([](auto& s) { s.setCachedInfo(13.5, 5); }));
}

TEST_F(ObservedPorts, staleHandlesAnswerOnlyWhileRebindingIsPending) {
    set().add(resolvedPort(u"Gain", 2, 1.5));
    EXPECT_FALSE(byPath(2.5, u"Gain", 2, 2));
    set().setRebindingPending(true);
    EXPECT_TRUE(byPath(2.5, u"Gain", 2, 2));
    EXPECT_FALSE(byPath(2.5, u"Gain", 2, 3));
    EXPECT_EQ(set().get(0)->m_cachedBlockHandle, 1.5);
}

TEST_F(ObservedPorts, handlesCompareExactly) {
    set().add(resolvedPort(u"A", 1, NAN));
    set().add(resolvedPort(u"B", 1, 0.0));
    EXPECT_FALSE(set().isPortObserved(NAN, 1));
    EXPECT_TRUE(set().isPortObserved(0.0, 1));
    EXPECT_FALSE(set().isPortObserved(-0.0, 1)) << "equal, but another key";
}

TEST_F(ObservedPorts, removalTakesEverySignalOfThePortOutOfTheIndex) {
    set().add(port(u"Gain", 1));
    set().add(port(u"Gain", 1));
    set().add(port(u"Sub/Switch", 1));
    set().remove(std::size_t{0});
    EXPECT_FALSE(byPath(0.0, u"Gain", 1, 0));
    EXPECT_TRUE(byPath(0.0, u"Sub/Switch", 1, 0));
    set().updateObservedPortMap();
    EXPECT_TRUE(byPath(0.0, u"Gain", 1, 0));
}

TEST_F(ObservedPorts, whatLeavesTheIndexIsReleased) {
    const ks_hmi::InstrumentedSignals::SignalPtr shared(resolvedPort(u"Gain", 1, 12.5).release());
    set().add(port(u"Gain", 1));
    set().add(shared);
    set().add(port(u"Gain", 1));
    EXPECT_GT(shared.use_count(), 2);
    set().remove(std::size_t{1});
    EXPECT_EQ(shared.use_count(), 1);
}

TEST_F(ObservedPorts, aRenamedModelIsFoundAfterAnUpdate) {
    set().add(port(u"Gain", 1));
    set().setModelName(u"m2");
    EXPECT_FALSE(byPath(0.0, u"Gain", 1, 0));
    set().updateObservedPortMap();
    EXPECT_TRUE(byPath(0.0, u"Gain", 1, 0));
}

TEST_F(ObservedPorts, signalsUnderOnePathKeyComeAndGoEachForItself) {
    const auto add = [&](int outputPort) {
        auto spec = port(u"Gain", outputPort);
        spec->m_logicalPortIndex = 4;
        set().add(std::move(spec));
    };
    const auto observed = [&](int outputPort) { return set().isPortObserved(0.0, u"Gain", u"", outputPort, 0, 4); };
    add(1);
    add(2);
    set().remove(std::size_t{0});
    add(3);
    EXPECT_FALSE(observed(1));
    EXPECT_TRUE(observed(2) && observed(3));
}

}  // namespace
