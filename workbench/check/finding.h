#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "workbench/model_file/record_table.h"
#include "workbench/text/error.h"

/// What can be wrong with a model file. See docs/check.md for the list.
namespace workbench {

enum class FindingCode : std::uint8_t {
    unreadable,
    format,
    blockPlace,
    chart,
    value,
    missingField,
    blockGone,
    portGone,
    itemGone,
    domain,
    chartSsid,
    chartActivity,
    signalUuidMissing,
    signalUuidTaken,
    duplicateMark,
    signalWithoutEid,
    signalParameter,
    nameMoved,
    nameAmbiguous,
    nameGone,
    unconfirmed,
    clientWithoutSignal,
    clientForeign,
    clientDeprecated,
    clientUuidMissing,
    clientUuidTaken,
    clientWithoutEid,
    clientParameter,
    parked,
};

enum class FindingLevel : std::uint8_t { note, warning, error };
/// "note", "warning" or "error".
const char* textOf(FindingLevel level) noexcept;

/// What findings are mended or removed by.
enum class FindingKind : std::uint8_t {
    file,
    names,
    unconfirmed,
    gone,
    charts,
    uuids,
    duplicates,
    identifiers,
    parameters,
    dangling,
    foreign,
    deprecated,
    parked,
};
constexpr std::size_t kFindingKinds = 13;
/// The word for it.
const char* textOf(FindingKind kind) noexcept;
/// Nothing for another word.
std::optional<FindingKind> findingKindOf(std::string_view word) noexcept;
/// Those of which `isMeant` holds, in order.
std::vector<FindingKind> findingKinds(bool (*isMeant)(FindingKind));
/// Whether findings of the kind can be mended without losing anything, and whether what is found can be removed.
bool isMendable(FindingKind kind) noexcept;
bool isPrunable(FindingKind kind) noexcept;
/// Whether it is removed when no kind is named: what nothing can come of any more.
bool isDead(FindingKind kind) noexcept;

/// What settles a finding; a front end has a command for each.
enum class Cure : std::uint8_t { byHand, mend, prune, confirm, confirmAll };

/// What is the same for all findings of a code.
struct CheckRule {
    FindingCode code;
    const char* id;  ///< "KS201"; an id never gets another meaning
    const char* name;
    FindingLevel level;
    FindingKind kind;
    Cure cure;
    const char* summary;  ///< a sentence
};
/// In the order of their codes.
std::span<const CheckRule> checkRules() noexcept;
const CheckRule& ruleOf(FindingCode code) noexcept;

struct Finding {
    FindingCode code = FindingCode::unreadable;
    ErrorPlace place{};
    std::string text{};  ///< a sentence, without the full stop
    Cure cure = Cure::byHand;
    std::string subject{};  ///< full name of the port or chart item, where there is one
    std::string uuid{};     ///< of the signal or client
    std::optional<RecordKind> record{};
    std::size_t position = 0;  ///< of the record, 0-based
};

/// What refuses the file that a finding is about.
Error errorOf(const Finding& finding);

}  // namespace workbench
