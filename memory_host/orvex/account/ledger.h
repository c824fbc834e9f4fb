#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "host/api.h"
#include "memory_host/orvex/account/running_call.h"

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

class LedgerEntry;
namespace internal {
/// The ring of what lives, closed by an entry that stands for nothing.
struct LedgerLinks {
    LedgerLinks* older;  ///< the one made before
    LedgerLinks* newer;  ///< the one made after
};
/// What an entry writes to.
struct Ledger {
    LedgerLinks ends{&ends, &ends};  ///< newer: the oldest; older: the newest
    std::uint64_t lastSerial = 0;    ///< of what was made last
    std::size_t live[3] = {};        ///< by kind
};
OX_API extern Ledger g_ledger;  ///< the one of this process

}  // namespace internal

/// Membership in the ledger: a base of what is accounted for. Neither copied nor moved.
class OX_API LedgerEntry : private internal::LedgerLinks {
public:
    /// Cheap: notes the place without forming any text.
    LedgerEntry(LedgerKind kind, const Site& site) noexcept
        : LedgerLinks{internal::g_ledger.ends.older, &internal::g_ledger.ends},
          m_site(site),
          m_hostFunction(runningHostFunction()),
          m_serial(++internal::g_ledger.lastSerial),
          m_kind(kind) {
        older->newer = newer->older = this;
        ++internal::g_ledger.live[static_cast<std::size_t>(kind)];
    }
    LedgerEntry(const LedgerEntry&) = delete;
    LedgerEntry& operator=(const LedgerEntry&) = delete;

    /// What the thing is, its serial number and the place that made it.
    std::string line() const;
    /// Takes it off the account before its end.
    void strike() noexcept {
        older->newer = newer;
        newer->older = older;
        older = newer = this;
        if (!std::exchange(m_isStruck, true)) --internal::g_ledger.live[static_cast<std::size_t>(m_kind)];
    }

protected:
    ~LedgerEntry() { strike(); }  ///< Off the account.

private:
    friend OX_API std::string describeLive(std::size_t most);

    Site m_site;
    const std::string* m_hostFunction;
    std::uint64_t m_serial;  ///< 1 for the first thing made in the process, then counting up
    LedgerKind m_kind;
    bool m_isStruck = false;
};

}  // namespace orvex
