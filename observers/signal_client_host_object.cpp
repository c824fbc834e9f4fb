#include "foundation/host_call.h"
#include "foundation/host_value.h"
#include "foundation/model_path.h"
#include "observers/signal_client_fields.h"
#include "signals/signal_specification.h"

namespace ks_hmi {

using namespace ks_hmi_foundation;

namespace {

constexpr const char* kSignalClientClass = "Kestrel.HMI.SignalClient";

bool canBeSignal(const hvArray* value) noexcept {
    return !hvIsEmpty(value) && (isStruct(value) || hvGetClassID(value) == hvOBJECT_CLASS);
}

}  // namespace

void SignalClient::setFromHOS(const hvArray* object, const std::u16string& modelName) {
    ObjectProperties properties(object);
    readFields(*this, properties);
    stripModelName(modelName);
}

HvArrayPtr SignalClient::getHOSObject(const std::u16string& modelName) const {
    const HvArrayPtr data = inLocalScope(makeScalarStruct(getStructFields()));
    createStructData(data.get(), 0, modelName);
    auto result = tryCallHost<1>(kSignalClientClass, {data.get()});
    return result ? std::move((*result)[0]) : nullptr;
}

SignalSpecification* SignalClient::getSignalSpecification(const std::u16string& modelName) {
    // Kept: looked up once; a client is rebuilt when its model changes.
    if (m_signalSpec) return m_signalSpec.get();
    const HvArrayPtr object = getHOSObject(modelName);
    if (!object) return nullptr;
    const HvArrayPtr signal(hvGetProperty(object.get(), 0, "SignalInfo"));
    if (!canBeSignal(signal.get())) return nullptr;
    m_signalSpec = std::make_unique<SignalSpecification>(signal.get(), 0, modelName);
    return m_signalSpec.get();
}

void SignalClient::getAlignedBlockPath(const std::u16string& modelName, std::vector<std::u16string>& path,
                                       std::u16string& subPath) {
    path.clear();
    subPath.clear();
    const SignalSpecification* const signal = getSignalSpecification(modelName);
    if (signal == nullptr) return;
    std::u16string aligned = signal->getAlignedBlockPath(modelName);
    if (aligned.empty()) return;
    std::vector<std::u16string> whole = m_modelPath;
    if (!whole.empty()) whole[0] = AddModelToPath(whole[0], modelName);
    whole.push_back(std::move(aligned));
    subPath = signal->m_subPath;
    path.swap(whole);
}

int SignalClient::getAlignedPortIndex(const std::u16string& modelName) {
    const SignalSpecification* const signal = getSignalSpecification(modelName);
    return signal != nullptr ? signal->m_cachedPortIdx : 0;
}

int SignalClient::getDecimation(const std::u16string& modelName) {
    const SignalSpecification* const signal = getSignalSpecification(modelName);
    return signal != nullptr ? signal->m_decimation : 1;
}

int SignalClient::getMaxPoints(const std::u16string& modelName) {
    const SignalSpecification* const signal = getSignalSpecification(modelName);
    return signal != nullptr ? signal->m_maxPoints : 0;
}

}  // namespace ks_hmi
