#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "host/api.h"

/// The host's account of what lives: every value, object and diagnostic, with the place that made it.
/// Thread: the interpreter thread only.
namespace orvex {
/// How many things live, by kind.
struct LedgerCounts {
    std::size_t values = 0;                                                      ///< host values
    std::size_t objects = 0;                                                     ///< host objects
    std::size_t diagnostics = 0;                                                 ///< diagnostics not yet consumed
    friend bool operator==(const LedgerCounts&, const LedgerCounts&) = default;  ///< All three are equal.
};

/// What lives now. Values inside structs and cells count as well.
OX_API LedgerCounts liveCounts() noexcept;

/// One line for each live thing, oldest first, at most `most` of them and then a line that counts the
/// rest: what it is, its serial number, the host operation and the calling function that made it, and
/// the host function that was being called by name. Empty when nothing lives.
OX_API std::string describeLive(std::size_t most = 20);

/// The place that makes something: a host operation and who called it.
struct Site {
    /// `operation` is text that lives as long as the process. The caller defaults to whoever called the
    /// function in which the site is written down.
    // NOLINTNEXTLINE(google-explicit-constructor): an operation's name stands for the place.
    Site(const char* operationName, const void* callerAddress = __builtin_return_address(0)) noexcept
        : operation(operationName), caller(callerAddress) {}

    const char* operation;  ///< such as "hvCreateString"
    const void* caller;     ///< an address in the calling function
};
/// What is accounted for.
enum class LedgerKind : std::uint8_t { value, object, diagnostic };

/// Membership in the ledger: a member of what is accounted for. Neither copied nor moved.
class OX_API LedgerEntry {
public:
    /// Says what the thing is ("double 1x1"); called by `describeLive` only.
    using Describe = std::string (*)(const void* thing);

    /// Cheap: notes the place without forming any text. `thing` is what `describe` is given.
    LedgerEntry(LedgerKind kind, const void* thing, Describe describe, const Site& site) noexcept;
    LedgerEntry(const LedgerEntry&) = delete;
    LedgerEntry& operator=(const LedgerEntry&) = delete;
    ~LedgerEntry();

    /// What the thing is, its serial number and the place that made it.
    std::string line() const;
    /// Takes it off the account before its end.
    void strike() noexcept;

private:
    friend OX_API std::string describeLive(std::size_t most);

    LedgerEntry* m_older;
    LedgerEntry* m_newer = nullptr;
    const void* m_thing;
    Describe m_describe;
    Site m_site;
    const std::string* m_hostFunction;
    std::uint64_t m_serial;  ///< 1 for the first thing made in the process, then counting up
    LedgerKind m_kind;
    bool m_isStruck = false;
};

}  // namespace orvex
