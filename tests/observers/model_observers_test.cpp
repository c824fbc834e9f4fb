#include "observers/model_observers.h"

#include "observers/hmi_engine_utils.h"
#include "observers/streaming_clients.h"
#include "tests/support/host_recorder.h"
#include "tests/support/host_test.h"

using namespace ks_test;
using ks_hmi::ModelObservers;
using ks_hmi::StreamingClients;

namespace {

// Bundles, and the notices to the dashboards that show them.
class ModelObserversTest : public ModelTest {};

TEST_F(ModelObserversTest, bundlesValidateTheScalarFirst) {
    const auto isEmptyBundle = [](const hvArray* value) {
        HvArrayPtr signals = number(1);
        HvArrayPtr clientsOut = number(1);
        ModelObservers(value).getSignalsAndClients(signals, clientsOut);
        return !signals && !clientsOut;
    };
    EXPECT_TRUE(isEmptyBundle(nullptr));
    EXPECT_TRUE(isEmptyBundle(emptyDouble().get()));
    const HvArrayPtr pair(hvCreateNumericMatrix(1, 2, hvDOUBLE_CLASS, hvREAL));
    const auto bundle = ModelObservers::createFromSignalsAndClients(object(), nullptr);
    EXPECT_EQ(recorded({"hvCreateSharedDataCopy", "hvCreateDeepCopy", "hvSetArrayScope"},
                       [&] { ModelObservers{bundle.get()}; }),
              (Lines{"hvCreateSharedDataCopy Kestrel.HMI.ModelObservers",
                     "hvSetArrayScope Kestrel.HMI.ModelObservers null"}));
    EXPECT_EQ(raisedBy([&] { ModelObservers{pair.get()}; }), "SignalObserversSetParamNonScalar");
    EXPECT_EQ(raisedBy([&] {
                  ModelObservers{objects({bundle.get(), bundle.get()}).get()};
              }),
              "SignalObserversSetParamNonScalar");
    EXPECT_EQ(raisedBy([&] { ModelObservers{number(1).get()}; }), "SignalObserversSetParamInvalidType");
    EXPECT_EQ(raisedBy([&] { ModelObservers{object()}; }), "SignalObserversSetParamInvalidType");
}

TEST_F(ModelObserversTest, bundlesSplitIntoWhatTheyWereBuiltFrom) {
    {
        const orvex::FaultInjection memory({1, true, orvex::FaultKind::outOfMemory});
        EXPECT_THROW(ModelObservers::createFromSignalsAndClients(nullptr, nullptr), std::bad_alloc)
            << "what stands for a missing part is made first";
    }
    EXPECT_EQ(ModelObservers::createFromSignalsAndClients(nullptr, nullptr), nullptr);
    const auto clients = call("Kestrel.HMI.StreamingClients", {});
    const auto bundle = ModelObservers::createFromSignalsAndClients(nullptr, clients.get());
    HvArrayPtr signals;
    HvArrayPtr clientsOut;
    ModelObservers(bundle.get()).getSignalsAndClients(signals, clientsOut);
    EXPECT_EQ(hvGetClassID(signals.get()), hvDOUBLE_CLASS);
    EXPECT_TRUE(hvIsEmpty(signals.get()));
    EXPECT_EQ(StreamingClients::getFromHvArray(clientsOut.get()), StreamingClients::getFromHvArray(clients.get()));

    const auto refuse = [](orvex::Call&) { orvex::raise("no", "no"); };
    const auto refusingSplit = orvex::registerFunction("getSignalsAndClients", refuse);
    const auto refusingBuild =
        orvex::registerFunction("Kestrel.HMI.ModelObservers.createFromSignalsAndClients", refuse);
    ModelObservers(bundle.get()).getSignalsAndClients(signals, clientsOut);
    EXPECT_TRUE(!signals && !clientsOut);
    EXPECT_EQ(ModelObservers::createFromSignalsAndClients(object(), nullptr), nullptr);
    EXPECT_EQ(orvex::warnings().size(), 2U);
}

TEST_F(ModelObserversTest, whatCannotBeMadeOfANoticeIsAnEmptyDoubleAndWhatIsThrownIsDiscarded) {
    const std::string front = "kssvFEVAL_NoThrow 0 Kestrel.HMI.kshmi (", back = ") true null";
    const std::pair<std::size_t, Lines> rows[] = {
        {1, {front + "[], 'm1/Gain'" + back}},
        {2, {front + "'block_param_change', []" + back}},
        {3,
         {front + "'block_param_change', 'm1/Gain'" + back, "kssvCreateDiagnosticFromCatchClause",
          "kssvDiscardDiagnostic"}},
    };
    for (const auto& [failAt, expected] : rows) {
        for (const auto kind : {orvex::FaultKind::exception, orvex::FaultKind::outOfMemory}) {
            const orvex::FaultInjection fault({failAt, false, kind});
            EXPECT_EQ(recorded({"kssvFEVAL_NoThrow", "kssvCreateDiagnosticFromCatchClause", "kssvDiscardDiagnostic"},
                               [] { ks_hmi::HMIEngineUtils::updateParamsForBlock(u"m1/Gain"); }),
                      expected);
        }
    }
    EXPECT_TRUE(orvex::warnings().empty());
}

}  // namespace
