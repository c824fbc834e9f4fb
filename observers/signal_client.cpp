#include "observers/signal_client.h"

#include <unordered_set>

#include "foundation/host_call.h"
#include "foundation/host_value.h"
#include "foundation/model_path.h"
#include "observers/signal_client_fields.h"
#include "signals/signal_specification.h"

namespace ks_hmi {

using namespace ks_hmi_foundation;

namespace {

constexpr const char* kClientFields[] = {
    "UUID",          "ModelPath_",      "ModelPathEID_", "SourceModel_",      "SignalUUID_",
    "ObserverType_", "ObserverParams_", "UpdateRate_",   "DimensionChannel_", "ObserveImaginaryPart_",
    "BusLeafPath_",
};

template <class Text>
HvArrayPtr makeCells(const std::vector<Text>& texts) {
    const std::size_t count = texts.size();
    HvArrayPtr cells(hvCreateCellArray(1, &count));
    for (std::size_t i = 0; i < count; ++i) hvSetCell(cells.get(), i, makeText(texts[i]).release());
    return cells;
}

HvArrayPtr makeLow32Bits(std::uint64_t value) { return ks_host::makeUint32(static_cast<std::uint32_t>(value)); }

HvArrayPtr deepCopy(const HvArrayPtr& value) { return HvArrayPtr(hvCreateDeepCopy(value.get())); }

bool areEqualValues(const hvArray* a, const hvArray* b) {
    // Kept: the host is asked also when both are missing; it may count them as different.
    const HvArrayPtr none = a == nullptr || b == nullptr ? makeEmpty() : nullptr;
    const auto result = callHost<1>("isequal", {a != nullptr ? a : none.get(), b != nullptr ? b : none.get()});
    const bool* const answer = hvGetLogicals(result[0].get());
    return answer != nullptr && !hvIsEmpty(result[0].get()) && answer[0];
}

}  // namespace

SignalClient::SignalClient() = default;
SignalClient::~SignalClient() = default;

SignalClient::SignalClient(const hvArray* value, std::size_t index, const std::u16string& modelName) {
    if (isStruct(value)) {
        setFromPersistentData(value, index);
    } else {
        setFromHOS(value, modelName);
    }
}

std::span<const char* const> SignalClient::getStructFields() { return kClientFields; }

int SignalClient::getNumStructFields() { return static_cast<int>(std::size(kClientFields)); }

void readFields(SignalClient& client, FieldSource& source) {
    client.m_uuid = source.narrowText("UUID");
    client.m_sourceModel = source.text("SourceModel_");
    client.m_signalUUID = source.narrowText("SignalUUID_");
    client.m_observerType = source.narrowText("ObserverType_");
    client.m_modelPath = source.texts("ModelPath_");
    client.m_modelPathEID = source.narrowTexts("ModelPathEID_");
    client.m_observerParams = persistent(source.copyOf("ObserverParams_"));
    client.m_updateRate = source.widened("UpdateRate_");
    client.m_dimensionChannel = source.widened("DimensionChannel_");
    client.m_observeImaginaryPart = source.truth("ObserveImaginaryPart_");
    client.m_busLeafPath = utf8TextOf(source.find("BusLeafPath_"));
}

void SignalClient::setFromPersistentData(const hvArray* s, std::size_t index) {
    SavedElement element(s, index);
    readFields(*this, element);
}

void SignalClient::createStructData(hvArray* s, std::size_t index, const std::u16string& modelName) const {
    setField(s, index, "UUID", makeText(m_uuid));
    setField(s, index, "SignalUUID_", makeText(m_signalUUID));
    setField(s, index, "ObserverType_", makeText(m_observerType));
    std::vector<std::u16string> path = m_modelPath;
    if (!path.empty()) path[0] = AddModelToPath(path[0], modelName);
    // Kept: a client without a path belongs to the model being written; one with a path names its own.
    setField(s, index, "SourceModel_", makeText(path.empty() ? modelName : m_sourceModel));
    std::vector<std::string> eids = m_modelPathEID;
    if (!eids.empty()) eids[0] = AddModelToEID(eids[0], modelName);
    setField(s, index, "ModelPath_", makeCells(path));
    setField(s, index, "ModelPathEID_", makeCells(eids));
    setField(s, index, "ObserverParams_", m_observerParams ? deepCopy(m_observerParams) : makeEmpty());
    setField(s, index, "UpdateRate_", makeLow32Bits(m_updateRate));
    setField(s, index, "DimensionChannel_", makeLow32Bits(m_dimensionChannel));
    setField(s, index, "ObserveImaginaryPart_", makeLogical(m_observeImaginaryPart));
    // Kept: up to a NUL only, unlike the other texts; the host's creator for plain narrow text is the one here.
    setField(s, index, "BusLeafPath_", HvArrayPtr(hvCreateString(m_busLeafPath.c_str())));
}

void SignalClient::getPersistenceData(hvArray* s, std::size_t index) const {
    createStructData(s, index, std::u16string());
}

bool SignalClient::isEqual(const SignalClient* other) const {
    if (other == nullptr) return false;
    const SignalClientFields& fields = *this;
    return fields == *other && areEqualValues(m_observerParams.get(), other->m_observerParams.get());
}

std::unique_ptr<SignalClient> SignalClient::clone() const {
    auto copy = std::make_unique<SignalClient>();
    const SignalClientFields& fields = *this;
    static_cast<SignalClientFields&>(*copy) = fields;
    if (m_observerParams) copy->m_observerParams = persistent(deepCopy(m_observerParams));
    return copy;
}

void SignalClient::stripModelName(const std::u16string& modelName) {
    if (!m_modelPath.empty()) m_modelPath[0] = RemoveModelFromPath(m_modelPath[0], modelName);
    if (!m_modelPathEID.empty()) m_modelPathEID[0] = RemoveModelFromEID(m_modelPathEID[0], modelName);
}

void SignalClient::renameModel(const std::u16string& oldName, const std::u16string& newName) {
    if (m_sourceModel == oldName || m_sourceModel.empty()) m_sourceModel = newName;
    // Kept: the parameters name the new model also when the source model is another.
    if (isStruct(m_observerParams.get()) && hvGetField(m_observerParams.get(), 0, "ModelName") != nullptr) {
        setField(m_observerParams.get(), 0, "ModelName", makeText(newName));
    }
}

bool SignalClient::isDeprecatedObserver() const {
    static const std::unordered_set<std::string> deprecatedTypes = {"hmi_web_widget_observer"};
    return deprecatedTypes.contains(m_observerType);
}

}  // namespace ks_hmi
