#include <boost/json.hpp>

#include "tests/workbench/compare/compare_test.h"

// Merges of what two people added to copies of one model, each with the next free number.

namespace workbench::testing {
namespace {

using kshmi::testing::Finished;

class MergedAdditions : public kshmi::testing::KshmiTest {
protected:
    MergedAdditions() {
        const std::string chart = R"({"states": [{"path": "Off", "ssid": 1}], "data": [{"name": "n", "ssid": 2}]})";
        write(model("m", {{"A", "1", {"x"}}, {"L", "2", {}, chart}}, {{"u1", "A", "1", 1}}), "base.json");
        for (const char* const side : {"ours.json", "theirs.json"}) write(read("base.json"), side);
    }
    // Words of command lines, MODEL left out.
    void change(const std::string& side, const std::vector<std::vector<std::string>>& lines) const {
        for (std::vector<std::string> words : lines) {
            const bool hasMember = words[0] == "block" || words[0] == "port" || words[0] == "chart";
            words.insert(words.begin() + (hasMember ? 2 : 1), path(side));
            const Finished finished = run(words);
            EXPECT_EQ(finished.code, 0) << words[0] << finished.err;
        }
    }
    Finished merge() const {
        return run({"merge", path("base.json"), path(m_ours), path(m_theirs), "-o", path("out.json")});
    }
    std::string observed() const {
        std::string lines;
        const boost::json::value said = boost::json::parse(run({"show", path("out.json"), "--json"}).out);
        for (const auto& one : said.at("files").at(0).at("signals").as_array()) {
            const auto& signal = one.as_object();
            const auto* const port = signal.if_contains("portName");
            lines += fmt::format(
                "{}{} ", std::string(signal.at("block").as_string()),
                port ? ":" + std::string(port->as_string()) : "/" + std::string(signal.at("item").as_string()));
        }
        return lines;
    }

    std::string m_ours = "ours.json", m_theirs = "theirs.json";
};

TEST_F(MergedAdditions, areAllThereWithTheirMarks) {
    change("ours.json", {{"block", "add", "B", "--outputs", "b"},
                         {"mark", "B"},
                         {"port", "add", "A", "p"},
                         {"mark", "A:p"},
                         {"chart", "add-state", "L", "P"},
                         {"mark", "L/P"}});
    change("theirs.json", {{"block", "add", "C", "--outputs", "c"},
                           {"mark", "C"},
                           {"observe", "C:1", "--type", "t"},
                           {"port", "add", "A", "q"},
                           {"mark", "A:q"},
                           {"chart", "add-datum", "L", "d"},
                           {"mark", "L/d"}});
    const Finished merged = merge();
    EXPECT_EQ(merged.code, 0) << merged.err;
    EXPECT_EQ(observed(), "m/A:x m/B:b m/A:p m/L/P m/C:c m/A:q m/L/d ");
    EXPECT_EQ(run({"check", path("out.json")}).code, 0);
    const ModelFile file = readModelFile(path("out.json"));
    EXPECT_EQ(file.model.findByEid("3")->path, u"B");
    EXPECT_EQ(file.model.findByEid("4")->path, u"C");
    EXPECT_TRUE(kshmi::testing::contains(read("out.json"), R"("ModelPathEID_": ["4"])"));
    EXPECT_EQ(file.model.findByPath(u"A")->outputs, (std::vector<std::u16string>{u"x", u"p", u"q"}));
}

// Whoever does more than add is in conflict, and a mark of theirs never ends up on another item or port.
TEST_F(MergedAdditions, areInConflictWithOtherChanges) {
    change("ours.json", {{"port", "add", "A", "p"}, {"chart", "rename", "L/Off", "Out"}});
    change("theirs.json", {{"port", "rename", "A", "x", "z"}, {"chart", "add-state", "L", "Q"}, {"mark", "L/Q"}});
    const Finished merged = merge();
    EXPECT_EQ(merged.code, 1);
    expectParts(merged.err, {"blocks 1, outputs: both changed it", "blocks 2, chart: both changed it",
                             "its chart item is not in the merged block: the mark on \"L\" is left out"});
    EXPECT_EQ(observed(), "m/A:x ");
}

TEST_F(MergedAdditions, ofTheSameAreOne) {
    for (const char* const side : {"ours.json", "theirs.json"})
        change(side,
               {{"block", "add", "B", "--outputs", "b"}, {"port", "add", "A", "p"}, {"chart", "add-state", "L", "P"}});
    change("theirs.json", {{"mark", "B"}, {"mark", "A:p"}, {"mark", "L/P"}});
    EXPECT_EQ(merge().code, 0);
    EXPECT_EQ(observed(), "m/A:x m/B:b m/A:p m/L/P ");
    EXPECT_EQ(readModelFile(path("out.json")).model.blocks().size(), 3U);
}

// What is marked in ours is there afterwards, and what they marked and we took out is not.
TEST_F(MergedAdditions, neverLeaveAMarkWithoutItsSource) {
    change("base.json", {{"port", "add", "A", "y"}, {"chart", "add-state", "L", "P"}});
    for (const char* const side : {"ours.json", "theirs.json"}) write(read("base.json"), side);
    change("ours.json", {{"mark", "A:y"}, {"mark", "L/P"}});
    change("theirs.json", {{"port", "remove", "A", "x", "--unmark"}, {"port", "remove", "A", "y"}});
    change("theirs.json", {{"chart", "remove", "L/P"}});
    Finished merged = merge();
    EXPECT_EQ(merged.code, 1);
    expectParts(merged.err, {"blocks 1, outputs: they took something out that signals are on; ours stays",
                             "blocks 2, chart: they took something out that signals are on; ours stays"});
    EXPECT_EQ(observed(), "m/A:y m/L/P ");
    std::swap(m_ours, m_theirs);
    merged = merge();
    EXPECT_EQ(merged.code, 1);
    expectParts(merged.err, {"its port is not in the merged block", "its chart item is not in the merged block"});
    EXPECT_EQ(observed(), "");
}

}  // namespace
}  // namespace workbench::testing
