#include "kshmi/print/reports/import_report.h"

#include "kshmi/print/json/json_document.h"

namespace kshmi {

using namespace workbench;

namespace {

void appendNotes(std::string& out, const ImportNotes& notes) {
    appendJsonArray(out, notes.all(), [&](const ImportNote& note) {
        JsonObject object(out);
        object.text("text", note.text).number("count", note.names.size());
        if (note.line > 0) object.number("line", note.line);
        object.name("names");
        appendJsonTexts(out, note.names);
        object.close();
    });
}

}  // namespace

void printImportJson(const ImportedModel& model, const std::string& file, std::ostream& out) {
    JsonDocument document("import");
    JsonObject& object = document.object();
    object.text("file", file).text("model", model.model.name());
    object.text("kind", model.origin.kind).text("version", model.origin.version);
    object.number("blocks", model.model.blocks().size()).number("ports", model.portCount);
    object.number("kept", model.keptCount).number("gone", model.goneCount).name("dropped");
    appendNotes(document.text(), model.dropped);
    object.name("warnings");
    appendNotes(document.text(), model.warnings);
    document.print(out);
}

}  // namespace kshmi
