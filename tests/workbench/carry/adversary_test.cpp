#include "tests/workbench/carry/author.h"
#include "workbench/carry/matching/block_features.h"

namespace workbench::testing {
namespace {

using Places = std::map<std::string, Author::Place>;

struct Tally {
    int right = 0, ambiguous = 0, lost = 0, unseen = 0;
    std::vector<std::string> slid;
};

// Two blocks with the same ports have exchanged their places. Without identifiers, only the places tell them apart.
bool isTwinInPlace(const Author::Place& was, const Author::Place& now, const Places& before, const Author& author) {
    const auto plain = [](const std::string& path) { return plainPath(toUtf16(path)); };
    if (author.identifiers() == Identifiers::kept || plain(was.path) != plain(now.path)) return false;
    return std::ranges::any_of(
        before, [&](const auto& one) { return one.second.block == now.block && one.second.around == was.around; });
}

// Whether the two versions look just as if the mark's port were there.
bool isUnseen(const std::string& uuid, const Author::Place& now, const Places& before, const Places& after,
              const Author& author) {
    const Author::Place& was = before.at(uuid);
    // A port went, and the block got another one of that name.
    if (!after.contains(uuid) && was.block == now.block) return true;
    const bool isSameEid = author.identifiers() != Identifiers::kept && was.eid == now.eid;
    if (isSameEid && author.identifiers() == Identifiers::positional && was.path == now.path) return true;
    return was.looksLike(now, author.identifiers() == Identifiers::kept) || isTwinInPlace(was, now, before, author);
}

void judgeParked(const CarriedMark& mark, const std::string& uuid, const Places& before, Tally& tally) {
    const auto isCalledSo = [&](const auto& one) { return one.second.name == before.at(uuid).name; };
    // Nothing tells where a port with an everyday name went whose block is gone.
    const bool isTelling = std::ranges::count_if(before, isCalledSo) == 1;
    if (mark.fate == Fate::ambiguous) ++tally.ambiguous;
    if (mark.fate != Fate::ambiguous && isTelling) ++tally.lost;
}

// What the report says of each mark, against what the author knows.
void judge(const CarriedModel& carried, const Places& before, const Author& author, Tally& tally) {
    const Places after = author.places();
    for (const CarriedMark& mark : carried.report.marks) {
        const std::string uuid = toUtf8(mark.uuid);
        const auto real = after.find(uuid);
        if (isParkedFate(mark.fate)) {
            if (real != after.end()) judgeParked(mark, uuid, before, tally);
            continue;
        }
        const std::string place = placeOf(carried.file, uuid);
        const auto there = std::ranges::find_if(after, [&](const auto& one) { return one.second.text() == place; });
        if (there == real)
            ++tally.right;
        else if (isUnseen(uuid, there->second, before, after, author))
            ++tally.unseen;
        else
            tally.slid.push_back(
                fmt::format("{}: {} is on {}\n{}", uuid, before.at(uuid).text(), place, fmt::join(author.log(), "\n")));
    }
}

Tally carryOn(Identifiers identifiers) {
    constexpr unsigned kAuthors = 40;
    Tally tally;
    for (unsigned seed = 1; seed <= kAuthors; ++seed) {
        Author author(seed, identifiers, 10);
        for (int step = 0; step < 3; ++step) {
            const ModelFile current = file(author.version(true));
            const Places before = author.places();
            step == 2 ? author.renameEverything() : author.work(seed % 2 == 0);
            judge(carryMarks(current, file(author.version()), {}, {}), before, author, tally);
        }
    }
    return tally;
}

TEST(Adversary, noMarkSlidesAndNoneIsLostWhosePortIsThere) {
    for (const Identifiers identifiers : kAllIdentifiers) {
        const Tally tally = carryOn(identifiers);
        SCOPED_TRACE(static_cast<int>(identifiers));
        EXPECT_TRUE(tally.slid.empty()) << fmt::format("{}", fmt::join(tally.slid, "\n\n"));
        EXPECT_EQ(tally.lost, 0);
        // Twins, and blocks that were split or merged, are a person's choice where identifiers do not tell.
        const int unsure = tally.ambiguous + tally.unseen;
        EXPECT_LE(unsure, tally.right / (identifiers == Identifiers::kept ? 50 : 8)) << tally.right;
    }
}

}  // namespace
}  // namespace workbench::testing
