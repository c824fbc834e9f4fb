#include <algorithm>
#include <map>
#include <random>
#include <set>

#include "tests/workbench/compare/compare_test.h"

// A model's history, in which the author does as authors do. The history knows where each marked port really is.
namespace workbench::testing {
namespace {

struct TruePort {
    int identity;
    std::string name;
};
struct TrueBlock {
    std::string path, eid;
    std::vector<TruePort> ports;
};

class History {
public:
    explicit History(unsigned seed) : m_random(seed) {
        for (int i = 0; i < 60; ++i) addBlock(fmt::format("{}/Unit {}", kAreas[draw(3)], i));
        // Blocks that are alike: what tells them apart is where they are.
        for (int i = 0; i < 6; ++i)
            m_blocks.push_back({fmt::format("Sensors/Probe {}", i), fmt::format("p{}", i), {{m_next++, "out"}}});
        for (const TrueBlock& block : m_blocks)
            for (const TruePort& port : block.ports)
                if (draw(2) == 0) m_markNames[fmt::format("u{}", port.identity)] = port.name;
    }

    void smallChanges(bool keepsIdentifiers) {
        noteAlike();
        for (int i = 0; i < 5; ++i) addBlock(fmt::format("{}/New {}", kAreas[draw(3)], m_next), true);
        for (int i = 0; i < 3; ++i) m_blocks.erase(m_blocks.begin() + draw(static_cast<int>(m_blocks.size())));
        for (int i = 0; i < 8; ++i) renameBlock(any(), keepsIdentifiers);
        for (int i = 0; i < 20; ++i) changePorts(any());
        std::shuffle(m_blocks.begin(), m_blocks.end(), m_random);
        m_name += "x";
    }
    void renameEveryBlock() {
        noteAlike();
        for (TrueBlock& block : m_blocks) {
            renameBlock(block, false);
            std::shuffle(block.ports.begin(), block.ports.end(), m_random);
        }
    }

    std::string version() const {
        std::vector<Block> blocks;
        for (const TrueBlock& block : m_blocks) {
            blocks.push_back({block.path, block.eid, {}});
            for (const TruePort& port : block.ports) blocks.back().outputs.push_back(port.name);
        }
        return model(m_name, blocks);
    }
    std::string firstVersion() const {
        std::vector<Mark> marks;
        each([&](const TrueBlock& block, std::size_t i, const std::string& uuid) {
            if (m_markNames.contains(uuid)) marks.push_back({uuid, block.path, block.eid, static_cast<int>(i) + 1});
        });
        std::string text = version();
        return text.replace(text.find("\"signals\": []"), 13, "\"signals\": [" + list(marks) + "]");
    }
    // Where the port of each mark is, and whether it still has its name and could be told from all others so far.
    struct Truth {
        std::string place;
        bool isNamed = false, isTellable = false;
    };
    std::map<std::string, Truth> truth() const {
        std::map<std::string, Truth> places;
        each([&](const TrueBlock& block, std::size_t i, const std::string& uuid) {
            if (const auto mark = m_markNames.find(uuid); mark != m_markNames.end())
                places[uuid] = {fmt::format("{}:{}", block.path, i + 1), mark->second == block.ports[i].name,
                                !m_untellable.contains(uuid) && likesOf(block) == 1};
        });
        return places;
    }
    std::size_t markCount() const { return m_markNames.size(); }

private:
    static constexpr const char* kAreas[] = {"Engine", "Body", "Plant"};
    int draw(int count) { return std::uniform_int_distribution<int>(0, count - 1)(m_random); }
    TrueBlock& any() { return m_blocks[static_cast<std::size_t>(draw(static_cast<int>(m_blocks.size())))]; }
    static std::set<std::string> namesOf(const TrueBlock& block) {
        std::set<std::string> names;
        for (const TruePort& port : block.ports) names.insert(port.name);
        return names;
    }
    template <class Visit>
    void each(Visit visit) const {
        for (const TrueBlock& block : m_blocks)
            for (std::size_t i = 0; i < block.ports.size(); ++i)
                visit(block, i, fmt::format("u{}", block.ports[i].identity));
    }
    void addBlock(const std::string& path, bool hasFreshNames = false) {
        TrueBlock block{path, fmt::format("e{}", m_next++), {}};
        for (int i = 0, count = 1 + draw(5); i < count; ++i) {
            // Some names are everywhere.
            const bool isCommon = !hasFreshNames && i > 0 && draw(3) == 0;
            const int identity = m_next++;
            block.ports.push_back({identity, isCommon ? fmt::format("y{}", i) : fmt::format("v{}", identity)});
        }
        m_blocks.push_back(std::move(block));
    }
    std::ptrdiff_t likesOf(const TrueBlock& block) const {
        const auto names = namesOf(block);
        return std::ranges::count_if(m_blocks, [&](const TrueBlock& other) { return namesOf(other) == names; });
    }
    void noteAlike() {
        m_alike.clear();
        for (const TrueBlock& block : m_blocks)
            if (likesOf(block) > 1) m_alike.insert(block.eid);
    }
    void renameBlock(TrueBlock& block, bool keepsIdentifier) {
        // Nothing tells any more which of several like it this one is, whatever it gets later.
        if (!keepsIdentifier && m_alike.contains(block.eid))
            for (const TruePort& port : block.ports) m_untellable.insert(fmt::format("u{}", port.identity));
        block.path = fmt::format("Area {}/Part {}", draw(4), m_next);
        if (!keepsIdentifier) block.eid = fmt::format("e{}", m_next);
        ++m_next;
    }
    void changePorts(TrueBlock& block) {
        const int what = draw(4);
        if (what == 0) block.ports.insert(block.ports.begin(), {m_next, fmt::format("v{}", m_next)}), ++m_next;
        if (what == 1 && block.ports.size() > 2) block.ports.erase(block.ports.begin());
        if (what == 2) std::reverse(block.ports.begin(), block.ports.end());
        if (what == 3 && block.ports.size() > 3) block.ports.back().name = fmt::format("r{}", m_next++);
    }

    std::mt19937 m_random;
    std::string m_name = "car";
    std::vector<TrueBlock> m_blocks;
    std::map<std::string, std::string> m_markNames;  // of the marked ports, by UUID, when they were marked
    std::set<std::string> m_untellable;              // by UUID
    std::set<std::string> m_alike;                   // by identifier, in the version before
    int m_next = 0;
};

struct Share {
    std::size_t right = 0, findable = 0;
};

// No mark is on another port than its own, and every mark is accounted for.
void expectRight(const History& history, const ModelFile& file, Share& share) {
    const auto truth = history.truth();
    const std::size_t signals = hvGetNumberOfElements(file.signals.get());
    EXPECT_EQ(signals + file.extras.parked.size(), history.markCount());
    for (std::size_t i = 0; i < signals; ++i) {
        const std::string uuid = toUtf8(recordText(file.signals.get(), i, "UUID"));
        const std::string place = placeOf(file, uuid);
        const auto real = truth.find(uuid);
        ASSERT_TRUE(real != truth.end()) << uuid << " is gone, and now on " << place;
        EXPECT_EQ(place, real->second.place) << uuid << " slid";
    }
    for (const auto& [uuid, real] : truth) {
        if (!real.isNamed || !real.isTellable) continue;
        ++share.findable;
        share.right += placeOf(file, uuid) == real.place ? 1 : 0;
    }
}

TEST(History, everyMarkStaysWithItsPortOrIsParked) {
    Share share;
    for (unsigned seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE(fmt::format("seed {}", seed));
        History history(seed);
        ModelFile current = file(history.firstVersion());
        for (int step = 0; step < 6; ++step) {
            SCOPED_TRACE(fmt::format("step {}", step));
            step == 3 ? history.renameEveryBlock() : history.smallChanges(/*keepsIdentifiers=*/step % 2 == 0);
            CarriedModel carried = carryMarks(current, file(history.version()), {}, {});
            std::size_t counted = 0;
            for (const Fate fate : kFates) counted += carried.report.count(fate);
            EXPECT_EQ(counted, hvGetNumberOfElements(current.signals.get()));
            current = file(modelText(carried.file));
            expectRight(history, current, share);
        }
    }
    EXPECT_EQ(share.right, share.findable);
    EXPECT_GT(share.findable, 5000u);
    RecordProperty("right", static_cast<int>(share.right));
    RecordProperty("findable", static_cast<int>(share.findable));
}

}  // namespace
}  // namespace workbench::testing
