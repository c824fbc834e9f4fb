#include "host/services.h"
#include "memory_host/orvex/calls/call_by_name.h"
#include "memory_host/orvex/calls/errors.h"

#include <new>
#include <stdexcept>
#include <vector>

#include "memory_host/orvex/account/faults.h"
#include "memory_host/orvex/account/local_scope.h"
#include "memory_host/orvex/calls/functions.h"
#include "memory_host/orvex/values/values.h"
#include "tests/memory_host/ledger_test_base.h"

namespace {

using orvex::Call;
using orvex::FaultInjection;
using orvex::FaultKind;
using orvex::FaultPlan;
using orvex::registerFunction;

class HostServices : public LedgerTest {
protected:
    static std::string call(const char* name) {
        return failureOf([name] { orvex::callByName(name, {}, 0); });
    }
    static kssvDiagnosticImpl* attempt(const char* name, hvArray** out = nullptr) {
        return kssvFEVAL_NoThrow(out ? 1 : 0, out, 0, nullptr, name, true, nullptr);
    }
};

TEST_F(HostServices, callsHoldTheirInputsAndLeaveTheOutputsAloneWhenTheyFail) {
    HvArrayPtr one = number(1);
    const auto add = registerFunction(
        "add",
        [&one](Call& call) {
            one.reset();
            call.outs[0] = number(hvGetScalar(call.ins[0]) + (hvGetClassID(call.ins[1]) == hvDOUBLE_CLASS ? 2 : 0));
        },
        1);
    const std::array<const hvArray*, 2> ins{one.get(), nullptr};
    hvArray* untouched = nullptr;
    hvArray* const mark = reinterpret_cast<hvArray*>(&untouched);
    std::array<hvArray*, 2> outs{mark, mark};
    EXPECT_EQ(failureOf([&] { kssvFEVAL(2, outs.data(), 2, ins.data(), "add"); }).substr(0, 15), "TooManyOutputs:");
    EXPECT_EQ(outs[0], mark);
    EXPECT_EQ(kssvFEVAL_NoThrow(1, outs.data(), 2, ins.data(), "add", nullptr, true, nullptr), nullptr);
    EXPECT_EQ(hvGetScalar(HvArrayPtr(outs[0]).get()), 3);
    const auto endless = registerFunction("endless", [](Call&) { orvex::callByName("endless", {}, 0); });
    EXPECT_EQ(call("endless").substr(0, 10), "CallDepth:");
    for (const char* const name : {"nobody", ""}) EXPECT_NE(call(name), "");
}

TEST_F(HostServices, noThrowCallReturnsAllFailuresButExhaustedMemory) {
    const auto refuse = registerFunction("refuse", [](Call&) { orvex::raise("No", "not today"); });
    const auto exhaust = registerFunction("exhaust", [](Call&) { throw std::bad_alloc(); });
    const auto break_ = registerFunction("break", [](Call&) { throw std::logic_error("broken"); });
    kssvDiagnosticImpl* diagnostic = attempt("refuse");
    ASSERT_NE(diagnostic, nullptr);
    EXPECT_EQ(orvex::liveCounts().diagnostics, 1u);
    std::string shown;
    orvex::setWarningSink([&shown](const orvex::Warning& warning) {
        shown += warning.text;
        throw std::runtime_error("closed");
    });
    kssvReportAsWarning(diagnostic);
    orvex::setWarningSink({});
    EXPECT_EQ(shown, "not today") << "although the sink fails";
    ASSERT_EQ(orvex::warnings().size(), 1u);
    EXPECT_EQ(orvex::warnings()[0].key + " " + orvex::warnings()[0].text, "No not today");
    EXPECT_THROW(attempt("exhaust"), std::bad_alloc);
    kssvDiscardDiagnostic(attempt("break"));
    EXPECT_EQ(call("break"), "UnexpectedException: broken");
    EXPECT_EQ(orvex::hostCallDepth(), 0);
}

TEST_F(HostServices, registrationsEndInAnyOrderAndGiveBackWhatTheyReplaced) {
    const auto named = [](const char* name) { return [name](Call&) { orvex::raise(name, ""); }; };
    orvex::defineFunction("f", named("defined"));
    auto first = registerFunction("f", named("first"));
    auto second = registerFunction("f", named("second"));
    orvex::defineFunction("f", named("redefined"));
    EXPECT_EQ(call("f"), "second: ");
    first = {};
    EXPECT_EQ(call("f"), "second: ");
    second = {};
    EXPECT_EQ(call("f"), "redefined: ");
    orvex::undefineFunction("f");
    EXPECT_EQ(call("f").substr(0, 9), "Undefined");
}

TEST_F(HostServices, localScopeEndsWithTheOutermostCall) {
    const std::size_t before = orvex::liveCounts().values;
    const auto inner = registerFunction("inner", [](Call& call) {
        for (int i = 0; i < 3; ++i) kssvSetLocalScope(hvCreateDoubleScalar(i));
        hvArray* const result = hvCreateDoubleScalar(9);
        kssvSetLocalScope(result);
        call.outs[0].reset(result);
    });
    const auto outer = registerFunction("outer", [before](Call&) {
        const HvArrayPtr result = std::move(orvex::callByName("inner", {}, 1)[0]);
        EXPECT_EQ(orvex::liveCounts().values, before + 4);
        orvex::raise("Stop", "");
    });
    EXPECT_EQ(call("outer"), "Stop: ");
    EXPECT_EQ(orvex::liveCounts().values, before);
}

TEST_F(HostServices, everyTransferTakesAValueOutOfTheLocalScope) {
    HvArrayPtr kept, scoped, outside = number(0);
    const HvArrayPtr records = structOf(1);
    const auto transfer = registerFunction("transfer", [&](Call&) {
        const auto local = [] {
            hvArray* value = hvCreateDoubleScalar(5);
            kssvSetLocalScope(value);
            kssvSetLocalScope(value);
            return value;
        };
        hvReplaceField(records.get(), 0, "a", local());
        matrix::destroyArray(local());
        kept.reset(local());
        hvSetArrayScope(kept.get(), nullptr);
        scoped.reset(local());
        hvSetArrayScope(scoped.get(), hvSCOPE_RESULT);
    });
    kssvSetLocalScope(outside.get());
    EXPECT_EQ(call("transfer"), "");
    for (const hvArray* value : {hvGetField(records.get(), 0, "a"), static_cast<const hvArray*>(kept.get()),
                                 static_cast<const hvArray*>(scoped.get())})
        EXPECT_EQ(hvGetScalar(value), 5);
    EXPECT_EQ(hvGetScalar(outside.get()), 0);
}

TEST_F(HostServices, whatIsKeptBeyondTheCallWithoutAScopeIsReported) {
    HvArrayPtr local, loose, handed;
    const auto give = registerFunction("give", [](Call& call) {
        call.outs[0] = number(3);
        hvSetArrayScope(call.outs[0].get(), nullptr);
    });
    const auto keep = registerFunction("keep", [&](Call& call) {
        local = number(1);
        kssvSetLocalScope(local.get());
        loose = number(2);
        handed = std::move(orvex::callByName("give", {}, 1)[0]);
        call.outs[0] = number(4);
    });
    EXPECT_EQ(hvGetScalar(ks_test::call("keep", {}).get()), 4);
    EXPECT_EQ(orvex::scopeErrors().size(), 2u);
    EXPECT_EQ(hvGetScalar(loose.get()) + hvGetScalar(handed.get()), 5);
    EXPECT_NE(failureOf([&] { hvGetScalar(local.get()); }), "");
    EXPECT_EQ(hvGetDoubles(local.get()), nullptr);
    const HvArrayPtr records = structOf(1);
    hvReplaceField(records.get(), 0, "a", local.get());
    EXPECT_EQ(hvGetField(records.get(), 0, "a"), nullptr);
    local.reset();
    EXPECT_EQ(orvex::scopeErrors().size(), 4u) << "used after its local scope had ended";
    orvex::clearScopeErrors();
}

TEST_F(HostServices, diagnosticIsConsumedOnceAndThrownWithItsIdentifier) {
    const resource_core::BaseMsgID id("plv_hmi_foundation:errors", "MissingField",
                                      {std::u16string(u"Dom\u00e4ne_"), std::int64_t{3}});
    kssvDiagnosticImpl* diagnostic = kssvCreateDiagnostic(id, "");
    try {
        kssvThrowIExceptionFromDiagnostic(diagnostic, nullptr);
        FAIL();
    } catch (const kssvIException& failure) {
        EXPECT_EQ(failure.messageId().catalogue(), id.catalogue());
        EXPECT_EQ(failure.messageId().arguments(), id.arguments());
        EXPECT_NE(std::string(failure.what()).find("element 3 has no value in the field \"Dom\u00e4ne_\""),
                  std::string::npos);
        kssvDiscardDiagnostic(kssvCreateDiagnosticFromCatchClause());
    }
    kssvDiscardDiagnostic(diagnostic);
    ASSERT_EQ(orvex::warnings().size(), 1u);
    EXPECT_EQ(orvex::warnings()[0].key, "DiagnosticConsumedTwice");
}

TEST_F(HostServices, sweepReachesEveryOperationThatMayFailAndNoOther) {
    const auto scenario = [] {
        const HvArrayPtr records = structOf(1);
        hvReplaceField(records.get(), 0, "a", hvCreateString("x"));
        const HvArrayPtr copy(hvCreateSharedDataCopy(records.get()));
        hvArrayToStdString(hvGetField(copy.get(), 0, "a"));
        hvSetArrayScope(HvArrayPtr(hvCreateDoubleScalar(1)).get(), nullptr);
    };
    FaultInjection counting;
    scenario();
    EXPECT_EQ(counting.operations(), 6u);
    EXPECT_EQ(counting.fired(), 0u);
    for (std::size_t i = 1; i <= counting.operations(); ++i) {
        const auto before = orvex::liveCounts();
        FaultInjection injected(FaultPlan{.failAt = i, .kind = FaultKind::emptyResult});
        EXPECT_EQ(failureOf(scenario).substr(0, 14), "InjectedFault:") << i;
        EXPECT_EQ(orvex::liveCounts(), before) << i;
        EXPECT_EQ(injected.fired(), 1u);
        FaultInjection exhausted(FaultPlan{.failAt = i, .kind = FaultKind::outOfMemory});
        EXPECT_THROW(scenario(), std::bad_alloc) << i;
    }
    EXPECT_EQ(counting.operations(), 6u);
}

TEST_F(HostServices, callsByNameFailInEveryWayThatAPlanNames) {
    const auto give = registerFunction("give", [](Call& call) { call.outs[0] = number(1); });
    const auto faulty = [](FaultKind kind, bool everythingAfter = false) {
        return FaultInjection(FaultPlan{.failAt = 1, .andEverythingAfter = everythingAfter, .kind = kind});
    };
    hvArray* out = nullptr;
    for (const auto& [kind, classId] : {std::pair{FaultKind::emptyResult, hvDOUBLE_CLASS},
                                        {FaultKind::wrongClass, hvCELL_CLASS},
                                        {FaultKind::nullResult, hvUNKNOWN_CLASS}}) {
        const FaultInjection injected = faulty(kind);
        EXPECT_EQ(attempt("give", &out), nullptr);
        const HvArrayPtr result(out);
        EXPECT_EQ(hvGetClassID(out), classId);
        EXPECT_TRUE(hvIsEmpty(out));
    }
    {
        const FaultInjection injected = faulty(FaultKind::refusal);
        kssvDiagnosticImpl* const diagnostic = attempt("give", &out);
        ASSERT_NE(diagnostic, nullptr);
        kssvDiscardDiagnostic(diagnostic);
        EXPECT_EQ(attempt("give"), nullptr);
    }
    const FaultInjection injected = faulty(FaultKind::exception, true);
    EXPECT_EQ(failureOf([] { attempt("give"); }).substr(0, 14), "InjectedFault:");
    EXPECT_EQ(failureOf([] { hvCreateDoubleScalar(1); }).substr(0, 14), "InjectedFault:");
}

}  // namespace
