#include "signals/signal_specification.h"

#include <cmath>
#include <functional>
#include <limits>
#include <span>
#include <tuple>

#include "memory_host/orvex/objects/object_system.h"
#include "observers/signal_client.h"
#include "tests/support/host_recorder.h"
#include "tests/support/host_test.h"

using namespace ks_test;
using ks_hmi::SignalSpecification;

namespace {

using Members = SignalSpecification;

class SignalSpecificationTest : public ModelTest {
protected:
    static HvArrayPtr emptyStruct(std::size_t fields = 16, std::size_t elements = 1) {
        return structOf(elements, {SignalSpecification::getStructFields(), fields});
    }
    static std::unique_ptr<SignalSpecification> filled() {
        auto spec = port(u"Sub/Switch", 2, "3");
        spec->m_uuid = "11111111-2222-4333-8444-555555555555";
        spec->m_subPath = u"m1/inner";
        spec->m_signalName = {u'h', u'\0', 0xd800, u'ö'};
        spec->m_subSysPath = u"m1/Sub";
        spec->m_domainType = u"signal";
        spec->m_visualType = u"line";
        spec->m_domainParams = {{u"SSID", u"7"}};
        spec->m_logicalPortIndex = 3;
        spec->m_decimation = 4;
        spec->m_maxPoints = 500;
        spec->m_targetBufferedStreaming = spec->m_hideInPLV = spec->m_excludeForSave = true;
        spec->m_bindingRule = "rule";
        spec->setCachedInfo(12.5, 2);
        return spec;
    }
    // What a record writes into the field when it was read from an element with that value there, or the error.
    static std::string readAndWritten(const char* field, HvArrayPtr value) {
        const auto data = emptyStruct(16, 3);
        filled()->createStructData(data.get(), 2, u"");
        hvReplaceField(data.get(), 2, field, value.release());
        const std::string error =
            raisedBy([&] { SignalSpecification(data.get(), 2, u"").createStructData(data.get(), 2, u""); });
        if (!error.empty()) return error;
        const hvArray* const written = hvGetField(data.get(), 2, field);
        if (hvGetClassID(written) == hvDOUBLE_CLASS) return std::to_string(hvGetScalarInt(written));
        return describe(written) +
               (hvGetNumberOfFields(written) == 0 && hvGetClassID(written) == hvSTRUCT_CLASS ? " 0" : "");
    }
    // What no saved model has.
    static auto runtimeOf(const SignalSpecification& s) {
        return std::tie(s.m_cachedBlockHandle, s.m_cachedPortIdx, s.m_bindingRule, s.m_excludeForSave);
    }
};

TEST_F(SignalSpecificationTest, persistedElementReadsBackEqual) {
    const auto spec = filled();
    const auto data = emptyStruct(16, 2);
    spec->getPersistenceData(data.get(), 1, u"m1");
    EXPECT_TRUE(spec->isEqual(std::make_unique<SignalSpecification>(data.get(), 1, u"other").get()));
    EXPECT_EQ(hvGetClassID(hvGetField(data.get(), 1, "HideInPLV_")), hvDOUBLE_CLASS);
    EXPECT_EQ(hvGetField(data.get(), 0, "UUID"), nullptr);
    EXPECT_TRUE(orvex::warnings().empty());
}

TEST_F(SignalSpecificationTest, fieldsStandInTheOrderInWhichModelsAreSaved) {
    std::string names;
    for (const char* const name : std::span(SignalSpecification::getStructFields(), 20))
        names += std::string(" ") + name;
    EXPECT_EQ(names,
              " UUID BlockPath_ EID_ SubPath_ OutputPortIndex_ LogicalPortIndex_ SignalName_ SubSysPath_ Decimation_"
              " MaxPoints_ TargetBufferedStreaming_ IsFrameBased_ HideInPLV_ DomainType_ DomainParams_ VisualType_"
              " BindingRule_ CachedBlockHandle_ CachedPortIdx_ ExcludeForSave_");
    names.clear();
    for (const char* const name : ks_hmi::SignalClient::getStructFields()) names += std::string(" ") + name;
    EXPECT_EQ(names,
              " UUID ModelPath_ ModelPathEID_ SourceModel_ SignalUUID_ ObserverType_ ObserverParams_ UpdateRate_"
              " DimensionChannel_ ObserveImaginaryPart_ BusLeafPath_");
}

TEST_F(SignalSpecificationTest, savedPathIsTheAlignedOneAndEmptyWhenTheHostCannotAlign) {
    const auto spec = filled();
    const auto data = emptyStruct();
    spec->m_blockPath = u"stale/path";
    spec->getPersistenceData(data.get(), 0, u"m1");
    EXPECT_EQ(matrix::get_ustring(hvGetField(data.get(), 0, "BlockPath_")), u"Sub/Switch");
    EXPECT_EQ(hvArrayToStdString(hvGetField(data.get(), 0, "EID_")), "3");

    spec->m_eid = "99";
    spec->getPersistenceData(data.get(), 0, u"m1");
    EXPECT_EQ(matrix::get_ustring(hvGetField(data.get(), 0, "BlockPath_")), u"");
    EXPECT_EQ(orvex::warnings().size(), 1U);
}

TEST_F(SignalSpecificationTest, readsWhatOlderAndForeignWritersLeaveOrRefusesItByFieldAndElement) {
    struct Row {
        const char* field;
        HvArrayPtr value;
        const char* becomes;
    };
    const std::size_t one = 1;
    Row rows[] = {
        {"OutputPortIndex_", number(3.9), "3"},
        {"OutputPortIndex_", number(-1.5), "-1"},
        {"OutputPortIndex_", number(NAN), "0"},
        {"Decimation_", number(2147483647.5), "2147483647"},
        {"Decimation_", number(2147483648.0), "2147483647"},
        {"Decimation_", number(1e300), "2147483647"},
        {"Decimation_", number(-INFINITY), "-2147483648"},
        {"MaxPoints_", numbers<std::uint8_t>(hvUINT8_CLASS, {200}), "200"},
        {"MaxPoints_", logical(true), "1"},
        {"HideInPLV_", number(2.0), "1"},
        {"IsFrameBased_", number(NAN), "1"},
        {"TargetBufferedStreaming_", number(-0.0), "0"},
        {"SignalName_", number(5), "''"},
        {"UUID", number(5), "''"},
        {"BlockPath_", text("/Gain"), "'/Gain'"},
        {"EID_", text(":3"), "':3'"},
        {"DomainParams_", number(5), "struct 0"},
        {"LogicalPortIndex_", nullptr, "0"},
        {"HideInPLV_", nullptr, "0"},
        {"DomainType_", nullptr, "''"},
        {"DomainParams_", nullptr, "struct 0"},
        {"Decimation_", HvArrayPtr(hvCreateCellArray(1, &one)), "InvalidFieldValue Decimation_ 3"},
        {"MaxPoints_", emptyDouble(), "InvalidFieldValue MaxPoints_ 3"},
        {"OutputPortIndex_", text("1"), "InvalidFieldValue OutputPortIndex_ 3"},
        {"LogicalPortIndex_", emptyDouble(), "InvalidFieldValue LogicalPortIndex_ 3"},
    };
    for (Row& row : rows) EXPECT_EQ(readAndWritten(row.field, std::move(row.value)), row.becomes) << row.field;
    for (const char* const field : {"UUID", "EID_", "OutputPortIndex_", "BlockPath_", "SubPath_", "SubSysPath_",
                                    "SignalName_", "Decimation_", "MaxPoints_"})
        EXPECT_EQ(readAndWritten(field, nullptr), std::string("MissingField ") + field + " 3");
    EXPECT_NE(raisedBy([&] { SignalSpecification(nullptr, 0, u""); }), "");
}

TEST_F(SignalSpecificationTest, aUsedRecordKeepsPortAndFlagsThatAreMissingButNoTexts) {
    const auto data = emptyStruct();
    const SignalSpecification fresh;
    fresh.createStructData(data.get(), 0, u"");
    for (const char* const field : {"LogicalPortIndex_", "TargetBufferedStreaming_", "IsFrameBased_", "HideInPLV_",
                                    "DomainType_", "VisualType_", "DomainParams_"})
        hvReplaceField(data.get(), 0, field, nullptr);
    EXPECT_EQ(std::tie(fresh.m_outputPortIndex, fresh.m_logicalPortIndex, fresh.m_decimation, fresh.m_maxPoints),
              std::tuple(0, 0, 1, 0));
    EXPECT_EQ(runtimeOf(fresh), std::tuple(0.0, 0, "", false));
    const auto used = filled();
    used->m_domainType = u"cw_state";
    used->m_isFrameBased = true;
    used->setFromPersistentData(data.get(), 0);
    EXPECT_EQ(
        std::tie(used->m_logicalPortIndex, used->m_targetBufferedStreaming, used->m_isFrameBased, used->m_hideInPLV),
        std::tuple(3, true, true, true));
    EXPECT_EQ(used->m_domainType.get() + used->m_visualType.get(), u"");
    EXPECT_TRUE(used->m_domainParams.empty());
}

TEST_F(SignalSpecificationTest, aStructIsReadAsSavedAlsoWhenItHasTheRuntimeFields) {
    const auto runtime = filled()->getHOSObject(u"m1", true);
    ASSERT_EQ(hvGetNumberOfFields(runtime.get()), 20);
    const SignalSpecification read(runtime.get(), 0, u"m1");
    EXPECT_EQ(runtimeOf(read), runtimeOf(SignalSpecification()));
    EXPECT_EQ(read.m_blockPath, u"m1/Sub/Switch") << "persisted data is taken as relative already";
}

TEST_F(SignalSpecificationTest, hostObjectReadsBackEqualWithTheRuntimeMembers) {
    const auto spec = filled();
    const auto object = spec->getHOSObject(u"m1", false);
    const SignalSpecification read(object.get(), 0, u"m1");
    EXPECT_TRUE(read.isEqual(spec.get()));
    EXPECT_EQ(runtimeOf(read), runtimeOf(*spec));

    hvSetProperty(object.get(), 0, "CachedBlockHandle_", emptyDouble().get());
    hvSetProperty(object.get(), 0, "ExcludeForSave_", number(1).get());
    const SignalSpecification unresolved(object.get(), 0, u"m1");
    EXPECT_EQ(unresolved.m_cachedBlockHandle, 0.0);
    EXPECT_EQ(unresolved.m_cachedPortIdx, 0) << "the port is read only beside a handle";
    EXPECT_FALSE(unresolved.m_excludeForSave) << "only a logical true excludes";

    for (bool SignalSpecification::*flag :
         {&Members::m_targetBufferedStreaming, &Members::m_isFrameBased, &Members::m_hideInPLV}) {
        const auto one = port(u"Gain", 1, "1");
        (*one).*flag = true;
        one->m_cachedPortIdx = 5;
        const auto shown = one->getHOSObject(u"m1", false);
        for (const char* const runtime : {"CachedBlockHandle_", "CachedPortIdx_"})
            EXPECT_TRUE(hvIsEmpty(property(shown.get(), runtime).get())) << "no handle: the class's own default";
        EXPECT_TRUE(SignalSpecification(shown.get(), 0, u"m1").isEqual(one.get()));
    }
    for (const char* const flag : {"TargetBufferedStreaming_", "IsFrameBased_", "HideInPLV_"}) {
        const auto shown = spec->getHOSObject(u"m1", false);
        hvSetProperty(shown.get(), 0, flag, emptyDouble().get());
        EXPECT_EQ(raisedBy([&] { SignalSpecification(shown.get(), 0, u"m1"); }),
                  std::string("InvalidFieldValue ") + flag + " 1");
    }
}

TEST_F(SignalSpecificationTest, aPropertyThatHoldsNothingIsMissing) {
    const auto object = filled()->getHOSObject(u"m1", false);
    const std::span names(SignalSpecification::getStructFields(), 20);
    std::string missing;
    orvex::ScriptClass withoutOne;
    withoutOne.fullName = "Test.Signal";
    for (const char* const name : names)
        withoutOne.properties.push_back({name, {}, false, [&, name](const orvex::ScriptObject&) {
                                             return missing == name ? nullptr : property(object.get(), name);
                                         }});
    orvex::defineScriptClass(std::move(withoutOne));
    const auto shown = call("Test.Signal", {});
    for (const char* const name : names) {
        missing = name;
        EXPECT_EQ(raisedBy([&] { SignalSpecification(shown.get(), 0, u"m1"); }), "MissingField " + missing + " 1");
    }
}

TEST_F(SignalSpecificationTest, refusedConstructionGivesNullAndOneWarning) {
    const auto spec = filled();
    const orvex::FunctionRegistration refusing =
        orvex::registerFunction("Kestrel.HMI.SignalSpecification", [](orvex::Call&) { orvex::raise("no", "no"); });
    EXPECT_EQ(spec->getHOSObject(u"m1", false), nullptr);
    EXPECT_EQ(spec->getAlignedBlockPath(u"m1"), u"");
    const auto none = orvex::registerFunction("Kestrel.HMI.SignalSpecification", [](orvex::Call&) {});
    EXPECT_EQ(spec->getHOSObject(u"m1", false), nullptr);
    EXPECT_EQ(orvex::warnings().size(), 2U) << "no object is no refusal";
}

TEST_F(SignalSpecificationTest, equalityComparesThePersistedMembersOnly) {
    const auto spec = filled();
    for (const char* const field : std::span(SignalSpecification::getStructFields(), 16)) {
        const auto data = emptyStruct();
        spec->createStructData(data.get(), 0, u"");
        const hvArray* const was = hvGetField(data.get(), 0, field);
        HvArrayPtr becomes = structOf(1, std::array{"SSID"});
        if (hvGetClassID(was) == hvCHAR_CLASS) becomes = text("x");
        if (hvGetClassID(was) == hvDOUBLE_CLASS) becomes = number(hvGetScalar(was) == 0.0 ? 1.0 : 0.0);
        hvReplaceField(data.get(), 0, field, becomes.release());
        const SignalSpecification other(data.get(), 0, u"");
        EXPECT_FALSE(spec->isEqual(&other)) << field;
        EXPECT_FALSE(other.isEqual(spec.get())) << field;
    }
    const auto other = spec->clone();
    other->setCachedInfo(1.5, 9);
    other->m_bindingRule = "x";
    other->m_excludeForSave = false;
    EXPECT_TRUE(spec->isEqual(other.get()));
    EXPECT_FALSE(spec->isEqual(nullptr) || spec->isSameSignal(nullptr));
}

TEST_F(SignalSpecificationTest, cloneKeepsEveryMemberAndTheOrderOfTheParameters) {
    auto spec = filled();
    for (char16_t c = u'a'; c <= u'z'; ++c) spec->m_domainParams[std::u16string(1, c)] = u"v";
    const auto copy = spec->clone();
    EXPECT_TRUE(copy->isEqual(spec.get()));
    EXPECT_EQ(runtimeOf(*copy), runtimeOf(*spec));
}

}  // namespace
