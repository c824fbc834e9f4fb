#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <optional>

#include "memory_host/kestrel/loaded_models.h"
#include "signals/signal_specification.h"
#include "tests/kshmi/kshmi_test.h"
#include "tests/support/host_recorder.h"
#include "workbench/session/script.h"
#include "workbench/session/session.h"
#include "workbench/text/error.h"

// A few records at a time are host values, and nobody can tell.
namespace workbench {
namespace {

using ks_test::Lines;
using ks_test::recorded;
using kshmi::testing::replaced;

constexpr std::size_t kCount = 2 * kSlice + 44;
constexpr std::size_t kBlocks = 50;

std::string blockText(std::size_t number) {
    return fmt::format(R"(    {{"path": "B{0}", "eid": "e{0}", "outputs": ["y", "z"]}},)"
                       "\n",
                       number);
}

// Every seventh is on a chart, with an escape in its name.
std::string signalText(std::size_t number, const char* pathPrefix) {
    const bool isChart = number % 7 == 3;
    const std::size_t block = number % kBlocks;
    std::string text = fmt::format("    {{\n      \"UUID\": \"u-{}\"", number);
    const auto add = [&](const char* field, const std::string& json) {
        text += fmt::format(",\n      \"{}\": {}", field, json);
    };
    add("BlockPath_", isChart ? R"("Logic")" : fmt::format(R"("{}B{}")", pathPrefix, block));
    add("EID_", isChart ? R"("c")" : fmt::format(R"("e{}")", block));
    add("SubPath_", isChart ? R"("On")" : R"("")");
    add("OutputPortIndex_", std::to_string(isChart ? 0 : number % 2 + 1));
    add("LogicalPortIndex_", "0");
    add("SignalName_", fmt::format(R"("s{}")", isChart ? "\\n" : ""));
    const std::string_view prefix = pathPrefix;
    add("SubSysPath_", fmt::format(R"("{}")", isChart ? "" : prefix.substr(0, prefix.find('/'))));
    add("Decimation_", std::to_string(number + 1));
    for (const char* const field : {"MaxPoints_", "TargetBufferedStreaming_", "IsFrameBased_", "HideInPLV_"})
        add(field, "0");
    add("DomainType_", isChart ? R"("cw_state")" : R"("")");
    add("DomainParams_", isChart ? R"({"Activity": "Self", "SSID": "4"})" : "{}");
    add("VisualType_", R"("")");
    add("markedName", isChart ? R"("On")" : number % 2 == 1 ? R"("z")" : R"("y")");
    return text + "\n    }";
}

std::string clientText(std::size_t number) {
    return fmt::format(
        "    {{\n      \"UUID\": \"c-{0}\",\n      \"ModelPath_\": [\"B1\"],\n      \"ModelPathEID_\": [\"e1\"],\n"
        "      \"SourceModel_\": \"m\",\n      \"SignalUUID_\": \"u-{0}\",\n      \"ObserverType_\": \"t\",\n"
        "      \"ObserverParams_\": {{\"gain\": {0}}},\n      \"UpdateRate_\": 1,\n      \"DimensionChannel_\": 1,\n"
        "      \"ObserveImaginaryPart_\": false,\n      \"BusLeafPath_\": \"\"\n    }}",
        number);
}

template <class TextOf>
std::string listText(const char* name, TextOf textOf) {
    std::string text = fmt::format("  \"{}\": [\n", name);
    for (std::size_t i = 0; i < kCount; ++i) text += (i == 0 ? "" : ",\n") + textOf(i);
    return text + "\n  ]";
}

struct Texts {
    std::string head = "{\n  \"kestrelModel\": 1,\n  \"name\": \"m\",\n";
    std::string blocks = [] {
        std::string text = "  \"blocks\": [\n";
        for (std::size_t i = 0; i < kBlocks; ++i) text += blockText(i);
        return text + R"(    {"path": "Logic", "eid": "c", "outputs": [], "chart": {"states": [{"path": "On", )"
                      R"("ssid": 4}], "data": []}})"
                      "\n  ]";
    }();
    std::string signals = listText("signals", [](std::size_t i) { return signalText(i, ""); });
    std::string clients = listText("clients", clientText);

    std::string whole() const { return head + blocks + ",\n" + signals + ",\n" + clients + "\n}\n"; }
};

class Slices : public kshmi::testing::KshmiTest {
protected:
    Slices() { enterHost({}); }

    static std::string messageOf(const std::function<void()>& work) {
        try {
            work();
        } catch (const Error& error) {
            EXPECT_TRUE(kestrel::loadedModels().all().empty());
            return error.what();
        }
        return "opened";
    }
    // What opening it at once says.
    static std::string messageAtOnce(const std::string& path) {
        return messageOf([&] { Session(path, readModelFile(path)); });
    }
    // Positions in a struct array start again with each slice.
    static Lines byRecord(Lines lines) {
        for (std::string& line : lines) {
            const std::size_t start = line.find(' ') + 1;
            const std::size_t end = line.find_first_not_of("0123456789", start);
            if (!line.starts_with("hv") || end == start || end == std::string::npos) continue;
            const std::size_t position = std::stoul(line.substr(start, end - start)) % kSlice;
            line.replace(start, end - start, std::to_string(position));
        }
        return lines;
    }
};

TEST_F(Slices, theHostSeesTheSameCallsForEachRecord) {
    const std::string file =
        write(Texts{.signals = listText("signals", [](auto i) { return signalText(i, "Old/"); })}.whole());
    const ks_test::Operations reads{"hvGetField", "kssvFEVAL", "kssvFEVAL_NoThrow"};
    std::optional<Session> session;
    const Lines atOnce = recorded(reads, [&] { session.emplace(file, readModelFile(file)); });
    const std::string saved = session->text();
    session.reset();
    EXPECT_EQ(byRecord(recorded(reads, [&] { session.emplace(file); })), byRecord(atOnce));
    EXPECT_GT(atOnce.size(), kCount * 16);

    const ks_test::Operations writes{"hvReplaceField", "hvSetProperty", "kssvFEVAL_NoThrow"};
    const Lines whole = recorded(writes, [&] {
        const HvArrayPtr copy = session->signals().copy(true);
        script::persistence(copy.get());
        script::persistence(session->clientSet());
    });
    EXPECT_EQ(byRecord(recorded(writes, [&] { session->text(); })), byRecord(whole));
    EXPECT_GT(whole.size(), kCount * 2 * 16);
    EXPECT_EQ(saved, Texts().whole()) << "paths are aligned, also where it is read at once";
}

TEST_F(Slices, theSameBytesAreSavedWhateverTheOrderInTheFile) {
    const Texts t;
    for (const std::string& text :
         {t.whole(), t.head + t.signals + ",\n" + t.blocks + ",\n" + t.clients + "}",
          t.head + t.clients + ",\n" + t.blocks + ",\n" + t.signals + "}",
          "{" + t.signals + ",\n" + t.clients + ",\n" + t.blocks + R"(, "name": "m", "kestrelModel": 1})"}) {
        std::optional<Session> session(std::in_place, write(text));
        session->save();
        EXPECT_EQ(read(), t.whole());
        session->signals().get(0)->m_excludeForSave = true;
        session->signals().get(kSlice)->m_excludeForSave = true;
        EXPECT_EQ(session->save().leftOut, 2U);
        session.reset();
        EXPECT_EQ(Session(path()).signals().getCount(), kCount - 2);
    }
}

TEST_F(Slices, refusalsNameTheirPlacesAndLeaveNothing) {
    const std::string text = Texts().whole();
    const auto lineOf = [&](const std::string& what) {
        return std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(text.find(what)), '\n') + 1;
    };
    for (const std::size_t position : {std::size_t{0}, kSlice - 1, kSlice, kCount - 1}) {
        const std::string decimation = fmt::format("      \"Decimation_\": {},\n", position + 1);
        const std::string file = write(replaced(text, decimation, ""));
        const std::string message = messageOf([&] { Session{file}; });
        EXPECT_EQ(message, messageAtOnce(file));
        expectParts(
            message,
            {fmt::format(":{}: /signals/{}/Decimation_: ", lineOf(fmt::format("\"u-{}\"", position)) - 1, position),
             fmt::format("element {}", position + 1)});
        // The file's own faults come first, wherever they are.
        const std::string broken = write(replaced(read(), "\n  ]\n}\n", "\n  ]\n"));
        expectParts(messageOf([&] { Session{broken}; }), {"the document ends too early"});
    }
    const std::string uuid = fmt::format("\"UUID\": \"u-{}\"", kCount - 1);
    const std::string file = write(replaced(text, uuid, "\"UUID\": \"u-3\""));
    expectParts(messageOf([&] { Session{file}; }),
                {fmt::format(":{}: /signals/{}/UUID: another signal has", lineOf(uuid), kCount - 1)});
    for (const auto& [what, with] : {std::pair{"\"eid\": \"e9\"", "\"eid\": \"e8\""},
                                     {"{\"gain\": 300}", "3e999"},
                                     {"\"c-300\"", "\"c-1\""},
                                     {"\"name\": \"m\"", "\"name\": \"a/b\""}}) {
        const std::string bad = write(replaced(text, what, with));
        EXPECT_EQ(messageOf([&] { Session{bad}; }), messageAtOnce(bad));
    }
}

}  // namespace
}  // namespace workbench
