#include "kshmi/print/reports/carry_report.h"

#include <fmt/format.h>

#include "kshmi/print/line_list.h"
#include "workbench/files/standard_stream.h"
#include "workbench/json/json_object.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

namespace {

struct FateWords {
    const char* text;
    const char* json;
};

FateWords wordsOf(Fate fate) {
    switch (fate) {
        case Fate::same:
            return {"same", "same"};
        case Fate::renumbered:
            return {"renumbered", "renumbered"};
        case Fate::renamed:
            return {"renamed, by rule", "renamed"};
        case Fate::mapped:
            return {"renamed, by map", "mapped"};
        case Fate::accepted:
            return {"guess accepted", "accepted"};
        case Fate::ambiguous:
            return {"ambiguous", "ambiguous"};
        case Fate::lostBlock:
            return {"lost with its block", "lostBlock"};
        case Fate::lostSource:
            break;
    }
    return {"lost with its port", "lostPort"};
}

std::string nameOf(const MarkPlace& place) {
    const std::string block = printable(place.block);
    if (place.domain.empty()) return fmt::format("{}:{} {}", block, place.port, inQuotes(place.name));
    return place.name.empty() ? block : fmt::format("{}/{}", block, printable(place.name));
}

std::string lineOf(const CarriedMark& mark) {
    const bool isItem = !mark.before.domain.empty();
    const bool isLostItem = mark.fate == Fate::lostSource && isItem;
    std::string line =
        fmt::format("  {}: {}", isLostItem ? "lost with its chart item" : wordsOf(mark.fate).text, nameOf(mark.before));
    const bool isAmbiguous = mark.fate == Fate::ambiguous;
    if (mark.after) line += (isAmbiguous ? ", perhaps " : " -> ") + nameOf(*mark.after);
    if (isAmbiguous && mark.candidates > 1) line += fmt::format(" ({} candidates)", mark.candidates);
    if (mark.hadSlid) line += ", had slid";
    return line;
}

void printCounts(const CarryReport& report, const CarryRun& run, const Output& output) {
    output.out << fmt::format("{} -> {}: {}\n", printable(std::string_view(run.before)),
                              printable(std::string_view(run.after)), counted(report.marks.size(), "mark"));
    for (const Fate fate : kFates)
        if (const std::size_t count = report.count(fate); count > 0 || fate != Fate::accepted)
            output.out << fmt::format("  {:<20} {:>7}\n", wordsOf(fate).text, count);
    if (const std::size_t slid = report.slidCount(); slid > 0)
        output.out << fmt::format("{} had slid onto another port in the old version; the names were followed\n",
                                  counted(slid, "mark"));
    if (!report.parked.empty())
        output.out << fmt::format("parked before: {} back, {} still parked\n", report.returnedCount(),
                                  report.parked.size() - report.returnedCount());
    if (report.areIdentifiersRenewed)
        output.out << "The identifiers belong to other blocks than before, so blocks were found by path; --match id "
                      "goes by identifiers all the same.\n";
}

std::string clientsOf(const CarryReport& report) {
    const std::string parked =
        report.parkedClients == 0 ? "" : fmt::format(", {} parked", counted(report.parkedClients, "client"));
    return counted(report.clients, "client") + parked;
}

void printEnd(const CarryReport& report, const CarryRun& run, const Output& output) {
    std::size_t lost = 0;
    for (const CarriedMark& mark : report.marks) lost += isParkedFate(mark.fate) ? 1 : 0;
    const std::size_t parked = lost + report.parked.size() - report.returnedCount();
    const std::size_t carried = report.marks.size() + report.parked.size() - parked;
    const std::string what = fmt::format("{} and {}", counted(carried, "signal"), clientsOf(report));
    output.out << fmt::format("{}: {} {}", printable(std::string_view(calledWhenSaved(run.output))),
                              run.isDryRun ? "dry run, not saved; would have" : "saved with", what);
    output.out << (parked > 0 ? fmt::format("; {} parked\n", counted(parked, "mark")) : "\n");
}

void appendPlace(std::string& out, const MarkPlace& place, const std::u16string& model) {
    JsonObject object(out);
    object.text("block", std::u16string(model).append(1, u'/').append(place.block));
    if (place.domain.empty())
        object.number("port", place.port).text("portName", place.name);
    else
        object.text("item", place.name)
            .text("domain", place.domain)
            .number("ssid", place.ssid)
            .text("activity", place.activity);
    object.close();
}

void appendMark(std::string& out, const CarriedMark& mark, const CarryRun& run) {
    JsonObject object(out);
    object.name("signal");
    JsonObject(out).text("uuid", mark.uuid).number("position", mark.position + 1).close();
    object.text("fate", std::string_view(wordsOf(mark.fate).json)).name("before");
    appendPlace(out, mark.before, run.oldModel);
    if (mark.after) {
        object.name(mark.fate == Fate::ambiguous ? "proposed" : "after");
        appendPlace(out, *mark.after, run.newModel);
    }
    if (mark.fate == Fate::ambiguous) object.number("candidates", mark.candidates);
    if (mark.hadSlid) object.truth("slid", true);
    object.close();
}

template <class IsIn>
void appendMarks(std::string& out, JsonObject& object, const char* name, const std::vector<CarriedMark>& marks,
                 const CarryRun& run, IsIn isIn) {
    object.name(name);
    JsonArray array(out, kLines);
    for (const CarriedMark& mark : marks) {
        if (!isIn(mark)) continue;
        array.next();
        appendMark(out, mark, run);
    }
    array.close();
}

}  // namespace

void printCarry(const CarryReport& report, const CarryRun& run, bool showsAll, const Output& output) {
    printCounts(report, run, output);
    LineList lines(showsAll);
    // What a person has to look at comes first.
    for (const bool isParked : {true, false})
        for (const CarriedMark& mark : report.marks)
            if (isParkedFate(mark.fate) == isParked && (mark.fate != Fate::same || mark.hadSlid))
                lines.addMade([&] { return lineOf(mark); });
    for (const CarriedMark& mark : report.parked)
        if (!isParkedFate(mark.fate)) lines.addMade([&] { return fmt::format("  back: {}", nameOf(*mark.after)); });
    for (const CarriedMark& mark : report.parked)
        if (isParkedFate(mark.fate)) lines.addMade([&] { return "  still parked:" + lineOf(mark).substr(1); });
    lines.print(output);
    printEnd(report, run, output);
}

void printCarryJson(const CarryReport& report, const CarryRun& run, const Output& output) {
    std::string out;
    JsonObject object(out);
    object.number("kshmi", 1).text("command", std::string_view("carry")).text("before", run.before);
    object.text("after", run.after).text("file", run.output).truth("dryRun", run.isDryRun);
    object.truth("saved", !run.isDryRun).number("marks", report.marks.size()).name("counts");
    JsonObject counts(out);
    for (const Fate fate : kFates) counts.number(wordsOf(fate).json, report.count(fate));
    counts.number("slid", report.slidCount()).number("back", report.returnedCount());
    counts.number("stillParked", report.parked.size() - report.returnedCount()).close();
    const auto list = [&](const char* name, const std::vector<CarriedMark>& marks, auto isIn) {
        appendMarks(out, object, name, marks, run, isIn);
    };
    list("unchanged", report.marks, [](const auto& mark) { return mark.fate == Fate::same; });
    list("changed", report.marks, [](const auto& mark) { return mark.fate != Fate::same && !isParkedFate(mark.fate); });
    list("skipped", report.marks, [](const auto& mark) { return isParkedFate(mark.fate); });
    list("back", report.parked, [](const auto& mark) { return !isParkedFate(mark.fate); });
    list("stillParked", report.parked, [](const auto& mark) { return isParkedFate(mark.fate); });
    object.number("clients", report.clients).number("parkedClients", report.parkedClients).close();
    output.out << printableJson(out) << '\n';
}

}  // namespace kshmi
