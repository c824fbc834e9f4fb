#include "tests/kshmi/kshmi_test.h"
#include "tests/workbench/import/import_test.h"
#include "workbench/import/foreign_file.h"

namespace workbench {
namespace {

using namespace testing;
using kshmi::testing::contains;
using kshmi::testing::Finished;

class ImportCommand : public kshmi::testing::KshmiTest {
protected:
    Finished import(std::vector<std::string> more = {}, const std::string& source = "unit.xml") const {
        std::vector<std::string> words{"import", path(source), "-o", path()};
        words.insert(words.end(), more.begin(), more.end());
        return run(words);
    }
    std::string eid(const std::string& blockPath, const std::string& file = "model.json") const {
        const ModelFile model = readModelFile(path(file));
        const kestrel::Block* const block = model.model.findByPath(toUtf16(blockPath));
        return block ? block->eid : "none";
    }
};

TEST_F(ImportCommand, writesAModelFileThatRemembersWhereItComesFrom) {
    write(fmi2("<ScalarVariable name='a.x' causality='output'/><ScalarVariable name='u' causality='input'/>\n"),
          "unit.xml");
    const Finished finished = import();
    EXPECT_EQ(finished.code, 0) << finished.err;
    EXPECT_EQ(finished.out, path("unit.xml") + ": fmi 2.0, model \"Engine\"\nnot taken over:\n  inputs (1): u\n" +
                                path() + ": saved with 1 block and 1 port\n");
    EXPECT_EQ(read(), R"({
  "kestrelModel": 1,
  "name": "Engine",
  "origin": {"kind": "fmi", "version": "2.0", "file": "unit.xml", "hash": ")" +
                          hashOfFile(path("unit.xml")) + R"("},
  "blocks": [
    {"path": "a", "eid": "af63dc4c8601ec8c", "source": "a", "outputs": ["x"]}
  ],
  "signals": [],
  "clients": []
}
)");
}

TEST_F(ImportCommand, keepsOriginAndSourcesInFilesThatAreChangedAfterwards) {
    write(outputs({"a.x", "b.y"}), "unit.xml");
    ASSERT_EQ(import({"--locals"}).code, 0);
    const std::string before = read();
    ASSERT_EQ(runOn("mark a:x").code, 0);
    ASSERT_EQ(runOn("unmark a:x").code, 0);
    EXPECT_EQ(read(), before);
    ASSERT_EQ(runOn("move a c/d").code, 0);
    EXPECT_TRUE(contains(read(), R"({"path": "c/d", "eid": "af63dc4c8601ec8c", "source": "a", "outputs": ["x"]})"));
    EXPECT_TRUE(contains(read(), R"("locals": true)"));
    write(fmi2(R"(<ScalarVariable name="a.x" valueReference="7" causality="output"><Real/></ScalarVariable>
<ScalarVariable name="a.inner" valueReference="8" causality="local"><Real/></ScalarVariable>)"),
          "unit.xml");
    ASSERT_EQ(import({"--update"}).code, 0);
    EXPECT_TRUE(contains(read(), R"("outputs": ["x", "inner"])")) << read();
    EXPECT_EQ(workbench::hashOfFile(write(std::string(100'000, 'a'), "large")),
              "sha1:c4d4b30851182fc4eb8675494d42fd7f17e29c93");
}

TEST_F(ImportCommand, keepsIdentifiersFromVersionToVersion) {
    write(outputs({"a.x", "b.x", "c.x"}), "unit.xml");
    ASSERT_EQ(import().code, 0);
    const std::string a = eid("a");
    const std::string b = eid("b");
    ASSERT_EQ(runOn("move a moved").code, 0);
    write(outputs({"d.x", "b.y", "a.x"}), "unit.xml");
    const Finished next = import({"--update"});
    EXPECT_TRUE(contains(next.out, "2 blocks keep the identifier, 1 new, 1 gone\n")) << next.out << next.err;
    EXPECT_EQ(eid("a"), a);
    EXPECT_EQ(eid("b"), b);
    const std::string once = read();
    EXPECT_TRUE(contains(once, R"("gone": [{"source": "c", "eid": )"));
    EXPECT_EQ(import({"--update", "--quiet"}).out, "");
    EXPECT_EQ(read(), once);

    // An author's own identifiers stay, too, found by path; and one that is taken goes to nobody else.
    write(R"({"kestrelModel": 1, "name": "old", "blocks": [{"path": "b", "eid": "7", "outputs": []},)"
          R"( {"path": "other", "eid": ")" +
              a + R"(", "outputs": []}], "signals": [], "clients": []})",
          "old.json");
    std::filesystem::remove(path());
    ASSERT_EQ(import({"--previous", path("old.json")}).code, 0);
    EXPECT_EQ(eid("b"), "7");
    EXPECT_NE(eid("a"), a);
    EXPECT_NE(eid("a"), "none");
}

TEST_F(ImportCommand, givesABlockThatComesBackItsIdentifierAgain) {
    const auto version = [&](const std::vector<std::string>& names) {
        write(outputs(names), "unit.xml");
        ASSERT_EQ(import({std::filesystem::exists(path()) ? "--update" : "--quiet"}).code, 0);
    };
    write(R"({"kestrelModel": 1, "name": "old", "blocks": [{"path": "a", "eid": "7", "outputs": []}], "signals": [],)"
          R"( "clients": []})");
    version({"a.x", "b.x"});
    version({"b.x"});
    version({"b.x", "c.x"});
    version({"a.x", "b.x"});
    EXPECT_EQ(eid("a"), "7");
}

TEST_F(ImportCommand, putsNoMarksOnBlocksUnseen) {
    write(outputs({"a.x"}), "unit.xml");
    ASSERT_EQ(import().code, 0);
    const std::string plain = read();
    EXPECT_EQ(import().err, "kshmi: " + path() +
                                ": exists already; give another name, or --update to import the next "
                                "version onto it\n");
    ASSERT_EQ(runOn("mark a:x").code, 0);
    const std::string marked = read();
    const Finished refused = import({"--update"});
    EXPECT_EQ(refused.code, 2);
    EXPECT_TRUE(contains(refused.err,
                         "holds 1 signal and 0 clients, which could end up on other ports; import to a new "
                         "file with --previous "))
        << refused.err;
    EXPECT_EQ(read(), marked);
    write(kshmi::testing::replaced(
        plain, "\"clients\": []",
        R"("clients": [], "parked": [{"signal": {"UUID": "p"}, "clients": [], "lost": "port", "from": "m"}])"));
    EXPECT_EQ(import({"--update"}).code, 2) << "parked marks, too";
    std::filesystem::remove(path());
    EXPECT_EQ(import({"--update"}).code, kshmi::kBadFile);
    std::filesystem::create_symlink(path("nowhere.json"), path());
    EXPECT_EQ(import().code, kshmi::kBadFile);
    EXPECT_TRUE(std::filesystem::is_symlink(path()));
    std::filesystem::remove(path());
    EXPECT_EQ(fileCount(), 1U);
}

TEST_F(ImportCommand, reportsAsJsonWithEveryName) {
    write(outputs({"a.x", "", "x"}), "unit.xml");
    const Finished finished = import({"--json", "--name", "mine"});
    EXPECT_EQ(finished.err, "kshmi: warning: " + path("unit.xml") + ":4: a variable without a name; left out\n");
    EXPECT_EQ(finished.out, R"({
  "kshmi": 1,
  "command": "import",
  "file": ")" + path() + R"(",
  "model": "mine",
  "kind": "fmi",
  "version": "2.0",
  "blocks": 2,
  "ports": 2,
  "kept": 0,
  "gone": 0,
  "dropped": [],
  "warnings": [{"text": "a variable without a name; left out", "count": 1, "line": 4, "names": [""]}]
}
)");
    EXPECT_EQ(
        import({}, "none.xml").err,
        "kshmi: " + path() + ": exists already; give another name, or --update to import the next version onto it\n");
    EXPECT_EQ(run({"import", path("none.xml"), "-o", path("new.json")}).err,
              "kshmi: " + path("none.xml") +
                  ": cannot be opened: No such file or directory; check the path and its permissions\n");
    EXPECT_EQ(run({"import", path("."), "-o", path("new.json")}).err,
              "kshmi: " + path(".") + ": is a directory; name a file\n");
}

TEST_F(ImportCommand, readsArchivesAndFindsThemFromTheModel) {
    std::filesystem::create_directory(path("units"));
    write(zipOf({{"modelDescription.xml", outputs({"v"})}}), "units/u.fmu");
    ASSERT_EQ(import({}, "units/u.fmu").code, 0);
    const Origin origin = *readModelFile(path()).extras.origin;
    EXPECT_EQ(origin.kind, "fmu");
    EXPECT_EQ(origin.file, "units/u.fmu");
    EXPECT_EQ(origin.hash, hashOfFile(path("units/u.fmu")));
    write("abc", "abc");
    EXPECT_EQ(hashOfFile(path("abc")), "sha1:a9993e364706816aba3e25717850c26c9cd0d89d");
}

TEST_F(ImportCommand, refusesOriginsThatAreNone) {
    const auto refusal = [&](const std::string& origin) {
        write("{\"kestrelModel\": 1, \"name\": \"m\", \"origin\": " + origin +
              ", \"blocks\": [], \"signals\": [], \"clients\": []}");
        return refusalOf([&] { readModelFile(path()); }).substr(path().size());
    };
    EXPECT_EQ(refusal(R"({"kind": "csv", "version": "", "file": "", "hash": ""})"),
              ":1: /origin/kind: a model comes from ssd, ssp, fmi or fmu; correct it");
    EXPECT_EQ(refusal(R"({"kind": "fmu"})"), ":1: /origin: the key \"version\" is missing; add it");
    EXPECT_EQ(refusal(R"({"kind": "fmu", "locals": 1})"),
              ":1: /origin/locals: the number 1 appears where true or false is expected; correct it");
    EXPECT_EQ(refusal(R"({"kind": "fmu", "gone": [{"eid": true}]})"),
              ":1: /origin/gone/0/eid: true or false appears where a text is expected; correct it");
}

}  // namespace
}  // namespace workbench
