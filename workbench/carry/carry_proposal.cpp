#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <unordered_set>

#include "workbench/carry/carry.h"
#include "workbench/text/csv_row.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

std::string nameOf(const MarkPlace& place) {
    return toUtf8(std::u16string(place.block).append(1, u':').append(place.name));
}

// One line of the map, each old name once.
class Proposal {
public:
    void add(const CarriedMark& mark) {
        const bool isBlock = mark.fate == Fate::lostBlock || mark.isBlockUnsure;
        const std::string before = isBlock ? toUtf8(mark.before.block) : nameOf(mark.before);
        const bool isChartItself = mark.before.domain == u"cw_chart";
        if (before.empty() || (isChartItself && !isBlock) || !m_names.insert(before).second) return;
        const std::string after = !mark.after ? "" : isBlock ? toUtf8(mark.after->block) : nameOf(*mark.after);
        m_text += fmt::format("# {}\n{},{}\n", reasonOf(mark), csvCell(before), csvCell(after));
    }
    std::string take() { return std::move(m_text); }

private:
    static std::string reasonOf(const CarriedMark& mark) {
        if (mark.fate == Fate::lostBlock) return "no block in the new version has enough in common with it";
        if (mark.fate == Fate::lostSource) return "its block has no port or item like it any more";
        return fmt::format("{}, not certain{}", counted(mark.candidates, "candidate"),
                           mark.after ? "" : "; say which, or leave it empty when it is gone");
    }

    std::unordered_set<std::string> m_names;
    std::string m_text =
        "# Where blocks and ports have gone: old name, new name. Correct the new names, then carry with this map.\n"
        "# A line may name a block (a/b), a port or chart item (a/b:speed) or all blocks below one (a/b/*).\n"
        "# An empty new name says that the old one is gone.\n"
        "old,new\n";
};

}  // namespace

std::string proposedMap(const CarryReport& report) {
    Proposal proposal;
    for (const std::vector<CarriedMark>* const marks : {&report.marks, &report.parked})
        for (const CarriedMark& mark : *marks)
            if (isParkedFate(mark.fate)) proposal.add(mark);
    return proposal.take();
}

}  // namespace workbench
