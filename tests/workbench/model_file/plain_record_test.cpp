#include <fmt/format.h>

#include <string>
#include <utility>

#include "tests/kshmi/kshmi_test.h"
#include "workbench/model_file/model_file.h"
#include "workbench/text/error.h"

// Signals that are read in one go are the same as when they are read member by member.
namespace workbench {
namespace {

using kshmi::testing::contains;
using kshmi::testing::replaced;

std::string signalText(const std::string& uuid, const std::string& path, const std::string& name) {
    return fmt::format(
        R"(    {{
      "UUID": "{}",
      "BlockPath_": "{}",
      "EID_": "1",
      "SubPath_": "",
      "OutputPortIndex_": 1,
      "LogicalPortIndex_": 0,
      "SignalName_": "y",
      "SubSysPath_": "Plant",
      "Decimation_": 12,
      "MaxPoints_": 1000,
      "TargetBufferedStreaming_": 1,
      "IsFrameBased_": 0,
      "HideInPLV_": 0,
      "DomainType_": "",
      "DomainParams_": {{}},
      "VisualType_": ""{}
    }})",
        uuid, path, name);
}

const std::string kMiddle = signalText("u-2", "Größe", ",\n      \"markedName\": \"größe\"");

std::string documentOf(const std::string& middle) {
    return "{\n  \"kestrelModel\": 1,\n  \"name\": \"m\",\n  \"blocks\": [],\n  \"signals\": [\n" +
           signalText("u-1", "Plant/A", "") + ",\n" + middle + ",\n" + signalText("u-3", "Plant/C", "") +
           "\n  ],\n  \"clients\": []\n}\n";
}

// What is read, with the lines of the middle one; or what is wrong.
std::string readingOf(const std::string& text) {
    try {
        const ModelFile file = readModelText("f", text);
        std::string result = modelText(file) + "at";
        for (std::size_t field = 0; field <= RecordLines::kMarkedName; ++field)
            result += fmt::format(" {}", file.signalLines.line(1, field));
        return result;
    } catch (const Error& error) {
        return error.what();
    }
}

// The same of a signal that does not start as the tool writes it.
std::string slowReadingOf(std::string middle) {
    if (middle[3] == ' ') middle[3] = '\t';
    return readingOf(documentOf(middle));
}

class PlainRecord : public kshmi::testing::KshmiTest {
protected:
    PlainRecord() { enterHost({}); }
};

TEST_F(PlainRecord, isReadAsOneThatIsNotPlain) {
    const std::string reading = readingOf(documentOf(kMiddle));
    EXPECT_EQ(reading, slowReadingOf(kMiddle));
    EXPECT_TRUE(reading.starts_with(documentOf(kMiddle))) << reading;
    for (const auto& [what, with] : {std::pair{"\"y\"", R"("\u0079")"},
                                     {" 12,", " 0,"},
                                     {" 12,", " 2147483648,"},
                                     {" 12,", " 012,"},
                                     {" 1000,", " -0,"},
                                     {" 1000,", " -1,"},
                                     {" 1000,", " 1.5,"},
                                     {"_\": 1,\n      \"IsF", "_\": 2,\n      \"IsF"},
                                     {"_\": 1,\n      \"IsF", "_\": true,\n      \"IsF"},
                                     {"{}", R"({"SSID": "4"})"},
                                     {"      \"EID_\": \"1\",\n", ""},
                                     {"\"EID_\"", "\"UUID\""},
                                     {"\"größe\"", "\"gr\xC3\""},
                                     {"\"größe\"", "1"},
                                     {"\"größe\"", "null"},
                                     {"\"größe\"", "\"y\",\n      \"more\": 1"}}) {
        const std::string middle = replaced(kMiddle, what, with);
        EXPECT_EQ(readingOf(documentOf(middle)), slowReadingOf(middle));
    }
}

TEST_F(PlainRecord, takesNothingThatWouldBeRefused) {
    const std::string swapped =
        replaced(replaced(documentOf(kMiddle), "\"clients\"", "\"none\""), "\"signals\"", "\"clients\"");
    EXPECT_TRUE(contains(readingOf(replaced(swapped, "\"none\"", "\"signals\"")),
                         "/clients/0/BlockPath_: this key is unknown"));
    for (std::size_t at = kMiddle.find('{'); at < kMiddle.size(); ++at)
        for (const char c : {'"', '\\', '}', '-', '7', ' ', '\n', '\xC3'}) {
            std::string changed = kMiddle;
            changed[at] = c;
            ASSERT_EQ(readingOf(documentOf(changed)), slowReadingOf(changed)) << changed;
        }
}

}  // namespace
}  // namespace workbench
