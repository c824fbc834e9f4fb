#include <sys/stat.h>
#include <unistd.h>

#include "tests/kshmi/kshmi_test.h"
#include "tests/support/json_schema.h"
#include "workbench/files/atomic_file.h"
#include "workbench/text/error.h"

namespace kshmi {

using namespace workbench;
namespace {

using testing::kModel;
using testing::replaced;

// What is replaced in the model, and what is said of that.
struct Refusal {
    const char *what, *with, *message;
};

constexpr Refusal kNotJson[] = {
    {"\"name\": \"m\",", "\"name\" \"m\",", ":3:10: not JSON"},
    {"  ]\n}\n", "  ]\n", "ends too early"},
    {"{\n  \"kes", "\xEF\xBB\xBF{\n  \"kes", ":1:1: not JSON: the file starts with a byte order mark"},
    {"\"scope\"", R"("a\ud800b")", "half of a surrogate pair"},
    {"\"scope\"", R"("a\udc00")", "half of a surrogate pair"},
    {"\"scope\"", R"("a\ud800\n")", "half of a surrogate pair"},
    {"\"scope\"", "\"a\xFF\"", ":27:24: not JSON: some bytes are not UTF-8"},
    {"\"scope\"", "\"a\xC3(\"", "some bytes are not UTF-8"},
    {"\"scope\"", "“scope”", "there is a non-ASCII character outside a string"},
    {"  ]\n}\n", "  ]\n} 1", "follows the document"},
};

// What docs/model-file.schema.json tells, too.
constexpr Refusal kMisshapen[] = {
    {"\"kestrelModel\": 1", "\"kestrelModel\": 2", ":2: /kestrelModel: this program reads version 1"},
    {"  \"name\": \"m\",\n", "", "the key \"name\" is missing"},
    {"\"name\": \"m\"", "\"name\": \"m/n\"", ":3: /name: "},
    {"\"name\": \"m\"", "\"name\": 5", "/name: the number 5 appears where a text is expected"},
    {"\"path\": \"A/B:1\"", "\"path\": \"A//B\"", ":6: /blocks/1/path: \"A//B\" is not a block path"},
    {"\"eid\": \"2\"", "\"eid\": \"\"", ":6: /blocks/1/eid: "},
    {"\"eid\": \"2\", ", "", ":6: /blocks/1: the key \"eid\" is missing"},
    {"\"eid\": \"2\"", "\"eid\": \"2\", \"color~/\": 3", "/blocks/1/color~0~1: this key is unknown"},
    {"\"ssid\": 5", "\"ssid\": 0", "/blocks/3/chart/states/1/ssid: "},
    {"[\"p\", \"q\"]", "[\"p\", true]", "/blocks/2/outputs/1: true or false appears where a text"},
    {"\"SubPath_\": \"\"", "\"SubPath\": \"\"", "/signals/0/SubPath: this key is unknown"},
    {"      \"MaxPoints_\": 100,\n", "", ":11: /signals/0/MaxPoints_: "},
    {"\"MaxPoints_\": 100", "\"MaxPoints_\": [1]", ":21: /signals/0/MaxPoints_: "},
    {"\"VisualType_\": \"scope\"", "\"VisualType_\": 3", ":27: /signals/0/VisualType_: the number 3 appears where"},
    {"\"MaxPoints_\": 100", "\"MaxPoints_\": 2147483648", "number 2147483648 appears where a whole number from -"},
    {"\"Decimation_\": 2", "\"Decimation_\": 0", "the number 0 appears where a whole number from 1"},
    {"\"LogicalPortIndex_\": 0", "\"LogicalPortIndex_\": -4.9", ":17: /signals/0/LogicalPortIndex_: the number -4.9"},
    {"\"OutputPortIndex_\": 1", "\"OutputPortIndex_\": 1.5", ":16: /signals/0/OutputPortIndex_: the number 1.5"},
    {"\"IsFrameBased_\": 1", "\"IsFrameBased_\": 7", "the number 7 appears where true or false"},
    {"\"DomainType_\": \"\"", "\"DomainType_\": \"cw\"", "/signals/0/DomainType_: the domain \"cw\" is not one of"},
    {"\"DomainParams_\": {}", "\"DomainParams_\": {\"a\": 1}",
     "/signals/0/DomainParams_: an object whose \"a\" is no text appears"},
    {"\"UUID\": \"u-2\"", "\"UUID\": \"\"", "/signals/1/UUID: the signal has no UUID"},
    {"\"clients\": [\n", "\"clients\": [\n3,", "/clients/0: the number 3 appears where an object"},
    {"\"SignalUUID_\": \"u-9\"", "\"SignalUuid\": \"u-9\"", ":67: /clients/1/SignalUuid: this key is unknown"},
    {"      \"SignalUUID_\": \"u-9\",\n", "", ":62: /clients/1/SignalUUID_: "},
    {"\"UUID\": \"c-2\"", "\"UUID\": \"\"", ":63: /clients/1/UUID: the client has no UUID"},
    {"[\"A\"]", "[3]", ":51: /clients/0/ModelPath_: an array with something else in it appears"},
    {"\"UpdateRate_\": 1", "\"UpdateRate_\": 1.5", "/clients/0/UpdateRate_: the number 1.5 appears where a whole"},
    {"\"UpdateRate_\": 1", "\"UpdateRate_\": 4294967296", "number from 0 to 4294967295"},
    {"Part_\": true", "Part_\": \"on\"",
     "/clients/0/ObserveImaginaryPart_: the text \"on\" appears where true or false"},
};

// What only reading the values and the model tells.
constexpr Refusal kMeaningless[] = {
    {"\"MaxPoints_\": 100", R"("MaxPoints_": {"$class": "double", "size": [1, 2], "data": [1, 2]})", "double 1x2"},
    {"\"Decimation_\": 2", R"("Decimation_": {"$class": "double", "size": [1, 1], "data": ["NaN"]})", "number nan"},
    {"\"VisualType_\": \"scope\"", R"("VisualType_": {"$class": "char", "size": [2, 1], "data": "ab"})", "char 2x1"},
    {"\"SSID\": \"4\"", "\"SSID\": \"04\"", "/signals/1/DomainParams_: \"SSID\" is not a plain"},
    {"\"name\": \"m\"", "\"name\": \"m\", \"name\": \"m\"", "/name: this key appears twice"},
    {"\"eid\": \"2\"", "\"eid\": \"1\"",
     ":6: /blocks/1/eid: Model \"m\" has a block with the element identifier \"1\" (path \"A\")"},
    {"\"path\": \"A/B:1\"", "\"path\": \"A\"", ":6: /blocks/1/path: "},
    {"\"path\": \"A/B:1\"", "\"path\": \"A\\u0000\"", "/blocks/1/path: contains a NUL"},
    {"\"ssid\": 5", "\"ssid\": 4", "/blocks/3/chart: the SSID 4 appears twice"},
    {"\"MaxPoints_\": 100", "\"MaxPoints_\": 1e999", ":21: /signals/0/MaxPoints_: the number 1e999"},
    {"\"SubPath_\": \"\"", "\"SubPath_\": \"x\"", "/signals/0/SubPath_: the sub-path \"x\" is for chart items"},
    {"\"Activity\": \"Self\"", "\"Activity\": \"Data\"", "is not one of the item's: Self, Child, Leaf"},
    {"\"EID_\": \"1\"", "\"EID_\": \"9\"", ":14: /signals/0/EID_: the model has no block"},
    {"\"EID_\": \"1\"", "\"EID_\": \"9\"", "/model.json --dangling\""},
    {"\"BlockPath_\": \"A\",\n      \"EID_\": \"1\"", "\"BlockPath_\": \"Z\",\n      \"EID_\": \"\"",
     "/signals/0/BlockPath_: "},
    {"\"OutputPortIndex_\": 1", "\"OutputPortIndex_\": 3", "/signals/0/OutputPortIndex_: the block \"A\" has no"},
    {"\"UUID\": \"u-2\"", "\"UUID\": \"u-1\"", ":30: /signals/1/UUID: another signal"},
    {"\"SSID\": \"4\"", "\"SSID\": \"6\"", "/signals/1/DomainParams_: the chart \"Logic\" has no item"},
    {"\"Activity\": \"Self\"", "\"Activity\": \"Idle\"", "/signals/1/DomainParams_: the activity \"Idle\""},
    {"[\"NaN\", 1]", "[\"NaN\"]", "/clients/0/ObserverParams_/range: \"data\" has 1 element"},
    {"\"UUID\": \"c-2\"", "\"UUID\": \"c-1\"", ":63: /clients/1/UUID: another client has"},
    {"\"UpdateRate_\": 1", "\"UpdateRate_\": 1, \"UpdateRate_\": 2", "/clients/0/UpdateRate_: this key appears twice"},
    {"\"VisualType_\": \"scope\"", "\"UUID\": \"u-3\"", ":27: /signals/0/UUID: this key appears twice"},
    {"  \"clients\": [\n", "  \"parked\": [\n", "/parked/0/UUID: this key is unknown"},
    {"\"bus.leaf\"", "\"bus\\u0000leaf\"", "/clients/0/BusLeafPath_: the text \"bus\\x00leaf\" appears where a text"},
};

class ModelFiles : public testing::KshmiTest {
protected:
    // Whether the text, saved without a change that would show in it, gives the model in its canonical form.
    void expectSavedAsTheModel(const std::string& text) const {
        write(text);
        EXPECT_EQ(runOn("mark A:valid --exclude-from-save").code, 0);
        EXPECT_EQ(read(), kModel);
    }
    // The model with that change.
    std::string expectRefused(const Refusal& refusal) const {
        const std::string text = replaced(kModel, refusal.what, refusal.with);
        write(text);
        const testing::Finished finished = runOn("mark A:2");
        EXPECT_EQ(finished.code, kBadFile) << refusal.with;
        expectParts(finished.err, {refusal.message, "kshmi: " + path() + ":"});
        EXPECT_EQ(read(), text);
        return text;
    }
    static std::string textOf(const std::string& file) {
        std::ifstream in(KSHMI_SOURCE_DIR "/" + file, std::ios::binary);
        EXPECT_TRUE(in) << file;
        return {std::istreambuf_iterator<char>(in), {}};
    }
    void expectValid(const std::string& text) const {
        EXPECT_EQ(m_schema.faultsOf(text), std::vector<std::string>()) << text;
    }

    const ks_test::JsonSchema m_schema{textOf("docs/model-file.schema.json")};
};

TEST_F(ModelFiles, savingWhatWasLoadedGivesTheSameBytes) { expectSavedAsTheModel(kModel); }

TEST_F(ModelFiles, orderOfKeysAndLayoutDoNotMatter) {
    const std::string clients = kModel.substr(kModel.find("  \"clients\""));
    std::string text = replaced(kModel, ",\n" + clients, "\n}");
    text = replaced(text, "{\n  \"kestrelModel\"", "{" + replaced(clients, "  ]\n}\n", "],") + "\"kestrelModel\"");
    text = replaced(text, R"("Activity": "Self", "SSID": "4")", R"("SSID": "4",  "Activity": "\u0053elf")");
    expectSavedAsTheModel(replaced(text, R"("path": "A", "eid": "1")", R"("eid": "1", "path": "A")"));
}

TEST_F(ModelFiles, optionalFieldsMayBeLeftOutAndAreSaved) {
    const std::string text = replaced(kModel, "      \"LogicalPortIndex_\": 0,\n", "");
    expectSavedAsTheModel(replaced(text, "      \"DomainType_\": \"\",\n      \"DomainParams_\": {},\n", ""));
    expectSavedAsTheModel(
        replaced(replaced(kModel, ",\n      \"UpdateRate_\": 0", ""),
                 "\"DimensionChannel_\": 1,\n      \"ObserveImaginaryPart_\": false,\n      \"BusLeafPath_\": \"\"\n",
                 "\"DimensionChannel_\": {\"$class\": \"uint32\", \"size\": [1, 1], \"data\": [1]}\n"));
}

TEST_F(ModelFiles, withoutSignalsAndClientsNeitherListIsNeeded) {
    write(R"({"kestrelModel": 1, "name": "m", "blocks": [{"path": "A", "eid": "1", "outputs": ["y"]}]})");
    EXPECT_EQ(runOn("show").code, kSuccess);
    EXPECT_EQ(runOn("mark A").code, kSuccess);
    expectParts(read(), {"\"BlockPath_\": \"A\"", "\"clients\": []"});
}

TEST_F(ModelFiles, aClientWithoutAModelPathLosesItsSourceModel) {
    expectSavedAsTheModel(replaced(kModel, "\"SourceModel_\": \"\"", "\"SourceModel_\": \"other\""));
}

TEST_F(ModelFiles, whatDoesNotFitIsRefusedWithItsPlaceAndChangesNothing) {
    for (const Refusal& refusal : kNotJson) expectRefused(refusal);
    for (const Refusal& refusal : kMisshapen)
        EXPECT_FALSE(m_schema.faultsOf(expectRefused(refusal)).empty()) << refusal.with;
    for (const Refusal& refusal : kMeaningless) expectRefused(refusal);
}

TEST_F(ModelFiles, fitTheSchema) {
    expectValid(textOf("examples/cruise_control.kestrel.json"));
    expectValid(textOf("examples/empty.kestrel.json"));
    expectValid(R"({"kestrelModel": 1, "name": "m", "blocks": []})");
    expectValid(replaced(kModel, "\"name\": \"m\",",
                         R"("name": "m", "origin": {"kind": "fmu", "version": "2.0", "file": "e", "hash": "sha1:0",
                            "locals": true, "gone": [{"source": "a", "eid": "9"}]},)"));
    write(replaced(kModel, "\"OutputPortIndex_\": 1",
                   R"("OutputPortIndex_": {"$class": "uint8", "size": [1, 1], "data": [1]})"));
    for (const char* const line : {"mark A:2 Logic Logic/limit", "mark --all m/A/*",
                                   "observe A:2 --type t --params [1]", "rename n", "move A B", "renumber B 2,1"}) {
        EXPECT_EQ(runOn(line).code, kSuccess) << line;
        expectValid(read());
    }
}

TEST_F(ModelFiles, importedAndCarriedFilesWithParkedMarksFitTheSchema) {
    const std::string units = KSHMI_SOURCE_DIR "/examples/import/";
    const std::string first = path("first.json"), second = path("second.json"), third = path("third.json");
    EXPECT_EQ(run({"import", units + "electric_drive.xml", "-o", first, "--locals", "--name", "d"}).code, kSuccess);
    EXPECT_EQ(run({"mark", first, "--all", "*"}).code, kSuccess);
    EXPECT_EQ(run({"observe", first, "--all", "*", "--type", "t"}).code, kSuccess);
    // The two have no block in common: all marks are parked, with their clients.
    run({"carry", first, units + "vehicle.ssd", "-o", second});
    run({"carry", first, units + "electric_drive_2.xml", "-o", third});
    for (const char* const file : {"first.json", "second.json", "third.json"}) {
        expectValid(read(file));
        EXPECT_EQ(run({"check", path(file)}).code, kSuccess);
    }
    write(read("second.json"));
    EXPECT_EQ(runOn("rename n").code, kSuccess);
    expectValid(read());
    expectParts(read(), {"\"origin\": ", "\"parked\": ", "\"clients\": [", "\"markedName\": \"torque\"",
                         "\"lost\": \"block\",\n      \"unsure\": true,"});
}

TEST_F(ModelFiles, whatCannotBeReadIsNamed) {
    expectParts(run({"show", path("absent")}).err, {"No such file"});
    expectParts(run({"show", path(".")}).err, {"is a directory"});
    expectParts(run({"tour", path("absent")}).err, {"cannot be copied"});
}

TEST_F(ModelFiles, pipesAndWriteProtectedFilesAreNotReplaced) {
    constexpr uid_t kNobody = 65534;
    ::mkfifo(path("pipe").c_str(), 0600);
    EXPECT_THROW(AtomicFile(path("pipe")), Error);
    EXPECT_TRUE(std::filesystem::is_fifo(path("pipe")));

    write(kModel);
    std::filesystem::permissions(path("."), std::filesystem::perms::all);
    ::chmod(path().c_str(), 0444);
    // Nothing is protected from the superuser.
    const uid_t user = ::geteuid();
    const uid_t other = user == 0 ? kNobody : user;
    ASSERT_EQ(::seteuid(other), 0);
    EXPECT_THROW(AtomicFile{path()}, Error);
    ASSERT_EQ(::seteuid(user), 0);
    EXPECT_EQ(fileCount(), 2U);
}

TEST_F(ModelFiles, aSignalWaitsForTheEndOfTheSave) {
    EXPECT_EXIT(
        {
            AtomicFile file(path());
            ::raise(SIGTERM);
            if (fileCount() == 1) file.commit();
        },
        ::testing::KilledBySignal(SIGTERM), "");
    EXPECT_EQ(fileCount(), 1U);
    EXPECT_TRUE(std::filesystem::exists(path()));
}

TEST_F(ModelFiles, aSaveThatSplitsHardLinksWarns) {
    write(kModel);
    std::filesystem::create_hard_link(path(), path("second"));
    expectParts(runOn("mark A:2").err, {"kshmi: warning: " + path() +
                                        ": the file has 2 names (hard links); the others keep the old contents\n"});
    EXPECT_EQ(read("second"), kModel);
    EXPECT_FALSE(testing::contains(runOn("mark A/B:p").err, "warning"));
}

TEST_F(ModelFiles, aSaveFollowsALinkAndKeepsPermissions) {
    write(kModel);
    ::chmod(path().c_str(), 0640);
    std::filesystem::create_symlink("model.json", path("link"));
    EXPECT_EQ(run({"mark", path("link"), "A:2"}).code, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
    expectParts(read(), {"\"OutputPortIndex_\": 2"});
    EXPECT_EQ(static_cast<unsigned>(std::filesystem::status(path()).permissions()), 0640U);
    EXPECT_EQ(fileCount(), 2U);
}

}  // namespace
}  // namespace kshmi
