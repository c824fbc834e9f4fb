#include "tests/workbench/compare/compare_test.h"
#include "workbench/carry/carry_files.h"

// What a mark that is carried takes along, and what it leaves.
namespace workbench::testing {

using kshmi::testing::contains;
using kshmi::testing::replaced;

namespace {

CarriedModel carriedWith(const std::string& before, const std::string& after, const std::string& map = "",
                         const CarryOptions& options = {}) {
    const ModelFile old = file(before);
    ModelFile next = file(after);
    const CarryMap entries = map.empty() ? CarryMap() : CarryMap("map.csv", map, old, next.model);
    return carryMarks(old, std::move(next), options, entries);
}

const std::string kChart = R"({"states": [{"path": "On", "ssid": 4}], "data": []})";

TEST(CarriedRecords, namesAndIdentifiersFollow) {
    const std::string clients[] = {client("c1", "u", "A", "1", "m"),
                                   replaced(replaced(client("c2", "u", "A", "1", "m"), R"(["A"])", R"(["R", "x/y"])"),
                                            R"(["1"])", R"(["2", "7"])")};
    const std::string before = replaced(
        model("m", {{"A", "1", {"a", "b"}}, {"R", "2", {"r"}}}, {{"u", "A", "1", 1, "a"}}, {clients[0], clients[1]}),
        R"("SignalName_": "s")", R"("SignalName_": "a")");
    const CarriedModel result =
        carriedWith(before, model("m", {{"A", "8", {"b", "n"}}, {"T", "9", {"r"}}}), "A:a,A:n\nR,T\n");
    const auto field = [&](const hvArray* records, std::size_t i, const char* name) {
        return canonicalField(records, i, name);
    };
    const hvArray* const signals = result.file.signals.get();
    EXPECT_EQ(field(signals, 0, "SignalName_") + field(signals, 0, "EID_"), R"("n""8")");
    const hvArray* const its = result.file.clients.get();
    EXPECT_EQ(field(its, 0, "ModelPath_") + field(its, 0, "ModelPathEID_"), R"(["A"]["8"])");
    EXPECT_EQ(field(its, 1, "ModelPath_") + field(its, 1, "ModelPathEID_"), R"(["T", "x/y"]["9", "7"])");
    EXPECT_TRUE(contains(modelText(result.file), R"("ObserveImaginaryPart_": false)"));
}

TEST(CarriedRecords, whatIsParkedSaysWhereItWas) {
    Mark item{"i", "L", "2", 0};
    item.more = R"(, "DomainType_": "cw_state", "DomainParams_": {"Activity": "Self", "SSID": "4"})";
    const std::string before = model("m", {{"P/A", "1", {"a", "b"}}, {"L", "2", {"q"}, kChart}},
                                     {{"u", "Old/A", "1", 1}, {"u", "P/A", "1", 2}, {"v", "Old/A", "1", 1}, item},
                                     {client("c", "u", "P/A", "1", "m"), client("d", "v", "P/A", "1", "m")});
    const std::string after = model("m", {{"P/A", "1", {"b"}}, {"L", "2", {"q"}, R"({"states": [], "data": []})"}});
    const CarriedModel result = carriedWith(before, after);
    const std::vector<ParkedMark>& parked = result.file.extras.parked;
    ASSERT_EQ(parked.size(), 3U);
    EXPECT_EQ(recordText(parked[0].signal.get(), 0, "BlockPath_"), u"P/A");
    EXPECT_TRUE(parked[0].lost == LostWith::port && parked[2].lost == LostWith::item);
    // A client stays with a signal of that UUID that stays.
    EXPECT_EQ(hvGetNumberOfElements(parked[0].clients.get()), 0U);
    EXPECT_EQ(hvGetNumberOfElements(parked[1].clients.get()), 1U);
    EXPECT_EQ(result.report.clients, 1U);
    const std::string map = proposedMap(result.report);
    EXPECT_EQ(map.find("P/A:a,"), map.rfind("P/A:a,")) << "proposed once";

    // Beside a mark of its UUID a parked one does not come back; one that does not is proposed again.
    const CarriedModel back = carriedWith(modelText(result.file), model("m", {{"P/A", "1", {"a", "b"}}}));
    EXPECT_EQ(back.report.keptParked, 1U);
    EXPECT_EQ(back.report.returnedCount(), 1U);
    EXPECT_TRUE(contains(proposedMap(back.report), "\nL,")) << proposedMap(back.report);
    EXPECT_EQ(
        messageOf([&] { carriedWith(before, replaced(modelText(result.file), "\"UUID\": \"u\"", "\"UUID\": \"w\"")); }),
        "the new version has 1 signal, 1 client and 3 parked marks of its own already; carry the marks to a file "
        "without any");
    const std::string waiting = modelText(carriedWith(before, model("m", {{"Z", "9", {"z"}}})).file);
    EXPECT_TRUE(
        messageOf([&] { carriedWith(before, waiting); }).starts_with("the new version has 0 signals, 0 clients and 4"));
}

TEST(CarriedRecords, theLongerPrefixAndTheBlockItselfDecide) {
    const std::string before =
        model("m", {{"A/B/x", "1", {"a"}}, {"A/B/y", "2", {"b"}}}, {{"u", "A/B/x", "1", 1}, {"v", "A/B/y", "2", 1}});
    const std::string after = model(
        "m",
        {{"N/B/x", "5", {"a"}}, {"M/x", "6", {"a"}}, {"M/y", "7", {"b"}}, {"K", "8", {"b"}}, {"L", "9", {}, kChart}});
    for (const char* const map : {"A/*,N/*\nA/B/*,M/*\nA/B/y,K\n", "A/B/y,K\nA/B/*,M/*\nA/*,N/*\n"}) {
        const CarriedModel result = carriedWith(before, after, map);
        EXPECT_EQ(placeOf(result.file, "u") + placeOf(result.file, "v"), "M/x:1K:1") << map;
    }
    EXPECT_EQ(carriedWith(before, after, "A/B/x:a,L:On\n").report.marks.at(0).fate, Fate::ambiguous);
}

class CarriedFile : public kshmi::testing::KshmiTest {};

TEST_F(CarriedFile, isNotWrittenOverWhatSomebodySaved) {
    write(model("m", {{"A", "1", {"a"}}}, {{"u", "A", "1", 1}}), "old.json");
    const std::string next = write(model("m", {{"A", "1", {"b", "c"}}}), "new.json");
    const CarriedFiles done = carryFiles({path("old.json"), next, "", "", ""}, {});
    write(model("m", {{"A", "1", {"theirs"}}}), "new.json");
    EXPECT_TRUE(contains(messageOf([&] { writeModelFile(next, done.carried.file, done.replaced); }), "changed"));
    EXPECT_TRUE(contains(read("new.json"), "theirs"));
    EXPECT_EQ(run({"carry", path("old.json"), next, "-o", path("none/out.json"), "--propose", path("map.csv")}).code,
              kshmi::kBadFile);
    EXPECT_EQ(fileCount(), 2U) << "no map for what was not saved";
}

TEST_F(CarriedFile, keepsTheIdentifiersOfAnImport) {
    const auto structure = [](const char* names) {
        return replaced(
            R"(<SystemStructureDescription version="1.0" name="s"><System name="s"><Elements>NAMES</Elements>
</System></SystemStructureDescription>)",
            "NAMES", names);
    };
    const std::string component =
        R"(<Component name="a"><Connectors><Connector name="y" kind="output"/></Connectors></Component>)";
    write(structure(component.c_str()), "s.ssd");
    ASSERT_EQ(run({"import", path("s.ssd"), "-o", path("old.json")}).code, 0);
    const std::string eid = readModelFile(path("old.json")).model.findByPath(u"s/a")->eid;
    write(replaced(read("old.json"), eid, "own"), "old.json");
    ASSERT_EQ(run({"mark", path("old.json"), "s/a:y"}).code, 0);
    ASSERT_EQ(run({"carry", path("old.json"), path("s.ssd"), "-o", path("out.json")}).code, 0);
    EXPECT_EQ(readModelFile(path("out.json")).model.findByPath(u"s/a")->eid, "own");
}

}  // namespace
}  // namespace workbench::testing
