#include <random>
#include <set>

#include "tests/support/host_test.h"

using namespace ks_test;

namespace {

class ObservedPorts : public ModelTest {};

// Only the key tells sub-paths apart, and to it an unpaired surrogate is the replacement character. Paths are compared.
TEST_F(ObservedPorts, pathsMatchUnitByUnitAndSubPathsWhenTheirUtf8Does) {
    std::vector<std::u16string> texts;
    for (const std::size_t letters : {0U, 2U, 5U, 9U})
        for (const std::u16string core :
             {u"\xD800", u"\xDC00", u"\xFFFD", u"\xD83D\xDE00", u"\xD83D\xDE01", u"\xD83E\xDE00", u"\xDE00\xDE00",
              u"\xDE00\xD83D", u"\xD83D\xD83D", u"\xFFFD\xFFFD", u"\xD83Dx\xDE00", u"\xFFFDx\xFFFD"})
            for (const bool isFirst : {false, true})
                texts.push_back(isFirst ? core + std::u16string(letters, u'a') : std::u16string(letters, u'a') + core);
    for (const std::u16string& watched : texts) {
        ks_hmi::InstrumentedSignals signals;
        signals.add(port(u"Gain", 1));
        signals.get(0)->m_subPath = watched;
        signals.updateObservedPortMap();
        signals.add(port(watched, 1));
        for (const std::u16string& asked : texts) {
            SCOPED_TRACE(testing::Message() << &watched - &texts[0] << " and " << &asked - &texts[0]);
            ASSERT_EQ(signals.isPortObserved(0.0, u"Gain", asked, 1, 0, 0), utf8(asked) == utf8(watched));
            ASSERT_EQ(signals.isPortObserved(0.0, asked, u"", 1, 0, 0), asked == watched);
        }
    }
}

// Few ports and many are kept in different ways; neighbours, null and ports that are there twice are nothing special.
TEST_F(ObservedPorts, enginePortsAreFoundAmongAnyNumber) {
    std::mt19937_64 random(1);
    for (const std::size_t count : {0U, 1U, 2U, 9U, 300U, 32'768U, 32'769U, 70'000U}) {
        SCOPED_TRACE(count);
        const std::uint64_t apart = count % 2 == 0 ? 8 : 4096;
        const auto portAt = [&](std::uint64_t number) { return reinterpret_cast<ksPort*>(number * apart); };
        std::set<ksPort*> known;
        std::vector<ksPort*> cached;
        while (cached.size() < count) {
            cached.push_back(portAt(cached.size() == 5 ? 0 : random() % (2 * count)));
            known.insert(cached.back());
        }
        set().cacheKSPorts(cached);
        for (std::size_t number = 0; number < 2 * count + 10; ++number)
            ASSERT_EQ(set().isKSPortObserved(portAt(number)), known.count(portAt(number)) != 0) << number;
        set().add(port(u"Gain", 1));
        for (const ksPort* const one : known) ASSERT_FALSE(set().isKSPortObserved(one));
    }
}

TEST_F(ObservedPorts, enginePortsAreFoundWhereverTheyFindRoom) {
    std::mt19937_64 random(1);
    std::vector<ksPort*> ports(256);
    for (int round = 0; round < 1'000; ++round) {
        for (ksPort*& one : ports) one = reinterpret_cast<ksPort*>(random());
        set().cacheKSPorts(ports);
        for (const ksPort* const one : ports) ASSERT_TRUE(set().isKSPortObserved(one)) << round;
    }
}

// Few signals and many are found in different ways, and each number of them passes through the ways of fewer.
TEST_F(ObservedPorts, handlesAreFoundAmongAnyNumberOfSignals) {
    for (const std::size_t count : {1U, 7U, 300U, 500U, 2'000U}) {
        SCOPED_TRACE(count);
        ks_hmi::InstrumentedSignals signals;
        std::set<std::size_t> known;
        const auto add = [&](std::size_t number) {
            const std::u16string path{u'B', static_cast<char16_t>(number + 1)};
            signals.add(resolvedPort(path, 1, static_cast<double>(number)));
            known.insert(number);
        };
        const auto compare = [&] {
            for (std::size_t number = 0; number < 2 * count; ++number) {
                const auto handle = static_cast<double>(number);
                ASSERT_EQ(signals.isPortObserved(handle, 1), known.count(number) != 0) << number;
                ASSERT_FALSE(signals.isPortObserved(handle, 2) || signals.isPortObserved(handle + 0.5, 1));
            }
        };
        for (std::size_t number = 0; number < count; ++number) add(number);
        for (std::size_t number = 0; number < count; number += 3) add(number);
        compare();
        while (signals.getCount() > count / 2) {
            known.erase(static_cast<std::size_t>(signals.get(signals.getCount() - 1)->m_cachedBlockHandle));
            signals.remove(signals.getCount() - 1);
        }
        compare();
        for (std::size_t number = count; number > 0; number -= (number + 2) / 3) add(number);
        compare();
    }
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

TEST_F(ObservedPorts, theFirstMatchByPathIsEnteredOnceMore) {
    const ks_hmi::InstrumentedSignals::SignalPtr shared(port(u"Gain", 1).release());
    set().add(shared);
    const long before = shared.use_count();
    for (int asked = 0; asked < 2; ++asked) {
        EXPECT_TRUE(set().isPortObserved(4.5, u"Gain", u"", 1, 1, 0));
        EXPECT_EQ(shared.use_count(), before + 2) << "under its path key again, and under its handle key";
    }
    set().remove(std::size_t{0});
    EXPECT_EQ(shared.use_count(), 1);
}

TEST_F(ObservedPorts, signalsUnderOnePathKeyComeAndGoEachForItself) {
    const auto add = [&](int outputPort) {
        auto spec = port(u"Gain", outputPort);
        spec->m_logicalPortIndex = 4;
        set().add(std::move(spec));
    };
    const auto observed = [&](int outputPort) { return set().isPortObserved(0.0, u"Gain", u"", outputPort, 0, 4); };
    for (const int outputPort : {1, 2, 3, 4}) add(outputPort);
    for (const std::size_t index : {1U, 0U}) set().remove(index);
    for (const int outputPort : {5, 6}) add(outputPort);
    EXPECT_FALSE(observed(1) || observed(2));
    EXPECT_TRUE(observed(3) && observed(4) && observed(5) && observed(6));
    for (const char16_t* const path : {u"\xD800", u"\xFFFD"}) set().insert(0, port(path, 1));
    set().remove(std::size_t{0});
    EXPECT_TRUE(set().isPortObserved(0.0, u"\xD800", u"", 1, 0, 0));
}

TEST_F(ObservedPorts, aStaleHandleAnswersForItsPortWhileRebindingIsPending) {
    set().add(resolvedPort(u"Gain", 1, 12.5));
    for (const bool isPending : {false, true}) {
        set().setRebindingPending(isPending);
        EXPECT_EQ(set().isPortObserved(7.5, u"Gain", u"", 1, 1, 0), isPending);
        EXPECT_FALSE(set().isPortObserved(7.5, u"Gain", u"", 1, 2, 0));
    }
    EXPECT_EQ(set().get(0)->m_cachedBlockHandle, 12.5) << "resolved once";
}

TEST_F(ObservedPorts, whatHasChangedSinceItWasEnteredStandsInNobodysWay) {
    for (int i = 0; i < 2; ++i) set().add(resolvedPort(u"Gain", 1, 12.5));
    set().get(0)->setCachedInfo(7.5, 1);
    EXPECT_TRUE(set().isPortObserved(12.5, 1));
    // A signal that is found under its old key is entered under that of what it is now.
    for (const auto change : {+[](ks_hmi::SignalSpecification& signal) { signal.m_subPath = u"b"; },
                              +[](ks_hmi::SignalSpecification& signal) { signal.m_logicalPortIndex = 4; }}) {
        ks_hmi::InstrumentedSignals signals;
        signals.add(port(u"Gain", 1));
        ks_hmi::SignalSpecification& signal = *signals.get(0);
        change(signal);
        const auto isFound = [&] {
            return signals.isPortObserved(0.0, u"Gain", signal.m_subPath, 1, 0, signal.m_logicalPortIndex);
        };
        EXPECT_FALSE(isFound());
        EXPECT_TRUE(signals.isPortObserved(4.5, u"Gain", u"", 1, 1, 0));
        EXPECT_TRUE(isFound());
    }
}

TEST_F(ObservedPorts, aRemovalTakesOutWhatHasItsHandleAndPortByThen) {
    using Signal = ks_hmi::SignalSpecification;
    for (const auto change : {+[](Signal&signal, int by) { signal.m_cachedPortIdx += by; },
                              +[](Signal&signal, int by) { signal.m_cachedBlockHandle += by; }}) {
        ks_hmi::InstrumentedSignals signals;
        signals.add(resolvedPort(u"Gain", 1, 12.5));
        signals.add(resolvedPort(u"Sub/Switch", 1, 12.5));
        change(*signals.get(1), 1);
        signals.remove(std::size_t{0});
        change(*signals.get(0), -1);
        EXPECT_TRUE(signals.isPortObserved(12.5, 1));
    }
    // One that has gone does not answer for one that has changed.
    for (int i = 0; i < 2; ++i) set().add(resolvedPort(u"Gain", 1, 12.5));
    set().get(1)->setCachedInfo(7.5, 1);
    const auto gone = set().share(0);
    set().remove(std::size_t{0});
    EXPECT_FALSE(set().isPortObserved(12.5, 1));
}

}  // namespace
