#include <fmt/format.h>

#include <string>
#include <vector>

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

// How a field is written.
enum class FieldForm : std::uint8_t {
    value,
    sorted,
    count,  // a plain number, whatever class the library sets: nothing is lost
};

FieldForm formOf(std::string_view name) {
    if (name == "UpdateRate_" || name == "DimensionChannel_") return FieldForm::count;
    return name == "DomainParams_" ? FieldForm::sorted : FieldForm::value;
}

// What a list's records have in common.
class RecordForm {
public:
    RecordForm(const hvArray* records, JsonLayout layout)
        : m_records(records), m_markedName(memberOf(layout.between, kMarkedName)), m_last(layout.last) {
        for (int i = 0; i < hvGetNumberOfFields(records); ++i) {
            const char* const name = hvGetFieldNameByNumber(records, i);
            m_fields.push_back({name, memberOf(i == 0 ? layout.first : layout.between, name), formOf(name)});
        }
    }

    void append(std::string& out, std::size_t element, const std::u16string* markedName) const {
        out += '{';
        for (const Field& field : m_fields) appendField(out, field, hvGetField(m_records, element, field.name));
        if (markedName) appendJsonText(out += m_markedName, *markedName);
        (out += m_last) += '}';
    }

private:
    struct Field {
        const char* name;
        std::string member;
        FieldForm form;
    };

    static std::string memberOf(std::string_view inFront, std::string_view name) {
        return std::string(inFront) + JsonObject::memberName(name);
    }
    static void appendField(std::string& out, const Field& field, const hvArray* value) {
        // Parked records stay as they were read.
        if (!value && field.form == FieldForm::count) return;
        out += field.member;
        if (field.form == FieldForm::count)
            out += fmt::format("{}", hvGetScalarInt(value));
        else
            field.form == FieldForm::sorted ? appendJsonFieldsSorted(out, value) : appendJsonValue(out, value);
    }

    const hvArray* m_records;
    std::string m_markedName;
    std::string_view m_last;
    std::vector<Field> m_fields;
};

void appendRecord(std::string& out, const hvArray* records, std::size_t element, JsonLayout layout,
                  const std::u16string* markedName = nullptr) {
    RecordForm(records, layout).append(out, element, markedName);
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

// A list of the document; what is written is handed on from time to time.
class List {
public:
    List(const TextSink& sink, std::string& out) : m_sink(sink), m_out(out), m_array(out, kList) {}
    // Makes room for one more element.
    void next() {
        constexpr std::size_t kMostKept = std::size_t{1} << 16U;
        m_array.next();
        if (m_out.size() < kMostKept) return;
        m_sink(m_out);
        m_out.clear();
    }
    void close() { m_array.close(); }

private:
    const TextSink& m_sink;
    std::string& m_out;
    JsonArray m_array;
};

template <class Range, class Append>
void writeList(const TextSink& sink, std::string& out, const Range& elements, Append append) {
    List list(sink, out);
    for (const auto& element : elements) {
        list.next();
        append(element);
    }
    list.close();
}

void writeRecords(const TextSink& sink, std::string& out, const RecordSource& source) {
    List list(sink, out);
    source([&](const hvArray* records, const MarkedNameList& names) {
        const RecordForm form(records, kRecord);
        for (const std::size_t i : ks_host::indicesOf(records)) {
            list.next();
            form.append(out, i, i < names.size() && names[i] ? &*names[i] : nullptr);
        }
    });
    list.close();
}

WrittenFile writeInto(AtomicFile& file, const ModelContents& contents) {
    writeModel([&](std::string_view piece) { file.write(piece); }, contents);
    return {file.commit(), file.warnings()};
}

}  // namespace

ModelContents contentsOf(const kestrel::Model& model, const hvArray* signals, const hvArray* clients,
                         const ModelExtras& extras) {
    return {model, [signals, &extras](const SliceSink& sink) { sink(signals, extras.markedNames); },
            [clients](const SliceSink& sink) { sink(clients, {}); }, extras};
}

ModelContents contentsOf(const ModelFile& file) {
    return contentsOf(file.model, file.signals.get(), file.clients.get(), file.extras);
}

void writeModel(const TextSink& sink, const ModelContents& contents) {
    const ModelExtras& extras = contents.extras;
    std::string out;
    JsonObject document(out, kDocument);
    document.number("kestrelModel", 1).text("name", contents.model.name());
    if (extras.origin) {
        document.name("origin");
        appendOrigin(out, *extras.origin);
    }
    document.name("blocks");
    writeList(sink, out, contents.model.blocks(), [&](const kestrel::Block& block) { appendBlock(out, block); });
    document.name("signals");
    writeRecords(sink, out, contents.signals);
    document.name("clients");
    writeRecords(sink, out, contents.clients);
    if (!extras.parked.empty()) {
        document.name("parked");
        writeList(sink, out, extras.parked, [&](const ParkedMark& mark) { appendParked(out, mark); });
    }
    document.close();
    sink(out += '\n');
}

std::string modelText(const ModelContents& contents) {
    std::string text;
    writeModel([&](std::string_view piece) { text += piece; }, contents);
    return text;
}

std::string modelText(const kestrel::Model& model, const hvArray* signals, const hvArray* clients,
                      const ModelExtras& extras) {
    return modelText(contentsOf(model, signals, clients, extras));
}

std::string modelText(const ModelFile& file) { return modelText(contentsOf(file)); }

WrittenFile writeModelFile(const std::string& path, const ModelContents& contents,
                           std::optional<FileVersion> replaced) {
    AtomicFile file(path, replaced);
    return writeInto(file, contents);
}

WrittenFile writeModelFile(const std::string& path, const kestrel::Model& model, const hvArray* signals,
                           const hvArray* clients, const ModelExtras& extras, std::optional<FileVersion> replaced) {
    return writeModelFile(path, contentsOf(model, signals, clients, extras), replaced);
}

WrittenFile writeModelFile(const std::string& path, const ModelFile& file, std::optional<FileVersion> replaced) {
    return writeModelFile(path, contentsOf(file), replaced);
}

WrittenFile writeNewModelFile(const std::string& path, const ModelContents& contents) {
    AtomicFile file(AtomicFile::kNew, path);
    return writeInto(file, contents);
}

}  // namespace workbench
