#include "bindings/hmi_cos_method_info.h"

#include "foundation/errors.h"
#include "foundation/host_value.h"

namespace ks_hmi_foundation {

namespace errors = plv_hmi_foundation::errors;

namespace {

hos::InternedName typeName(const char* text) {
    return *text == '\0' ? hos::InternedName() : hos::internal::makeInterned(text);
}

}  // namespace

HMICOSMethodInfo::HMICOSMethodInfo(const char* name, Types inputs, Types outputs, int optionalInputs)
    : m_name(hos::internal::makeInterned(name)), m_signature(hos::COSMethodSignature::createMethodSignature()) {
    for (const char* const type : inputs) m_signature->appendInputType(typeName(type));
    for (const char* const type : outputs) m_signature->appendOutputType(typeName(type));
    if (optionalInputs != 0) m_signature->setOptionalArguments(optionalInputs);
}

std::size_t HMICOSMethodInfo::elementIndex(const hos::Invocation& call, std::size_t position, std::size_t count) {
    const auto hostIndex = argument<std::uint32_t>(call, position);
    if (hostIndex == 0) errors::raise(errors::InvalidElementIndex(static_cast<long>(count)));
    return hostIndex - std::size_t{1};
}

void HMICOSMethodInfo::setResult(hos::Invocation& call, HvArrayPtr result) {
    call.results[0] = detached(std::move(result));
    call.resultCount = 1;
}

void HMICOSMethodInfo::setResult(hos::Invocation& call, bool result) {
    call.results[0] = result;
    call.resultCount = 1;
}

void HMICOSMethodInfo::setResult(hos::Invocation& call, const std::string& text) {
    setResult(call, HvArrayPtr(hvCreateString(text.c_str())));
}

}  // namespace ks_hmi_foundation
