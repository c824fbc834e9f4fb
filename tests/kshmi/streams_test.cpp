#include <fstream>

#include "tests/kshmi/kshmi_test.h"

namespace kshmi {
namespace {

using testing::Finished;
using testing::kModel;
using testing::replaced;
using testing::StandardInput;

class Streams : public testing::KshmiTest {
protected:
    // Runs the line with "-" for the model, which the text is.
    Finished through(const std::string& text, std::vector<std::string> words) const {
        const StandardInput input(write(text, "in.json"));
        const bool isMember = words[0] == "block" || words[0] == "port";
        words.insert(words.begin() + (isMember ? 2 : 1), "-");
        return run(std::move(words));
    }
    // What the line makes of the file.
    std::string inFile(const std::string& line) const {
        write(kModel);
        runOn(line);
        return read();
    }
};

TEST_F(Streams, aChangedModelGoesOutAndWhatIsToldGoesElsewhere) {
    const Finished moved = through(kModel, {"move", "A", "B"});
    EXPECT_EQ(moved.code, 0);
    EXPECT_EQ(moved.out, inFile("move A B"));
    expectParts(moved.err, {"moved A to B\n", "standard output: saved with 2 signals and 2 clients\n"});
    const Finished json = through(kModel, {"unmark", "A:1", "--json"});
    EXPECT_EQ(json.out, inFile("unmark A:1"));
    expectParts(json.err, {"{\n  \"kshmi\": 1,\n  \"command\": \"unmark\",\n  \"file\": \"-\",", "\"saved\": true"});
    const Finished quiet = through(kModel, {"block", "remove", "A/B", "--quiet"});
    EXPECT_EQ(quiet.err, "");
    EXPECT_FALSE(testing::contains(quiet.out, "\"A/B\""));
    const Finished pruned = through(kModel, {"prune"});
    EXPECT_EQ(pruned.out, inFile("prune"));
    expectParts(pruned.err, {"standard output: saved after 1 removal"});
    const std::string made = run({"new", "-", "--name", "made"}).out;
    EXPECT_EQ(through(made, {"block", "add", "A", "--outputs", "y"}).code, 0);
}

TEST_F(Streams, whatIsNotChangedPassesThroughByteForByte) {
    const std::string odd = replaced(kModel, "\"name\": \"m\"", "\"name\":   \"m\"") + "\n\n";
    const Finished same = through(odd, {"mark", "A:1"});
    EXPECT_EQ(same.code, 1);
    EXPECT_EQ(same.out, odd);
    expectParts(same.err, {"already marked m/A:1 (y)\nstandard input: nothing to change\n"});
    const Finished dry = through(odd, {"mark", "A:2", "--dry-run"});
    EXPECT_EQ(dry.code, 0);
    EXPECT_EQ(dry.out, odd);
    EXPECT_EQ(through(odd, {"prune", "--dry-run", "--quiet"}).out, odd);
    const std::string clean = R"({"kestrelModel":1, "name": "m",  "blocks": []})";
    const Finished pruned = through(clean, {"prune"});
    EXPECT_TRUE(pruned.code == 1 && pruned.out == clean) << pruned.err;
}

TEST_F(Streams, anErrorLetsNothingOut) {
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{"mark", "nowhere"}, "standard input: \"nowhere\": the model \"m\" has no such block"},
        {{"set", "A", "--name"}, "--name needs a value behind it"},
        {{"mark", "--from", "-"}, "standard input (-) is named twice"},
    };
    for (const auto& [words, said] : cases) {
        const Finished finished = through(kModel, words);
        EXPECT_EQ(finished.code, 2);
        EXPECT_EQ(finished.out, "");
        expectParts(finished.err, {said});
    }
    const Finished broken = through("[", {"mark", "A"});
    EXPECT_EQ(broken.code, 3);
    EXPECT_EQ(broken.out, "");
    const Finished slid = through(
        replaced(kModel, "\"VisualType_\": \"scope\"", "\"VisualType_\": \"scope\",\n      \"markedName\": \"valid\""),
        {"mark", "A/B"});
    EXPECT_EQ(slid.code, 3);
    EXPECT_EQ(slid.out, "");
    expectParts(slid.err, {"\"kshmi check - --mend names\""});
    std::ofstream full("/dev/full");
    std::ostringstream err;
    const StandardInput input(write(kModel, "in.json"));
    EXPECT_EQ(runCommandLine({"mark", "-", "A:2"}, {.out = full, .err = err}), 3);
    EXPECT_EQ(err.str(), "kshmi: standard output: the model cannot be written there\n");
}

TEST_F(Streams, whatIsMadeOfOtherFilesGoesOutToo) {
    const std::string ours = write(kModel);
    const Finished merged = run({"merge", ours, ours, ours, "-o", "-"});
    EXPECT_EQ(merged.out, kModel);
    EXPECT_EQ(merged.err, "standard output: merged, with 2 signals and 2 clients\n");
    write(R"({"kestrelModel": 1, "name": "m", "blocks": [{"path": "A", "eid": "1", "outputs": ["y"]}]})", "next.json");
    const Finished carried = run({"carry", ours, path("next.json"), "-o", "-", "--json"});
    EXPECT_EQ(carried.code, 1);
    expectParts(carried.out, {"\"kestrelModel\": 1", "\"u-1\""});
    expectParts(carried.err, {"\"command\": \"carry\""});
    write(R"(<fmiModelDescription fmiVersion="2.0" modelName="u"><ModelVariables>
        <ScalarVariable name="a.x" causality="output"/></ModelVariables></fmiModelDescription>)",
          "unit.xml");
    const Finished imported = run({"import", path("unit.xml"), "-o", "-"});
    expectParts(imported.out, {"\"kestrelModel\": 1", "\"outputs\": [\"x\"]"});
    expectParts(imported.err, {"standard output: saved with 1 block and 1 port"});
}

TEST_F(Streams, severalFilesAreLookedAtInTurn) {
    write(kModel);
    write(replaced(kModel, "\"name\": \"m\"", "\"name\": \"n\""), "other.json");
    write("{", "bad.json");
    const Finished shown = run({"show", path(), path("other.json"), "A:1"});
    EXPECT_EQ(shown.code, 0) << shown.err;
    expectParts(shown.out, {"==> " + path() + " <==\nmodel m: ", "\n\n==> " + path("other.json") + " <==\nmodel n: "});
    const Finished asked = run({"query", path(), path("bad.json"), path("none.json"), path("other.json"), "A:1"});
    EXPECT_EQ(asked.code, 3);
    expectParts(asked.out, {"observed      m/A:1\n", "observed      n/A:1\n"});
    expectParts(asked.err, {"bad.json:1:2: not JSON", "none.json: cannot be opened"});
    EXPECT_EQ(run({"query", path(), path("other.json"), "A"}).code, 1);
    EXPECT_EQ(run({"ports", path(), path("other.json"), "nowhere"}).code, 2);
    EXPECT_EQ(run({"clients", path(), path("other.json")}).code, 0);
    const Finished senseless = run({"query", path(), path("other.json")});
    EXPECT_EQ(senseless.err, "kshmi: nothing to work on; name a REF, or give --all 'GLOB' or --from FILE\n");
    {
        const StandardInput list(write("A:1\nLogic/On/Fast\n", "list"));
        EXPECT_EQ(run({"query", path(), path("other.json"), "--from", "-", "--quiet"}).code, 0);
    }
    {
        const StandardInput list(write("A:2\n", "list"));
        expectParts(run({"query", path(), path("other.json"), "--from", "-"}).out, {"not observed  n/A:2\n"});
    }
    const StandardInput input(path());
    expectParts(run({"show", "-", path("other.json")}).out, {"==> standard input <==\nmodel m: "});
}

}  // namespace
}  // namespace kshmi
