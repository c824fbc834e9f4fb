#include <span>
#include <utility>
#include <vector>

#include "foundation/field_reader.h"
#include "foundation/host_call.h"
#include "foundation/host_value.h"
#include "host/text.h"
#include "signals/domain_params.h"
#include "signals/signal_specification.h"

namespace ks_hmi {

using namespace ks_hmi_foundation;

namespace {

constexpr const char* kSignalSpecificationClass = "Kestrel.HMI.SignalSpecification";

void setProperty(hvArray* object, const char* name, const HvArrayPtr& value) {
    hvSetProperty(object, 0, name, value.get());
}

}  // namespace

HvArrayPtr SignalSpecification::getHOSObject(const std::u16string& modelName, bool asStruct) const {
    const std::span fields(getStructFields(), static_cast<std::size_t>(getNumStructFields(asStruct)));
    HvArrayPtr data = inLocalScope(makeScalarStruct(fields));
    createStructData(data.get(), 0, modelName);
    if (asStruct) {
        setField(data.get(), 0, "BindingRule_", makeText(m_bindingRule));
        setField(data.get(), 0, "CachedBlockHandle_", makeDouble(m_cachedBlockHandle));
        setField(data.get(), 0, "CachedPortIdx_", makeDouble(m_cachedPortIdx));
        setField(data.get(), 0, "ExcludeForSave_", makeLogical(m_excludeForSave));
        hvSetArrayScope(data.get(), hvSCOPE_RESULT);
        return data;
    }
    auto result = tryCallHost<1>(kSignalSpecificationClass, {data.get()});
    if (!result) return nullptr;
    HvArrayPtr object = std::move((*result)[0]);
    if (!object) return nullptr;
    setProperty(object.get(), "BindingRule_", makeText(m_bindingRule));
    // Kept: without a handle the class decides what "not resolved" looks like.
    if (m_cachedBlockHandle != 0.0) {
        setProperty(object.get(), "CachedBlockHandle_", makeDouble(m_cachedBlockHandle));
        setProperty(object.get(), "CachedPortIdx_", makeDouble(m_cachedPortIdx));
    }
    setProperty(object.get(), "ExcludeForSave_", makeLogical(m_excludeForSave));
    return object;
}

void SignalSpecification::setFromHOS(const hvArray* object, const std::u16string& modelName) {
    ObjectProperties properties(object);
    m_uuid = properties.narrowText("UUID");
    m_eid = properties.narrowText("EID_");
    m_blockPath = properties.text("BlockPath_");
    m_subPath = properties.text("SubPath_");
    m_subSysPath = properties.text("SubSysPath_");
    m_signalName = properties.text("SignalName_");
    m_domainType = properties.text("DomainType_");
    m_visualType = properties.text("VisualType_");
    readDomainParams(properties.require("DomainParams_"));
    m_outputPortIndex = properties.integer("OutputPortIndex_");
    m_logicalPortIndex = properties.integer("LogicalPortIndex_");
    m_decimation = properties.integer("Decimation_");
    m_maxPoints = properties.integer("MaxPoints_");
    m_targetBufferedStreaming = properties.flag("TargetBufferedStreaming_");
    m_isFrameBased = properties.flag("IsFrameBased_");
    m_hideInPLV = properties.flag("HideInPLV_");
    m_bindingRule = properties.narrowText("BindingRule_");
    if (const auto handle = properties.numberUnlessEmpty("CachedBlockHandle_")) {
        m_cachedBlockHandle = *handle;
        m_cachedPortIdx = properties.integer("CachedPortIdx_");
    }
    m_excludeForSave = hvIsLogicalScalarTrue(properties.require("ExcludeForSave_"));
    stripModelName(modelName);
}

std::u16string SignalSpecification::getAlignedBlockPath(const std::u16string& modelName) const {
    const HvArrayPtr object = inLocalScope(getHOSObject(modelName, false));
    if (!object) return {};
    const auto result = tryCallHost<1>("getAlignedBlockPath", {object.get()});
    return result ? textOf((*result)[0].get()) : std::u16string();
}

HvArrayPtr SignalSpecification::getDomainParamsAsHvArray() const {
    std::vector<std::string> names;
    names.reserve(m_domainParams.size());
    for (const auto& [name, value] : m_domainParams) names.push_back(fl::i18n::to_string(name));
    std::vector<const char*> fields;
    fields.reserve(names.size());
    for (const std::string& name : names) fields.push_back(name.c_str());

    HvArrayPtr params = makeScalarStruct(fields);
    auto field = fields.begin();
    for (const auto& [name, value] : m_domainParams) setField(params.get(), 0, *field++, makeText(value));
    return params;
}

// Kept: the map given is left alone; every caller means the record's own.
void SignalSpecification::extractDomainParamsFromHvArray(const hvArray* value, DomainParamsMap&) {
    readDomainParams(value);
}

void SignalSpecification::readDomainParams(const hvArray* value) {
    std::vector<DomainParam> params;
    const int fieldCount = hvIsEmpty(value) ? 0 : hvGetNumberOfFields(value);
    params.reserve(static_cast<std::size_t>(fieldCount));
    for (int i = 0; i < fieldCount; ++i) {
        const char* const name = hvGetFieldNameByNumber(value, i);
        params.emplace_back(fl::i18n::to_ustring(name), textOf(hvGetField(value, 0, name)));
    }
    m_domainParams = domainParamsInOrder(std::move(params));
}

std::u16string SignalSpecification::getValueForDomainParams(const std::u16string& name) const {
    const auto found = m_domainParams.find(name);
    return found == m_domainParams.end() ? std::u16string() : found->second;
}

}  // namespace ks_hmi
