#include <fmt/format.h>

#include "kshmi/print/exit_codes.h"
#include "tests/kshmi/kshmi_test.h"

namespace kshmi {
namespace {

using testing::contains;
using testing::kModel;

class Help : public testing::KshmiTest {
protected:
    Help() { write(kModel); }
    testing::Finished runColoured(std::vector<std::string> words) const {
        std::ostringstream out;
        std::ostringstream err;
        const int code = runCommandLine(std::move(words), {.out = out, .err = err, .isColoured = true, .width = 80});
        return {code, out.str(), err.str()};
    }
};

TEST_F(Help, isToldByCommandTopicAndOption) {
    EXPECT_EQ(run({"help", "mark"}).out, run({"mark", "--help"}).out);
    expectParts(run({"help"}).out, {"Usage: kshmi", "  mark ", "  globs "});
    expectParts(run({"help", "globs"}).out, {"[a-z]"});
    expectParts(run({"help", "glob"}).err, {"did you mean \"globs\"?"});
    EXPECT_EQ(run({"help", "nonsense"}).code, 2);
    for (const char* const command : {"mark", "carry", "diff", "import", "merge", "record"}) {
        const std::string page = run({"help", command}).out;
        expectParts(page, {"-q, --quiet"});
        std::istringstream lines(page);
        for (std::string line; std::getline(lines, line);)
            EXPECT_TRUE(line.size() <= 80 || line.starts_with("  kshmi ")) << line;
    }
}

TEST_F(Help, exitCodesAreToldEverywhere) {
    std::ifstream in(KSHMI_SOURCE_DIR "/docs/kshmi.md", std::ios::binary);
    const std::string document{std::istreambuf_iterator<char>(in), {}};
    std::string topic = run({"help", "exit-codes"}).out;
    std::string manual = run({"help", "--man"}).out;
    for (std::string* const text : {&topic, &manual})
        for (std::size_t at = 0; (at = text->find('\n', at)) != std::string::npos;)
            text->replace(at, std::max(text->find_first_not_of(" \n", at), at + 1) - at, " ");
    for (const ExitCodeMeaning& meaning : kExitCodeMeanings) {
        EXPECT_EQ(meaning.code, &meaning - kExitCodeMeanings);
        expectParts(document, {fmt::format("| {} | {} |", static_cast<int>(meaning.code), meaning.text)});
        expectParts(topic, {fmt::format(" {}  {}", static_cast<int>(meaning.code), meaning.text)});
        expectParts(manual, {meaning.text});
    }
}

TEST_F(Help, asksWhatWasMeant) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
        {{"shwo", path()}, "there is no command \"shwo\"; did you mean \"show\"?"},
        {{"mark", path(), "A:2", "--decimaton", "3"}, "no option \"--decimaton\"; did you mean \"--decimation\"?"},
        {{"mark", "--decimaton=3"}, "did you mean \"--decimation\"?"},
        {{"--colour", "never", "show", path()}, "\"--colour\" in front of a command; did you mean \"--color\"?"},
        {{"tour", path(), "b"}, "one argument too many"},
        {{"mark", path(), "--all"},
         "--all needs a value behind it: --all GLOB, for example --all '*'; \"kshmi help mark\" explains"},
        {{"mark", path(), "--name"},
         "kshmi: --name needs a value behind it: --name TEXT; \"kshmi help mark\" explains it"},
        {{"show"}, "MODEL is required; \"kshmi help show\""},
        {{"block"}, "say what \"kshmi block\" is to do: add, remove, rename"},
        {{"mark", path(), path()}, "model.json\": is a file; this command works on one model at a time"},
        {{"set", path(), "A", "--name", "a", "--name", "b"}, "--name is given more than once; give it once"},
        {{"query", path(), "Logic", "--activity", "Chidl"},
         "is not one of Self, Child, Leaf, Data; did you mean \"Child\"?"},
    };
    for (const auto& [words, said] : cases) {
        const testing::Finished finished = run(words);
        EXPECT_EQ(finished.code, 2);
        expectParts(finished.err, {said});
    }
}

TEST_F(Help, colourAndQuietAreEveryCommands) {
    EXPECT_TRUE(contains(runColoured({"show", path()}).out, "\x1b["));
    EXPECT_FALSE(contains(runColoured({"show", path(), "--color", "never"}).out, "\x1b["));
    EXPECT_FALSE(contains(runColoured({"--color=never", "show", path()}).out, "\x1b["));
    EXPECT_TRUE(contains(run({"show", path(), "--color=always"}).out, "\x1b["));
    EXPECT_EQ(run({"show", path(), "--color=green"}).code, 2);
    EXPECT_EQ(runOn("mark A:2 --quiet").out, "");
    EXPECT_EQ(runOn("query A:2").code, 0);
    EXPECT_NE(runOn("mark nowhere --quiet").err, "");
}

TEST_F(Help, theExampleModelIsOne) {
    write(run({"example"}).out, "cruise.json");
    EXPECT_EQ(run({"show", path("cruise.json")}).code, 0);
    EXPECT_EQ(run({"mark", path("cruise.json"), "Plant/Brakes:1"}).code, 0);
    EXPECT_EQ(run({"unmark", path("cruise.json"), "Plant/Brakes:1"}).code, 0);
    EXPECT_EQ(read("cruise.json"), run({"example"}).out);
}

}  // namespace
}  // namespace kshmi
