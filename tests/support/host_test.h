#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/text.h"
#include "memory_host/kestrel/host_side.h"
#include "memory_host/kestrel/loaded_models.h"
#include "memory_host/orvex/account/faults.h"
#include "memory_host/orvex/account/ledger.h"
#include "memory_host/orvex/account/scope_errors.h"
#include "memory_host/orvex/calls/library_loader.h"
#include "memory_host/orvex/calls/warnings.h"
#include "signals/instrumented_signals.h"
#include "signals/signal_specification.h"
#include "tests/support/values.h"

/// What all tests of the library share: the host with the library loaded into it, and an empty ledger at the end.
namespace ks_test {

inline std::string utf8(const std::u16string& text) { return fl::i18n::to_string(text); }

class HostTest : public ::testing::Test {
protected:
    HostTest() {
        static const orvex::LoadedLibrary library(KS_HMI_LIBRARY_NAME);
        kestrel::installHostSide();
        ks_hmi::SignalSpecification::getBlockUUIDmap().clear();
        orvex::clearWarnings();
    }

    /// Runs after the members of the fixtures derived from it are gone.
    ~HostTest() override {
        kestrel::releaseHostSide();
        orvex::clearWarnings();
        EXPECT_EQ(orvex::liveCounts(), orvex::LedgerCounts{}) << orvex::describeLive();
        EXPECT_EQ(orvex::scopeErrors(), std::vector<std::string>());
        orvex::clearScopeErrors();
    }
};

/// Loads a model "m1" with a few blocks.
inline kestrel::Model& loadModel() {
    kestrel::Model model(u"m1");
    model.add({u"Gain", "1", 0.0, {u"out"}, {}});
    model.add({u"Sub", "2", 0.0, {}, {}});
    model.add({u"Sub/Switch", "3", 0.0, {u"a", u"b", u"c"}, {}});
    model.add({u"Sub/Chart", "4", 0.0, {u"y"}, kestrel::Chart{{{u"On", 7}, {u"Off", 8}}, {{u"level", 9}}}});
    return kestrel::loadedModels().load(std::move(model)).model();
}

/// The loaded model "m1", and a set made for it as a script makes one.
class ModelTest : public HostTest {
protected:
    ModelTest() : m_object(call("Kestrel.HMI.InstrumentedSignals", {text("m1").get()})) { loadModel(); }

    const hvArray* object() const { return m_object.get(); }
    ks_hmi::InstrumentedSignals& set() const { return *ks_hmi::InstrumentedSignals::getFromHvArray(m_object.get()); }
    static double handleOf(const char16_t* path) {
        return kestrel::loadedModels().find(u"m1")->model().findByPath(path)->handle;
    }

    /// A record for a port that is not resolved yet.
    static std::unique_ptr<ks_hmi::SignalSpecification> port(const std::u16string& path, int portIndex,
                                                             const std::string& eid = "") {
        auto spec = ks_hmi::SignalSpecification::createSigSpecFromPort(path, eid, portIndex, 0, 0.0, u"m1", false);
        spec->m_cachedPortIdx = 0;
        return spec;
    }
    static std::unique_ptr<ks_hmi::SignalSpecification> resolvedPort(const std::u16string& path, int portIndex,
                                                                     double handle) {
        auto spec = port(path, portIndex);
        spec->setCachedInfo(handle, portIndex);
        return spec;
    }
    static std::unique_ptr<ks_hmi::SignalSpecification> chartItem(const std::u16string& domain,
                                                                  const std::u16string& ssid,
                                                                  const std::u16string& activity) {
        auto spec = port(u"Sub/Chart", 0, "4");
        spec->m_domainType = domain;
        spec->m_domainParams = {{u"SSID", ssid}, {u"Activity", activity}};
        return spec;
    }

private:
    HvArrayPtr m_object;
};

}  // namespace ks_test
