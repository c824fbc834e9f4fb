#include "kshmi/print/reports/record_report.h"

#include <fmt/format.h>

#include <set>

#include "kshmi/print/json/json_document.h"
#include "kshmi/print/json/json_records.h"
#include "workbench/text/text.h"
#include "workbench/values/number_text.h"

namespace kshmi {

using namespace workbench;

namespace {

std::size_t signalCount(const RecordResult& result) {
    std::set<std::size_t> positions;
    for (const RunColumn& column : result.columns) positions.insert(column.position);
    return positions.size();
}

void appendItems(std::string& out, const ValueNames& items) {
    appendJsonArray(out, items, [&](const ValueName& item) {
        JsonObject(out).number("value", item.value).text("name", std::string_view(item.name)).close();
    });
}

void appendColumn(std::string& out, const RunColumn& column, const Session& session) {
    JsonObject object(out);
    appendSignalId(object, session, column.position);
    object.text("title", column.title).text("kind", std::string_view(nameOf(column.kind))).text("unit", column.unit);
    object.text("block", column.block).number("port", column.port).text("portName", column.portName);
    object.text("element", column.element).text("variable", column.variable);
    object.number("decimation", column.decimation).number("maxPoints", column.maxPoints);
    if (!column.names.empty()) appendItems(object.name("items").out(), column.names);
    object.close();
}

}  // namespace

std::string timeText(double time) { return fmt::format("t = {:.10g}", time); }

std::string ratioText(double simulated, double seconds) {
    if (simulated <= 0 || seconds <= 0) return "";
    const double rate = simulated / seconds;
    return fmt::format(", {} times real time", rate < 1000 ? fmt::format("{:.3g}", rate) : fmt::format("{:.0f}", rate));
}

void printRecord(const RecordResult& result, const std::string& file, std::ostream& out) {
    out << fmt::format("{}: {} in {}, {} from {} to {}\n", printable(std::string_view(file)),
                       counted(signalCount(result), "signal"), counted(result.columns.size(), "column"),
                       counted(result.samples, "sample"), timeText(result.start), timeText(result.end.time));
    out << fmt::format("{} ran for {:.3g} s{}\n", printable(std::string_view(result.unit)), result.seconds,
                       ratioText(result.end.time - result.start, result.seconds));
}

void printRecordJson(const RecordResult& result, const std::string& file, const Session& session, std::ostream& out) {
    JsonDocument document("record");
    JsonObject& object = document.object();
    object.text("file", file).text("model", session.model().name()).text("unit", result.unit);
    const auto number = [&](const char* name, double value) { object.name(name).out() += textOfNumber(value); };
    number("start", result.start);
    number("stop", result.end.time);
    number("until", result.until);
    number("step", result.step);
    number("seconds", result.seconds);
    object.text("outcome", std::string_view(nameOf(result.end.kind))).text("message", result.end.message);
    object.number("samples", result.samples);
    document.list("columns", result.columns,
                  [&](const RunColumn& column) { appendColumn(document.text(), column, session); });
    document.print(out);
}

std::string earlyEndOf(const RecordResult& result, const std::string& file) {
    if (result.end.kind == UnitEndKind::done) return {};
    std::string reason = result.end.kind == UnitEndKind::interrupted ? "somebody asked to stop" : result.end.message;
    // The unit's own sentence goes on.
    while (reason.ends_with('.') || reason.ends_with('\n')) reason.pop_back();
    return fmt::format("{}: stopped at {}: {}; what was recorded until then is kept in {}",
                       printable(std::string_view(result.unit)), timeText(result.end.time), printableMessage(reason),
                       file == kStandardStream ? "the output" : printable(std::string_view(file)));
}

}  // namespace kshmi
