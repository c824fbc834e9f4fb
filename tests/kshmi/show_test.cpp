#include <fmt/format.h>

#include <algorithm>

#include "tests/kshmi/kshmi_test.h"
#include "workbench/text/columns.h"

namespace kshmi {
namespace {

using testing::contains;
using testing::kModel;
using testing::replaced;

class Show : public testing::KshmiTest {
protected:
    // On a terminal of so many columns.
    testing::Finished showIn(std::size_t width, std::vector<std::string> words = {}) const {
        std::ostringstream out;
        std::ostringstream err;
        words.insert(words.begin(), {"show", path()});
        const int code = runCommandLine(std::move(words), {.out = out, .err = err, .width = width});
        return {code, out.str(), err.str()};
    }
    static std::size_t widestLine(const std::string& text) {
        std::size_t widest = 0;
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) widest = std::max(widest, workbench::columnsOf(line));
        return widest;
    }
    static std::string block(const std::string& path, std::size_t number, const std::string& outputs) {
        return fmt::format(R"({{"path": "{}", "eid": "e{}", "outputs": [{}]}})", path, number, outputs);
    }
    void writeBlocks(const std::string& blocks) const {
        write(R"({"kestrelModel": 1, "name": "m", "blocks": [)" + blocks + R"(], "signals": [], "clients": []})");
    }
    static std::string repeated(const std::string& text, std::size_t count) {
        std::string result;
        for (std::size_t i = 0; i < count; ++i) result += text;
        return result;
    }
};

TEST_F(Show, whatIsDeepIsNoLongerThanTheFile) {
    writeBlocks(block(repeated("d/", 20'000) + "d", 1, "\"y\"") + "," +
                block(repeated("d/", 20'000) + "e", 2, "\"y\""));
    const std::size_t size = read().size();
    for (const std::size_t width : {0U, 80U}) {
        const std::string out = showIn(width).out;
        EXPECT_LT(out.size(), size);
        expectParts(out, {"... 19992 more levels", "(level 20001) d", "(level 20001) e"});
    }
    std::string nested;
    for (std::size_t depth = 1; depth <= 300; ++depth)
        nested += (depth > 1 ? "," : "") + block(repeated("d/", depth) + "d", depth, "");
    writeBlocks(nested);
    EXPECT_LT(showIn(80).out.size(), 300U * 80U);
}

TEST_F(Show, oneLongNameDoesNotMakeTheOthersRowsLong) {
    const std::string name = repeated("x", 10'000) + repeated("end", 1);
    write(replaced(kModel, "speed \\\"ü\\\"", name));
    EXPECT_LT(widestLine(showIn(0).out), 300U);
    expectParts(showIn(0).out, {"xxx...xxx", "xend"});
    EXPECT_LE(widestLine(showIn(80).out), 80U);
    expectParts(showIn(80, {"--json"}).out, {name});
}

TEST_F(Show, thousandsOfPortsAreWrappedAndLimited) {
    std::string ports;
    for (int port = 1; port <= 6'000; ++port) ports += fmt::format("{}\"port{}\"", port > 1 ? "," : "", port);
    writeBlocks(block("Bus", 1, ports));
    const std::string all = showIn(80).out;
    EXPECT_LE(widestLine(all), 80U);
    expectParts(all, {"[ ] 6000 port6000"});
    EXPECT_LE(widestLine(showIn(0).out), 120U);
    writeBlocks(block(repeated("速", 200), 1, '"' + repeated("速", 200) + '"'));
    EXPECT_LE(widestLine(showIn(80).out), 80U);
    writeBlocks(block("Bus", 1, ports));
    expectParts(showIn(80, {"--limit", "5"}).out, {"[ ] 5 port5\n     ... and 5995 more ports"});
}

TEST_F(Show, wideCharactersAreAligned) {
    write(replaced(replaced(kModel, "speed \\\"ü\\\"", "速度"), "\"outputs\": [\"p\", \"q\"]",
                   "\"outputs\": [\"速\", \"y\"]"));
    std::istringstream lines(showIn(80).out);
    std::size_t settings = 0;
    for (std::string line; std::getline(lines, line);) {
        if (contains(line, "SETTINGS")) settings = line.find("SETTINGS");
        if (!contains(line, "decimation 2")) continue;
        EXPECT_EQ(workbench::columnsOf(line.substr(0, line.find("decimation 2"))), settings);
    }
    for (const std::size_t width : {60U, 80U}) EXPECT_LE(widestLine(showIn(width).out), width);
}

TEST_F(Show, differentNamesLookDifferent) {
    writeBlocks(block("A\\nB", 1, "") + "," + block("A\\\\nB", 2, "") + "," + block("x\\u202ey\\u2028", 3, ""));
    expectParts(showIn(80).out, {"\nA\\nB\n", "\nA\\\\nB\n", "\nx\\u{202e}y\\u{2028}\n"});
    const std::string json = showIn(0, {"--json"}).out;
    expectParts(json, {R"(A\nB)", R"(A\\nB)", R"(x\u202ey\u2028)"});
}

TEST_F(Show, filtersSayWhatTheyLeaveOut) {
    write(kModel);
    const std::string observed = showIn(80, {"--observed"}).out;
    expectParts(observed, {"  [x] 1 y\n", "(state) On/Fast #4",
                           "left out (--observed): 2 of 4 blocks, 4 of 5 ports, 4 of 5 chart items"});
    EXPECT_FALSE(contains(observed, "valid"));
    const std::string below = showIn(80, {"--below", "m/A/B"}).out;
    expectParts(below, {"left out (--below): 2 of 2 signals, 2 of 2 clients, 2 of 4 blocks"});
    expectParts(showIn(80, {"--limit", "1"}).out, {"(--limit): 1 of 2 signals, 1 of 2 clients, 3 of 4 blocks"});
    const std::string selected = showIn(80, {"Logic/On/Fast", "--all", "*:q"}).out;
    expectParts(selected,
                {"1 of 2 signals, 2 of 2 clients, 1 of 4 blocks", "(the selection)", "[ ] 2 q\n", "On/Fast #4"});
    EXPECT_FALSE(contains(selected, "1 p"));
    expectParts(showIn(80, {"--below", "Lgoic"}).err, {"did you mean \"Logic\"?"});
    EXPECT_FALSE(contains(showIn(80).out, "left out"));
}

}  // namespace
}  // namespace kshmi
