#include "tests/kshmi/kshmi_test.h"
#include "tests/support/json_schema.h"
#include "workbench/change/moving.h"
#include "workbench/model_file/model_file.h"
#include "workbench/session/session.h"
#include "workbench/text/error.h"

namespace kshmi {
namespace {

using testing::contains;
using testing::Finished;
using testing::kModel;
using testing::replaced;

class StructureCommands : public testing::KshmiTest {
protected:
    StructureCommands() { write(kModel); }

    // "block add x" with the model's file behind both words.
    Finished change(const std::string& line) const {
        std::istringstream in(line);
        std::vector<std::string> words;
        for (std::string word; in >> std::quoted(word);) words.push_back(word);
        words.insert(words.begin() + 2, path());
        return run(std::move(words));
    }
    static std::string withoutBlanks(std::string text) {
        std::erase_if(text, [](char c) { return c == ' ' || c == '\n'; });
        return text;
    }
    // The blocks' lines in the file.
    std::string blocks() const {
        const std::string text = read();
        const std::size_t start = text.find("\"blocks\"");
        return text.substr(start, text.find("\"signals\"") - start);
    }
};

TEST_F(StructureCommands, aModelIsWrittenWithoutAnEditor) {
    std::filesystem::remove(path());
    EXPECT_EQ(run({"new", path(), "--name", "größe"}).code, kSuccess);
    for (const char* const line :
         {"block add größe/In/Speed --outputs speed,valid", "block add Mode --chart --eid 40 --outputs mode",
          "chart add-state Mode On/Fast --ssid 4", "chart add-state größe/Mode On", "chart add-datum Mode limit",
          "port add In/Speed raw --at 1", "port add In/Speed \"a,b\"", "block add Out", "port rename Mode 1 gear",
          "block rename In Inputs"})
        EXPECT_EQ(change(line).err, "") << line;
    EXPECT_EQ(read(), R"({
  "kestrelModel": 1,
  "name": "größe",
  "blocks": [
    {"path": "Inputs/Speed", "eid": "1", "outputs": ["raw", "speed", "valid", "a,b"]},
    {"path": "Mode", "eid": "40", "outputs": ["gear"], "chart": {"states": [{"path": "On/Fast", "ssid": 4}, {"path": "On", "ssid": 5}], "data": [{"name": "limit", "ssid": 6}]}},
    {"path": "Out", "eid": "41", "outputs": []}
  ],
  "signals": [],
  "clients": []
}
)");
    const std::string made = read();
    EXPECT_EQ(run({"new", path(), "--name", "other"}).code, kBadFile);
    EXPECT_EQ(run({"new", path("b"), "--name", "a/b"}).code, kWrongUsage);
    EXPECT_EQ(read(), made);
    EXPECT_EQ(fileCount(), 1U);
}

TEST_F(StructureCommands, whatCannotBeIsRefusedAndChangesNothing) {
    const std::pair<const char*, const char*> refusals[] = {
        {"block add A", "has a block with the path \"A\""},
        {"block add m/A", "has a block with the path \"A\""},
        {"block add C//D", "is not a block path"},
        {"block add C --eid 4", "has a block with the element identifier \"4\""},
        {"block add C --outputs a,,b", "a name is empty"},
        {"block add C --outputs a,b,a", "the port name \"a\" appears twice"},
        {"block remove C", "has no such block"},
        {"block remove A/B", "\"A/B\" is marked: signal 3 on m/A/B:2; give --unmark"},
        {"block remove A", "\"A\" has 2 blocks below it; give --recursive"},
        {"block remove A --recursive", "\"A\" is marked: signal 1 on m/A:1, signal 3 on m/A/B:2; give --unmark"},
        {"block remove Logic", "\"Logic\" is marked: signal 2 on m/Logic/On/Fast (Self); give --unmark"},
        {"block rename A Logic", "has a block with the path \"Logic\""},
        {"block rename A C/D", "\"C/D\": a name cannot contain '/'"},
        {"block rename A \"\"", "a name is empty"},
        {"port add A y", "has a port \"y\" already, number 1"},
        {"port add A z --at 4", "a new port can have a number from 1 to 3, not 4"},
        {"port add A z --at 0", "give a whole number from 1"},
        {"port add C z", "has no such block"},
        {"port remove A y", "port 1 (y) of \"A\" is marked: signal 1 on m/A:1; give --unmark"},
        {"port remove A z", "no output port \"z\""},
        {"port remove A/B 1:1", "\"1:1\": is not a port of \"A/B\""},
        {"port rename A y valid", "has a port \"valid\" already, number 2"},
        {"chart add-state Logic On/Fast", "has \"On/Fast\" already, with the SSID 4"},
        {"chart add-state Logic a//b", "is not a state's path"},
        {"chart add-state Logic Off --ssid 8", "has the SSID 8 already, for \"Both\""},
        {"chart add-datum Logic x --ssid 0", "has the SSID 0 already, for itself"},
        {"chart remove Logic", "the chart itself is a block"},
        {"chart remove Logic/On/Fast", "\"On/Fast\" is marked: signal 2 on m/Logic/On/Fast (Self); give --unmark"},
        {"chart remove A", "name a state or datum"},
        {"chart rename Logic/limit Both", "has \"Both\" already, with the SSID 8"},
        {"chart rename Logic/On/Fast a/b", "a name cannot contain '/'"},
        {"block paint", ""},
        {"block", ""},
    };
    EXPECT_EQ(runOn("mark A/B:q").code, kSuccess);
    const std::string before = read();
    for (const auto& [line, message] : refusals) {
        const Finished finished = std::string(line).find(' ') == std::string::npos ? run({line}) : change(line);
        EXPECT_EQ(finished.code, kWrongUsage) << line << finished.err;
        EXPECT_EQ(finished.out, "") << line;
        expectParts(finished.err, {message});
        EXPECT_EQ(read(), before) << line;
    }
}

TEST_F(StructureCommands, marksAndClientsFollow) {
    EXPECT_EQ(runOn("mark A/B:q").code, kSuccess);
    EXPECT_EQ(runOn("observe A/B:q --type t").code, kSuccess);
    expectParts(change("port add A/B new --at 1").out,
                {"added port 1 (new) to A/B", "port 1 (p) becomes 2", "signal \"q\" on port 2 follows to port 3"});
    expectParts(change("port remove A/B new").out,
                {"port 3 (q) becomes 2", "signal \"q\" on port 3 follows to port 2"});
    EXPECT_EQ(change("port rename A/B q quality").code, kSuccess);
    EXPECT_EQ(runOn("query A/B:quality A:1 Logic/On/Fast").code, kSuccess);
    EXPECT_EQ(runOn("query A/B:1").code, kNothing);
    expectParts(change("block rename A Z").out, {"renamed A/B:1 to Z/B:1", "following: 2 signals, 2 clients"});
    expectParts(change("chart rename Logic/On/Fast Quick").out, {"renamed On/Fast to On/Quick", "following: 1 signal"});
    EXPECT_EQ(change("chart add-state Logic On --ssid 9").code, kSuccess);
    EXPECT_EQ(change("chart rename Logic/On Off").code, kSuccess);
    EXPECT_EQ(runOn("query Z/B:quality Z:1 Logic/Off/Quick").code, kSuccess);
    expectParts(read(), {R"("ModelPath_": ["Z"])", R"("ModelPath_": ["Z/B"])", R"("SubPath_": "Off/Quick")"});
    EXPECT_EQ(run({"query", path(), "Z/B:quality"}).code, kSuccess);
}

TEST_F(StructureCommands, whatIsRemovedTakesItsMarksAlongWhenAskedTo) {
    const std::string before = read();
    const Finished tried = change("port remove A y --unmark --dry-run");
    EXPECT_EQ(tried.code, kSuccess);
    EXPECT_EQ(read(), before);
    const Finished port = change("port remove A y --unmark");
    expectParts(port.out, {"removed port 1 (y) of A", "port 2 (valid) becomes 1", "saved with 1 signal and 2 clients"});
    expectParts(port.err, {"left without a signal: client 1 (ks_scope_observer)"});
    expectParts(blocks(), {R"({"path": "A", "eid": "1", "outputs": ["valid"]})"});
    expectParts(change("chart add-state Logic On").out, {"(SSID 9)"});
    expectParts(change("chart remove Logic/On").err, {"\"On\" has 1 state below it; give --recursive"});
    expectParts(change("chart remove Logic/On --recursive --unmark").out,
                {"removed On/Fast of Logic", "1 signal went"});
    expectParts(change("block remove A --recursive").out, {"removed block A\n", "removed block A/B:1\n"});
    EXPECT_EQ(blocks().find("\"A"), std::string::npos);
    EXPECT_EQ(change("block remove Logic").code, kSuccess);
    expectParts(read(), {"\"blocks\": [],\n  \"signals\": [],"});
    expectParts(change("block add B").out, {"element identifier 2"});
}

TEST_F(StructureCommands, identifiersOfWhatIsGoneAreNotGivenAgain) {
    EXPECT_EQ(runOn("mark A/B:1:1").code, kSuccess);
    EXPECT_EQ(runOn("observe A/B:1:1 --type t").code, kSuccess);
    write(replaced(read(), "\"eid\": \"4\"", "\"eid\": \"x\""));
    write(replaced(read(), "\"EID_\": \"4\"", "\"EID_\": \"x\""));
    write(replaced(read(), "\"ModelPathEID_\": [\"1\"]", "\"ModelPathEID_\": [\"1\", \"70\"]"));
    expectParts(change("block add C").out, {"element identifier 71"});
    // There is no number behind the largest.
    change("block add Last --eid 18446744073709551615");
    expectParts(change("block add D").out, {"element identifier 18446744073709551614"});
    expectParts(change("block add E").out, {"element identifier 18446744073709551613"});
    change("block add Z --chart");
    change("chart add-state Z Last --ssid 4294967295");
    expectParts(change("chart add-datum Z d").out, {"SSID 4294967294"});
}

TEST_F(StructureCommands, whatIsChangedIsToldAsJson) {
    std::ifstream file(KSHMI_OUTPUT_SCHEMA, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const ks_test::JsonSchema schema(text);
    const std::pair<std::string, const char*> cases[] = {
        {"block add C --outputs a", R"("added": [{"kind": "block", "block": "m/C"}])"},
        {"block rename C D", R"({"kind": "block", "block": "m/D", "from": "m/C"})"},
        {"port add A z --at 1", R"("added": [{"kind": "port", "block": "m/A", "port": 1, "portName": "z"}])"},
        {"port rename A z x", R"("changed": [{"kind": "port", "block": "m/A", "port": 1, "portName": "x"}])"},
        {"port rename A x x", R"("unchanged": [{"kind": "port", "block": "m/A", "port": 1, "portName": "x"}])"},
        {"port remove A x", R"("removed": [{"kind": "port", "block": "m/A", "port": 1, "portName": "x"}])"},
        {"chart add-state Logic Off", R"("added": [{"kind": "item", "block": "m/Logic", "item": "Off"}])"},
        {"chart rename Logic/Off Out", R"({"kind": "item", "block": "m/Logic", "item": "Out", "from": "Off"})"},
        {"chart remove Logic/Out", R"("removed": [{"kind": "item", "block": "m/Logic", "item": "Out"}])"},
        {"block remove D", R"("removed": [{"kind": "block", "block": "m/D"}])"},
    };
    for (const auto& [line, part] : cases) {
        const std::string out = change(line + " --json").out;
        EXPECT_EQ(schema.faultsOf(out), std::vector<std::string>()) << line << out;
        const std::string command = line.substr(0, line.find(' ', line.find(' ') + 1));
        expectParts(out, {"\"command\": \"" + command + "\""});
        EXPECT_NE(withoutBlanks(out).find(withoutBlanks(part)), std::string::npos) << part << "\nin\n" << out;
    }
}

TEST_F(StructureCommands, parentsThatAreNoBlocksCanBeMoved) {
    EXPECT_EQ(change("block add Tank/Level").code, kSuccess);
    EXPECT_EQ(runOn("move Tank Vessel/Inner").code, kSuccess);
    EXPECT_EQ(change("block rename Vessel Boat").code, kSuccess);
    expectParts(blocks(), {"\"Boat/Inner/Level\""});
    expectParts(change("block remove Boat").err, {"\"Boat\" has 1 block below it"});
    EXPECT_EQ(change("block remove Boat --recursive").code, kSuccess);
    EXPECT_EQ(read(), kModel);
}

TEST_F(StructureCommands, aBlockThatIsAddedCanBeUsedAtOnce) {
    using namespace workbench;
    workbench::enterHost(WarningSink());
    Session session(path());
    kestrel::Model& model = session.model();
    moveBlocks(session, u"A", u"Z");
    EXPECT_TRUE(session.isObserved(*model.findByPath(u"Z"), 1)) << "also where nobody has asked before";
    moveBlocks(session, u"Z", u"A");
    const kestrel::Block& added = model.add({.path = u"New", .eid = "9", .outputs = {u"y"}});
    EXPECT_NE(added.handle, 0.0);
    EXPECT_EQ(model.findByHandle(added.handle), &added);
    const double handle = model.findByPath(u"Logic")->handle;
    EXPECT_EQ(model.remove(u"A"), 3U);
    EXPECT_EQ(model.findByHandle(handle), model.findByPath(u"Logic"));
    EXPECT_EQ(model.findByEid("9")->path, u"New");
    EXPECT_THROW(model.remove(u"A"), kestrel::ModelError);
}

}  // namespace
}  // namespace kshmi
