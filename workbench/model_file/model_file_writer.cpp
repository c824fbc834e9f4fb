#include <string>

#include "host/values.h"
#include "workbench/files/atomic_file.h"
#include "workbench/json/json_object.h"
#include "workbench/model_file/model_file.h"
#include "workbench/values/host_value_writer.h"

namespace workbench {

namespace {

constexpr JsonLayout kDocument{"\n  ", ",\n  ", "\n"};
constexpr JsonLayout kList{"\n    ", ",\n    ", "\n  "};
// One field per line.
constexpr JsonLayout kRecord{"\n      ", ",\n      ", "\n    "};
constexpr JsonLayout kInRecord{"\n        ", ",\n        ", "\n      "};
constexpr JsonLayout kInRecordList{"\n          ", ",\n          ", "\n        "};

template <class Items, class TextOf>
void appendChartItems(std::string& out, const Items& items, const char* key, TextOf textOf) {
    appendJsonArray(out, items, [&](const auto& item) {
        JsonObject object(out);
        object.text(key, std::u16string_view(textOf(item))).number("ssid", item.ssid).close();
    });
}

void appendChart(std::string& out, const kestrel::Chart& chart) {
    JsonObject object(out);
    object.name("states");
    appendChartItems(
        out, chart.states, "path", [](const auto& state) -> auto& { return state.path; });
    object.name("data");
    appendChartItems(
        out, chart.data, "name", [](const auto& datum) -> auto& { return datum.name; });
    object.close();
}

void appendBlock(std::string& out, const kestrel::Block& block) {
    JsonObject object(out);
    object.text("path", block.path).text("eid", block.eid);
    if (block.source) object.text("source", *block.source);
    object.name("outputs");
    appendJsonTexts(out, block.outputs);
    if (block.chart) {
        object.name("chart");
        appendChart(out, *block.chart);
    }
    object.close();
}

void appendOrigin(std::string& out, const Origin& origin) {
    JsonObject object(out);
    object.text("kind", origin.kind).text("version", origin.version).text("file", origin.file);
    object.text("hash", origin.hash);
    if (origin.locals) object.truth("locals", true);
    if (!origin.gone.empty()) {
        object.name("gone");
        appendJsonArray(out, origin.gone, [&](const GoneBlock& block) {
            JsonObject(out).text("source", block.source).text("eid", block.eid).close();
        });
    }
    object.close();
}

// Fields whose class the library sets, whatever it was: plain numbers lose nothing.
bool isCountField(std::string_view name) { return name == "UpdateRate_" || name == "DimensionChannel_"; }

void appendRecord(std::string& out, const hvArray* records, std::size_t element, JsonLayout layout,
                  const std::u16string* markedName = nullptr) {
    JsonObject object(out, layout);
    for (int i = 0; i < hvGetNumberOfFields(records); ++i) {
        const std::string_view name = hvGetFieldNameByNumber(records, i);
        const hvArray* const field = hvGetField(records, element, name.data());
        // Parked records stay as they were read.
        if (!field && isCountField(name)) continue;
        if (isCountField(name)) {
            object.number(name, hvGetScalarInt(field));
            continue;
        }
        object.name(name);
        name == "DomainParams_" ? appendJsonFieldsSorted(out, field) : appendJsonValue(out, field);
    }
    if (markedName) object.text(kMarkedName, *markedName);
    object.close();
}

void appendParked(std::string& out, const ParkedMark& mark) {
    JsonObject object(out, kRecord);
    object.name("signal");
    appendRecord(out, mark.signal.get(), 0, kInRecord, mark.markedName ? &*mark.markedName : nullptr);
    object.name("clients");
    appendJsonArray(
        out, ks_host::indicesOf(mark.clients.get()),
        [&](std::size_t i) { appendRecord(out, mark.clients.get(), i, kInRecordList); }, kInRecord);
    object.text("lost", std::string_view(textOf(mark.lost)));
    if (mark.isUnsure) object.truth("unsure", true);
    object.text("from", mark.from).close();
}

// A list of the document; each element is handed on as soon as it is written.
template <class Range, class Append>
void writeList(const TextSink& sink, std::string& out, const Range& elements, Append append) {
    appendJsonArray(
        out, elements,
        [&](const auto& element) {
            append(element);
            sink(out);
            out.clear();
        },
        kList);
}

}  // namespace

void writeModel(const TextSink& sink, const kestrel::Model& model, const hvArray* signals, const hvArray* clients,
                const ModelExtras& extras) {
    std::string out;
    JsonObject document(out, kDocument);
    document.number("kestrelModel", 1).text("name", model.name());
    if (extras.origin) {
        document.name("origin");
        appendOrigin(out, *extras.origin);
    }
    document.name("blocks");
    writeList(sink, out, model.blocks(), [&](const kestrel::Block& block) { appendBlock(out, block); });
    document.name("signals");
    writeList(sink, out, ks_host::indicesOf(signals),
              [&](std::size_t i) { appendRecord(out, signals, i, kRecord, extras.markedName(i)); });
    document.name("clients");
    writeList(sink, out, ks_host::indicesOf(clients), [&](std::size_t i) { appendRecord(out, clients, i, kRecord); });
    if (!extras.parked.empty()) {
        document.name("parked");
        writeList(sink, out, extras.parked, [&](const ParkedMark& mark) { appendParked(out, mark); });
    }
    document.close();
    sink(out += '\n');
}

std::string modelText(const kestrel::Model& model, const hvArray* signals, const hvArray* clients,
                      const ModelExtras& extras) {
    std::string text;
    writeModel([&](std::string_view piece) { text += piece; }, model, signals, clients, extras);
    return text;
}

std::string modelText(const ModelFile& file) {
    return modelText(file.model, file.signals.get(), file.clients.get(), file.extras);
}

WrittenFile writeModelFile(const std::string& path, const kestrel::Model& model, const hvArray* signals,
                           const hvArray* clients, const ModelExtras& extras, std::optional<FileVersion> replaced) {
    AtomicFile file(path, replaced);
    writeModel([&](std::string_view piece) { file.write(piece); }, model, signals, clients, extras);
    return {file.commit(), file.warnings()};
}

WrittenFile writeModelFile(const std::string& path, const ModelFile& file, std::optional<FileVersion> replaced) {
    return writeModelFile(path, file.model, file.signals.get(), file.clients.get(), file.extras, replaced);
}

WrittenFile writeNewModelFile(const std::string& path, const kestrel::Model& model, const hvArray* signals,
                              const hvArray* clients, const ModelExtras& extras) {
    AtomicFile file(AtomicFile::kNew, path);
    writeModel([&](std::string_view piece) { file.write(piece); }, model, signals, clients, extras);
    return {file.commit(), file.warnings()};
}

}  // namespace workbench
