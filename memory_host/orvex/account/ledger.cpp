#include "memory_host/orvex/account/ledger.h"

#include <cxxabi.h>
#include <dlfcn.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "memory_host/orvex/account/described_things.h"

namespace orvex {
namespace {

std::string demangled(const char* symbol) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> text(abi::__cxa_demangle(symbol, nullptr, nullptr, &status),
                                                           &std::free);
    return status == 0 && text ? text.get() : symbol;
}

// The function that holds the code address, else the file and the offset in it (for a symboliser).
std::string placeOf(const void* address) {
    Dl_info info{};
    // One byte back: the return address of a call at a function's end belongs to the next function.
    if (!address || dladdr(static_cast<const char*>(address) - 1, &info) == 0) return "unknown code";
    if (info.dli_sname) return demangled(info.dli_sname);
    const auto offset = reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(info.dli_fbase);
    std::array<char, 32> suffix{};
    std::snprintf(suffix.data(), suffix.size(), "+0x%jx", static_cast<std::uintmax_t>(offset));
    return (info.dli_fname ? info.dli_fname : "unknown code") + std::string(suffix.data());
}

std::string describe(LedgerKind kind, const LedgerEntry& entry) {
    switch (kind) {
        case LedgerKind::object:
            return internal::describeObjectOf(entry);
        case LedgerKind::diagnostic:
            return internal::describeDiagnosticOf(entry);
        default:
            return internal::describeValueOf(entry);
    }
}

}  // namespace

constinit internal::Ledger internal::g_ledger;

std::string LedgerEntry::line() const {
    std::string text = describe(m_kind, *this) + " #" + std::to_string(m_serial) + ", made by " + m_site.operation +
                       " from " + placeOf(m_site.caller);
    if (m_hostFunction) text += ", while \"" + *m_hostFunction + "\" was running";
    return text;
}

LedgerCounts liveCounts() noexcept {
    const auto of = [](LedgerKind kind) { return internal::g_ledger.live[static_cast<std::size_t>(kind)]; };
    return {of(LedgerKind::value), of(LedgerKind::object), of(LedgerKind::diagnostic)};
}

std::string describeLive(std::size_t most) {
    std::string text;
    const auto [values, objects, diagnostics] = liveCounts();
    std::size_t left = values + objects + diagnostics;
    const internal::LedgerLinks* const end = &internal::g_ledger.ends;
    for (const auto* at = end->newer; at != end && most > 0; at = at->newer, --most, --left)
        text += static_cast<const LedgerEntry*>(at)->line() + '\n';
    if (left > 0) text += "and " + std::to_string(left) + " more\n";
    return text;
}

}  // namespace orvex
