#include <fmt/format.h>

#include <sstream>

#include "tests/kshmi/kshmi_test.h"

namespace kshmi {
namespace {

using testing::contains;
using testing::Finished;
using testing::kModel;
using testing::replaced;

// What is selected, by every command alike.
class Selecting : public testing::KshmiTest {
protected:
    Selecting() { write(kModel); }

    // The names that a query tells, without whether they are observed.
    std::string selected(const std::string& words) const {
        std::istringstream lines(runOn("query " + words).out);
        std::string names;
        for (std::string line; std::getline(lines, line);) names += (names.empty() ? "" : " ") + line.substr(14);
        return names;
    }
};

TEST_F(Selecting, referencesAndPatternsMeanTheSame) {
    const std::pair<const char*, const char*> cases[] = {
        {"A", "m/A:1 m/A:2"},
        {"--all A", "m/A:1 m/A:2"},
        {"--all m/A", "m/A:1 m/A:2"},
        {"--all /A", "m/A:1 m/A:2"},
        {"/A:1", "m/A:1"},
        {"Logic", "m/Logic"},
        {"--all Logic", "m/Logic"},
        {"--all Logic/On/*", "m/Logic/On/Fast"},
        {"--all A:valid A:1", "m/A:1 m/A:2"},
        {"A --except *:valid", "m/A:1"},
        {"--all * --kind datum", "m/Logic/limit m/Logic/Both"},
        {"--all m/Logic* --kind chart --kind state", "m/Logic m/Logic/On/Fast m/Logic/Both"},
        {"--all * --activity Data", "m/Logic/limit (Data) m/Logic/Both (Data)"},
    };
    for (const auto& [words, names] : cases) EXPECT_EQ(selected(words), names) << words;

    write(replaced(kModel, "\"outputs\": [], \"chart\"", "\"outputs\": [\"mode\"], \"chart\""));
    EXPECT_EQ(selected("Logic"), "m/Logic:1 m/Logic");
    EXPECT_EQ(selected("--all Logic"), "m/Logic:1 m/Logic");
    EXPECT_EQ(selected("Logic --activity Leaf"), "m/Logic (Leaf)");
}

TEST_F(Selecting, everyCommandTakesAllOfIt) {
    write("A:valid\r\n\nm/Logic/limit\n", "list");
    const std::string list = " --from " + path("list");
    const auto outOf = [&](const std::string& line) {
        const Finished finished = runOn(line);
        return finished.out + finished.err;
    };
    expectParts(outOf("mark" + list), {"marked m/A:2 (valid)", "marked m/Logic/limit (Data)", "with 4 signals"});
    expectParts(outOf("query" + list), {"observed      m/A:2\nobserved      m/Logic/limit\n"});
    expectParts(outOf("observe" + list + " --type t"), {"client 3 (t) on m/A:2", "client 4 (t) on m/Logic/limit"});
    expectParts(outOf("set --hide" + list), {"changed signal 3", "changed signal 4"});
    expectParts(outOf("ports" + list), {"1 observed port\n"});
    const std::string shown = outOf("show" + list);
    expectParts(shown, {"A:2 (valid)", "limit", "[x] 2 valid"});
    for (const char* absent : {"speed", "1 y", "On/Fast", "ks_scope_observer"})
        EXPECT_FALSE(contains(shown, absent)) << shown;
    expectParts(outOf("clients" + list), {"model m: 2 clients"});
    expectParts(outOf("unobserve --except m/Logic*" + list),
                {"removed client 3", "saved with 4 signals and 3 clients"});
    expectParts(outOf("unmark --except m/Logic*" + list), {"removed signal 3", "saved with 3 signals"});
    expectParts(outOf("mark --all * --kind state"), {"marked m/Logic/Both (Self)", "already marked m/Logic/On/Fast"});

    {
        const testing::StandardInput input(write("A/B:p\nA/B:x\n", "lines"));
        expectParts(outOf("mark --from -"), {"standard input:2: \"A/B:x\""});
    }
    write("\n", "list");
    const std::string before = read();
    for (const char* command : {"unobserve --type t", "unobserve", "unmark", "set --hide"}) outOf(command + list);
    EXPECT_EQ(read(), before);
    write("A\nnowhere\n", "list");
    expectParts(outOf("query" + list), {"list:2: \"nowhere\": the model \"m\" has no such block"});
    write("A\n\xFF\n", "list");
    expectParts(outOf("query" + list), {"list:2: ", "not UTF-8"});
    expectParts(outOf("query --from " + path("none")), {"none: the list cannot be opened: "});
    expectParts(outOf("mark --except A"), {"nothing to work on"});
    expectParts(outOf("unmark --dangling --except A"), {"--except and --kind narrow"});
}

TEST_F(Selecting, whatCanBeReadInTwoWaysIsRefused) {
    const std::string twins = replaced(replaced(kModel, "{\"path\": \"A/B:1\"", "{\"path\": \"m\""),
                                       "{\"path\": \"A/B\"", "{\"path\": \"m/m\"");
    write(twins);
    for (const char* line : {"query m/m", "mark m/m:1", "move m/m x", "renumber m/m 1"}) {
        const Finished finished = runOn(line);
        EXPECT_EQ(finished.code, 2) << line;
        expectParts(finished.err, {R"(can be "m/m" or "m/m/m"; write )", "\"/m", "\"/m/m"});
    }
    EXPECT_EQ(read(), twins);
    for (const char* const command : {"show", "ports"}) {
        expectSaid(std::string(command) + " --below m/m", 2, R"("m/m": can be "m/m" or "m/m/m"; write )");
        expectSaid(std::string(command) + " --below m", 2, R"("m": can be the whole model or "m/m"; write "/m" for)");
        expectSaid(std::string(command) + " --below /m", 0, "");
    }
    EXPECT_EQ(selected("/m"), "m/m:1");
    EXPECT_EQ(selected("/m/m:q m"), "m/m/m:2 m/m:1");
    EXPECT_EQ(selected("m/m/m"), "m/m/m:1 m/m/m:2");
}

TEST_F(Selecting, whatIsNotThereIsAnsweredWithWhatMayBeMeant) {
    const std::pair<const char*, const char*> cases[] = {
        {"query a/b:p", "\"a/b:p\": the model \"m\" has no such block; did you mean \"A/B\""},
        {"query Logik", "did you mean \"Logic\"?"},
        {"query B:1", "did you mean \"A/B\"?"},
        {"query A:vlaid", "has no output port \"vlaid\"; it has 1 (y), 2 (valid); did you mean \"valid\"?"},
        {"query --all * --kind state --except *", "nothing is selected: --except and --kind leave nothing of it"},
        {"query A/*", "has no such block; a name is taken literally here: for a pattern give --all 'GLOB'"},
        {"query --all m/Nothing*", "patterns match whole paths"},
        {"query --all m/A[1]", R"(for the brackets themselves write "\[" and "\]")"},
        {"query nothing/like/it", "\"kshmi show\" lists them"},
        {"set --client 9 --update-rate 1", "no client has the UUID or position \"9\"; \"kshmi clients\" lists them"},
    };
    for (const auto& [line, message] : cases) expectParts(runOn(line).err, {message});
}

TEST_F(Selecting, messagesFitAScreen) {
    constexpr std::size_t kScreen = 80 * 24;
    std::string ports = "\"first\"";
    for (int i = 0; i < 6000; ++i) ports += fmt::format(", \"output number {}\"", i);
    write(replaced(kModel, "\"y\", \"valid\"", ports));
    const std::string digits(1'000'000, '7');
    const std::string lines[] = {
        "query A:fist",
        "query A:" + digits,
        "mark A --decimation " + digits,
        "query " + digits,
        "query --all " + digits,
        "query A --kind " + digits,
        "renumber A " + digits,
        "set --client " + digits + " --update-rate 1",
    };
    for (const std::string& line : lines) {
        const Finished finished = runOn(line);
        EXPECT_NE(finished.code, 0) << line.substr(0, 40);
        EXPECT_LT(finished.err.size(), kScreen) << line.substr(0, 40);
    }
    expectParts(runOn("query A:fist").err, {"it has 6001 ports; did you mean \"first\"?"});
    write(replaced(kModel, "\"ObserverParams_\": [null", "\"ObserverParams_\": [" + digits));
    const Finished refused = runOn("clients");
    EXPECT_NE(refused.code, 0);
    EXPECT_LT(refused.err.size(), kScreen);
}

TEST_F(Selecting, aParentIsMovedWithAllBelowIt) {
    write(replaced(replaced(kModel, "{\"path\": \"A\"", "{\"path\": \"T/S/A\""), "\"BlockPath_\": \"A\"",
                   "\"BlockPath_\": \"T/S/A\""));
    const Finished moved = runOn("move T/S X/Y");
    EXPECT_EQ(moved.code, 0) << moved.err;
    expectParts(moved.out, {"moved T/S/A to X/Y/A"});
    expectParts(read(), {"{\"path\": \"X/Y/A\"", "\"BlockPath_\": \"X/Y/A\""});
    expectParts(runOn("move X/Y/A/b Z").err, {"no such block"});
    expectParts(runOn("move X/Y Logic/Z").out, {"moved X/Y/A to Logic/Z/A"});
}

TEST_F(Selecting, aBlocksNameIsNotTakenForTheModels) {
    for (const char* line : {"rename A A2", "rename m/A", "rename x Logic", "rename A/B B2"}) {
        const Finished finished = runOn(line);
        EXPECT_EQ(finished.code, 2) << line;
        expectParts(finished.err, {"is a block, and this renames the model; \"kshmi move "});
        EXPECT_EQ(read(), kModel) << line;
    }
    expectParts(runOn("rename A --model").out, {"renamed m to A"});
}

}  // namespace
}  // namespace kshmi
