#include "host/services.h"

#include <cstdlib>
#include <iostream>
#include <map>
#include <set>

#include "platform/platform.h"
#include "platform/value.h"

// Calling by name, failures, messages and the local scope: host/services.h and host/messages.h.

class kssvDiagnosticImpl {
public:
    explicit kssvDiagnosticImpl(kssvIException failure) : m_failure(std::move(failure)) {}
    const kssvIException& failure() const noexcept { return m_failure; }

private:
    kssvIException m_failure;
};

namespace {

using smallest_platform::Function;

std::map<std::string, Function, std::less<>>& functions() {
    static std::map<std::string, Function, std::less<>> functions;
    return functions;
}

int g_depth = 0;
std::set<const hvArray*>& localScope() {
    static std::set<const hvArray*> values;
    return values;
}

// Values that are still in the local scope go with the outermost call.
struct RunningCall {
    RunningCall() { ++g_depth; }
    RunningCall(const RunningCall&) = delete;
    RunningCall& operator=(const RunningCall&) = delete;
    ~RunningCall() {
        if (--g_depth > 0) return;
        while (!localScope().empty()) THvArrayDeleter::destroy(const_cast<hvArray*>(*localScope().begin()));
    }
};

}  // namespace

namespace smallest_platform {

void raise(const std::string& text) { throw kssvIException({"smallest_platform:errors", "Failed"}, text); }

void defineFunction(std::string name, Function function) { functions()[std::move(name)] = std::move(function); }

std::vector<HvArrayPtr> call(const std::string& name, std::span<const hvArray* const> inputs) {
    const RunningCall running;
    if (const auto found = functions().find(name); found != functions().end()) return found->second(inputs);
    const hos::COSClassInfo* const info = findClass(name);
    if (info == nullptr) raise("There is no function or class " + name + ".");
    std::vector<HvArrayPtr> made;
    made.push_back(makeNativeObject(name, *info));
    return made;
}

void leaveLocalScope(const hvArray* value) noexcept { localScope().erase(value); }

}  // namespace smallest_platform

void kssvFEVAL(int nOut, hvArray** outs, int nIn, const hvArray* const* ins, const char* functionName) {
    auto results = smallest_platform::call(functionName, {ins, static_cast<std::size_t>(nIn)});
    results.resize(static_cast<std::size_t>(nOut));
    for (HvArrayPtr& result : results) *outs++ = result.release();
}

kssvDiagnosticImpl* kssvFEVAL_NoThrow(int nOut, hvArray** outs, int nIn, const hvArray* const* ins,
                                      const char* functionName, bool, void*) {
    try {
        kssvFEVAL(nOut, outs, nIn, ins, functionName);
        return nullptr;
    } catch (const kssvIException& failure) {
        return new kssvDiagnosticImpl(failure);
    }
}

void kssvReportAsWarning(kssvDiagnosticImpl* diagnostic) noexcept {
    std::cerr << "warning: " << diagnostic->failure().what() << '\n';
    delete diagnostic;
}
void kssvDiscardDiagnostic(kssvDiagnosticImpl* diagnostic) noexcept { delete diagnostic; }
kssvDiagnosticImpl* kssvCreateDiagnostic(const resource_core::BaseMsgID& id, const std::string& text) {
    // A platform with a message catalogue looks the identifier up where there is no text.
    return new kssvDiagnosticImpl(kssvIException(id, text.empty() ? id.catalogue() + ":" + id.key() : text));
}
kssvDiagnosticImpl* kssvCreateDiagnosticFromCatchClause() {
    try {
        throw;
    } catch (const kssvIException& failure) {
        return new kssvDiagnosticImpl(failure);
    } catch (const std::exception& failure) {
        return new kssvDiagnosticImpl(kssvIException({"smallest_platform:errors", "Failed"}, failure.what()));
    }
}
void kssvThrowIExceptionFromDiagnostic(kssvDiagnosticImpl* diagnostic, void*) {
    const std::unique_ptr<kssvDiagnosticImpl> consumed(diagnostic);
    throw kssvIException(consumed->failure());
}
void kssvSetLocalScope(hvArray* value) noexcept {
    if (g_depth > 0) localScope().insert(value);
}
void utFree(void* storage) noexcept { std::free(storage); }

// ---- messages ----

namespace resource_core {
BaseMsgID::BaseMsgID(std::string catalogue, std::string key, std::vector<Argument> arguments)
    : m_arguments(std::move(arguments)), m_catalogue(std::move(catalogue)), m_key(std::move(key)) {}
BaseMsgID::BaseMsgID(const BaseMsgID&) = default;
BaseMsgID& BaseMsgID::operator=(const BaseMsgID&) = default;
BaseMsgID::~BaseMsgID() = default;
const std::vector<BaseMsgID::Argument>& BaseMsgID::arguments() const noexcept { return m_arguments; }
const std::string& BaseMsgID::catalogue() const noexcept { return m_catalogue; }
const std::string& BaseMsgID::key() const noexcept { return m_key; }
}  // namespace resource_core

struct kssvIException::State {
    resource_core::BaseMsgID id;
    std::string text;
};
kssvIException::kssvIException(resource_core::BaseMsgID id, std::string text)
    : m_state(std::make_shared<const State>(State{std::move(id), std::move(text)})) {}
kssvIException::kssvIException(const kssvIException&) noexcept = default;
kssvIException::~kssvIException() = default;
const resource_core::BaseMsgID& kssvIException::messageId() const noexcept { return m_state->id; }
const char* kssvIException::what() const noexcept { return m_state->text.c_str(); }
