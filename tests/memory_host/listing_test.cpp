#include "memory_host/orvex/objects/listing.h"

#include <algorithm>
#include <string>
#include <vector>

#include "memory_host/orvex/calls/functions.h"
#include "memory_host/orvex/objects/notes.h"
#include "memory_host/orvex/objects/object_system.h"
#include "tests/memory_host/counter_library.h"
#include "tests/memory_host/ledger_test_base.h"

using namespace counter_library;

namespace {

using Texts = std::vector<std::string>;

Texts shown(const std::vector<orvex::Parameter>& parameters) {
    Texts texts;
    for (const auto& one : parameters) texts.push_back(one.name + ":" + one.type + (one.isOptional ? "?" : ""));
    return texts;
}

std::string shown(const orvex::PropertyListing& one) {
    return one.name + " " + one.type + (one.isSettable ? " settable" : "") + (one.isComputed ? " computed" : "") +
           (one.isDisplayed ? " displayed " : " ") + one.initial + (one.sentence.empty() ? "" : "; " + one.sentence);
}

Texts shown(const std::vector<orvex::PropertyListing>& properties) {
    Texts texts;
    for (const auto& one : properties) texts.push_back(shown(one));
    return texts;
}

const orvex::CallListing& named(const orvex::ClassListing& listing, const std::string& name) {
    const auto isNamed = [&](const orvex::CallListing& one) { return one.name == name; };
    return *std::find_if(listing.methods.begin(), listing.methods.end(), isNamed);
}

class Listing : public LedgerTest {
protected:
    Listing() { hos::COSNamespace::addNamespace(std::make_unique<NamespaceInfo>("Lib", addTools)); }
    void TearDown() override {
        orvex::releaseObjectSystem();
        LedgerTest::TearDown();
    }
};

TEST_F(Listing, tellsOfANativeClassBySignaturesAndNotes) {
    orvex::note("Lib.Tools.Counter", {"It counts."});
    orvex::note("Lib.Tools.Counter.Counter", {"A new one.", "name: nonsense", "counter"});
    orvex::note("Lib.Tools.Counter.Name", {"Its name."});
    orvex::note("Lib.Tools.Counter.isGood", {"Whether it is.", "counter"});
    EXPECT_EQ(orvex::namespaceNames(), (Texts{"Lib", "Lib.Tools"}));
    EXPECT_EQ(orvex::classNames(), Texts{kCounter});
    const auto counter = *orvex::listClass(kCounter);
    EXPECT_TRUE(counter.isNative);
    EXPECT_EQ(counter.sentence, "It counts.");
    EXPECT_EQ(shown(counter.constructor.inputs), Texts{"name:unicodeString?"});
    EXPECT_EQ(shown(counter.constructor.outputs), Texts{"counter:Lib.Tools.Counter"});
    EXPECT_EQ(shown(counter.properties), (Texts{"Name unicodeString settable displayed ; Its name.",
                                                "Count uint32 scalar displayed ", "State any "}));
    EXPECT_EQ(shown(named(counter, "isGood").inputs), (Texts{"counter:Lib.Tools.Counter", ":any", ":logical scalar?"}));
    EXPECT_EQ(shown(named(counter, "isGood").outputs), Texts{":logical scalar"});
    EXPECT_EQ(shown(named(counter, "take No.Such.Class").inputs), (Texts{":Lib.Tools.Counter", ":No.Such.Class"}));
    EXPECT_TRUE(named(counter, "make").isStatic && named(counter, "make").isDeclared);
    EXPECT_FALSE(named(counter, "isGood").isStatic);
    EXPECT_FALSE(orvex::listClass("Lib.Tools") || orvex::listClass("Lib.Tools.Other") || orvex::listClass(""));
}

TEST_F(Listing, tellsOfAScriptClassWithWhatItInherits) {
    orvex::ScriptClass base;
    base.fullName = "Script.Base";
    base.properties = {{"Fixed", [] { return number(4.0); }, false},
                       {"Now", {}, false, [](const orvex::ScriptObject&) { return number(0.0); }}};
    base.methods["half"] = base.methods["unsaid"] = [](orvex::Call&) {};
    base.staticMethods["one"] = [](orvex::Call&) {};
    orvex::defineScriptClass(base);
    orvex::ScriptClass derived;
    derived.fullName = "Script.Derived";
    derived.superclass = "Script.Base";
    derived.properties = {{"Free"}, {"Text", [] { return text("a"); }}};
    orvex::defineScriptClass(derived);
    orvex::note("Script.Base.half", {"Half.", "base: Script.Base, [by], [more: double scalar]", "left, right"});
    orvex::note("Script.Base.Fixed", {"Replaced."});
    orvex::note("Script.Base.Fixed", {"Four."});

    EXPECT_EQ(orvex::classNames(), (Texts{kCounter, "Script.Base", "Script.Derived"}));
    const auto listing = *orvex::listClass("Script.Derived");
    EXPECT_EQ(listing.superclass, "Script.Base");
    EXPECT_FALSE(listing.isNative || listing.constructor.isDeclared);
    EXPECT_EQ(shown(listing.properties),
              (Texts{"Fixed any displayed 4; Four.", "Now any computed displayed ",
                     "Free any settable displayed double 0x0", "Text any settable displayed 'a'"}));
    EXPECT_EQ(shown(named(listing, "half").inputs), (Texts{"base:Script.Base", "by:any?", "more:double scalar?"}));
    EXPECT_EQ(shown(named(listing, "half").outputs), (Texts{"left:any", "right:any"}));
    EXPECT_EQ(named(listing, "half").sentence, "Half.");
    EXPECT_FALSE(named(listing, "unsaid").isDeclared);
    EXPECT_TRUE(named(listing, "one").isStatic);
}

TEST_F(Listing, tellsOfFunctionsAsTheyAreNow) {
    const auto before = orvex::functionNames();
    {
        const auto two = orvex::registerFunction(
            "listing two", [](orvex::Call&) {}, 2);
        EXPECT_EQ(orvex::functionNames().size(), before.size() + 1);
        EXPECT_EQ(shown(orvex::listFunction("listing two")->outputs), (Texts{":any", ":any"}));
        EXPECT_FALSE(orvex::listFunction("listing two")->isDeclared);
        orvex::note("listing two", {"Two.", "value", "one, other"});
        EXPECT_EQ(shown(orvex::listFunction("listing two")->outputs), (Texts{"one:any", "other:any"}));
    }
    EXPECT_EQ(orvex::functionNames(), before);
    EXPECT_FALSE(orvex::listFunction("listing two"));
}

}  // namespace
