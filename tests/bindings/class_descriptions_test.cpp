#include "memory_host/orvex/objects/cos_class.h"
#include "memory_host/orvex/objects/cos_namespace.h"
#include "memory_host/orvex/objects/listing.h"
#include "memory_host/orvex/objects/types.h"
#include "observers/streaming_clients.h"
#include "tests/support/host_recorder.h"
#include "tests/support/host_test.h"

using namespace ks_test;
using namespace std::string_literals;
using ks_hmi::InstrumentedSignals;
using ks_hmi::StreamingClients;

namespace {

std::string bits(std::initializer_list<bool> answers) {
    std::string text;
    for (const bool answer : answers) text += answer ? '1' : '0';
    return text;
}

// Name, type, access codes, and the answers to the questions in the order in which the host declares them.
std::string describeMember(const hos::COSPropInfo& p) {
    return *p.getName().text() + ": " + p.getType()->text() + ' ' + std::to_string(p.getGetAccess()) + '/' +
           std::to_string(p.getSetAccess()) + ' ' +
           bits({p.isHidden(), p.isTransient(), p.isDependent(), p.isWarnOnCopyError(), p.isAbortedOnEqualAssignment(),
                 p.isNotifiedOnRead(), p.isCopied(), p.isNotifiedOnWrite(), p.isDisplayed(), p.isNeverAmbiguous(),
                 p.isCaseInsensitive(), p.isOfferedForCompletion()});
}

std::string listOfTypes(std::span<const hos::InternedName> types) {
    std::string text;
    for (const hos::InternedName type : types) text += (text.empty() ? "" : ", ") + *type.text();
    return '(' + text + ')';
}

std::string describeMember(const hos::COSMethodInfo& m) {
    const hos::COSMethodSignature& signature = m.getSignature();
    return *m.getName().text() + listOfTypes(signature.inputTypes()) + " -> " + listOfTypes(signature.outputTypes()) +
           (signature.optionalArguments() == 1 ? " optional" : "") + (m.isStatic() ? " static" : "");
}

// Both classes as their descriptions have them, asked without the host in between.
class ClassDescriptions : public ModelTest {
protected:
    template <class Set>
    struct Described {
        std::shared_ptr<orvex::NativeClass> native = orvex::findNativeClass(Set::kHostClass);
        HvArrayPtr object = call(Set::kHostClass, {text("m1").get()});
        Set& set() const { return *Set::getFromHvArray(object.get()); }

        Lines lines() const {
            Lines result;
            for (const auto& property : native->properties()) result.push_back(describeMember(*property));
            for (const auto& method : native->methods()) result.push_back(describeMember(*method));
            return result;
        }
        void assign(const char* name, const hos::PropValue& value) const {
            native->findProperty(name)->setValue(&set(), value);
        }
        // How many results the method says it gave, of the slots it filled.
        std::string results(const char* name, std::vector<hos::Argument> arguments, int wanted) const {
            std::vector<hos::Result> slots(3);
            hos::Invocation invocation{wanted, slots, 0, arguments};
            native->findMethod(name)->invoke(invocation);
            std::string text = std::to_string(invocation.resultCount) + ' ';
            for (const hos::Result& slot : slots) text += std::holds_alternative<std::monostate>(slot) ? '-' : 'x';
            return text;
        }
    };
    Described<InstrumentedSignals> signals;
    Described<StreamingClients> clients;
};

TEST_F(ClassDescriptions, membersComeInTheirOrderWithTypesAndAccess) {
    const std::string set = "Kestrel.HMI.InstrumentedSignals";
    EXPECT_EQ(
        signals.lines(),
        (Lines{"Model: unicodeString 0/5 000000101001", "Count: uint32 scalar 0/5 000000101001",
               "Persistence: any 0/2 000000100000", "InstrumentedSignals(unicodeString) -> (" + set + ") optional",
               "add(" + set + ", Kestrel.HMI.SignalSpecification) -> ()",
               "set(" + set + ", uint32 scalar, Kestrel.HMI.SignalSpecification) -> ()",
               "remove(" + set + ", uint32 scalar) -> ()",
               "get(" + set + ", uint32 scalar, logical scalar) -> (any) optional",
               "isPortObserved(" + set + ", Kestrel.HMI.SignalSpecification) -> (logical scalar)",
               "isGivenCWActivityObserved(" + set +
                   ", unicodeString, double scalar, unicodeString) -> "
                   "(logical scalar)",
               "isAnyCWActivityObserved(" + set + ", unicodeString, double scalar) -> (logical scalar)",
               "isGivenPortObserved(" + set + ", double scalar, int32 scalar) -> (logical scalar)",
               "setUUIDForBlock(double scalar, uint32 scalar, asciiString) -> () static",
               "getUUIDForBlock(double scalar, uint32 scalar, logical scalar) -> (any) static",
               "getUUID(" + set + ", uint32 scalar) -> (any)"}));
    const std::string own = "Kestrel.HMI.StreamingClients";
    EXPECT_EQ(clients.lines(),
              (Lines{"Model: unicodeString 0/2 000000101001", "Count: uint32 scalar 0/5 000000101001",
                     "Persistence: any 0/2 000000100000", "StreamingClients(unicodeString) -> (" + own + ") optional",
                     "add(" + own + ", Kestrel.HMI.SignalClient) -> ()",
                     "set(" + own + ", uint32 scalar, Kestrel.HMI.SignalClient) -> ()",
                     "remove(" + own + ", uint32 scalar) -> ()",
                     "get(" + own + ", uint32 scalar) -> (Kestrel.HMI.SignalClient)"}));
    for (const auto* const info : {&signals.native->info(), &clients.native->info()})
        EXPECT_TRUE(info->isReferenceClass() && info->canThisClassFormArrays() && info->areClassPropertiesAllowed());
}

TEST_F(ClassDescriptions, onlyAHostArrayIsReleasedForTheGetter) {
    for (const orvex::NativeClass* const native : {signals.native.get(), clients.native.get()}) {
        for (const auto& property : native->properties()) {
            hos::PropValue value{.number = 1.0, .array = text("x").release(), .text = u"x"};
            const bool isArray = *property->getName().text() == "Persistence";
            EXPECT_EQ(recorded({"destroyArray"}, [&] { property->releaseValue(value); }),
                      isArray ? Lines{"destroyArray 'x'"} : Lines{});
            EXPECT_EQ(value.array == nullptr, isArray);
            const HvArrayPtr rest(value.array);
        }
    }
}

TEST_F(ClassDescriptions, readOnlyPropertiesAreLeftAloneByTheirSetters) {
    const hos::PropValue value{.number = 7.0, .array = nullptr, .text = u"m2"};
    for (const char* const name : {"Model", "Count"}) signals.assign(name, value);
    clients.assign("Count", value);
    EXPECT_EQ(signals.set().getModelName() + clients.set().getModelName(), u"m1m1");
    EXPECT_EQ(signals.set().getCount() + clients.set().getCount(), 0U);
    clients.assign("Model", value);
    EXPECT_EQ(clients.set().getModelName(), u"m2");
}

TEST_F(ClassDescriptions, aMethodGivesItsOneResultWhateverIsWanted) {
    const auto spec = resolvedPort(u"Gain", 1, 12.5)->getHOSObject(u"m1", false);
    const ks_hmi::SignalClient client;
    const auto clientObject = client.getHOSObject(u"m1");
    const hos::Argument self = static_cast<const hvArray*>(signals.object.get());
    const hos::Argument own = static_cast<const hvArray*>(clients.object.get());
    const hos::Argument first = std::uint32_t{1};
    const hos::Argument record = static_cast<const hvArray*>(spec.get());
    const hos::Argument observer = static_cast<const hvArray*>(clientObject.get());
    for (const int wanted : {0, 1, 3}) {
        EXPECT_EQ(signals.results("add", {self, record}, wanted), "0 ---");
        EXPECT_EQ(signals.results("set", {self, first, record}, wanted), "0 ---");
        EXPECT_EQ(signals.results("get", {self, first}, wanted), "1 x--");
        EXPECT_EQ(signals.results("get", {self, first, true}, wanted), "1 x--");
        EXPECT_EQ(signals.results("getUUID", {self, first}, wanted), "1 x--");
        EXPECT_EQ(signals.results("isPortObserved", {self, record}, wanted), "1 x--");
        EXPECT_EQ(signals.results("isGivenPortObserved", {self, 12.5, std::int32_t{1}}, wanted), "1 x--");
        EXPECT_EQ(signals.results("isGivenCWActivityObserved", {self, u"m1:4"s, 7.0, u"Self"s}, wanted), "1 x--");
        EXPECT_EQ(signals.results("isAnyCWActivityObserved", {self, u"m1:4"s, 7.0}, wanted), "1 x--");
        EXPECT_EQ(signals.results("setUUIDForBlock", {7.25, first, "u"s}, wanted), "0 ---");
        EXPECT_EQ(signals.results("getUUIDForBlock", {7.25, first, true}, wanted), "1 x--");
        EXPECT_EQ(signals.results("remove", {self, first}, wanted), "0 ---");
        EXPECT_EQ(clients.results("add", {own, observer}, wanted), "0 ---");
        EXPECT_EQ(clients.results("set", {own, first, observer}, wanted), "0 ---");
        EXPECT_EQ(clients.results("get", {own, first}, wanted), "1 x--");
        EXPECT_EQ(clients.results("remove", {own, first}, wanted), "0 ---");
    }
    for (const hvArray* const other : std::initializer_list<const hvArray*>{nullptr, clients.object.get()})
        EXPECT_EQ(raisedBy([&] {
                      signals.results("remove", {other, first}, 0);
                  }),
                  "InvalidObject Kestrel.HMI.InstrumentedSignals");
    std::vector<hos::Result> slots(1);
    slots[0] = HvArrayPtr(hvCreateSharedDataCopy(signals.object.get()));
    hos::Invocation invocation{0, slots, 0, {}};
    signals.native->constructor()->invoke(invocation);
    EXPECT_EQ(invocation.resultCount, 1);
}

std::string unsaid(const orvex::CallListing& call) {
    const auto isNamed = [](const orvex::Parameter& one) { return !one.name.empty(); };
    const bool isSaid = !call.sentence.empty() && std::all_of(call.inputs.begin(), call.inputs.end(), isNamed) &&
                        std::all_of(call.outputs.begin(), call.outputs.end(), isNamed);
    return isSaid ? "" : call.name + '\n';
}

TEST_F(ClassDescriptions, allThatScriptsCanNameSaysWhatItIsFor) {
    std::string missing;
    for (const std::string& name : orvex::classNames()) {
        const orvex::ClassListing listing = *orvex::listClass(name);
        if (listing.sentence.empty()) missing += name + '\n';
        missing += unsaid(listing.constructor);
        for (const auto& method : listing.methods) missing += unsaid(method);
        for (const auto& property : listing.properties)
            if (property.sentence.empty()) missing += property.name + '\n';
    }
    for (const std::string& name : orvex::functionNames()) missing += unsaid(*orvex::listFunction(name));
    EXPECT_EQ(missing, "");
    EXPECT_EQ(orvex::classNames().size(), 7U);
    EXPECT_EQ(orvex::namespaceNames(), (std::vector<std::string>{"Kestrel", "Kestrel.HMI"}));
}

TEST_F(ClassDescriptions, instancesAreMadeEmptyAndNoneIsDestroyedWithoutHarm) {
    const auto& info = signals.native->info();
    const auto* const made = static_cast<InstrumentedSignals*>(info.createInstance());
    EXPECT_EQ(made->getCount() + made->getModelName().size(), 0U);
    info.destroyInstance(const_cast<InstrumentedSignals*>(made));
    info.destroyInstance(nullptr);
    clients.native->info().destroyInstance(nullptr);
}

}  // namespace
