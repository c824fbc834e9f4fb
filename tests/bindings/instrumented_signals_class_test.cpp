#include "tests/support/host_test.h"

using namespace ks_test;

namespace {

class InstrumentedSignalsClass : public ModelTest {
protected:
    HvArrayPtr signal(const char16_t* path, int portIndex) const {
        return port(path, portIndex)->getHOSObject(u"m1", false);
    }
    std::string errorOf(const char* method, std::initializer_list<const hvArray*> inputs) {
        return raisedBy([&] { call(method, inputs, 0); });
    }
};

TEST_F(InstrumentedSignalsClass, elementsAreReachedByOneBasedPositions) {
    call("add", {object(), signal(u"Gain", 1).get()}, 0);
    call("add", {object(), signal(u"Sub/Switch", 2).get()}, 0);
    EXPECT_EQ(hvGetScalar(property(object(), "Count").get()), 2.0);
    EXPECT_EQ(hvArrayToStdString(property(object(), "Model").get()), "m1");
    EXPECT_EQ(set().get(1)->m_blockPath, u"Sub/Switch") << "stored relative to the model";
    call("set", {object(), number(1).get(), signal(u"Sub/Chart", 1).get()}, 0);
    const auto second = call("get", {object(), number(2).get()});
    EXPECT_EQ(hvArrayToStdString(property(second.get(), "BlockPath_").get()), "m1/Sub/Switch");
    const auto asStruct = call("get", {object(), number(1).get(), logical(true).get()});
    EXPECT_EQ(hvGetNumberOfFields(asStruct.get()), 20);
    EXPECT_EQ(hvArrayToStdString(call("getUUID", {object(), number(2).get()}).get()), set().get(1)->m_uuid);
    call("remove", {object(), number(1).get()}, 0);
    EXPECT_EQ(set().getCount(), 1U);
}

TEST_F(InstrumentedSignalsClass, namesAndListsMayBeLong) {
    const std::u16string name(300, u'm');
    const auto named = call(ks_hmi::InstrumentedSignals::kHostClass, {text(name).get()});
    EXPECT_EQ(matrix::get_ustring(property(named.get(), "Model").get()), name);
    for (int i = 0; i < 257; ++i) set().add(port(u"Gain", 1));
    EXPECT_EQ(hvGetScalar(property(object(), "Count").get()), 257.0);
}

TEST_F(InstrumentedSignalsClass, positionZeroAndTooLargeOnesRaiseTheCount) {
    const auto spec = signal(u"Gain", 1);
    for (int i = 0; i < 3; ++i) call("add", {object(), spec.get()}, 0);
    for (const double index : {0.0, 4.0, 4294967295.0}) {
        const auto position = number(index);
        for (const char* const method : {"get", "getUUID", "remove"})
            EXPECT_EQ(errorOf(method, {object(), position.get()}), "InvalidElementIndex 3") << method;
        EXPECT_EQ(errorOf("set", {object(), position.get(), spec.get()}), "InvalidElementIndex 3");
    }
    EXPECT_EQ(set().getCount(), 3U);
}

TEST_F(InstrumentedSignalsClass, queriesForwardToTheSet) {
    set().add(resolvedPort(u"Gain", 1, 12.5));
    set().add(chartItem(u"cw_state", u"7", u"Self"));
    const auto truth = [&](const char* method, std::initializer_list<const hvArray*> inputs) {
        const auto result = call(method, inputs);
        EXPECT_EQ(hvGetClassID(result.get()), hvLOGICAL_CLASS);
        return hvIsLogicalScalarTrue(result.get());
    };
    EXPECT_TRUE(truth("isPortObserved", {object(), resolvedPort(u"x", 1, 12.5)->getHOSObject(u"m1", false).get()}));
    EXPECT_TRUE(truth("isPortObserved", {object(), signal(u"Gain", 1).get()}));
    EXPECT_FALSE(truth("isPortObserved", {object(), signal(u"Sub/Switch", 1).get()}));
    EXPECT_TRUE(truth("isGivenPortObserved", {object(), number(12.5).get(), number(1).get()}));
    EXPECT_FALSE(truth("isGivenPortObserved", {object(), number(12.5).get(), number(-1).get()}));
    EXPECT_TRUE(
        truth("isGivenCWActivityObserved", {object(), text("m1:4").get(), number(7).get(), text("Self").get()}));
    EXPECT_FALSE(
        truth("isGivenCWActivityObserved", {object(), text("m1:4").get(), number(7).get(), text("Leaf").get()}));
    EXPECT_TRUE(truth("isAnyCWActivityObserved", {object(), text("m1:4").get(), number(7).get()}));
    EXPECT_FALSE(truth("isAnyCWActivityObserved", {object(), text("m1:5").get(), number(7).get()}));
}

}  // namespace
