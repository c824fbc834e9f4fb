#include <array>

#include "memory_host/orvex/objects/object_system.h"
#include "observers/signal_client.h"
#include "tests/support/host_recorder.h"
#include "tests/support/host_test.h"

using namespace ks_test;
using ks_hmi::SignalClient;

namespace {

// What a client answers from the signal that it observes.
class ObservedSignal : public ModelTest {
protected:
    // A client of the signal that the model's set holds for that path, with the set known to the host.
    std::unique_ptr<SignalClient> clientOf(const std::u16string& path) {
        set().add(port(path, 1));
        auto& signal = *set().get(0);
        signal.setCachedInfo(7.5, 2);
        signal.m_decimation = 4;
        signal.m_maxPoints = 100;
        signal.m_subPath = u"part";
        kestrel::loadedModels().find(u"m1")->setSignals(HvArrayPtr(hvCreateSharedDataCopy(object())));
        auto client = std::make_unique<SignalClient>();
        client->m_signalUUID = signal.m_uuid;
        client->m_sourceModel = u"m1";
        client->m_modelPath = {u"Sub", u"inner/Block"};
        return client;
    }
    struct Aligned {
        std::vector<std::u16string> path = {u"old"};
        std::u16string subPath = u"old";
        friend bool operator==(const Aligned&, const Aligned&) = default;
    };
    static Aligned aligned(SignalClient& client) {
        Aligned result;
        client.getAlignedBlockPath(u"m1", result.path, result.subPath);
        return result;
    }
};

TEST_F(ObservedSignal, answersFromTheObservedSignalAndKeepsIt) {
    const auto client = clientOf(u"Sub/Switch");
    EXPECT_EQ(client->getAlignedPortIndex(u"m1"), 2) << "the cached port, not the block's";
    EXPECT_EQ(client->getDecimation(u"m1"), 4);
    EXPECT_EQ(client->getMaxPoints(u"m1"), 100);
    EXPECT_EQ(aligned(*client), (Aligned{{u"m1/Sub", u"inner/Block", u"m1/Sub/Switch"}, u"part"}));

    set().remove(std::size_t{0});
    orvex::FaultInjection calls;
    EXPECT_EQ(client->getDecimation(u"m1"), 4) << "looked up once and kept";
    EXPECT_EQ(calls.operations(), 0U);
    client->m_modelPath.clear();
    EXPECT_EQ(aligned(*client).path, (std::vector<std::u16string>{u"m1/Sub/Switch"}));
    kestrel::loadedModels().find(u"m1")->model().move(u"Sub", u"Moved");
    EXPECT_EQ(aligned(*client), (Aligned{{}, u""})) << "no identifier to find the moved block by";
}

TEST_F(ObservedSignal, isFoundAtItsNewPosition) {
    const auto client = clientOf(u"Gain");
    for (const int decimation : {2, 3}) {
        set().add(port(u"Gain", 1));
        set().get(set().getCount() - 1)->m_decimation = decimation;
    }
    client->m_signalUUID = set().get(1)->m_uuid;
    EXPECT_EQ(client->clone()->getDecimation(u"m1"), 2);
    set().remove(std::size_t{0});
    EXPECT_EQ(client->getDecimation(u"m1"), 2);
}

TEST_F(ObservedSignal, aStructIsAsGoodAsAnObjectForTheObservedSignal) {
    const auto infoOf = [](const orvex::ScriptObject&) {
        HvArrayPtr signal = structOf(1, {ks_hmi::SignalSpecification::getStructFields(), 16});
        port(u"Gain", 1)->createStructData(signal.get(), 0, u"");
        hvReplaceField(signal.get(), 0, "MaxPoints_", number(77).release());
        return signal;
    };
    orvex::defineScriptClass({"Test.Client", "", {{"SignalInfo", {}, false, infoOf}}, {}, {}, {}});
    std::vector<std::u16string> path = {u"old"};
    std::u16string subPath = u"old";
    const auto giving = orvex::registerFunction("Kestrel.HMI.SignalClient", [&](orvex::Call& c) {
        EXPECT_TRUE(path.empty() && subPath.empty()) << "emptied before the host is asked";
        EXPECT_EQ(describe(hvGetField(c.ins[0], 0, "ModelPath_")), "{'m1/Sub'}");
        c.outs[0] = call("Test.Client", {});
    });
    SignalClient client;
    client.m_sourceModel = u"other";
    client.m_modelPath = {u"Sub"};
    client.getAlignedBlockPath(u"m1", path, subPath);
    EXPECT_EQ(path, (std::vector<std::u16string>{u"m1/Sub", u"m1/Gain"}));
    EXPECT_EQ(client.getMaxPoints(u"m1"), 77);
}

TEST_F(ObservedSignal, withoutASignalTheAnswersAreFixedAndNothingIsKept) {
    const auto expectFixedAnswers = [&](SignalClient& client) {
        EXPECT_EQ(client.getAlignedPortIndex(u"m1"), 0);
        EXPECT_EQ(client.getDecimation(u"m1"), 1);
        EXPECT_EQ(client.getMaxPoints(u"m1"), 0);
        EXPECT_EQ(aligned(client), (Aligned{{}, u""}));
        EXPECT_EQ(client.m_signalSpec, nullptr);
    };
    const auto client = clientOf(u"Sub/Switch");
    {
        const auto refusing =
            orvex::registerFunction("Kestrel.HMI.SignalClient", [](orvex::Call&) { orvex::raise("no", "no"); });
        expectFixedAnswers(*client);
        EXPECT_EQ(orvex::warnings().size(), 4U);
    }
    const hvArray* info = nullptr;
    const auto infoOf = [&](const orvex::ScriptObject&) {
        return HvArrayPtr(info != nullptr ? hvCreateSharedDataCopy(info) : nullptr);
    };
    orvex::defineScriptClass({"Test.Observer", "", {{"SignalInfo", {}, false, infoOf}}, {}, {}, {}});
    for (const HvArrayPtr& value :
         {HvArrayPtr(), emptyDouble(), number(1), structOf(0, std::array{"UUID"}), objects({})}) {
        const auto giving = orvex::registerFunction("Kestrel.HMI.SignalClient",
                                                    [](orvex::Call& c) { c.outs[0] = call("Test.Observer", {}); });
        info = value.get();
        expectFixedAnswers(*client);
    }
    const std::string uuid = client->m_signalUUID;
    client->m_signalUUID = "gone";
    expectFixedAnswers(*client);
    client->m_signalUUID = uuid;
    EXPECT_EQ(client->getDecimation(u"m1"), 4) << "the host is asked again";
}

}  // namespace
