#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/workbench/import/import_test.h"
#include "workbench/import/archive.h"

namespace workbench {
namespace {

using namespace testing;

const std::string kUnit = outputs({"v"});

std::string utf16(const std::string& ascii, bool isBig, bool isMarked) {
    std::string bytes;
    const auto put = [&](char high, char low) { (bytes += isBig ? high : low) += isBig ? low : high; };
    if (isMarked) put('\xFE', '\xFF');
    for (const char c : ascii) put('\0', c);
    return bytes;
}

TEST(ImportedXml, mayHaveAnyCommonEncoding) {
    const std::string name = "<?xml version=\"1.0\" encoding=\"";
    const std::vector<std::pair<std::string, std::string>> cases{
        {"\xEF\xBB\xBF" + outputs({"\xC3\xBC"}), "\xC3\xBC"},
        {utf16(kUnit, false, true), "v"},
        {utf16(kUnit, true, true), "v"},
        {utf16(name + "UTF-16\"?>" + kUnit, true, false), "v"},
        {name + "ISO-8859-1\"?>" + outputs({"\xFC"}), "\xC3\xBC"},
        {name + "windows-1252\"?>" + outputs({"\x80"}), "\xE2\x82\xAC"},
        {outputs({"\xFC"}), "\xC3\xBC"},  // declares nothing and is no UTF-8
        {outputs({"&#xD800;&amp;"}), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD&"}};
    for (const auto& [xml, port] : cases) {
        const ImportedModel model = imported(xml);
        EXPECT_EQ(blocksOf(model), "Engine: " + port + "\n");
        EXPECT_EQ(textOf(model.warnings),
                  xml == outputs({"\xFC"}) ? "has bytes that are not UTF-8; read as windows-1252: \n" : "");
    }
    EXPECT_EQ(refusalOfXml(name + "EBCDIC\"?>" + kUnit),
              "some.xml:1: the encoding \"EBCDIC\" cannot be read; convert the file to UTF-8");
}

TEST(ImportedXml, isRefusedWithItsLineWhenItIsHostile) {
    const std::string again = "; have it written again by the program that made it";
    const std::vector<std::pair<std::string, std::string>> cases{
        {"", "some.xml:1:1: not XML: no document element found" + again},
        {"<a>\n<b>\n</a>", "some.xml:3:3: not XML: start-end tags mismatch" + again},
        {"<?xml version='1.0'?>\n<!DOCTYPE a [<!ENTITY e 'x'>]>\n<a/>",
         "some.xml:2: holds a document type declaration, which this format has no use for; remove it"},
        {"<a>\n" + std::string(1, '\0') + "</a>", "some.xml:2:1: a NUL byte is not XML; remove it"},
        {outputs({std::string(5000, 'n')}),
         "some.xml:3: the attribute \"name\" has 5000 bytes, more than 4096; shorten it"}};
    for (const auto& [xml, refusal] : cases) EXPECT_EQ(refusalOfXml(xml), refusal);

    std::string deep;
    for (int i = 0; i < 100000; ++i) deep += "<a>\n";
    EXPECT_EQ(refusalOfXml(deep), "some.xml:100000:4: not XML: start-end tags mismatch" + again);
    for (int i = 0; i < 100000; ++i) deep += "</a>";
    EXPECT_EQ(refusalOfXml(deep),
              "some.xml:202: has more than 200 elements inside each other; flatten it; no model is that deep");
}

TEST(ImportedXml, whoseNamesHaveVeryManyPartsStaysFlat) {
    std::string name = "a";
    for (int i = 0; i < 1000; ++i) name += ".a";
    EXPECT_EQ(blocksOf(imported(outputs({name}))), "Engine: " + name + "\n");
}

TEST(ImportedArchive, isReadForItsDescription) {
    const auto document = readForeignBytes("u.fmu", zipOf({{"resources/", ""}, {"modelDescription.xml", kUnit}}));
    EXPECT_EQ(document.name, "u.fmu/modelDescription.xml");
    const ImportedModel model = importDocument(document, {});
    EXPECT_EQ(blocksOf(model), "Engine: v\n");
    EXPECT_EQ(model.origin.kind, "fmu");
    EXPECT_EQ(refusalOf([] {
                  readForeignBytes("u.zip", zipOf({{"a", ""}}));
              }),
              "u.zip: holds neither SystemStructure.ssd nor modelDescription.xml; import an .ssp or .fmu archive, or a "
              "description itself");
    EXPECT_EQ(refusalOf([] {
                  readForeignBytes("u.zip", zipOf({{"u/SystemStructure.ssd", ""}}));
              }),
              "u.zip: has its description in a folder, as u/SystemStructure.ssd; pack the contents of the folder, not "
              "the folder");
}

std::string refusalOfArchive(std::string bytes, const ArchiveLimits& limits = {}) {
    return refusalOf([&] { Archive::ofBytes("u.fmu", std::move(bytes), limits).read("a"); });
}

TEST(ImportedArchive, isRefusedWhenItWouldLeaveItsTarget) {
    const std::string again = "; have the archive made again";
    for (const char* const name :
         {"../a", "a/../../b", "/etc/a", "a/./b", "a//b", "c:/a", "..\\a", "\\\\a\\b", "./../a", ".//a"})
        EXPECT_EQ(
            refusalOfArchive(zipOf({{"a", "x"}, {name, "x"}})),
            "u.fmu: the entry " + inQuotes(std::string_view(name)) + " would be unpacked outside the target" + again);
    EXPECT_EQ(refusalOfArchive(zipOf({{"a", "/etc", true}})), "u.fmu: the entry \"a\" is a link" + again);
}

TEST(ImportedArchive, mayCallItsEntriesAsOtherSystemsDo) {
    const Archive archive = Archive::ofBytes(
        "u.fmu", zipOf({{"./", ""}, {"./././", ""}, {"./a", "x"}, {"b\\", ""}, {"b\\x64\\lib.so", "code"}}));
    EXPECT_EQ(archive.names(), (std::vector<std::string>{"", "", "a", "b/", "b/x64/lib.so"}));
    EXPECT_EQ(archive.read("b/x64/lib.so"), "code");
    EXPECT_EQ(refusalOfArchive(zipOf({{"b/a", ""}, {"b\\a", ""}})),
              "u.fmu: the entry \"b/a\" appears twice; have the archive made again");
}

TEST(ImportedArchive, isRefusedBeyondItsLimits) {
    const std::string zeros(3 << 20, '\0');
    const std::string bomb = zipOf({{"a", zeros}, {"b", zeros}});
    EXPECT_TRUE(refusalOfArchive(bomb).starts_with("u.fmu: the entry \"a\" unpacks to more than 500 times its size;"));
    const auto starts = [&](const ArchiveLimits& limits, const std::string& text) {
        EXPECT_TRUE(refusalOfArchive(bomb, limits).starts_with("u.fmu: " + text)) << refusalOfArchive(bomb, limits);
    };
    std::string twice = zipOf({{"aa", "1"}, {"ab", "2"}});
    for (std::size_t at = 0; (at = twice.find("ab", at)) != std::string::npos;) twice.replace(at, 2, "aa");
    EXPECT_TRUE(refusalOfArchive(twice).starts_with("u.fmu: the entry \"aa\" appears twice;"));
    starts({.entries = 1}, "has 2 entries, more than 1;");
    starts({.entryBytes = 1 << 20}, "the entry \"a\" unpacks to more than 1048576 bytes;");
    starts({.totalBytes = 4 << 20, .ratio = 100000}, "unpacks to more than 4194304 bytes;");
    starts({.documentBytes = 1 << 20, .ratio = 100000}, "the entry \"a\" unpacks to more than 1048576 bytes;");
}

TEST(ImportedArchive, isRefusedWhenItIsDamaged) {
    const std::string whole = zipOf({{"a", std::string(2000, 'x')}});
    EXPECT_TRUE(refusalOfArchive(whole.substr(0, 30)).starts_with("u.fmu: cannot be opened as an archive: "));
    std::string lying = whole;
    const std::size_t directory = lying.find("PK\x01\x02");
    lying[directory + 24] = 5;  // the low byte of the unpacked size
    EXPECT_TRUE(refusalOfArchive(lying).starts_with("u.fmu: the entry \"a\" is damaged")) << refusalOfArchive(lying);
    for (std::size_t i = 0; i < whole.size(); ++i) {
        std::string changed = whole;
        changed[i] = static_cast<char>(changed[i] ^ 0x55);
        refusalOfArchive(changed);  // any answer but a crash
    }
}

TEST(ImportedArchive, unpacksBelowItsTargetAndReplacesNothing) {
    std::string folder = (std::filesystem::temp_directory_path() / "kshmi-archive-XXXXXX").string();
    ASSERT_NE(::mkdtemp(folder.data()), nullptr);
    const Archive archive =
        Archive::ofBytes("u.fmu", zipOf({{"./", ""}, {"e\\", ""}, {"b\\x/lib.so", "code"}, {"top", "t"}}));
    archive.extractTo(folder);
    std::ifstream file(folder + "/b/x/lib.so");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "code");
    EXPECT_TRUE(std::filesystem::is_directory(folder + "/e"));
    EXPECT_EQ(refusalOf([&] { archive.extractTo(folder); }), "u.fmu: the entry \"b/x/lib.so\" would replace \"" +
                                                                 folder + "/b/x/lib.so\"; have the archive made again");
    std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace workbench
