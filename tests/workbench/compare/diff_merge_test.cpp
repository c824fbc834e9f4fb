#include <algorithm>
#include <utility>

#include "host/values.h"
#include "tests/workbench/compare/compare_test.h"
#include "workbench/compare/diff.h"
#include "workbench/compare/merge.h"

namespace workbench::testing {

using kshmi::testing::contains;
using kshmi::testing::replaced;

namespace {

const std::vector<Block> kBlocks{{"A", "1", {"a", "b"}}, {"B", "2", {"c"}}};
const std::vector<Mark> kMarks{{"u1", "A", "1", 1}, {"u2", "A", "1", 2}, {"u3", "B", "2", 1}};

std::string marked(std::vector<Mark> marks, const std::vector<Block>& blocks = kBlocks, const std::string& name = "m") {
    return model(name, blocks, marks, {client("c1", "u1", "A", "1", "m")});
}
Mark with(Mark mark, const std::string& more) {
    mark.more += more;
    return mark;
}

TEST(OutOfOrder, isTheFewestThatMoved) {
    EXPECT_EQ(outOfOrder({0, 1, 2}), std::vector<std::size_t>{});
    EXPECT_EQ(outOfOrder({1, 2, 3, 0}), std::vector<std::size_t>{3});
    EXPECT_EQ(outOfOrder({}), std::vector<std::size_t>{});
    EXPECT_EQ(outOfOrder({2, 1, 0}).size(), 2U);
}

TEST(Diff, tellsContentsAndOrderApart) {
    const ModelFile before = file(marked(kMarks));
    EXPECT_TRUE(diffModels(before, file(marked(kMarks))).isSame());
    // What is left out reads as what it stands for.
    EXPECT_TRUE(diffModels(before, file(marked({kMarks[0], kMarks[1], with(kMarks[2], R"(, "IsFrameBased_": false)")})))
                    .isSame());

    const ModelFile moved = file(marked({kMarks[2], kMarks[0], kMarks[1]}));
    const ModelDiff order = diffModels(before, moved);
    EXPECT_TRUE(order.signals.changed.empty());
    ASSERT_EQ(order.signals.reordered.size(), 1U);
    EXPECT_EQ(order.signals.reordered[0].uuid, u"u3");

    const ModelFile after = file(marked({{"u2", "A", "1", 2, "b"}, {"u3", "A", "1", 1}, {"u4", "B", "2", 1}},
                                        {{"A2", "1", {"b", "z", "a"}}, {"C", "3", {}}}, "n"));
    const ModelDiff diff = diffModels(before, after);
    EXPECT_EQ(diff.name->after, "\"n\"");
    ASSERT_EQ(diff.signals.added.size() + diff.signals.removed.size(), 2U);
    ASSERT_EQ(diff.signals.changed.size(), 2U);
    EXPECT_FALSE(diff.signals.changed[0].isMoved);
    EXPECT_EQ(diff.signals.changed[0].fields[0].field, "markedName");
    EXPECT_TRUE(diff.signals.changed[1].isMoved);
    ASSERT_EQ(diff.blocks.size(), 3U);
    EXPECT_EQ(diff.blocks[0].addedPorts, std::vector<std::u16string>{u"z"});
    EXPECT_TRUE(diff.blocks[0].isReordered);
}

// Of ports with one name nobody knows which was removed: the order has changed where it has whichever it was.
TEST(Diff, tellsTheOrderOfPortsApartFromTheirNumber) {
    const auto isReordered = [](const std::vector<std::string>& before, const std::vector<std::string>& after) {
        const ModelFile old = file(model("m", {{"A", "1", before}}, {}));
        const ModelFile next = file(model("m", {{"A", "1", after}}, {}));
        return diffModels(old, next).blocks.at(0).isReordered;
    };
    EXPECT_FALSE(isReordered({"y", "z", "y"}, {"z", "y"}));
    EXPECT_FALSE(isReordered({"y", "z", "y"}, {"y", "z"}));
    EXPECT_FALSE(isReordered({"z", "y"}, {"y", "z", "n", "y"}));
    EXPECT_FALSE(isReordered({"y", "z", "y", "x"}, {"n", "z", "y"}));
    EXPECT_TRUE(isReordered({"y", "y", "z"}, {"z", "y"}));
    EXPECT_TRUE(isReordered({"z", "y"}, {"y", "y", "z"}));
    EXPECT_FALSE(isReordered({"y", "y", "z", "a"}, {"y", "z", "a", "z"}));
    EXPECT_TRUE(isReordered({"y", "y", "z", "a", "b"}, {"y", "z", "b", "a", "z"}));
}

std::string parked(const std::vector<std::string>& uuids) {
    std::vector<std::string> marks;
    for (const std::string& uuid : uuids)
        marks.push_back(fmt::format(R"({{"signal": {}, "clients": [{}], "lost": "port", "from": "m0"}})",
                                    text(Mark{uuid, "A", "1", 9}), client("c" + uuid, uuid, "A", "1", "m")));
    return fmt::format(", \"parked\": [{}]", fmt::join(marks, ", "));
}

std::string uuidsIn(const ModelFile& file) {
    std::string uuids;
    for (const std::size_t i : ks_host::indicesOf(file.signals.get()))
        uuids += toUtf8(recordText(file.signals.get(), i, "UUID")) + " ";
    for (const ParkedMark& mark : file.extras.parked)
        uuids += fmt::format("{}+{} ", toUtf8(recordText(mark.signal.get(), 0, "UUID")),
                             hvGetNumberOfElements(mark.clients.get()));
    return uuids;
}

TEST(Diff, tellsPortsChartsBlocksTwinsAndParkedMarksApart) {
    const std::string chart = R"({"states": [{"path": "On", "ssid": 4}], "data": []})";
    const std::vector<Block> blocks{{"A", "1", {"y", "y", "z"}}, {"L", "2", {}, chart}, {"B", "3", {}}};
    const std::vector<Mark> twins{{"u", "A", "1", 1}, {"u", "A", "1", 3}};
    const auto of = [&](const std::vector<Block>& after, const std::string& more = "") {
        return diffModels(file(model("m", blocks, twins, {}, parked({"a"}))),
                          file(model("m", after, twins, {}, more.empty() ? parked({"a"}) : more)));
    };
    EXPECT_TRUE(of(blocks).isSame());
    EXPECT_EQ(of(blocks).signals.unchanged, 2U);
    EXPECT_FALSE(of(blocks, parked({"b"})).isParkedSame);
    EXPECT_FALSE(
        of(blocks, replaced(parked({"a"}), "MaxPoints_\": 0", "MaxPoints_\": 0, \"markedName\": \"x\"")).isParkedSame);
    EXPECT_EQ(of({{"A", "9", {"y", "y", "z"}}, blocks[1], blocks[2]}).blocks.size(), 1U) << "another identifier";
    EXPECT_TRUE(of({blocks[1], blocks[0], blocks[2]}).areBlocksReordered);
    const ModelDiff ports = of({{"A", "1", {"y", "z"}}, blocks[1], blocks[2]});
    EXPECT_EQ(ports.blocks.at(0).removedPorts, std::vector<std::u16string>{u"y"});
    EXPECT_TRUE(of({blocks[0], {"L", "2", {}, replaced(chart, "4", "5")}, blocks[2]}).blocks.at(0).isChartChanged);
    const ModelDiff other = of({blocks[0], blocks[1], {"N", "9", {}}});
    ASSERT_EQ(other.blocks.size(), 2U);
    EXPECT_TRUE(other.blocks[0].before == nullptr && other.blocks[1].after == nullptr);
    const std::string text = comparableText(file(model("m", {blocks[1]}, {{"u", "L", "2", 1, "n"}})));
    EXPECT_TRUE(contains(text, "  state 4 \"On\"\n") && contains(text, "  markedName: \"n\"\n")) << text;
}

TEST(Merge, keepsTwinsOrderChartsNamesAndWhatIsParked) {
    const std::string chart = R"({"states": [{"path": "On", "ssid": 4}], "data": []})";
    const auto of = [&](const std::vector<Mark>& marks, const std::vector<std::string>& waiting,
                        const char* ssid = "4") {
        return file(model("m", {{"A", "1", {"a", "b"}}, {"L", "2", {}, replaced(chart, "4", ssid)}}, marks, {},
                          parked(waiting)));
    };
    const Mark one{"u", "A", "1", 1, "a"}, twin{"u", "A", "1", 2, "b"}, last{"v", "A", "1", 2},
        shared{"s", "A", "1", 1};
    const MergedModel merged =
        mergeModels(of({one, twin, last}, {"a", "b", "c"}), of({last, one, twin, shared}, {"a", "b", "o", "x"}),
                    of({one, {"u", "A", "1", 1, "z"}, {"t", "A", "1", 2}, last}, {"a", "c", "s", "x", "p"}, "5"));
    EXPECT_TRUE(merged.conflicts.empty());
    EXPECT_EQ(uuidsIn(merged.file), "v u u t s a+1 o+1 x+1 p+1 ");
    EXPECT_EQ(*merged.file.extras.markedName(1), u"a");
    EXPECT_EQ(*merged.file.extras.markedName(2), u"z");
    EXPECT_EQ(merged.file.model.blocks().at(1).chart->states.at(0).ssid, 5U);
}

TEST(Merge, combinesWhatDoesNotContradict) {
    const ModelFile base = file(marked(kMarks));
    // Ours: a setting, a new mark behind the first, a client's signal. Theirs: another setting, one removed, one moved.
    const ModelFile ours =
        file(marked({with(kMarks[0], R"(, "HideInPLV_": 1)"), {"o", "B", "2", 1}, kMarks[1], kMarks[2]}));
    const ModelFile theirs =
        file(marked({with(kMarks[0], R"(, "VisualType_": "x")"), {"u2", "B", "2", 1}, {"t", "A", "1", 2}},
                    {{"A", "1", {"b", "a"}}, {"N", "7", {"n"}}, {"B", "2", {"c"}}}, "renamed"));
    const MergedModel merged = mergeModels(base, ours, theirs);
    EXPECT_TRUE(merged.conflicts.empty());
    const hvArray* const signals = merged.file.signals.get();
    std::string order;
    for (std::size_t i = 0; i < hvGetNumberOfElements(signals); ++i)
        order += toUtf8(recordText(signals, i, "UUID")) + " ";
    EXPECT_EQ(order, "u1 o u2 t ");
    EXPECT_EQ(canonicalField(signals, 0, "HideInPLV_") + canonicalField(signals, 0, "VisualType_"), "true\"x\"");
    EXPECT_EQ(merged.file.model.name(), u"renamed");
    // Their port order counts, so our mark of "a" follows its name; their own number is right as it is.
    EXPECT_EQ(placeOf(merged.file, "u1"), "A:2");
    EXPECT_EQ(placeOf(merged.file, "u2"), "B:1");
    EXPECT_EQ(placeOf(merged.file, "t"), "A:2");
    EXPECT_EQ(merged.file.model.blocks().at(1).path, u"N");
}

struct Conflicting {
    std::string ours, theirs;
    std::string list, field;
    std::string stays;  // a part of the merged file
};

TEST(Merge, leavesOursWhereBothChangedTheSame) {
    const std::string base = marked(kMarks);
    const std::vector<Mark> fewer{kMarks[0], kMarks[1]};
    const auto withLast = [](const std::string& more) { return marked({kMarks[0], kMarks[1], with(kMarks[2], more)}); };
    const std::vector<Conflicting> cases{
        {withLast(R"(, "VisualType_": "o")"), withLast(R"(, "VisualType_": "t")"), "signals", "VisualType_",
         R"("VisualType_": "o")"},
        {marked({kMarks[0], {"u2", "B", "2", 1}, kMarks[2]}), marked({kMarks[0], {"u2", "A", "1", 1}, kMarks[2]}),
         "signals", "BlockPath_", ""},
        {marked(fewer), withLast(R"(, "VisualType_": "t")"), "signals", "", ""},
        {withLast(R"(, "VisualType_": "o")"), marked(fewer), "signals", "", R"("VisualType_": "o")"},
        {marked(kMarks, kBlocks, "o"), marked(kMarks, kBlocks, "t"), "model", "name", R"("name": "o")"},
        {marked(kMarks, {{"O", "1", {"a", "b"}}, kBlocks[1]}), marked(kMarks, {{"T", "1", {"a", "b"}}, kBlocks[1]}),
         "blocks", "path", R"("path": "O")"},
        {marked(kMarks), marked(fewer, {kBlocks[0]}), "", "", ""},
        {marked({kMarks[0], kMarks[1], kMarks[2], {"o", "B", "2", 1}}), marked(fewer, {kBlocks[0]}), "blocks", "",
         R"("path": "B")"},
        {marked(fewer, {kBlocks[0]}), marked({kMarks[0], kMarks[1], kMarks[2], {"t", "B", "2", 1}}), "signals",
         "OutputPortIndex_", ""},
        {marked(kMarks, {kBlocks[0], kBlocks[1], {"N", "8", {}}}),
         marked(kMarks, {kBlocks[0], kBlocks[1], {"N", "9", {}}}), "blocks", "path", R"("eid": "8")"},
        {marked({kMarks[0], kMarks[1], kMarks[2], {"o", "A", "1", 1}}),
         marked({kMarks[0], kMarks[2]}, {{"A", "1", {"b"}}, kBlocks[1]}), "blocks", "outputs",
         R"("outputs": ["a", "b"])"},
    };
    for (const Conflicting& one : cases) {
        const MergedModel merged = mergeModels(file(base), file(one.ours), file(one.theirs));
        const std::string text = modelText(merged.file);
        if (one.list.empty()) {
            EXPECT_TRUE(merged.conflicts.empty()) << text;
            continue;
        }
        ASSERT_FALSE(merged.conflicts.empty()) << one.list << one.field;
        const bool isTold = std::ranges::any_of(merged.conflicts, [&](const MergeConflict& conflict) {
            return conflict.list == one.list && conflict.field == one.field;
        });
        if (one.list == "model") {
            EXPECT_EQ(merged.conflicts[0].base + merged.conflicts[0].ours + merged.conflicts[0].theirs, R"("m""o""t")");
        }
        EXPECT_TRUE(isTold) << one.list << ' ' << one.field << '\n' << text;
        EXPECT_TRUE(contains(text, one.stays)) << text;
    }
}

class CompareCommands : public kshmi::testing::KshmiTest {
protected:
    // What the shell says of a command line, in the test's folder.
    std::string shell(const std::string& line) const {
        const std::string command = "cd '" + path("") + "' && { " + line + "; } > said 2>&1";
        const int code = std::system(command.c_str());
        return read("said") + (code == 0 ? "" : "failed");
    }
};

TEST_F(CompareCommands, diffAndMergeTellAndEndAsTheyShould) {
    write(marked(kMarks), "a.json");
    write(marked({kMarks[0], kMarks[1], with(kMarks[2], R"(, "VisualType_": "o")")}), "b.json");
    write(marked({kMarks[0], kMarks[1], with(kMarks[2], R"(, "VisualType_": "t")")}), "c.json");
    EXPECT_EQ(run({"diff", path("a.json"), path("a.json")}).out, "");
    const auto diff = run({"diff", path("a.json"), path("b.json")});
    EXPECT_EQ(diff.code, 1);
    expectParts(
        diff.out,
        {"signals: 0 added, 0 removed, 1 changed, 2 unchanged\n  ~ 3 B:1 (u3)\n      VisualType_: \"\" -> \"o\"\n"});
    expectParts(
        run({"diff", path("a.json"), path("b.json"), "--json"}).out,
        {R"({"kshmi": 1, "command": "diff")", R"("signal": {"uuid": "u3", "position": 3}, "block": "m/B", "port": 1)"});
    write(marked({{"u2", "A2", "1", 1}, {"u1", "A2", "1", 2}}, {{"A2", "1", {"b", "a"}}}, "n"), "d.json");
    expectParts(
        run({"diff", path("a.json"), path("d.json"), "--json"}).out,
        {R"({"block": "n/A2", "from": "m/A", "renamed": true, "addedPorts": [], "removedPorts": [], "reordered": true)",
         R"({"uuid": "u2", "position": 1}, "block": "n/A2", "port": 1, "fromPosition": 2, "moved": true, "fields": [)"
         R"({"field": "BlockPath_", "before": "A", "after": "A2"}, {"field": "OutputPortIndex_", "before": 2, "after")",
         R"("removed": [{"signal": {"uuid": "u3", "position": 3}, "block": "m/B", "port": 1}])"});
    expectParts(
        run({"merge", path("a.json"), path("a.json"), path("d.json"), "-o", path("no.json"), "--dry-run", "--json"})
            .out,
        {R"("dryRun": true, "saved": false, "signals": 2, "clients": 1, "conflicts": [])"});
    EXPECT_EQ(run({"diff", path("a.json")}).code, 2);
    // As git calls it for a file that was renamed: a difference is no failure.
    const auto renamed =
        run({"diff", "a.json", path("a.json"), "1", "100644", path("b.json"), "2", "100644", "b.json", "renamed"});
    EXPECT_EQ(renamed.code, 0);
    expectParts(renamed.out, {"a.json -> b.json"});
    expectParts(run({"diff", "--text", path("a.json")}).out,
                {"block \"A\" (identifier \"1\")\n  port 1 \"a\"\n", "  Decimation_: 1\n"});

    const auto conflict = run({"merge", path("a.json"), path("b.json"), path("c.json"), "-o", path("out.json")});
    EXPECT_EQ(conflict.code, 1);
    expectParts(conflict.err,
                {"1 conflict; ours is in place", "signals u3, VisualType_: both changed it", "theirs: \"t\""});
    EXPECT_TRUE(contains(read("out.json"), R"("VisualType_": "o")"));
    write("{", "bad.json");
    EXPECT_EQ(run({"merge", path("a.json"), path("bad.json"), path("c.json"), "-o", path("out2.json")}).code,
              kshmi::kBadFile);
    EXPECT_EQ(fileCount(), 6U);
}

TEST_F(CompareCommands, gitUsesThem) {
    if (std::system("git --version > /dev/null 2>&1") != 0) GTEST_SKIP() << "git is not installed";
    const std::string tool = KSHMI_PROGRAM;
    shell(
        "git init -q . && git config user.email a@b && git config user.name t && "
        "git config diff.kestrel.textconv '" +
        tool +
        " diff --text' && "
        "git config merge.kestrel.name 'model files' && git config merge.kestrel.driver '" +
        tool +
        " merge %O %A %B -o %A --path %P' && "
        "echo '*.json diff=kestrel merge=kestrel' > .gitattributes");
    const auto commit = [&](const std::string& text) {
        write(text, "m.json");
        EXPECT_EQ(shell("git add m.json .gitattributes && git commit -qm x"), "");
    };
    commit(marked(kMarks));
    shell("git branch theirs");
    commit(marked({with(kMarks[0], R"(, "HideInPLV_": 1)"), kMarks[1], kMarks[2]}));
    EXPECT_TRUE(contains(shell("git diff HEAD~1"), "+  HideInPLV_: true"));
    expectParts(shell("GIT_EXTERNAL_DIFF='" + tool + " diff' git diff HEAD~1"),
                {"m.json -> m.json", "HideInPLV_: false -> true"});
    shell("git checkout -q theirs");
    commit(marked({kMarks[0], kMarks[1], with(kMarks[2], R"(, "VisualType_": "t")")}));
    EXPECT_FALSE(contains(shell("git merge -q -m merged master || git merge -q -m merged main"), "CONFLICT"));
    EXPECT_TRUE(contains(read("m.json"), "\"HideInPLV_\": 1"));
    EXPECT_TRUE(contains(read("m.json"), R"("VisualType_": "t")"));
    shell("git checkout -qb other HEAD~2");
    commit(marked({kMarks[0], kMarks[1], with(kMarks[2], R"(, "VisualType_": "other")")}));
    expectParts(shell("git merge theirs"),
                {"CONFLICT", "kshmi: m.json: 1 conflict", "both changed it, and differently"});
    EXPECT_TRUE(contains(read("m.json"), R"("VisualType_": "other")"));
}

}  // namespace
}  // namespace workbench::testing
