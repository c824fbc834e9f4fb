#include "tests/workbench/compare/compare_test.h"

namespace workbench::testing {

using kshmi::testing::contains;
using kshmi::testing::replaced;
namespace {

CarriedModel carried(const std::string& before, const std::string& after, const CarryOptions& options = {},
                     const std::string& map = "") {
    const ModelFile old = file(before);
    ModelFile next = file(after);
    const CarryMap entries = map.empty() ? CarryMap() : CarryMap("map.csv", map, old, next.model);
    return carryMarks(old, std::move(next), options, entries);
}

struct Case {
    const char* what;
    std::vector<Block> before;
    Mark mark;
    std::vector<Block> after;
    Fate fate;
    std::string place;  // empty where it is parked
    CarryOptions options{};
};

TEST(Carry, goesByNamesAndNeverByNumbers) {
    const Mark first{"u", "P/A", "1", 1};
    const std::vector<Block> one{{"P/A", "1", {"a", "b"}}};
    const std::vector<Block> twins{{"P/A", "1", {"y"}}, {"P/B", "2", {"y"}}};
    const CarryOptions byId{MatchBy::identifier}, byPath{MatchBy::path}, accept{MatchBy::both, true};
    const std::vector<Case> cases{
        {"the same", one, first, one, Fate::same, "P/A:1"},
        {"another number", one, first, {{"P/A", "1", {"x", "b", "a"}}}, Fate::renumbered, "P/A:3"},
        {"same path, new identifier", one, first, {{"P/A", "9", {"a", "b"}}}, Fate::same, "P/A:1"},
        {"same identifier, moved", one, first, {{"Q/A", "1", {"b", "a"}}}, Fate::renamed, "Q/A:2"},
        {"both new, same ports", one, first, {{"Q/Z", "9", {"b", "a"}}}, Fate::renamed, "Q/Z:2"},
        {"both new, a port more", one, first, {{"Q/Z", "9", {"c", "b", "a"}}}, Fate::renamed, "Q/Z:3"},
        {"both new, little in common", one, first, {{"Q/Z", "9", {"a", "c", "d", "e"}}}, Fate::ambiguous, ""},
        {"the name only", one, first, {{"Q/a_", "9", {"c", "d"}}}, Fate::ambiguous, ""},
        {"the port is gone", one, first, {{"P/A", "1", {"b"}}}, Fate::lostSource, ""},
        {"the port has another name", one, first, {{"P/A", "1", {"b", "z"}}}, Fate::ambiguous, ""},
        {"that guess accepted", one, first, {{"P/A", "1", {"b", "z"}}}, Fate::accepted, "P/A:2", accept},
        {"the port's name in other letters", one, first, {{"P/A", "1", {"A_", "b", "q"}}}, Fate::ambiguous, ""},
        {"the block is gone", one, first, {{"P/Q", "7", {"z"}}}, Fate::lostBlock, ""},
        {"identifier given to another",
         one,
         first,
         {{"X", "1", {"p", "q"}}, {"Y", "2", {"a", "b"}}},
         Fate::renamed,
         "Y:1"},
        {"identifier of a stranger only", one, first, {{"X", "1", {"p", "q"}}}, Fate::ambiguous, ""},
        {"twins swapped names", twins, first, {{"P/A", "2", {"y"}}, {"P/B", "1", {"y"}}}, Fate::ambiguous, ""},
        {"twins, by identifier",
         twins,
         first,
         {{"P/A", "2", {"y"}}, {"P/B", "1", {"y"}}},
         Fate::renamed,
         "P/B:1",
         byId},
        {"twins, by path", twins, first, {{"P/A", "2", {"y"}}, {"P/B", "1", {"y"}}}, Fate::same, "P/A:1", byPath},
        {"twins, both renamed", twins, first, {{"Q/C", "8", {"y"}}, {"Q/D", "9", {"y"}}}, Fate::ambiguous, ""},
        {"twins below a new parent", twins, first, {{"Q/A", "8", {"y"}}, {"Q/B", "9", {"y"}}}, Fate::renamed, "Q/A:1"},
        {"two ports of one name, as they were",
         {{"P/A", "1", {"y", "y"}}},
         first,
         {{"P/A", "1", {"y", "y"}}},
         Fate::same,
         "P/A:1"},
        {"two ports of one name and one more",
         {{"P/A", "1", {"y", "y"}}},
         first,
         {{"P/A", "1", {"z", "y", "y"}}},
         Fate::ambiguous,
         ""},
        {"all of a kind get a port, one is renamed, identifiers follow from paths",
         {{"A", "a", {"y"}, "", "A"}, {"B", "b", {"y"}, "", "B"}},
         {"u", "A", "a", 1},
         {{"A", "a", {"z", "y"}, "", "A"}, {"N", "n", {"z", "y"}, "", "N"}},
         Fate::renumbered,
         "A:2"},
        {"one of a kind gets a port, one is renamed, identifiers follow from paths",
         {{"A", "a", {"y"}, "", "A"}, {"B", "b", {"y"}, "", "B"}},
         {"u", "A", "a", 1},
         {{"A", "a", {"z", "y"}, "", "A"}, {"N", "n", {"y"}, "", "N"}},
         Fate::ambiguous,
         ""},
        {"names exchanged, identifiers follow from paths",
         {{"A", "a", {"a", "b"}, "", "A"}, {"B", "b", {"c", "d"}, "", "B"}},
         {"u", "A", "a", 1},
         {{"A", "a", {"c", "d"}, "", "A"}, {"B", "b", {"b", "a"}, "", "B"}},
         Fate::renamed,
         "B:2"},
        {"the same with identifiers of their own",
         {{"A", "1", {"a", "b"}}, {"B", "2", {"c", "d"}}},
         {"u", "A", "1", 1},
         {{"A", "1", {"c", "d"}}, {"B", "2", {"b", "a"}}},
         Fate::ambiguous,
         ""},
        {"the port in a neighbour",
         {{"A", "1", {"a", "b"}}, {"B", "2", {"c"}}},
         {"u", "A", "1", 1},
         {{"A", "1", {"b"}}, {"B", "2", {"c", "a"}}},
         Fate::ambiguous,
         ""},
        {"twins, one in each of two renamed parents",
         {{"P/A", "1", {"y"}}, {"P/B", "2", {"k", "l"}}, {"Q/A", "3", {"y"}}, {"Q/B", "4", {"m", "n"}}},
         first,
         {{"R/X", "5", {"m", "n"}}, {"R/Y", "6", {"y"}}, {"S/X", "7", {"k", "l"}}, {"S/Y", "8", {"y"}}},
         Fate::renamed,
         "S/Y:1"},
        {"flatter", twins, first, {{"P_A", "8", {"y"}}, {"P_B", "9", {"y"}}}, Fate::renamed, "P_A:1"},
        {"a twin deleted, another added",
         {{"P/Tank 1", "1", {"y"}}, {"P/Tank 2", "2", {"y"}}},
         {"u", "P/Tank 2", "2", 1},
         {{"P/Tank 1", "1", {"y"}}, {"P/Tank 3", "3", {"y"}}},
         Fate::ambiguous,
         ""},
        {"split", one, first, {{"P/A1", "8", {"a"}}, {"P/A2", "9", {"b"}}}, Fate::ambiguous, ""},
        {"split, accepted", one, first, {{"P/A1", "8", {"a"}}, {"P/A2", "9", {"b"}}}, Fate::accepted, "P/A1:1", accept},
        {"merged into a block that was",
         {{"P/A", "1", {"a", "b"}}, {"P/B", "2", {"c"}}},
         first,
         {{"P/B", "2", {"c", "b", "a"}}},
         Fate::ambiguous,
         ""},
        {"identifiers count the blocks",
         {{"P/A", "1", {"y"}}, {"P/B", "2", {"y"}}, {"P/C", "3", {"y"}}, {"P/D", "4", {"y"}}},
         first,
         {{"P/N", "1", {"y"}}, {"P/A", "2", {"y"}}, {"P/B", "3", {"y"}}, {"P/C", "4", {"y"}}, {"P/D", "5", {"y"}}},
         Fate::same,
         "P/A:1"},
        {"the name's last letter gone",
         {{"P/A2", "1", {"y"}}},
         {"u", "P/A2", "1", 1},
         {{"P/A", "1", {"y"}}},
         Fate::renamed,
         "P/A:1"},
        {"slid before", one, {"u", "P/A", "1", 1, "b"}, {{"P/A", "1", {"a", "b"}}}, Fate::renumbered, "P/A:2"},
        {"slid, and its name is gone", one, {"u", "P/A", "1", 1, "old"}, one, Fate::lostSource, ""},
        {"dangling, and back", one, {"u", "P/B", "5", 1, "b"}, {{"P/B", "5", {"a", "b"}}}, Fate::renumbered, "P/B:2"},
        {"dangling, name unknown", one, {"u", "P/B", "5", 1}, {{"P/B", "5", {"a", "b"}}}, Fate::lostBlock, ""},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        const CarriedModel result = carried(model("m", each.before, {each.mark}), model("m", each.after), each.options);
        EXPECT_EQ(result.report.marks.at(0).fate, each.fate);
        EXPECT_EQ(placeOf(result.file, "u"), each.place);
        EXPECT_EQ(result.file.extras.parked.size(), each.place.empty() ? 1U : 0U);
        EXPECT_EQ(result.file.extras.markedName(0) == nullptr, each.place.empty());
    }
}

TEST(Carry, settingsStayAndWhatNamesTheModelFollows) {
    const std::string before =
        model("old", {{"P/A", "1", {"a", "b"}}, {"P/C", "3", {"c"}}},
              {{"u1", "P/A", "1", 2, "b", R"(, "LogicalPortIndex_": 2)"}, {"u2", "P/C", "3", 1}, {"u3", "P/A", "1", 1}},
              {client("c1", "u1", "P/A", "1", "old"), client("c2", "u2", "P/C", "3", "old"),
               client("c3", "zz", "P/A", "1", "else")});
    const CarriedModel result = carried(replaced(before, R"("SignalName_": "s")", R"("SignalName_": "b")"),
                                        model("new", {{"R/A", "1", {"b", "a"}}}));
    const ModelFile& next = result.file;
    EXPECT_EQ(result.report.count(Fate::renamed), 2U);
    EXPECT_EQ(result.report.count(Fate::lostBlock), 1U);
    const auto signal = [&](const char* field) { return canonicalField(next.signals.get(), 0, field); };
    EXPECT_EQ(signal("UUID") + signal("SignalName_") + signal("Decimation_"), R"("u1""b"1)");
    EXPECT_EQ(signal("SubSysPath_") + signal("OutputPortIndex_") + signal("LogicalPortIndex_"), "\"R\"11");
    const auto clientField = [&](std::size_t i, const char* field) {
        return canonicalField(next.clients.get(), i, field);
    };
    ASSERT_EQ(hvGetNumberOfElements(next.clients.get()), 2U);
    EXPECT_EQ(clientField(0, "ModelPath_") + clientField(0, "SourceModel_"), R"(["R/A"]"new")");
    EXPECT_EQ(clientField(0, "ObserverParams_"), R"({"ModelName": "new"})");
    EXPECT_EQ(clientField(1, "ModelPath_") + clientField(1, "SourceModel_"), R"(["R/A"]"else")");
    ASSERT_EQ(next.extras.parked.size(), 1U);
    EXPECT_EQ(hvGetNumberOfElements(next.extras.parked[0].clients.get()), 1U);
    EXPECT_EQ(next.extras.parked[0].from, u"old");
    EXPECT_EQ(next.extras.parked[0].markedName, u"c");
}

TEST(Carry, parkedMarksComeBackWithTheirClients) {
    const std::string first = model("m", {{"A", "1", {"a", "b"}}, {"B", "2", {"x"}}},
                                    {{"u1", "A", "1", 2}, {"u2", "B", "2", 1}}, {client("c1", "u1", "A", "1", "m")});
    CarriedModel second = carried(first, model("m2", {{"A", "1", {"a"}}}));
    EXPECT_EQ(second.file.extras.parked.size(), 2U);
    EXPECT_EQ(second.report.parkedClients, 1U);
    const std::string saved = modelText(second.file);
    CarriedModel third = carried(saved, model("m3", {{"A", "1", {"b", "a"}}, {"C", "4", {"k", "l"}}}));
    EXPECT_EQ(third.report.returnedCount(), 1U);
    EXPECT_EQ(placeOf(third.file, "u1"), "A:1");
    EXPECT_EQ(hvGetNumberOfElements(third.file.clients.get()), 1U);
    EXPECT_EQ(third.file.extras.parked.size(), 1U);
    EXPECT_TRUE(third.report.isAllCarried());
    const CarriedModel mapped =
        carried(modelText(third.file), model("m4", {{"A", "1", {"b"}}, {"C", "4", {"k", "x"}}}), {}, "B,C\n");
    EXPECT_EQ(placeOf(mapped.file, "u2"), "C:2");
}

// Another block at the old place is no reason to think that the mark was on it.
TEST(Carry, whatWasAmbiguousComesBackByAPersonsWordOnly) {
    const std::string first = model("m", {{"P/A", "1", {"y"}}, {"P/B", "2", {"y"}}}, {{"u", "P/A", "1", 1}});
    const std::string second = modelText(carried(first, model("m", {{"Q/C", "8", {"y"}}, {"Q/D", "9", {"y"}}})).file);
    EXPECT_TRUE(contains(second, "\"lost\": \"block\",\n      \"unsure\": true,"));
    const std::string third = model("m", {{"P/A", "1", {"y"}}, {"Q/C", "8", {"y"}}, {"Q/D", "9", {"y"}}});
    EXPECT_EQ(placeOf(carried(second, third).file, "u"), "");
    EXPECT_TRUE(contains(modelText(carried(second, third).file), "\"unsure\": true,"))
        << "nor is it sure when it stays";
    EXPECT_EQ(placeOf(carried(second, third, {MatchBy::both, true}).file, "u"), "P/A:1");
    const CarriedModel mapped = carried(second, third, {}, "P/A,Q/D\n");
    EXPECT_EQ(placeOf(mapped.file, "u"), "Q/D:1");
    EXPECT_EQ(mapped.report.parked.at(0).fate, Fate::mapped);
}

TEST(Carry, chartItemsAreFoundByNameOrIdentifier) {
    const auto chart = [](const std::string& states, const std::string& data) {
        return R"({"states": [)" + states + R"(], "data": [)" + data + "]}";
    };
    const auto state = [](const char* path, int ssid) {
        return fmt::format(R"({{"path": "{}", "ssid": {}}})", path, ssid);
    };
    Mark mark{"u", "Mode", "1", 0};
    mark.more = R"(, "DomainType_": "cw_state", "DomainParams_": {"Activity": "Self", "SSID": "4"})";
    std::string before =
        model("m", {{"Mode", "1", {}, chart(state("On/Hold", 4) + ", " + state("Off", 5), "")}}, {mark});
    before = replaced(before, R"("SubPath_": "")", R"("SubPath_": "On/Hold")");
    struct ItemCase {
        std::string states;
        Fate fate;
    };
    for (const auto& [states, fate] : {ItemCase{state("On/Hold", 4), Fate::same},
                                       {state("On/Hold", 9), Fate::renumbered},
                                       {state("On/Keep", 4), Fate::renamed},
                                       {state("Off", 4), Fate::ambiguous},
                                       {state("Keep", 4), Fate::ambiguous},
                                       {state("Off", 5), Fate::lostSource}}) {
        const CarriedModel result = carried(before, model("m", {{"Mode", "1", {}, chart(states, "")}}));
        EXPECT_EQ(result.report.marks[0].fate, fate) << states;
        if (fate == Fate::renumbered) {
            EXPECT_EQ(canonicalField(result.file.signals.get(), 0, "DomainParams_"),
                      R"({"Activity": "Self", "SSID": "9"})");
        }
    }
}

TEST(CarryMap, saysWhereThingsAre) {
    const std::string before =
        model("m", {{"A/x", "1", {"a", "b"}}, {"A/y", "2", {"c"}}, {"B", "3", {"d"}}},
              {{"u1", "A/x", "1", 1}, {"u2", "A/y", "2", 1}, {"u3", "B", "3", 1}, {"u4", "A/x", "1", 2}});
    const std::string after = model("m", {{"N/x", "7", {"a", "b2"}}, {"N/y", "8", {"c"}}, {"Z", "9", {"e", "f"}}});
    const CarriedModel result =
        carried(before, after, {}, "\xEF\xBB\xBFold,new\r\n# comment\r\n\r\nA/*,N/*\r\nm/A/x:b,\"m/N/x:b2\"\r\nB,\r\n");
    EXPECT_EQ(placeOf(result.file, "u1"), "N/x:1");
    EXPECT_EQ(placeOf(result.file, "u4"), "N/x:2");
    EXPECT_EQ(result.report.count(Fate::mapped), 3U);
    EXPECT_EQ(result.report.count(Fate::lostBlock), 1U);

    const auto refusal = [&](const std::string& map) { return messageOf([&] { carried(before, after, {}, map); }); };
    EXPECT_EQ(refusal("A/x,N/x\nA/x,Z\n"), "map.csv:2: \"A/x\" is on line 1 already; remove one");
    EXPECT_EQ(refusal("A/q,N/x\n"),
              "map.csv:1: the old model has no block \"A/q\"; correct the name or remove the line");
    EXPECT_EQ(refusal("A/x,N/q\n"),
              "map.csv:1: the new model has no block \"N/q\"; correct the name or leave it empty to say that the old "
              "one is gone");
    EXPECT_EQ(refusal("\nA/x,N/x,1\n"),
              "map.csv:2: 3 columns instead of two, old and new; put names with commas in double quotes");
    for (const char* const map :
         {"A/x:q,N/x:a\n", "A/x:a,N/x:q\n", "A/*,N\n", "Q/*,N/*\n", "\"A/x,N/x\n", "A\"x,y\n", "\"A\"x,y\n"})
        EXPECT_TRUE(refusal(map).starts_with("map.csv:1: ")) << map << refusal(map);
}

TEST(CarryMap, proposalIsAMapThatDoesWhatAcceptDoes) {
    const std::string before =
        model("m", {{"A,1", "1", {"y"}}, {"B", "2", {"y"}}, {"C", "3", {"k"}}, {"D", "4", {"p", "q"}}},
              {{"u1", "A,1", "1", 1}, {"u2", "B", "2", 1}, {"u3", "C", "3", 1}, {"u4", "D", "4", 2}});
    const std::string after = model("m", {{"V", "7", {"y"}}, {"W", "8", {"y"}}, {"D", "4", {"p", "q2"}}});
    const CarriedModel unsure = carried(before, after);
    EXPECT_EQ(unsure.report.count(Fate::ambiguous), 3U);
    const std::string map = proposedMap(unsure.report);
    const CarriedModel mapped = carried(before, after, {}, map);
    const CarriedModel accepted = carried(before, after, {MatchBy::both, true});
    for (const char* const uuid : {"u1", "u2", "u3", "u4"})
        EXPECT_EQ(placeOf(mapped.file, uuid), placeOf(accepted.file, uuid)) << uuid << '\n' << map;
    EXPECT_EQ(accepted.report.count(Fate::accepted), 3U);
}

class CarryCommand : public kshmi::testing::KshmiTest {};

TEST_F(CarryCommand, tellsSavesAndEndsWithOneWhenAMarkIsParked) {
    write(model("m", {{"A", "1", {"a", "b"}}}, {{"u1", "A", "1", 2}, {"u2", "A", "1", 1}}), "old.json");
    const std::string next = model("m", {{"A", "1", {"b", "c"}}});
    write(next, "new.json");
    const auto dry = run({"carry", path("old.json"), path("new.json"), "--dry-run", "--propose", path("map.csv")});
    EXPECT_EQ(dry.code, 1) << dry.err;
    EXPECT_EQ(read("new.json"), next);
    std::filesystem::create_symlink(path("old.json"), path("link.json"));
    for (const char* const target : {"old.json", "link.json"})
        expectParts(run({"carry", path("old.json"), path("new.json"), "-o", path(target)}).err,
                    {target, "has the marks that are carried, and stays as it is"});
    expectParts(dry.out,
                {"2 marks\n", "  renumbered                 1\n", "  ambiguous                  1\n",
                 "  ambiguous: A:1 \"a\", perhaps A:2 \"c\"\n", "  renumbered: A:2 \"b\" -> A:1 \"b\"\n", "dry run"});
    EXPECT_TRUE(contains(read("map.csv"), "A:a,A:c\n"));
    EXPECT_EQ(run({"carry", path("old.json"), path("new.json"), "--dry-run", "--propose", path("map.csv")}).code,
              kshmi::kBadFile);

    const auto done =
        run({"carry", path("old.json"), path("new.json"), "--map", path("map.csv"), "-o", path("out.json"), "--json"});
    EXPECT_EQ(done.code, 0) << done.err;
    expectParts(done.out, {R"({"kshmi": 1, "command": "carry")", R"("mapped": 1)", R"("saved": true)"});
    EXPECT_EQ(placeOf(readModelFile(path("out.json")), "u2"), "A:2");
    EXPECT_EQ(run({"show", path("out.json")}).code, 0);
    run({"carry", path("old.json"), path("new.json"), "-o", path("parking.json")});
    expectParts(run({"carry", path("parking.json"), path("new.json"), "--dry-run"}).out,
                {"parked before: 0 back, 1 still parked\n", "  still parked: lost with its port: A:1 \"a\"\n"});
    const auto again = run({"carry", path("old.json"), path("out.json")});
    EXPECT_EQ(again.code, kshmi::kBadFile);
    expectParts(again.err,
                {"out.json: the new version has 2 signals, 0 clients and 0 parked marks of its own already"});
}

}  // namespace
}  // namespace workbench::testing
