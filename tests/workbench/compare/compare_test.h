#pragma once

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/kshmi/kshmi_test.h"
#include "workbench/carry/carry.h"
#include "workbench/compare/saved_records.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

/// Model files that are written down in a few words.
namespace workbench::testing {

struct Block {
    std::string path, eid;
    std::vector<std::string> outputs;
    std::string chart{};   ///< JSON; empty for none
    std::string source{};  ///< of an imported block; empty for none
};

struct Mark {
    std::string uuid, path, eid;
    int port = 1;
    std::optional<std::string> markedName{};
    std::string more{};  ///< further fields
};

inline std::string quoted(const std::vector<std::string>& texts) {
    return texts.empty() ? "[]" : fmt::format("[\"{}\"]", fmt::join(texts, "\", \""));
}

inline std::string text(const Block& block) {
    return fmt::format(R"({{"path": "{}", "eid": "{}"{}, "outputs": {}{}}})", block.path, block.eid,
                       block.source.empty() ? "" : fmt::format(", \"source\": \"{}\"", block.source),
                       quoted(block.outputs), block.chart.empty() ? "" : ", \"chart\": " + block.chart);
}

inline std::string text(const Mark& mark) {
    const std::string name = mark.markedName ? fmt::format(R"(, "markedName": "{}")", *mark.markedName) : "";
    return fmt::format(
        R"({{"UUID": "{}", "BlockPath_": "{}", "EID_": "{}", "SubPath_": "", "OutputPortIndex_": {}, "SignalName_": "s",
"SubSysPath_": "{}", "Decimation_": 1, "MaxPoints_": 0{}{}}})",
        mark.uuid, mark.path, mark.eid, mark.port,
        mark.path.substr(0, mark.path.find('/') == std::string::npos ? 0 : mark.path.rfind('/')), mark.more, name);
}

inline std::string client(const std::string& uuid, const std::string& signal, const std::string& path,
                          const std::string& eid, const std::string& model) {
    return fmt::format(
        R"({{"UUID": "{}", "ModelPath_": ["{}"], "ModelPathEID_": ["{}"], "SourceModel_": "{}", "SignalUUID_": "{}",
"ObserverType_": "ks_scope_observer", "ObserverParams_": {{"ModelName": "{}"}}}})",
        uuid, path, eid, model, signal, model);
}

template <class Item>
std::string list(const std::vector<Item>& items) {
    std::vector<std::string> texts;
    for (const Item& item : items) texts.push_back(text(item));
    return fmt::format("{}", fmt::join(texts, ",\n"));
}

inline std::string model(const std::string& name, const std::vector<Block>& blocks, const std::vector<Mark>& marks = {},
                         const std::vector<std::string>& clients = {}, const std::string& more = "") {
    return fmt::format(
        "{{\"kestrelModel\": 1, \"name\": \"{}\",\n\"blocks\": [{}],\n\"signals\": [{}],\n\"clients\": [{}]{}}}", name,
        list(blocks), list(marks), fmt::join(clients, ",\n"), more);
}

inline ModelFile file(const std::string& text) { return readModelText("test.json", text); }

/// "path:number" of a signal, "" when there is none of that UUID.
inline std::string placeOf(const ModelFile& file, const std::string& uuid) {
    for (std::size_t i = 0; i < hvGetNumberOfElements(file.signals.get()); ++i)
        if (toUtf8(recordText(file.signals.get(), i, "UUID")) == uuid)
            return toUtf8(recordText(file.signals.get(), i, "BlockPath_")) + ":" +
                   canonicalField(file.signals.get(), i, "OutputPortIndex_");
    return "";
}

inline std::string messageOf(const std::function<void()>& work) {
    try {
        work();
    } catch (const Error& error) {
        return error.what();
    }
    return "was not refused";
}

}  // namespace workbench::testing
