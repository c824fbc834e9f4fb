#include "workbench/check/finding.h"

#include <array>

namespace workbench {

namespace {

using enum FindingLevel;

constexpr std::array kRules{
    CheckRule{FindingCode::unreadable, "KS101", "unreadable", error, FindingKind::file, Cure::byHand,
              "The file cannot be opened or read."},
    CheckRule{FindingCode::format, "KS102", "format", error, FindingKind::file, Cure::byHand,
              "The file is not JSON, or not a model file; the rest of it was not looked at."},
    CheckRule{FindingCode::blockPlace, "KS103", "block", error, FindingKind::file, Cure::byHand,
              "A block's path or identifier is empty, malformed or another block's."},
    CheckRule{FindingCode::chart, "KS104", "chart", error, FindingKind::file, Cure::byHand,
              "A chart's items cannot be told apart, or one has no name."},
    CheckRule{FindingCode::value, "KS105", "value", error, FindingKind::file, Cure::byHand,
              "A field of a signal or client holds a value that it cannot have."},
    CheckRule{FindingCode::missingField, "KS106", "missing-field", error, FindingKind::file, Cure::byHand,
              "A signal or client lacks a field."},
    CheckRule{FindingCode::blockGone, "KS201", "block-gone", error, FindingKind::gone, Cure::prune,
              "The block that a signal is on is gone."},
    CheckRule{FindingCode::portGone, "KS202", "port-gone", error, FindingKind::gone, Cure::prune,
              "The block of a signal has no port of that number."},
    CheckRule{FindingCode::itemGone, "KS203", "item-gone", error, FindingKind::gone, Cure::prune,
              "The chart of a signal has no such state or datum."},
    CheckRule{FindingCode::domain, "KS204", "domain", error, FindingKind::charts, Cure::prune,
              "A signal is neither a port's nor a chart item's."},
    CheckRule{FindingCode::chartSsid, "KS205", "chart-ssid", error, FindingKind::charts, Cure::prune,
              "A chart signal has no \"SSID\", or one that is not a plain number."},
    CheckRule{FindingCode::chartActivity, "KS206", "chart-activity", error, FindingKind::charts, Cure::prune,
              "A chart signal has no \"Activity\", or one that its item cannot have."},
    CheckRule{FindingCode::signalUuidMissing, "KS207", "signal-uuid-missing", error, FindingKind::uuids, Cure::mend,
              "A signal has no UUID."},
    CheckRule{FindingCode::signalUuidTaken, "KS208", "signal-uuid-taken", error, FindingKind::uuids, Cure::mend,
              "A signal has the same UUID as another."},
    CheckRule{FindingCode::duplicateMark, "KS209", "duplicate-mark", warning, FindingKind::duplicates, Cure::prune,
              "A port, or an activity of a chart item, is marked more than once."},
    CheckRule{FindingCode::signalWithoutEid, "KS210", "signal-without-identifier", warning, FindingKind::identifiers,
              Cure::mend, "A signal has no element identifier: it is lost when its block moves."},
    CheckRule{FindingCode::signalParameter, "KS211", "signal-parameter", warning, FindingKind::parameters, Cure::prune,
              "A signal's parameter has a name that cannot be a field name."},
    CheckRule{FindingCode::nameMoved, "KS301", "name-moved", error, FindingKind::names, Cure::mend,
              "What a signal was marked on is somewhere else in the block now."},
    CheckRule{FindingCode::nameAmbiguous, "KS302", "name-ambiguous", error, FindingKind::names, Cure::confirm,
              "What a signal was marked on may be in any of several places in the block now."},
    CheckRule{FindingCode::nameGone, "KS303", "name-gone", error, FindingKind::names, Cure::confirm,
              "What a signal was marked on no longer has that name."},
    CheckRule{FindingCode::unconfirmed, "KS304", "unconfirmed", warning, FindingKind::unconfirmed, Cure::confirmAll,
              "Signals were marked before names were kept: changed port numbers go unnoticed."},
    CheckRule{FindingCode::clientWithoutSignal, "KS401", "client-without-signal", warning, FindingKind::dangling,
              Cure::prune, "The signal that a client watches is gone."},
    CheckRule{FindingCode::clientForeign, "KS402", "client-of-other-model", warning, FindingKind::foreign, Cure::prune,
              "A client belongs to another model."},
    CheckRule{FindingCode::clientDeprecated, "KS403", "client-deprecated", warning, FindingKind::deprecated,
              Cure::prune, "A client is of a kind that is no longer supported."},
    CheckRule{FindingCode::clientUuidMissing, "KS404", "client-uuid-missing", error, FindingKind::uuids, Cure::mend,
              "A client has no UUID."},
    CheckRule{FindingCode::clientUuidTaken, "KS405", "client-uuid-taken", error, FindingKind::uuids, Cure::mend,
              "A client has the same UUID as another."},
    CheckRule{FindingCode::clientWithoutEid, "KS406", "client-without-identifier", warning, FindingKind::identifiers,
              Cure::mend, "A client's model path has no element identifier."},
    CheckRule{FindingCode::clientParameter, "KS407", "client-parameter", warning, FindingKind::parameters, Cure::prune,
              "A client's parameter has a name that cannot be a field name."},
    CheckRule{FindingCode::parked, "KS501", "parked", note, FindingKind::parked, Cure::prune,
              "A mark is waiting for a version of the model that has its source again."},
};

constexpr bool areInOrder() {
    for (std::size_t i = 0; i < kRules.size(); ++i)
        if (static_cast<std::size_t>(kRules.at(i).code) != i) return false;
    return kRules.size() == static_cast<std::size_t>(FindingCode::parked) + 1;
}
static_assert(areInOrder());

constexpr std::array<const char*, kFindingKinds> kKindWords{
    "file",        "names",      "unconfirmed", "gone",    "charts",     "uuids", "duplicates",
    "identifiers", "parameters", "dangling",    "foreign", "deprecated", "parked"};

}  // namespace

const char* textOf(FindingLevel level) noexcept {
    return level == error ? "error" : level == warning ? "warning" : "note";
}

const char* textOf(FindingKind kind) noexcept { return kKindWords.at(static_cast<std::size_t>(kind)); }

std::optional<FindingKind> findingKindOf(std::string_view word) noexcept {
    for (std::size_t i = 0; i < kKindWords.size(); ++i)
        if (kKindWords.at(i) == word) return static_cast<FindingKind>(i);
    return std::nullopt;
}

std::vector<FindingKind> findingKinds(bool (*isMeant)(FindingKind)) {
    std::vector<FindingKind> kinds;
    for (std::size_t i = 0; i < kFindingKinds; ++i)
        if (const auto kind = static_cast<FindingKind>(i); isMeant(kind)) kinds.push_back(kind);
    return kinds;
}

bool isMendable(FindingKind kind) noexcept {
    using enum FindingKind;
    return kind == names || kind == uuids || kind == identifiers || kind == charts;
}

bool isPrunable(FindingKind kind) noexcept {
    using enum FindingKind;
    return kind != file && kind != unconfirmed && kind != uuids && kind != identifiers;
}

bool isDead(FindingKind kind) noexcept {
    using enum FindingKind;
    return kind == gone || kind == duplicates || kind == dangling || kind == deprecated;
}

std::span<const CheckRule> checkRules() noexcept { return kRules; }

Error errorOf(const Finding& finding) {
    return {finding.place, finding.text, finding.code == FindingCode::unreadable ? ErrorCode::file : ErrorCode::format};
}

const CheckRule& ruleOf(FindingCode code) noexcept { return kRules.at(static_cast<std::size_t>(code)); }

}  // namespace workbench
