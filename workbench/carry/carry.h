#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/carry/carry_map.h"
#include "workbench/carry/matching/block_matching.h"
#include "workbench/model_file/model_file.h"

/// Puts the marks of one version of a model on the next one: by names, never by numbers.
namespace workbench {

/// What became of a mark.
enum class Fate : std::uint8_t {
    same,        ///< same block path, same number, same name
    renumbered,  ///< its port has another number, or its chart item another identifier
    renamed,     ///< found although its block has another path, or its item another name
    mapped,      ///< a person says where it is
    accepted,    ///< a guess that was accepted
    ambiguous,   ///< parked: there are candidates
    lostBlock,   ///< parked: its block is gone
    lostSource,  ///< parked: its port or chart item is gone
};
inline constexpr std::size_t kFateCount = 8;
inline constexpr std::array<Fate, kFateCount> kFates{Fate::same,      Fate::renumbered, Fate::renamed,
                                                     Fate::mapped,    Fate::accepted,   Fate::ambiguous,
                                                     Fate::lostBlock, Fate::lostSource};
constexpr bool isParkedFate(Fate fate) noexcept { return fate >= Fate::ambiguous; }

/// A port or chart item. The texts are kept elsewhere, those of a report by the report.
struct MarkPlace {
    std::u16string_view block;  ///< path below the model
    std::u16string_view name;   ///< of the port; the sub-path of an item
    int port = 0;               ///< 1-based; 0 for a chart item
    std::uint32_t ssid = 0;     ///< of a chart item, as what follows
    std::u16string_view domain = {};
    std::u16string_view activity = {};
};

/// Keeps texts: each stays where it is, also when this is moved.
class CarriedTexts {
public:
    CarriedTexts() = default;
    CarriedTexts(CarriedTexts&&) noexcept = default;
    CarriedTexts& operator=(CarriedTexts&&) noexcept = default;
    std::u16string_view keep(std::u16string_view text);
    /// `like` is one whose texts are kept already; what is the same in both is not kept again.
    MarkPlace keep(MarkPlace place, const MarkPlace& like);

private:
    static constexpr std::size_t kPiece = std::size_t{1} << 14U;
    std::vector<std::vector<char16_t>> m_pieces;  ///< none of them ever grows beyond what was reserved
};

struct CarriedMark {
    std::u16string_view uuid;
    std::size_t position = 0;  ///< in the old list of signals, or of parked marks; 0-based
    Fate fate = Fate::lostBlock;
    MarkPlace before;
    std::optional<MarkPlace> after = std::nullopt;  ///< where it is, or the best candidate of an ambiguous one
    std::size_t candidates = 0;                     ///< of an ambiguous one
    bool isBlockUnsure = false;                     ///< the block is what is ambiguous, not the port or item
    bool hadSlid = false;  ///< its number was another port's in the old version; its name was followed
};

struct CarryReport {
    CarriedTexts texts;
    std::vector<CarriedMark> marks;   ///< all signals of the old version, in order
    std::vector<CarriedMark> parked;  ///< all its parked marks; those that came back have no parked fate
    std::size_t clients = 0;          ///< that stay in the list, or are back in it
    std::size_t parkedClients = 0;
    std::size_t keptParked = 0;  ///< marks that came back but whose UUID is taken; they stay parked
    bool areIdentifiersRenewed = false;

    std::size_t count(Fate fate) const noexcept;
    std::size_t slidCount() const noexcept;
    std::size_t returnedCount() const noexcept;
    /// Whether a mark of the old version is now parked that was not.
    bool isAllCarried() const noexcept;
};

struct CarryOptions {
    MatchBy by = MatchBy::both;
    bool acceptsGuesses = false;
};

struct CarriedModel {
    ModelFile file;  ///< the next version with the marks, and what was parked
    CarryReport report;
};

/// `next` must have no signals, clients and parked marks of its own; throws `Error` when it has. UUIDs, settings, order
/// and clients stay; what names the model, blocks and ports follows. The old version is left as it is.
CarriedModel carryMarks(const ModelFile& old, ModelFile next, const CarryOptions& options, const CarryMap& map);

/// The map of what is ambiguous, for a person to edit: the guesses as they would be accepted, what is lost with nothing
/// for its new name, and why, in comments.
std::string proposedMap(const CarryReport& report);

}  // namespace workbench
