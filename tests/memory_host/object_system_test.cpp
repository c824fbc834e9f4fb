#include "memory_host/orvex/objects/object_system.h"
#include "host/object_system.h"
#include "memory_host/orvex/calls/call.h"

#include <array>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "memory_host/orvex/account/faults.h"
#include "memory_host/orvex/calls/call_by_name.h"
#include "memory_host/orvex/calls/functions.h"
#include "memory_host/orvex/values/values.h"
#include "tests/memory_host/counter_library.h"
#include "tests/memory_host/ledger_test_base.h"

using namespace counter_library;

namespace {

using ks_test::call;
using ks_test::logical;
using ks_test::property;

class ObjectSystem : public LedgerTest {
protected:
    ObjectSystem() {
        g_events.clear();
        hos::COSNamespace::addNamespace(std::make_unique<NamespaceInfo>("Lib", addTools));
    }
    void TearDown() override {
        orvex::releaseObjectSystem();
        LedgerTest::TearDown();
    }
    static HvArrayPtr construct() { return call(kCounter, {}); }
    static hos::COSNamespace* find(const char* name) { return hos::COSNamespace::getNamespace(makeInterned(name)); }
};

using Events = std::vector<std::string>;

TEST_F(ObjectSystem, loadsWhatALookUpPassesThroughAndNoMore) {
    EXPECT_NE(find("Lib"), nullptr);
    EXPECT_EQ(g_events, Events{});
    EXPECT_NE(find("Lib.Tools"), nullptr);
    EXPECT_EQ(find("Lib.Other"), nullptr);
    EXPECT_EQ(find("Nothing.At.All"), nullptr);
    EXPECT_EQ(g_events, Events{"Lib loads"});
    construct();
    EXPECT_EQ(g_events, (Events{"Lib loads", "Tools loads", "members", "created", "destroyed"}));
}

TEST_F(ObjectSystem, refusesASecondDefinitionAndKeepsTheFirst) {
    const auto addLib = [] { hos::COSNamespace::addNamespace(std::make_unique<NamespaceInfo>("Lib", addTools)); };
    EXPECT_NE(failureOf(addLib), "");
    EXPECT_NE(failureOf([&] { addTools(*find("Lib")); }), "");
    hos::COSNamespace* tools = find("Lib.Tools");
    g_events.clear();
    EXPECT_NE(failureOf([&] { addCounter(*tools); }), "");
    EXPECT_EQ(g_events, (Events{"Tools loads", "class info gone"}));
    EXPECT_TRUE(hvIsA(construct().get(), kCounter));
}

TEST_F(ObjectSystem, aLoadThatFailsIsTakenBackAndTriedAgain) {
    bool fails = true;
    const auto contents = [&](hos::COSNamespace& flaky) {
        addCounter(flaky);
        if (fails) throw std::runtime_error("not now");
    };
    hos::COSNamespace::addNamespace(std::make_unique<NamespaceInfo>("Flaky", contents));
    const auto lookUp = [] { return find("Flaky.Inner"); };
    EXPECT_THROW(lookUp(), std::runtime_error);
    fails = false;
    EXPECT_EQ(lookUp(), nullptr);
    EXPECT_EQ(g_events, (Events{"Flaky loads", "class info gone", "Flaky loads"}));
}

TEST_F(ObjectSystem, destroysTheInstanceWithTheLastReference) {
    HvArrayPtr object = construct();
    HvArrayPtr copy(hvCreateDeepCopy(object.get()));
    hos::ObjectInterface pin = omGetArrayElement(copy.get(), 0);
    g_events.clear();
    object.reset();
    copy.reset();
    orvex::releaseObjectSystem();
    EXPECT_EQ(g_events, (Events{"Tools info gone", "Lib info gone"}));
    EXPECT_NE(hos::getNativeInstance(pin, makeInterned(kCounter)), nullptr);
    EXPECT_EQ(hos::getNativeInstance(pin, makeInterned("Lib.Tools.Other")), nullptr);
    pin.reset();
    EXPECT_EQ(g_events.back(), "class info gone");
}

TEST_F(ObjectSystem, takesOptionalArgumentsAndNoOtherNumber) {
    const HvArrayPtr name = text("left");
    const HvArrayPtr named = call(kCounter, {name.get()});
    EXPECT_EQ(hvArrayToStdString(property(named.get(), "Name").get()), "left");
    EXPECT_TRUE(hvIsLogicalScalarTrue(call("isGood", {named.get(), name.get()}).get()));
    EXPECT_EQ(hvGetScalar(call("Lib.Tools.Counter.make", {}).get()), 1.0);
    EXPECT_EQ(orvex::scopeErrors(), std::vector<std::string>());
    EXPECT_EQ(hvGetScalar(call("Lib.Tools.Counter.bare", {}).get()), 1.0);
    EXPECT_EQ(orvex::scopeErrors().size(), 1u) << "handed back without a scope";
    orvex::clearScopeErrors();
    using Inputs = std::initializer_list<const hvArray*>;
    const auto refusal = [](const char* method, Inputs inputs) { return failureOf([&] { call(method, inputs); }); };
    EXPECT_TRUE(refusal("isGood", {named.get()}).starts_with("TooFewInputs"));
    EXPECT_TRUE(refusal(kCounter, {name.get(), name.get()}).starts_with("TooManyInputs"));
    EXPECT_NE(refusal("take asciiString", {named.get(), name.get()}), "") << "has no results";
    EXPECT_NE(refusal("make", {named.get()}), "");
    EXPECT_TRUE(hvIsEmpty(call("noObject", {named.get()}).get()));
    EXPECT_NE(refusal("wrongResult", {named.get()}), "");
}

TEST_F(ObjectSystem, aFunctionOfAMethodsNameDoesNotTakeTheMethodsCalls) {
    const auto other = orvex::registerFunction(
        "isGood", [](orvex::Call& call) { call.outs[0] = logical(false); }, 1);
    const HvArrayPtr name = text("left");
    const HvArrayPtr counter = call(kCounter, {name.get()});
    const std::array<const hvArray*, 2> ins{counter.get(), name.get()};
    EXPECT_FALSE(hvIsLogicalScalarTrue(orvex::callByName("isGood", ins, 1)[0].get()));
    EXPECT_TRUE(hvIsLogicalScalarTrue(orvex::callMember("isGood", ins, 1)[0].get()));
    EXPECT_TRUE(hvIsA(orvex::callMember(kCounter, {}, 1)[0].get(), kCounter));
    for (const char* const nobody : {"isequal", ""})
        EXPECT_NE(failureOf([&] { orvex::callMember(nobody, ins, 1); }), "") << nobody;
}

TEST_F(ObjectSystem, convertsByDeclaredTypeOrSaysWhyNot) {
    const HvArrayPtr truth = logical(true);
    const HvArrayPtr byte(hvCreateNumericScalar(hvUINT8_CLASS, hvREAL));
    const HvArrayPtr row(hvCreateNumericMatrix(1, 3, hvDOUBLE_CLASS, hvREAL));
    const HvArrayPtr big(hvCreateNumericScalar(hvUINT64_CLASS, hvREAL));
    *static_cast<std::uint64_t*>(hvGetDataForWriting(big.get())) = (std::uint64_t{1} << 53) + 1;
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const HvArrayPtr object = construct();
    const auto copy = [](const HvArrayPtr& value) { return HvArrayPtr(hvCreateSharedDataCopy(value.get())); };

    struct Case {
        const char* type;
        HvArrayPtr value;
        bool converts;
    };
    const Case cases[] = {
        {"double scalar", number(nan), true},
        {"double scalar", copy(truth), true},
        {"double scalar", copy(row), false},
        {"double scalar", text("1"), false},
        {"double scalar", copy(big), false},
        {"uint32 scalar", number(4294967295.0), true},
        {"uint32 scalar", copy(byte), true},
        {"uint32 scalar", number(4294967296.0), false},
        {"uint32 scalar", number(-1.0), false},
        {"uint32 scalar", number(1.5), false},
        {"uint32 scalar", number(nan), false},
        {"int32 scalar", number(-2147483648.0), true},
        {"int32 scalar", number(2147483648.0), false},
        {"int32 scalar", copy(big), false},
        {"logical scalar", number(0.5), true},
        {"logical scalar", number(nan), false},
        {"unicodeString", text(""), true},
        {"unicodeString", text("\xC3\xA4"), true},
        {"unicodeString", number(1.0), false},
        {"asciiString", text("plain"), true},
        {"asciiString", text("\xC3\xA4"), false},
        {kCounter, copy(object), true},
        {kCounter, copy(truth), false},
    };
    const auto refusal = [&](const std::string& method, const HvArrayPtr& value) {
        return failureOf([&] { call(method.c_str(), {object.get(), value.get()}, 0); });
    };
    for (const Case& one : cases)
        EXPECT_EQ(refusal(std::string("take ") + one.type, one.value).substr(0, 13),
                  one.converts ? "" : "TypeMismatch:")
            << one.type << " of " << orvex::describeValue(one.value.get());
    EXPECT_NE(refusal("take No.Such.Class", truth), "");
}

TEST_F(ObjectSystem, releasesEachPropertyValueOnceAlsoWhenTheCopyFails) {
    const HvArrayPtr object = construct();
    g_events.clear();
    orvex::FaultInjection counting;
    const HvArrayPtr state = property(object.get(), "State");
    const std::size_t operations = counting.operations();
    EXPECT_EQ(hvGetScalar(state.get()), 0.0);
    EXPECT_EQ(g_events, (Events{"get", "release"}));
    g_events.clear();
    const orvex::FaultInjection lastFails({.failAt = operations});
    EXPECT_THROW(property(object.get(), "State"), kssvIException);
    EXPECT_EQ(g_events, (Events{"get", "release"}));
}

TEST_F(ObjectSystem, enforcesAccessAndTypesOfProperties) {
    const HvArrayPtr object = construct();
    const HvArrayPtr seven = number(7.0);
    const auto assign = [&](const char* name, const HvArrayPtr& value) {
        return failureOf([&] { hvSetProperty(object.get(), 0, name, value.get()); });
    };
    EXPECT_TRUE(assign("Count", seven).starts_with("ReadOnlyProperty"));
    EXPECT_TRUE(assign("Name", seven).starts_with("TypeMismatch"));
    EXPECT_TRUE(assign("Colour", seven).starts_with("UnknownProperty"));
    EXPECT_EQ(assign("Name", text("right")), "");
    EXPECT_EQ(orvex::displayObject(object.get()), "Lib.Tools.Counter\n  Name: 'right'\n  Count: 0");
    EXPECT_NE(failureOf([&] { property(seven.get(), "Name"); }).find("is not an object"), std::string::npos);
    EXPECT_NE(failureOf([&] { hvGetProperty(object.get(), 1, "Name"); }).find("index 1 of 1"), std::string::npos);
}

TEST_F(ObjectSystem, scriptClassesShareANamespaceWithoutMakingIt) {
    orvex::ScriptClass base;
    base.fullName = "Script.Base";
    base.properties = {{"Fixed", [] { return number(4.0); }, false}};
    base.methods["half"] = [](orvex::Call& half) {
        half.outs[0] = number(hvGetScalar(property(half.ins[0], "Fixed").get()) / 2.0);
    };
    orvex::defineScriptClass(base);
    orvex::ScriptClass derived;
    derived.fullName = "Script.Derived";
    derived.superclass = "Script.Base";
    derived.properties = {{"Free"}};
    orvex::defineScriptClass(derived);

    EXPECT_EQ(find("Script"), nullptr);
    const HvArrayPtr object = call("Script.Derived", {});
    EXPECT_TRUE(hvIsA(object.get(), "Script.Base"));
    EXPECT_EQ(hvGetScalar(call("half", {object.get()}).get()), 2.0);
    EXPECT_NE(failureOf([&] { hvSetProperty(object.get(), 0, "Fixed", object.get()); }).find("read-only"),
              std::string::npos);
    EXPECT_TRUE(hvIsEmpty(property(object.get(), "Free").get()));
    EXPECT_NE(failureOf([&] { orvex::defineScriptClass(base); }).find("defined already"), std::string::npos);
}

}  // namespace
