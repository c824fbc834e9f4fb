#include <dlfcn.h>
#include <sys/random.h>

#include <algorithm>
#include <boost/container_hash/hash.hpp>
#include <boost/uuid/entropy_error.hpp>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <deque>
#include <limits>
#include <random>

#include "host/text.h"
#include "tests/support/host_test.h"

using namespace ks_test;
using ks_hmi::SignalSpecification;

namespace {

std::string format(const char* how, double value) {
    std::vector<char> buffer(400);
    std::snprintf(buffer.data(), buffer.size(), how, value);
    return buffer.data();
}

std::uint64_t hashOf(const std::string& key) { return boost::hash<std::string>()(key); }

class SignalIdentity : public HostTest {};

// What the system's source of randomness answers, in order: so many bytes, or an error number below 0. The bytes
// count up. When nothing is left it answers as ever.
std::deque<int> g_answers;
unsigned char g_nextByte = 0;

TEST_F(SignalIdentity, hashesAreThoseOfTheKeyTexts) {
    EXPECT_EQ(SignalSpecification::getCachedInfoHash(12.0, 1), hashOf("12$$1"));
    EXPECT_EQ(SignalSpecification::getCachedInfoHash(1e8, 10), hashOf("100000000$$10"));
    EXPECT_EQ(SignalSpecification::getCachedInfoHash(1e15 + 0.25, 9), hashOf("1000000000000000.2$$9"));
    EXPECT_EQ(SignalSpecification::getCachedInfoHash(-0.0, INT32_MIN), hashOf("-0$$-2147483648"));
    EXPECT_EQ(SignalSpecification::getCachedInfoHash(0.1, -10), hashOf("0.10000000000000001$$-10"));
    EXPECT_EQ(SignalSpecification::getCachedInfoHash(-std::nan(""), 1), hashOf("-nan$$1"));
    EXPECT_EQ(SignalSpecification::getCachedInfoHash(INFINITY, 1), hashOf("inf$$1"));
    EXPECT_EQ(SignalSpecification::getNonCachedInfoHash(u"Sub/Gain", u"", 1, 0, u"m1"), hashOf("m1/Sub/Gain$$$$1"));
    EXPECT_EQ(SignalSpecification::getNonCachedInfoHash(u"Gain", u"s", 2, 1, u""), hashOf("Gain$$s$$1"));
    EXPECT_EQ(SignalSpecification::getInfoHashFromStringList({"ab", "c"}), hashOf("abc"));
    EXPECT_EQ(SignalSpecification::getInfoHashFromStringList({}), hashOf(""));
    for (const char16_t unit : {u'\x7F', u'\x80', u'\x7FF', u'\x800'}) {
        const std::u16string path(1000, unit);
        EXPECT_EQ(SignalSpecification::getNonCachedInfoHash(path, u"", 1, 0, u""), hashOf(utf8(path) + "$$$$1"));
    }
    SignalSpecification record;
    record.m_blockPath = u"Gain";
    record.m_subPath = u"s";
    record.m_outputPortIndex = 2;
    EXPECT_EQ(record.getSourceKeyNonCached(u"m1"), hashOf("m1/Gain$$s$$2"));
    record.m_logicalPortIndex = 4;
    EXPECT_EQ(record.getSourceKeyNonCached(u""), hashOf("Gain$$s$$4"));
    record.setCachedInfo(12.0, 3);
    EXPECT_EQ(record.getSourceKeyCached(), hashOf("12$$3"));
}

TEST_F(SignalIdentity, anyDoubleAndAnyTextHashAsThePlainFormDoes) {
    std::mt19937_64 random(20260711);
    for (int i = 0; i < 20000; ++i) {
        const std::uint64_t bits = random();
        double handle = 0.0;
        std::memcpy(&handle, &bits, sizeof handle);
        // Whole numbers and dyadic fractions of any length, and what is next to powers of ten.
        const auto upTo = [&](std::uint64_t limit) { return static_cast<int>(random() % limit); };
        if (i % 2 == 0) handle = std::ldexp(static_cast<double>(bits >> upTo(64)), -upTo(20)) * (i % 4 - 1);
        if (i % 8 == 7) handle = std::pow(10.0, upTo(20)) + std::ldexp(upTo(3) - 1, -upTo(20));
        const int port = static_cast<std::int32_t>(random());
        ASSERT_EQ(SignalSpecification::getCachedInfoHash(handle, port),
                  hashOf(format("%.17g", handle) + "$$" + std::to_string(port)));

        std::u16string path(random() % (i % 100 == 0 ? 2000 : 40), u'\0');
        for (char16_t& unit : path) unit = static_cast<char16_t>(i % 3 == 0 ? random() : 0xD7F0 + random() % 0x830);
        ASSERT_EQ(
            SignalSpecification::getNonCachedInfoHash(path, u"\xD800", port, 0, path),
            hashOf((path.empty() ? "" : utf8(path) + "/") + utf8(path) + "$$\xEF\xBF\xBD$$" + std::to_string(port)));
    }
}

TEST_F(SignalIdentity, uuidsAreMadeOfAllTheBytesTheSystemGivesHoweverItGivesThem) {
    g_nextByte = 0;
    g_answers = {5, -EINTR, 1, 10};
    EXPECT_EQ(SignalSpecification::getUUIDFromBlockHandle(1, 1.0, false), "00010203-0405-4607-8809-0a0b0c0d0e0f");
    EXPECT_TRUE(g_answers.empty());
    for (const bool useMap : {false, true}) {
        g_answers = {5, -EIO};
        EXPECT_THROW(SignalSpecification::getUUIDFromBlockHandle(1, 1.0, useMap), boost::uuids::entropy_error);
    }
    g_answers = {-ENOSYS};
    EXPECT_THROW(SignalSpecification::createSigSpecFromPort(u"Gain", "1", 1, 0, 1.0, u"m1", false),
                 boost::uuids::entropy_error);
    EXPECT_TRUE(SignalSpecification::getBlockUUIDmap().empty());
}

TEST_F(SignalIdentity, portKeysHaveSixDecimals) {
    auto& map = SignalSpecification::getBlockUUIDmap();
    const std::string uuid = SignalSpecification::getUUIDFromBlockHandle(2, 7.25, true);
    EXPECT_EQ(SignalSpecification::getUUIDFromBlockHandle(2, 7.25, true), uuid);
    EXPECT_EQ(map.at("2-7.250000"), uuid);
    EXPECT_NE(SignalSpecification::getUUIDFromBlockHandle(2, 7.25, false), uuid);
    for (const bool useMap : {true, false}) {
        const auto told = call("Kestrel.HMI.InstrumentedSignals.getUUIDForBlock",
                               {number(7.25).get(), number(2).get(), logical(useMap).get()});
        EXPECT_EQ(hvArrayToStdString(told.get()) == uuid, useMap) << "so scripts are told";
    }
    EXPECT_NE(SignalSpecification::getUUIDFromBlockHandle(2, 7.25, false), uuid);
    ASSERT_EQ(uuid.size(), 36U);
    EXPECT_EQ(uuid.find_first_not_of("0123456789abcdef-"), std::string::npos);
    EXPECT_EQ(uuid[14], '4') << "random, as its version tells";
    EXPECT_EQ(map.size(), 1U);
    SignalSpecification::addToBlockHandleUUIDmap(-1, 0.0, "replaced");
    SignalSpecification::addToBlockHandleUUIDmap(-1, 0.0, "u");
    SignalSpecification::addToBlockHandleUUIDmap(-1, -0.0, "below");
    call("Kestrel.HMI.InstrumentedSignals.setUUIDForBlock",
         {number(7.25).get(), number(4294967293.0).get(), text("11111111-2222-4333-8444-555555555555").get()}, 0);
    SignalSpecification::addToBlockHandleUUIDmap(1, 1.0000001, "v");
    SignalSpecification::addToBlockHandleUUIDmap(1, 1e308, "w");
    EXPECT_EQ(map.at("-1-0.000000"), "u");
    EXPECT_EQ(map.at("-1--0.000000"), "below");
    EXPECT_EQ(map.at("-3-7.250000"), "11111111-2222-4333-8444-555555555555") << "a port beyond the signed numbers";
    EXPECT_TRUE(SignalSpecification::isInBlockHandleUUIDmap(1, 1.0));
    EXPECT_FALSE(SignalSpecification::isInBlockHandleUUIDmap(1, 1.1));
    EXPECT_EQ(map.at("1-" + format("%f", 1e308)), "w");
    constexpr double kLongest = std::numeric_limits<double>::lowest();
    SignalSpecification::addToBlockHandleUUIDmap(1, kLongest, "x");
    EXPECT_EQ(map.at("1-" + format("%f", kLongest)), "x");
    SignalSpecification::addToBlockHandleUUIDmap(5, 5.0, "");
    EXPECT_EQ(SignalSpecification::getUUIDFromBlockHandle(5, 5.0, true), "") << "an empty UUID is an entry";
}

TEST_F(SignalIdentity, aNewRecordTakesThePortsUuidAndStoresRelativeReferences) {
    SignalSpecification::addToBlockHandleUUIDmap(1, 12.0, "u1");
    const auto create = [](int port) {
        return SignalSpecification::createSigSpecFromPort(u"m1/Sub/Gain", "m1:3", port, 2, 12.0, u"m1", true);
    };
    const auto spec = create(1);
    EXPECT_EQ(spec->m_uuid, "u1");
    EXPECT_EQ(spec->m_blockPath, u"Sub/Gain");
    EXPECT_EQ(spec->m_eid, "3");
    EXPECT_EQ(spec->m_outputPortIndex, 1);
    EXPECT_EQ(spec->m_cachedPortIdx, 1);
    EXPECT_EQ(spec->m_logicalPortIndex, 2);
    EXPECT_EQ(spec->m_cachedBlockHandle, 12.0);
    EXPECT_EQ(spec->m_decimation, 1);
    EXPECT_TRUE(spec->m_excludeForSave);
    EXPECT_FALSE(spec->m_targetBufferedStreaming || spec->m_isFrameBased || spec->m_hideInPLV);
    EXPECT_EQ(create(2)->m_uuid.size(), 36U);
    EXPECT_EQ(SignalSpecification::getBlockUUIDmap().size(), 1U) << "a fresh UUID is not entered";
    const auto ofNoModel = SignalSpecification::createSigSpecFromPort(u"//Gain", "::3", 1, 0, 12.0, u"", false);
    EXPECT_EQ(ofNoModel->m_blockPath, u"/Gain") << "one separator is all that is taken off";
    EXPECT_EQ(ofNoModel->m_eid, ":3");
}

}  // namespace

// Stands in front of the system's for the library, too.
extern "C" [[gnu::visibility("default")]] ssize_t getrandom(void* buffer, std::size_t size, unsigned flags) {
    if (g_answers.empty()) {
        static const auto real = reinterpret_cast<decltype(&getrandom)>(dlsym(RTLD_NEXT, "getrandom"));
        return real(buffer, size, flags);
    }
    const int answer = g_answers.front();
    g_answers.pop_front();
    if (answer < 0) {
        errno = -answer;
        return -1;
    }
    const std::size_t given = std::min(static_cast<std::size_t>(answer), size);
    std::generate_n(static_cast<unsigned char*>(buffer), given, [] { return g_nextByte++; });
    return static_cast<ssize_t>(given);
}
