#include "tests/report/page_test.h"

#include "tests/workbench/check/name_test.h"

namespace report {
namespace {

using kshmi::testing::clientText;
using kshmi::testing::contains;
using kshmi::testing::Finished;
using kshmi::testing::kModel;
using kshmi::testing::Mark;
using kshmi::testing::modelText;
using kshmi::testing::replaced;
using testing::PageTest;
using testing::Structure;

// Everything that a file can name, with a name that would become an element, two attributes, a reference and a turn of
// the writing direction.
constexpr const char* kHostile = R"({"kestrelModel": 1, "name": "EVIL-0",
 "origin": {"kind": "fmu", "version": "EVIL-1", "file": "EVIL-2", "hash": "sha1:a9993e364706816aba3e25717850c26c9cd0d89d"},
 "blocks": [{"path": "EVIL-3/x/EVIL-4", "eid": "EVIL", "source": "EVIL", "outputs": ["EVIL-5", "EVIL-6"]},
  {"path": "C", "eid": "2", "outputs": [], "chart": {"states": [{"path": "EVIL-7", "ssid": 4}], "data": [{"name": "EVIL-8", "ssid": 7}]}}],
 "signals": [{"UUID": "EVIL", "BlockPath_": "EVIL-3/x/EVIL-4", "EID_": "EVIL", "SubPath_": "", "OutputPortIndex_": 1,
   "SignalName_": "EVIL-9", "SubSysPath_": "EVIL", "Decimation_": 1, "MaxPoints_": 0, "VisualType_": "EVIL-10"},
  {"UUID": "2", "BlockPath_": "EVIL-11", "EID_": "gone", "SubPath_": "", "OutputPortIndex_": 1, "SignalName_": "EVIL-12",
   "SubSysPath_": "", "Decimation_": 1, "MaxPoints_": 0, "VisualType_": ""},
  {"UUID": "3", "BlockPath_": "C", "EID_": "2", "SubPath_": "EVIL-7", "OutputPortIndex_": 0, "SignalName_": "",
   "SubSysPath_": "", "Decimation_": 1, "MaxPoints_": 0, "DomainType_": "cw_state",
   "DomainParams_": {"Activity": "EVIL-13", "SSID": "4"}}],
 "clients": [{"UUID": "EVIL", "ModelPath_": ["EVIL"], "ModelPathEID_": ["EVIL"], "SourceModel_": "EVIL-14",
   "SignalUUID_": "EVIL", "ObserverType_": "EVIL-15", "ObserverParams_": {"EVIL-16": "EVIL-17"}, "BusLeafPath_": "EVIL-18"},
  {"UUID": "2", "ModelPath_": [], "ModelPathEID_": [], "SourceModel_": "", "SignalUUID_": "EVIL-19",
   "ObserverType_": "EVIL-20", "ObserverParams_": "EVIL-21"}],
 "parked": [{"signal": {"UUID": "9", "BlockPath_": "EVIL-22", "EID_": "9", "SubPath_": "", "OutputPortIndex_": 1,
   "SignalName_": "EVIL-23", "SubSysPath_": "", "Decimation_": 1, "MaxPoints_": 0, "markedName": "EVIL-24"},
   "clients": [], "lost": "port", "from": "EVIL-25"}]})";

std::string withNames(std::string text, const std::string& name) {
    for (std::size_t at = text.find("EVIL"); at != text.npos; at = text.find("EVIL", at + name.size()))
        text.replace(at, 4, name);
    return text;
}

class Page : public PageTest {};

TEST_F(Page, namesFromAFileStayNames) {
    const std::string html = page(withNames(kHostile, R"(<x-evil a=\"q\" b='q'>&amp;\u202e\u0007)"));
    for (const char* const live : {"<x-evil", "a=\"q", "b='q", "q'>", "\u202e", "\u0007"})
        EXPECT_EQ(html.find(live), html.npos) << live;
    const std::string shown = R"(&lt;x-evil a=&quot;q&quot; b=&#39;q&#39;&gt;&amp;amp;\u{202e}\x07)";
    const std::string inJson = R"(&lt;x-evil a=\&quot;q\&quot; b=&#39;q&#39;&gt;&amp;amp;\u202e\u0007)";
    for (int place = 0; place <= 25; ++place) {
        const std::string number = "-" + std::to_string(place);
        const bool isThere = contains(html, shown + number) || contains(html, inJson + number);
        EXPECT_TRUE(isThere) << place;
    }
}

TEST_F(Page, showsWhatTheFileHoldsAndWhatIsWrongWithIt) {
    const std::string html = page(kModel);
    expectParts(html, {"<h1>m</h1>", "<b>4</b> <span>blocks</span><small>5 output ports, 1 chart</small>",
                       "<b>2</b> <span>clients</span><small>1 watching</small>", "<small>3 warnings</small>",
                       "<h3><bdi>speed &quot;ü&quot;</bdi></h3>",
                       "<li>every 2nd sample</li><li>the last 100 points</li>"
                       "<li>frame-based</li><li>for scope</li>",
                       "<b>ks_scope_observer</b> <span class=\"set\">rate 1, channel 4294967295</span>",
                       "Clients without a signal here",
                       "<code><span>kshmi</span> <span>prune</span> <span>model.json</span> <span>--kinds</span> "
                       "<span>dangling</span>",
                       "<a class=\"on\" href=\"#s1\"><i>1</i> y</a>", "<span class=\"off\"><i>2</i> valid</span>"});
    EXPECT_EQ(html.find(path()), html.npos) << "tells where the file was";
}

TEST_F(Page, tellsApartWhatLooksAlike) {
    const std::string html = page(kModel);
    expectParts(html, {"<a href=\"#c2\">client 2</a>", "<i>state</i> On/Fast", "<i>datum</i> limit",
                       "<b class=\"badge\">A</b>", "class=\"figure warning\" href=\"#findings\""});
    EXPECT_EQ(count(html, "finding</a>"), 0U) << "what is wrong with all of the file is no signal's";
    EXPECT_EQ(count(html, "the last 0 points") + count(html, ", line 0"), 0U);
    const std::pair<const char*, const char*> ordinals[] = {{"3", "3rd"},       {"4", "4th"},   {"10", "10th"},
                                                            {"11", "11th"},     {"21", "21st"}, {"112", "112th"},
                                                            {"1000", "1,000th"}};
    for (const auto& [number, ordinal] : ordinals)
        expectParts(page(replaced(kModel, "\"Decimation_\": 2", "\"Decimation_\": " + std::string(number))),
                    {"every " + std::string(ordinal) + " sample"});
    const std::string faulty =
        page(modelText(R"("y")", {{"a", 1, "y"}, {"b", 1, "y"}, {"c", 1, "y", "9", "Gone"}}, {clientText("d", "b")},
                       R"(, "parked": [{"signal": )" + textOf(Mark{"p", 3, "old"}) + R"(, "clients": [)" +
                           clientText("pc", "p") + R"(], "lost": "port", "from": "m0"}],
"origin": {"kind": "ssp", "version": "1.0", "file": "some/where/s.ssp", "hash": ""})"));
    EXPECT_TRUE(faulty.find("KS201") < faulty.find("KS209") && faulty.find("KS209") < faulty.find("KS501"));
    expectParts(faulty, {"<li id=\"s2\" data-has=\"clients findings\">", "imported from s.ssp, SSP 1.0",
                         "its port is gone, marked in m0</p><p>1 client</p>"});
    EXPECT_EQ(faulty.find("some/where"), faulty.npos);
    const std::string longName = page(replaced(kModel, "speed \\\"ü\\\"", std::string(300, 'w')));
    EXPECT_EQ(longName.find(std::string(241, 'w')), longName.npos);
}

TEST_F(Page, asksNothingOfTheNetworkAndRunsNothingButItsOwnScript) {
    const std::string html = page(kModel);
    expectParts(html, {"default-src 'none'; style-src 'sha256-", "; script-src 'sha256-"});
    const auto hashBehind = [&](const char* source) { return html.substr(html.find(source) + 12, 60); };
    EXPECT_NE(hashBehind("style-src 's"), hashBehind("script-src '"));
    EXPECT_EQ(html.find("unsafe-"), html.npos);
    EXPECT_EQ(html.find("http:"), html.find("http://www.w3.org/2000/svg"));
    EXPECT_EQ(html.find("https:"), html.npos);
    EXPECT_EQ(html.find(" style=\""), html.npos);
}

TEST_F(Page, emptyAndPlainFilesReadWell) {
    const std::string html = page(R"({"kestrelModel": 1, "name": "m", "blocks": []})");
    expectParts(html, {"Nothing is marked.", "Nothing is wrong with this file.", "The model has no blocks yet."});
    EXPECT_EQ(html.find("Parked marks"), html.npos);
    EXPECT_EQ(html.find("Clients without"), html.npos);
}

TEST_F(Page, marksWhoseSourceIsGoneAreThere) {
    const std::string html = page(modelText(R"("y")", {{"a", 1, "y", "9", "Gone"}, {"b", 7}, {"c", 1, "z"}},
                                            {clientText("d", "b"), clientText("e", "nobody", "t", "other")}));
    expectParts(html, {"Gone<i>:</i>1 <span class=\"amiss\">the block is gone</span>",
                       "<small>3 errors, 1 warning</small>", "foreign: of the model other"});
    EXPECT_EQ(count(html, "1 finding</a>"), 3U);
}

TEST_F(Page, deepPathsStayShallow) {
    std::string bare = "p";
    std::string blocks;
    std::string full;
    for (int i = 0; i < 2000; ++i) bare += "/p";
    for (int i = 0; i < 60; ++i) {
        full += (i == 0 ? "b" : "/b");
        blocks += R"(, {"path": ")" + full + R"(", "eid": "e)" + std::to_string(i) + R"(", "outputs": []})";
    }
    const std::string html = page(R"({"kestrelModel": 1, "name": "m", "blocks": [{"path": ")" + bare +
                                  R"(", "eid": "x", "outputs": ["y"]})" + blocks + "]}");
    EXPECT_LT(Structure(html).count("details"), 30U);
    EXPECT_EQ(count(html, ">level "), 35U);
}

TEST_F(Page, isTheSameForTheSameFile) {
    const std::string html = page(kModel);
    std::filesystem::create_directory(path("other"));
    write(kModel, "other/model.json");
    EXPECT_EQ(run({"report", path("other/model.json"), "-o", "-"}).out, html);
}

TEST_F(Page, isWrittenAsAWholeAndOverNothingElse) {
    write(kModel);
    const std::string target = path("page.html");
    Finished finished = run({"report", path(), "-o", target});
    EXPECT_EQ(finished.out.substr(0, finished.out.rfind(';')), target + ": 4 blocks, 2 signals, 2 clients; 3 warnings");
    const std::string html = read("page.html");
    EXPECT_EQ(html, page(kModel));
    EXPECT_EQ(run({"report", path(), "-o", target, "--quiet"}).out, "");
    std::string outputs = "\"y0\"";
    for (int i = 1; i < 3000; ++i) outputs += ", \"y" + std::to_string(i) + "\"";
    finished = run({"report", write(modelText(outputs, {}), "large.json"), "-o", target, "--json"});
    expectParts(finished.out, {"\"bytes\": " + std::to_string(read("page.html").size())});
    run({"report", path(), "-o", target});
    finished = run({"report", path(), "-o", path()});
    EXPECT_EQ(finished.code, 3);
    expectParts(finished.err, {"exists already and is not a page; give another name"});
    EXPECT_EQ(read(), kModel);
    EXPECT_EQ(run({"report", path(), "-o", "-", "--json"}).code, 2);
    write("{", "broken.json");
    finished = run({"report", path("broken.json"), "-o", target});
    EXPECT_EQ(finished.code, 3);
    expectParts(finished.err, {"broken.json:1"});
    EXPECT_EQ(run({"report", path("none.json"), "-o", target}).code, 3);
    EXPECT_EQ(read("page.html"), html);
    EXPECT_EQ(fileCount(), 4U);
}

}  // namespace
}  // namespace report
