#include <fmt/format.h>

#include "host/values.h"
#include "workbench/compare/diff.h"
#include "workbench/compare/saved_records.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

void appendBlockText(std::string& out, const kestrel::Block& block) {
    out += fmt::format("block {} (identifier {})\n", inQuotes(block.path), inQuotes(block.eid));
    for (std::size_t i = 0; i < block.outputs.size(); ++i)
        out += fmt::format("  port {} {}\n", i + 1, inQuotes(block.outputs[i]));
    if (!block.chart) return;
    for (const kestrel::ChartState& state : block.chart->states)
        out += fmt::format("  state {} {}\n", state.ssid, inQuotes(state.path));
    for (const kestrel::ChartData& datum : block.chart->data)
        out += fmt::format("  datum {} {}\n", datum.ssid, inQuotes(datum.name));
}

void appendRecord(std::string& out, RecordKind kind, const hvArray* records, std::size_t position) {
    out += fmt::format("{} {}\n", kind == RecordKind::signal ? "signal" : "client",
                       inQuotes(recordText(records, position, "UUID")));
    for (const char* const field : fieldsOf(kind))
        if (field != std::string_view("UUID"))
            out += fmt::format("  {}: {}\n", field, canonicalField(records, position, field));
}

void appendMarkedName(std::string& out, const std::u16string* name) {
    if (name) out += fmt::format("  {}: {}\n", kMarkedName, inQuotes(*name));
}

}  // namespace

std::string comparableText(const ModelFile& file) {
    std::string out = fmt::format("model {}\n", inQuotes(file.model.name()));
    for (const kestrel::Block& block : file.model.blocks()) appendBlockText(out, block);
    for (const std::size_t i : ks_host::indicesOf(file.signals.get())) {
        appendRecord(out, RecordKind::signal, file.signals.get(), i);
        appendMarkedName(out, file.extras.markedName(i));
    }
    for (const std::size_t i : ks_host::indicesOf(file.clients.get()))
        appendRecord(out, RecordKind::client, file.clients.get(), i);
    for (const ParkedMark& mark : file.extras.parked) {
        out += fmt::format("parked, {} its {}, from {}\n", mark.isUnsure ? "unsure of" : "lost with", textOf(mark.lost),
                           inQuotes(mark.from));
        appendRecord(out, RecordKind::signal, mark.signal.get(), 0);
        appendMarkedName(out, mark.markedName ? &*mark.markedName : nullptr);
        for (const std::size_t i : ks_host::indicesOf(mark.clients.get()))
            appendRecord(out, RecordKind::client, mark.clients.get(), i);
    }
    return out;
}

}  // namespace workbench
