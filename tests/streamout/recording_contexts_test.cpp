#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "streamout/file_recording_context.h"
#include "streamout/wks_recording_context.h"

using streamout::FileRecordingContext;
using streamout::StreamOutBlockContext;
using streamout::WksRecordingContext;

namespace {

class CsvContext : public FileRecordingContext {
public:
    using FileRecordingContext::FileRecordingContext;
    explicit CsvContext(std::u16string path, FilePropertiesMap properties = {})
        : FileRecordingContext(std::move(path), u"model", "domain", u"model/Block", std::move(properties)) {}

    std::string getSourceID() const override { return "source"; }
    std::string getFileExtension() const override { return ".csv"; }
};

WksRecordingContext withFormat(const std::string& format) {
    return {u"variable", u"model", "source", format, "2", "100", false};
}

TEST(FileRecordingContext, keepsEachArgumentForItsGetter) {
    CsvContext context(u"/tmp/run.csv", u"cruise", "wheels", u"cruise/Sensors", {{"gain", 2.0}});
    EXPECT_EQ(std::tuple(context.getFullFilePath(), context.getModelName(), context.getLoggingDomain(),
                         context.getBlockPath(), context.getFileExtensionAsString()),
              std::tuple(u"/tmp/run.csv", u"cruise", "wheels", u"cruise/Sensors", ".csv"));
    EXPECT_TRUE((context.getFilePropertiesMap() == FileRecordingContext::FilePropertiesMap{{"gain", 2.0}}));
    EXPECT_EQ(context.getDecimation() + context.getMaxPoints(), "");
    context.setDecimation("ten");
    context.setMaxPoints("inf");
    EXPECT_EQ(std::tuple(context.getDecimation(), context.getMaxPoints()), std::tuple("ten", "inf"));
}

TEST(FileRecordingContext, namesTheFileByWhatFollowsTheLastSeparator) {
    const std::pair<std::u16string, std::u16string> rows[] = {
        {u"/data/run 1.csv", u"run 1.csv"},
        {u"run.csv", u"run.csv"},
        {u"/data/", u""},
        {u"/", u""},
        {u"", u""},
        {u"/data/größe", u"größe"},
        {u"a//b", u"b"},
        {u"a/b\\c", u"b\\c"},
        {u"a/.csv", u".csv"},
        {u"a/\xD800", u"\xD800"},
    };
    for (const auto& [path, name] : rows) EXPECT_EQ(CsvContext(path).getFileName(), name);
}

TEST(FileRecordingContext, splitsItsPropertiesInTheirOrderAndOnlyAppends) {
    const CsvContext context(u"f", {{"gain", 2.0}, {"unit", u"m/s"}, {"offset", -1.5}, {"title", u""}, {"rate", 0.0}});
    std::vector<std::string> expectedNumbers{"before"}, expectedTexts{"before"};
    for (const auto& [name, value] : context.getFilePropertiesMap())
        (value.which() == 0 ? expectedNumbers : expectedTexts).push_back(name);

    std::vector<std::string> numberNames{"before"}, textNames{"before"};
    std::vector<double> numbers{7.0};
    std::vector<std::u16string> texts{u"old"};
    context.getProperties(numberNames, numbers, textNames, texts);
    EXPECT_EQ(numberNames, expectedNumbers);
    EXPECT_EQ(textNames, expectedTexts);
    ASSERT_EQ(numbers.size(), 4U);
    ASSERT_EQ(texts.size(), 3U);
    const auto properties = context.getFilePropertiesMap();
    for (std::size_t i = 1; i < 4; ++i) EXPECT_EQ(boost::get<double>(properties.at(numberNames[i])), numbers[i]);
    for (std::size_t i = 1; i < 3; ++i) EXPECT_EQ(boost::get<std::u16string>(properties.at(textNames[i])), texts[i]);
}

TEST(FileRecordingContext, asksADerivedClassForPropertiesAndKey) {
    class Derived final : public CsvContext {
    public:
        using CsvContext::CsvContext;
        std::string getLoggingDomain() const override { return "moved"; }
        FilePropertiesMap getFilePropertiesMap() const override { return {{"own", 1.0}}; }
    };
    const Derived context(u"f", {{"base", u"x"}});
    EXPECT_EQ(static_cast<const StreamOutBlockContext&>(context).getBlockId(), "moved");

    std::vector<std::string> numberNames, textNames;
    std::vector<double> numbers;
    std::vector<std::u16string> texts;
    context.getProperties(numberNames, numbers, textNames, texts);
    EXPECT_EQ(numberNames, std::vector<std::string>{"own"});
    EXPECT_TRUE(textNames.empty());
}

TEST(WksRecordingContext, keepsEachArgumentForItsGetter) {
    const WksRecordingContext context(u"speed", u"cruise", "source:1", "array", "2", "100", true);
    EXPECT_EQ(std::tuple(context.getVariableName(), context.getModelName(), context.getSourceID(), context.getFormat(),
                         context.getDecimation(), context.getMaxPoints(), context.getFixedPtAsDoubleFlag()),
              std::tuple(u"speed", u"cruise", "source:1", "array", "2", "100", true));
    EXPECT_FALSE(withFormat("array").getFixedPtAsDoubleFlag());
}

TEST(WksRecordingContext, knowsTheStructFormatsByTheirExactNames) {
    for (const char* const format : {"struct", "structwithtime", "struct2D"})
        EXPECT_TRUE(withFormat(format).usingStructFormat()) << format;
    for (const char* const format : {"", "Struct", "struct ", "struct2d", "structwithtime2", "array", "timeseries"})
        EXPECT_FALSE(withFormat(format).usingStructFormat()) << format;
}

TEST(WksRecordingContext, isKnownByItsModelNameAlsoWhenAFurtherClassMovesIt) {
    class Renamed final : public WksRecordingContext {
    public:
        using WksRecordingContext::WksRecordingContext;
        std::u16string getModelName() const override { return u"größe\xD800"; }
    };
    const Renamed context(u"v", u"m", "source", "array", "", "", false);
    EXPECT_EQ(static_cast<const StreamOutBlockContext&>(context).getBlockId(), "gr\u00F6\u00DFe\uFFFD");
    EXPECT_EQ(withFormat("array").getBlockId(), "model");
}

}  // namespace
