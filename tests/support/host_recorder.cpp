#include "tests/support/host_recorder.h"

#include <link.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>
#include <type_traits>
#include <utility>

#include "host/object_system.h"
#include "host/services.h"
#include "tests/support/host_function.h"

namespace ks_test {

namespace {

HostRecorder* g_recorder = nullptr;

struct AddressRange {
    std::uintptr_t begin = 0, end = 0;
};

int findLibrary(dl_phdr_info* info, std::size_t, void* found) {
    if (std::string_view(info->dlpi_name).find("libks_hmi_foundation.so") == std::string_view::npos) return 0;
    for (const ElfW(Phdr) & segment : std::span(info->dlpi_phdr, info->dlpi_phnum)) {
        if (segment.p_type != PT_LOAD || (segment.p_flags & PF_X) == 0) continue;
        const auto begin = info->dlpi_addr + segment.p_vaddr;
        *static_cast<AddressRange*>(found) = {begin, begin + segment.p_memsz};
    }
    return 1;
}

// Looked for each time: tests load and unload the library.
bool isInLibrary(const void* address) {
    AddressRange code;
    dl_iterate_phdr(findLibrary, &code);
    const auto at = reinterpret_cast<std::uintptr_t>(address);
    return at >= code.begin && at < code.end;
}

std::string textOf(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", number);
    return text;
}

std::string dimensionsOf(const hvArray* value) {
    std::string text;
    for (const std::size_t d : std::span(hvGetDimensions(value), hvGetNumberOfDimensions(value)))
        text += (text.empty() ? "" : "x") + std::to_string(d);
    return text == "1x1" ? "" : " " + text;
}

template <class Values>
std::string list(const Values& values) {
    std::string text;
    for (const hvArray* const value : values) text += (text.empty() ? "" : ", ") + describe(value);
    return text;
}

std::string describeCells(const hvArray* value) {
    std::vector<const hvArray*> cells(hvGetNumberOfElements(value));
    for (std::size_t i = 0; i < cells.size(); ++i) cells[i] = hvGetCell(value, i);
    return "{" + list(cells) + "}";
}

std::string describeCall(int nIn, const hvArray* const* ins) {
    return "(" + list(std::span(ins, static_cast<std::size_t>(nIn))) + ")";
}

std::string word(const hvArray* value) { return describe(value); }
std::string word(const std::string& text) { return text; }
std::string word(const char* text) { return text; }
std::string word(bool value) { return value ? "true" : "false"; }
template <class Number>
requires std::is_arithmetic_v<Number> || std::is_enum_v<Number> std::string word(Number number) {
    return textOf(static_cast<double>(number));
}

// Nothing is written down while this lives.
class Silence {
public:
    Silence() : m_recorder(std::exchange(g_recorder, nullptr)) {}
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
    ~Silence() { g_recorder = m_recorder; }

private:
    HostRecorder* m_recorder;
};

// What the host does to carry out a call of the library's is not written down.
class HostCall {
public:
    explicit HostCall(const void* caller) {
        if (g_recorder != nullptr && isInLibrary(caller)) m_silence.emplace();
    }

private:
    std::optional<Silence> m_silence;
};

// One operation that the library asks for: written down, and shown to the hook before and after it.
class Written {
public:
    template <class... Arguments>
    Written(const void* caller, const char* operation, const Arguments&... arguments) : m_operation(operation) {
        if (g_recorder == nullptr || !g_recorder->isNamed(operation) || !isInLibrary(caller)) return;
        m_recorder = g_recorder;
        const Silence silence;
        m_recorder->write(operation, {word(arguments)...});
        m_recorder->callHook(HostRecorder::Moment::before, operation);
    }
    Written(const Written&) = delete;
    Written& operator=(const Written&) = delete;
    ~Written() {
        if (m_recorder == nullptr) return;
        const Silence silence;
        m_recorder->callHook(HostRecorder::Moment::after, m_operation);
    }

private:
    const char* m_operation;
    HostRecorder* m_recorder = nullptr;
};

}  // namespace

HostRecorder::HostRecorder(Operations operations)
    : m_operations(std::move(operations)), m_outer(std::exchange(g_recorder, this)) {}

HostRecorder::~HostRecorder() { g_recorder = m_outer; }

Lines HostRecorder::lines() { return std::exchange(m_lines, {}); }

bool HostRecorder::isNamed(std::string_view operation) const {
    return m_operations.empty() || std::find(m_operations.begin(), m_operations.end(), operation) != m_operations.end();
}

void HostRecorder::write(std::string_view operation, std::initializer_list<std::string> arguments) {
    std::string line(operation);
    for (const std::string& argument : arguments) line += " " + argument;
    m_lines.push_back(std::move(line));
}

// By look-ups only, which no injected fault counts.
std::string describe(const hvArray* value) {
    const std::size_t count = hvGetNumberOfElements(value);
    const hvClassID kind = hvGetClassID(value);
    if (value == nullptr) return "null";
    if (kind == hvCELL_CLASS) return describeCells(value);
    if (kind == hvCHAR_CLASS) {
        const char16_t* const units = hvGetChars(value);
        std::string text(count, '?');
        std::transform(units, units + count, text.begin(),
                       [](char16_t c) { return c < 128 ? static_cast<char>(c) : '?'; });
        return "'" + text + "'";
    }
    if (kind == hvDOUBLE_CLASS && count == 0) return "[]";
    if (kind == hvDOUBLE_CLASS && count == 1) return textOf(*hvGetDoubles(value));
    if (kind == hvLOGICAL_CLASS && count == 1) return *hvGetLogicals(value) ? "true" : "false";
    const std::string name = std::string(hvGetClassName(value)) + dimensionsOf(value);
    const bool isUint32 = kind == hvUINT32_CLASS && count == 1;
    return isUint32 ? name + " " + std::to_string(*static_cast<const std::uint32_t*>(hvGetData(value))) : name;
}

}  // namespace ks_test

using ks_test::describe;
using ks_test::describeCall;
using ks_test::hostFunction;

#define KS_WRITE(...) const ks_test::Written written(__builtin_return_address(0), __VA_ARGS__)
// Calls the host's function of that type, which is needed to tell overloads apart.
#define KS_FORWARD(type, name, ...)                          \
    static auto* const function = hostFunction<type>(&name); \
    return function(__VA_ARGS__)
// The program's own function in front of the host's: written down with its arguments.
#define KS_IN_FRONT_OF(name, ...) \
    KS_WRITE(#name, __VA_ARGS__); \
    KS_FORWARD(decltype(name), name, __VA_ARGS__)

// ---- copies, reading and writing ----

hvArray* hvCreateDeepCopy(const hvArray* value) { KS_IN_FRONT_OF(hvCreateDeepCopy, value); }
hvArray* hvCreateSharedDataCopy(const hvArray* value) { KS_IN_FRONT_OF(hvCreateSharedDataCopy, value); }
const hvArray* hvGetField(const hvArray* from, std::size_t index, const char* name) noexcept {
    KS_WRITE("hvGetField", index, name);
    KS_FORWARD(decltype(hvGetField), hvGetField, from, index, name);
}
hvArray* hvGetProperty(const hvArray* from, std::size_t index, const char* name) {
    KS_WRITE("hvGetProperty", index, name);
    KS_FORWARD(decltype(hvGetProperty), hvGetProperty, from, index, name);
}
hvArray* hvGetPropertyShared(const hvArray* from, std::size_t index, const char* name) {
    KS_WRITE("hvGetPropertyShared", index, name);
    KS_FORWARD(decltype(hvGetPropertyShared), hvGetPropertyShared, from, index, name);
}
void hvReplaceField(hvArray* in, std::size_t index, const char* name, hvArray* value) {
    KS_WRITE("hvReplaceField", index, name, value);
    KS_FORWARD(decltype(hvReplaceField), hvReplaceField, in, index, name, value);
}
void hvSetProperty(hvArray* in, std::size_t index, const char* name, const hvArray* value) {
    KS_WRITE("hvSetProperty", index, name, value);
    KS_FORWARD(decltype(hvSetProperty), hvSetProperty, in, index, name, value);
}

// ---- lifetimes ----

namespace matrix {
void destroyArray(hvArray* value) noexcept { KS_IN_FRONT_OF(destroyArray, value); }
}  // namespace matrix
void kssvSetLocalScope(hvArray* value) noexcept { KS_IN_FRONT_OF(kssvSetLocalScope, value); }
void hvSetArrayScope(hvArray* value, hvVariableScope scope) noexcept {
    KS_WRITE("hvSetArrayScope", value, scope);
    KS_FORWARD(void(hvArray*, hvVariableScope) noexcept, hvSetArrayScope, value, scope);
}
void hvSetArrayScope(hvArray* value, std::nullptr_t) noexcept {
    KS_WRITE("hvSetArrayScope", value, "null");
    KS_FORWARD(void(hvArray*, std::nullptr_t) noexcept, hvSetArrayScope, value, nullptr);
}
void THvArrayDeleter::operator()(hvArray* value) const noexcept {
    KS_WRITE("destroy", value);
    destroy(value);
}
void utFree(void* storage) noexcept {
    // Called by what the library hands over, from wherever that is released.
    if (ks_test::g_recorder != nullptr && ks_test::g_recorder->isNamed("utFree"))
        ks_test::g_recorder->write("utFree", {});
    KS_FORWARD(decltype(utFree), utFree, storage);
}

// ---- calls and diagnostics ----

void kssvFEVAL(int nOut, hvArray** outs, int nIn, const hvArray* const* ins, const char* name) {
    KS_WRITE("kssvFEVAL", nOut, name, describeCall(nIn, ins));
    const ks_test::HostCall call(__builtin_return_address(0));
    KS_FORWARD(decltype(kssvFEVAL), kssvFEVAL, nOut, outs, nIn, ins, name);
}
kssvDiagnosticImpl* kssvFEVAL_NoThrow(int nOut, hvArray** outs, int nIn, const hvArray* const* ins, const char* name,
                                      bool captureErrors, void* reserved) {
    KS_WRITE("kssvFEVAL_NoThrow", nOut, name, describeCall(nIn, ins), captureErrors, reserved ? "something" : "null");
    const ks_test::HostCall call(__builtin_return_address(0));
    KS_FORWARD(kssvDiagnosticImpl * (int, hvArray**, int, const hvArray* const*, const char*, bool, void*),
               kssvFEVAL_NoThrow, nOut, outs, nIn, ins, name, captureErrors, reserved);
}
void kssvReportAsWarning(kssvDiagnosticImpl* diagnostic) noexcept {
    KS_WRITE("kssvReportAsWarning");
    KS_FORWARD(decltype(kssvReportAsWarning), kssvReportAsWarning, diagnostic);
}
void kssvDiscardDiagnostic(kssvDiagnosticImpl* diagnostic) noexcept {
    KS_WRITE("kssvDiscardDiagnostic");
    KS_FORWARD(decltype(kssvDiscardDiagnostic), kssvDiscardDiagnostic, diagnostic);
}
kssvDiagnosticImpl* kssvCreateDiagnostic(const resource_core::BaseMsgID& id, const std::string& text) {
    KS_WRITE("kssvCreateDiagnostic", id.key(), "'" + text + "'");
    KS_FORWARD(decltype(kssvCreateDiagnostic), kssvCreateDiagnostic, id, text);
}
kssvDiagnosticImpl* kssvCreateDiagnosticFromCatchClause() {
    KS_WRITE("kssvCreateDiagnosticFromCatchClause");
    KS_FORWARD(decltype(kssvCreateDiagnosticFromCatchClause), kssvCreateDiagnosticFromCatchClause);
}
void kssvThrowIExceptionFromDiagnostic(kssvDiagnosticImpl* diagnostic, void* reserved) {
    KS_WRITE("kssvThrowIExceptionFromDiagnostic", reserved ? "something" : "null");
    KS_FORWARD(decltype(kssvThrowIExceptionFromDiagnostic), kssvThrowIExceptionFromDiagnostic, diagnostic, reserved);
}
