#include <string>

#include "workbench/files/atomic_file.h"
#include "workbench/json/json_object.h"
#include "workbench/json/json_text.h"
#include "workbench/model_file/model_file.h"
#include "workbench/values/host_value_writer.h"

namespace workbench {

namespace {

/// Separates the elements of a list that is written one element per line or lines.
class Listing {
public:
    Listing(AtomicFile& file, const char* key) : m_file(file) { m_file.write(std::string("  \"") + key + "\": ["); }
    void next(const std::string& element) {
        m_file.write(m_isEmpty ? "\n" : ",\n");
        m_file.write(element);
        m_isEmpty = false;
    }
    void close(const char* after) {
        m_file.write(m_isEmpty ? "]" : "\n  ]");
        m_file.write(after);
    }

private:
    AtomicFile& m_file;
    bool m_isEmpty = true;
};

template <typename Items, typename TextOf>
void appendChartItems(std::string& out, const Items& items, const char* key, TextOf textOf) {
    const char* separator = "";
    for (const auto& item : items) {
        out += separator + std::string("{\"") + key + "\": ";
        appendJsonText(out, std::u16string_view(textOf(item)));
        out += ", \"ssid\": " + std::to_string(item.ssid) + "}";
        separator = ", ";
    }
}

std::string blockLine(const kestrel::Block& block) {
    std::string line = "    {\"path\": ";
    appendJsonText(line, std::u16string_view(block.path));
    line += ", \"eid\": ";
    appendJsonText(line, std::string_view(block.eid));
    if (block.source) {
        line += ", \"source\": ";
        appendJsonText(line, std::string_view(*block.source));
    }
    line += ", \"outputs\": [";
    for (std::size_t i = 0; i < block.outputs.size(); ++i) {
        if (i > 0) line += ", ";
        appendJsonText(line, std::u16string_view(block.outputs[i]));
    }
    line += "]";
    if (block.chart) {
        line += ", \"chart\": {\"states\": [";
        appendChartItems(line, block.chart->states, "path", [](const auto& state) { return state.path; });
        line += "], \"data\": [";
        appendChartItems(line, block.chart->data, "name", [](const auto& datum) { return datum.name; });
        line += "]}";
    }
    return line + "}";
}

std::string originLine(const Origin& origin) {
    std::string line = "  \"origin\": ";
    JsonObject object(line);
    object.text("kind", std::string_view(origin.kind)).text("version", std::string_view(origin.version));
    object.text("file", std::string_view(origin.file)).text("hash", std::string_view(origin.hash));
    if (origin.locals) object.truth("locals", true);
    if (!origin.gone.empty()) {
        std::string gone;
        appendJsonList(gone, origin.gone.size(), [&](std::size_t i) {
            const GoneBlock& block = origin.gone[i];
            JsonObject one(gone);
            one.text("source", std::string_view(block.source)).text("eid", std::string_view(block.eid)).close();
        });
        object.plain("gone", gone);
    }
    object.close();
    return line + ",\n";
}

/// Fields whose class the library sets, whatever it was: plain numbers lose nothing.
bool isCountField(std::string_view name) { return name == "UpdateRate_" || name == "DimensionChannel_"; }

/// One field per line.
std::string structLines(const hvArray* value, std::size_t element) {
    std::string lines = "    {";
    for (int i = 0; i < hvGetNumberOfFields(value); ++i) {
        const std::string_view name = hvGetFieldNameByNumber(value, i);
        lines += i > 0 ? ",\n      " : "\n      ";
        appendJsonText(lines, name);
        lines += ": ";
        const hvArray* const field = hvGetField(value, element, name.data());
        if (name == "DomainParams_")
            appendJsonFieldsSorted(lines, field);
        else if (isCountField(name))
            lines += std::to_string(hvGetScalarInt(field));
        else
            appendJsonValue(lines, field);
    }
    return lines + (hvGetNumberOfFields(value) > 0 ? "\n    }" : "}");
}

}  // namespace

FileVersion writeModelFile(const std::string& path, const kestrel::Model& model, const hvArray* signals,
                           const hvArray* clients, const std::optional<Origin>& origin,
                           std::optional<FileVersion> replaced) {
    AtomicFile file(path, replaced);
    std::string head = "{\n  \"kestrelModel\": 1,\n  \"name\": ";
    appendJsonText(head, std::u16string_view(model.name()));
    file.write(head + ",\n");
    if (origin) file.write(originLine(*origin));

    Listing blocks(file, "blocks");
    for (const kestrel::Block& block : model.blocks()) blocks.next(blockLine(block));
    blocks.close(",\n");

    Listing records(file, "signals");
    for (std::size_t i = 0; i < hvGetNumberOfElements(signals); ++i) records.next(structLines(signals, i));
    records.close(",\n");

    Listing observers(file, "clients");
    for (std::size_t i = 0; i < hvGetNumberOfElements(clients); ++i) observers.next(structLines(clients, i));
    observers.close("\n}\n");
    return file.commit();
}

}  // namespace workbench
