#include "memory_host/orvex/account/ledger.h"

#include <cxxabi.h>
#include <dlfcn.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "memory_host/orvex/account/running_call.h"

namespace orvex {
namespace {

constinit LedgerEntry* g_oldest = nullptr;
constinit LedgerEntry* g_newest = nullptr;
constinit std::uint64_t g_lastSerial = 0;
constinit LedgerCounts g_counts;

std::size_t& countOf(LedgerKind kind) noexcept {
    switch (kind) {
        case LedgerKind::object:
            return g_counts.objects;
        case LedgerKind::diagnostic:
            return g_counts.diagnostics;
        default:
            return g_counts.values;
    }
}

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

}  // namespace

LedgerEntry::LedgerEntry(LedgerKind kind, const void* thing, Describe describe, const Site& site) noexcept
    : m_older(g_newest),
      m_thing(thing),
      m_describe(describe),
      m_site(site),
      m_hostFunction(runningHostFunction()),
      m_serial(++g_lastSerial),
      m_kind(kind) {
    (m_older ? m_older->m_newer : g_oldest) = this;
    g_newest = this;
    ++countOf(kind);
}

LedgerEntry::~LedgerEntry() {
    if (!m_isStruck) strike();
}

void LedgerEntry::strike() noexcept {
    m_isStruck = true;
    (m_older ? m_older->m_newer : g_oldest) = m_newer;
    (m_newer ? m_newer->m_older : g_newest) = m_older;
    --countOf(m_kind);
}

std::string LedgerEntry::line() const {
    std::string text = m_describe(m_thing) + " #" + std::to_string(m_serial) + ", made by " + m_site.operation +
                       " from " + placeOf(m_site.caller);
    if (m_hostFunction) text += ", while \"" + *m_hostFunction + "\" was running";
    return text;
}

LedgerCounts liveCounts() noexcept { return g_counts; }

std::string describeLive(std::size_t most) {
    std::string text;
    std::size_t left = g_counts.values + g_counts.objects + g_counts.diagnostics;
    for (const LedgerEntry* entry = g_oldest; entry && most > 0; entry = entry->m_newer, --most, --left)
        text += entry->line() + '\n';
    if (left > 0) text += "and " + std::to_string(left) + " more\n";
    return text;
}

}  // namespace orvex
