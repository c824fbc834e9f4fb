#include "signals/signal_specification.h"

#include <algorithm>
#include <iterator>

#include "foundation/field_reader.h"
#include "foundation/host_value.h"
#include "foundation/model_path.h"

namespace ks_hmi {

using namespace ks_hmi_foundation;

namespace {

constexpr const char* kStructFields[] = {
    "UUID",
    "BlockPath_",
    "EID_",
    "SubPath_",
    "OutputPortIndex_",
    "LogicalPortIndex_",
    "SignalName_",
    "SubSysPath_",
    "Decimation_",
    "MaxPoints_",
    "TargetBufferedStreaming_",
    "IsFrameBased_",
    "HideInPLV_",
    "DomainType_",
    "DomainParams_",
    "VisualType_",
    "BindingRule_",
    "CachedBlockHandle_",
    "CachedPortIdx_",
    "ExcludeForSave_",
};
constexpr int kPersistedFields = 16;

}  // namespace

SignalSpecification::SignalSpecification() = default;
SignalSpecification::SignalSpecification(const SignalSpecification&) = default;
SignalSpecification::~SignalSpecification() = default;

SignalSpecification::SignalSpecification(const hvArray* data, std::size_t index, const std::u16string& modelName) {
    if (isStruct(data)) {
        setFromPersistentData(data, index);
    } else {
        setFromHOS(data, modelName);
    }
}

std::unique_ptr<SignalSpecification> SignalSpecification::clone() const {
    return std::unique_ptr<SignalSpecification>(new SignalSpecification(*this));
}

const char* const* SignalSpecification::getStructFields() { return kStructFields; }

int SignalSpecification::getNumStructFields(bool withRuntimeFields) {
    return withRuntimeFields ? static_cast<int>(std::size(kStructFields)) : kPersistedFields;
}

void SignalSpecification::createStructData(hvArray* s, std::size_t index, const std::u16string& modelName) const {
    setField(s, index, "UUID", makeText(m_uuid));
    setField(s, index, "EID_", makeText(AddModelToEID(m_eid, modelName)));
    setField(s, index, "BlockPath_", makeText(AddModelToPath(m_blockPath, modelName)));
    setField(s, index, "SubPath_", makeText(m_subPath));
    setField(s, index, "SignalName_", makeText(m_signalName));
    setField(s, index, "SubSysPath_", makeText(m_subSysPath));
    setField(s, index, "DomainType_", makeText(m_domainType));
    setField(s, index, "VisualType_", makeText(m_visualType));
    setField(s, index, "DomainParams_", getDomainParamsAsHvArray());
    setField(s, index, "OutputPortIndex_", makeDouble(m_outputPortIndex));
    setField(s, index, "LogicalPortIndex_", makeDouble(m_logicalPortIndex));
    setField(s, index, "Decimation_", makeDouble(m_decimation));
    setField(s, index, "MaxPoints_", makeDouble(m_maxPoints));
    // Kept: doubles, not logicals; saved models carry doubles here.
    setField(s, index, "TargetBufferedStreaming_", makeFlag(m_targetBufferedStreaming));
    setField(s, index, "IsFrameBased_", makeFlag(m_isFrameBased));
    setField(s, index, "HideInPLV_", makeFlag(m_hideInPLV));
}

void SignalSpecification::getPersistenceData(hvArray* s, std::size_t index, std::u16string modelName) const {
    createStructData(s, index, std::u16string());
    // Kept: empty when the host cannot align it; a path that is no longer true may find another block.
    const std::u16string aligned = getAlignedBlockPath(modelName);
    setField(s, index, "BlockPath_", makeText(RemoveModelFromPath(aligned, modelName)));
}

void SignalSpecification::setFromPersistentData(const hvArray* s, std::size_t index) {
    SavedElement element(s, index);
    m_uuid = element.narrowText("UUID");
    m_eid = element.narrowText("EID_");
    m_outputPortIndex = element.integer("OutputPortIndex_");
    element.readIfPresent("LogicalPortIndex_", m_logicalPortIndex);
    m_blockPath = element.text("BlockPath_");
    m_subPath = element.text("SubPath_");
    m_subSysPath = element.text("SubSysPath_");
    m_signalName = element.text("SignalName_");
    m_decimation = element.integer("Decimation_");
    m_maxPoints = element.integer("MaxPoints_");
    element.readIfPresent("TargetBufferedStreaming_", m_targetBufferedStreaming);
    element.readIfPresent("IsFrameBased_", m_isFrameBased);
    element.readIfPresent("HideInPLV_", m_hideInPLV);
    m_domainType = textOf(element.find("DomainType_"));
    m_visualType = textOf(element.find("VisualType_"));
    readDomainParams(element.find("DomainParams_"));
}

bool SignalSpecification::isEqual(const SignalSpecification* other) const {
    if (other == nullptr) return false;
    const SignalFields& fields = *this;
    // Kept: an ordered walk beside the look-up; equal parameters in another order compare unequal.
    return fields == *other && std::equal(m_domainParams.begin(), m_domainParams.end(), other->m_domainParams.begin(),
                                          other->m_domainParams.end());
}

bool SignalSpecification::isSameSignal(const SignalSpecification* other) const {
    if (other == nullptr) return false;
    const bool isSameHandle = m_cachedBlockHandle != 0.0 && m_cachedBlockHandle == other->m_cachedBlockHandle;
    if (isSameHandle && m_cachedPortIdx == other->m_cachedPortIdx) return true;
    // Kept: different handles fall through to the paths; a handle may be stale.
    return m_outputPortIndex == other->m_outputPortIndex && m_logicalPortIndex == other->m_logicalPortIndex &&
           m_blockPath == other->m_blockPath && m_subPath == other->m_subPath;
}

// Kept: sets call it, and a record holds no model name.
void SignalSpecification::renameModel(const std::u16string&, const std::u16string&) {}

void SignalSpecification::stripModelName(const std::u16string& modelName) {
    m_blockPath = RemoveModelFromPath(m_blockPath, modelName);
    m_eid = RemoveModelFromEID(m_eid, modelName);
}

void SignalSpecification::setCachedInfo(double blockHandle, int portIdx) {
    m_cachedBlockHandle = blockHandle;
    m_cachedPortIdx = portIdx;
}

// Kept: the logical port stays; it is the author's numbering and not the block's.
void SignalSpecification::renumberPortIndex(int portIndex) {
    m_outputPortIndex = portIndex;
    m_cachedPortIdx = portIndex;
}

}  // namespace ks_hmi
