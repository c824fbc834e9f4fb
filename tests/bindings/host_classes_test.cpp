#include "memory_host/orvex/objects/cos_class.h"
#include "memory_host/orvex/objects/cos_namespace.h"
#include "memory_host/orvex/objects/types.h"
#include "tests/support/host_test.h"

using namespace ks_test;

namespace {

/// The words whose conditions hold, with spaces in front.
std::string words(std::initializer_list<std::pair<bool, const char*>> conditions) {
    std::string text;
    for (const auto& [holds, word] : conditions) text += holds ? std::string(" ") + word : "";
    return text;
}

std::string describe(const hos::COSPropInfo& p) {
    return *p.getName().text() + ": " + p.getType()->text() + ' ' + std::to_string(p.getGetAccess()) + '/' +
           std::to_string(p.getSetAccess()) +
           words({{p.isHidden(), "hidden"},
                  {p.isTransient(), "transient"},
                  {p.isDependent(), "dependent"},
                  {p.isWarnOnCopyError(), "warns"},
                  {p.isAbortedOnEqualAssignment(), "aborted"},
                  {p.isNotifiedOnRead(), "read"},
                  {p.isCopied(), "copied"},
                  {p.isNotifiedOnWrite(), "written"},
                  {p.isDisplayed(), "displayed"},
                  {p.isNeverAmbiguous(), "unambiguous"},
                  {p.isCaseInsensitive(), "caseless"},
                  {p.isOfferedForCompletion(), "offered"}});
}

std::string list(std::span<const hos::InternedName> types) {
    std::string text;
    for (const hos::InternedName type : types) text += (text.empty() ? "" : ", ") + *type.text();
    return '(' + text + ')';
}

std::string describe(const hos::COSMethodInfo& m) {
    const hos::COSMethodSignature& signature = m.getSignature();
    return *m.getName().text() + list(signature.inputTypes()) + " -> " + list(signature.outputTypes()) +
           words({{signature.optionalArguments() == 1, "optional"},
                  {m.isStatic(), "static"},
                  {!m.isVisible(), "invisible"},
                  {m.isSealed(), "sealed"},
                  {m.isAbstract(), "abstract"}});
}

std::string describe(const hos::COSClassInfo& c) {
    return c.getName() + words({{c.isReferenceClass(), "reference"},
                                {c.isHidden(), "hidden"},
                                {c.isSealed(), "sealed"},
                                {c.isAbstract(), "abstract"},
                                {c.canThisClassContainOtherClass(), "container"},
                                {c.canThisClassFormArrays(), "arrays"},
                                {c.areClassFunctionsAllowed(), "functions"},
                                {c.areClassPropertiesAllowed(), "properties"},
                                {c.customSave(), "saves"},
                                {c.customLoad(), "loads"}});
}

std::vector<std::string> description(const std::string& name) {
    const std::shared_ptr<orvex::NativeClass> found = orvex::findNativeClass("Kestrel.HMI." + name);
    std::vector<std::string> lines{describe(found->info())};
    for (const auto& property : found->properties()) lines.push_back(describe(*property));
    for (const auto& method : found->methods()) lines.push_back(describe(*method));
    return lines;
}

class HostClasses : public ModelTest {};

TEST_F(HostClasses, instrumentedSignalsAreDescribedToTheHost) {
    EXPECT_EQ(
        description("InstrumentedSignals"),
        (std::vector<std::string>{
            "InstrumentedSignals reference arrays functions properties",
            "Model: unicodeString 0/5 copied displayed offered", "Count: uint32 scalar 0/5 copied displayed offered",
            "Persistence: any 0/2 copied",
            "InstrumentedSignals(unicodeString) -> (Kestrel.HMI.InstrumentedSignals) optional",
            "add(Kestrel.HMI.InstrumentedSignals, Kestrel.HMI.SignalSpecification) -> ()",
            "set(Kestrel.HMI.InstrumentedSignals, uint32 scalar, Kestrel.HMI.SignalSpecification) -> ()",
            "remove(Kestrel.HMI.InstrumentedSignals, uint32 scalar) -> ()",
            "get(Kestrel.HMI.InstrumentedSignals, uint32 scalar, logical scalar) -> (any) optional",
            "isPortObserved(Kestrel.HMI.InstrumentedSignals, Kestrel.HMI.SignalSpecification) -> (logical scalar)",
            "isGivenCWActivityObserved(Kestrel.HMI.InstrumentedSignals, unicodeString, double scalar, "
            "unicodeString) -> (logical scalar)",
            "isAnyCWActivityObserved(Kestrel.HMI.InstrumentedSignals, unicodeString, double scalar) -> "
            "(logical scalar)",
            "isGivenPortObserved(Kestrel.HMI.InstrumentedSignals, double scalar, int32 scalar) -> "
            "(logical scalar)",
            "setUUIDForBlock(double scalar, uint32 scalar, asciiString) -> () static",
            "getUUIDForBlock(double scalar, uint32 scalar, logical scalar) -> (any) static",
            "getUUID(Kestrel.HMI.InstrumentedSignals, uint32 scalar) -> (any)"}));
}

TEST_F(HostClasses, streamingClientsAreDescribedToTheHost) {
    EXPECT_EQ(
        description("StreamingClients"),
        (std::vector<std::string>{"StreamingClients reference arrays functions properties",
                                  "Model: unicodeString 0/2 copied displayed offered",
                                  "Count: uint32 scalar 0/5 copied displayed offered", "Persistence: any 0/2 copied",
                                  "StreamingClients(unicodeString) -> (Kestrel.HMI.StreamingClients) optional",
                                  "add(Kestrel.HMI.StreamingClients, Kestrel.HMI.SignalClient) -> ()",
                                  "set(Kestrel.HMI.StreamingClients, uint32 scalar, Kestrel.HMI.SignalClient) -> ()",
                                  "remove(Kestrel.HMI.StreamingClients, uint32 scalar) -> ()",
                                  "get(Kestrel.HMI.StreamingClients, uint32 scalar) -> (Kestrel.HMI.SignalClient)"}));
}

}  // namespace
