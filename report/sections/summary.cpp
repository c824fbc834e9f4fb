#include <fmt/format.h>

#include <filesystem>
#include <string>

#include "report/sections/sections.h"
#include "workbench/find/client_names.h"
#include "workbench/session/records.h"
#include "workbench/text/text.h"

namespace report {

using namespace workbench;

namespace {

void writeFigure(Html& html, std::string_view target, std::string_view what, std::size_t figure,
                 const std::string& note, std::string_view look = "") {
    html.add("<a class=\"figure {}\" href=\"#{}\"><b>{}</b> <span>{}</span><small>{}</small></a>\n", look, target,
             grouped(figure), what, note);
}

std::string blockNote(const Session& session) {
    std::size_t ports = 0;
    std::size_t charts = 0;
    for (const kestrel::Block& block : session.model().blocks()) {
        ports += block.outputs.size();
        charts += block.chart ? 1 : 0;
    }
    const std::string note = countedText(ports, "output port");
    return charts == 0 ? note : fmt::format("{}, {}", note, countedText(charts, "chart"));
}

std::string clientNote(const Session& session, const PageIndex& index) {
    std::size_t watching = 0;
    for (const ks_hmi::SignalClient& client : recordsOf(session.clients()))
        watching += stateOf(client, index.uuids(), session.model().name()) == ClientState::watching ? 1U : 0U;
    const std::size_t count = session.clients().getCount();
    if (count == 0) return "nobody watches";
    return watching == count ? "all watching" : grouped(watching) + " watching";
}

std::string signalNote(const Session& session, const PageIndex& index) {
    const std::size_t count = session.signals().getCount();
    std::size_t watched = 0;
    for (std::size_t i = 0; i < count; ++i) watched += index.clientsOf(i).empty() ? 0U : 1U;
    return count == 0 ? "nothing is marked" : grouped(watched) + " with clients";
}

void writeFindingFigure(Html& html, const CheckedFile& checked) {
    const std::size_t errors = checked.count(FindingLevel::error);
    const std::size_t warnings = checked.count(FindingLevel::warning);
    const std::size_t notes = checked.count(FindingLevel::note);
    std::string note;
    const auto add = [&](std::size_t count, const char* what) {
        if (count > 0) note += (note.empty() ? "" : ", ") + countedText(count, what);
    };
    add(errors, "error");
    add(warnings, "warning");
    add(notes, "note");
    const std::size_t all = checked.findings.size();
    writeFigure(html, "findings", all == 1 ? "finding" : "findings", all, all == 0 ? "nothing is wrong" : note,
                errors > 0     ? "error"
                : warnings > 0 ? "warning"
                               : "");
}

void writeRunFigure(Html& html, const RunView* view, std::size_t signals) {
    if (view == nullptr) {
        html.add("<div class=\"figure\"><b>–</b> <span>run</span><small>none on this page</small></div>\n");
        return;
    }
    const workbench::RecordedRun& run = view->run();
    const bool isTimed = run.start && run.stop;
    const std::string length = isTimed ? durationText(*run.stop - *run.start) : "–";
    const std::size_t blank = length.find(' ');
    html.add(
        "<a class=\"figure{}\" href=\"#run\"><b>{}<i>{}</i></b> <span>run</span><small>{} of {} "
        "recorded{}</small></a>\n",
        Markup{view->isEarly() ? " warning" : ""}, length.substr(0, blank), isTimed ? length.substr(blank) : "",
        grouped(view->recordedSignals()), countedText(signals, "signal"),
        view->isUnended() ? ", not ended"
        : view->isEarly() ? ", stopped early"
                          : "");
}

// Where the model is from: nothing of the machine that the page is made on.
void writeFacts(Html& html, const Contents& contents) {
    const std::filesystem::path path(contents.session.path());
    html.add("<p class=\"facts\">");
    if (!contents.session.isStream()) html.add("{}", Name(path.filename().string()));
    if (const auto& origin = contents.session.origin()) {
        const bool isUnit = origin->kind == "fmu" || origin->kind == "fmi";
        html.add("{}imported from {}, {} {}", contents.session.isStream() ? "" : " · ",
                 Name(std::filesystem::path(origin->file).filename().string()), isUnit ? "FMI" : "SSP",
                 Name(origin->version));
    }
    html.add("</p>\n");
}

}  // namespace

void writeSummary(Html& html, const Contents& contents, const PageIndex& index) {
    const Session& session = contents.session;
    const std::size_t blocks = session.model().blocks().size();
    const std::size_t signals = session.signals().getCount();
    const std::size_t clients = session.clients().getCount();
    html.add("<header><p class=\"kind\">Kestrel model</p>\n<h1>{}</h1>\n", Name(session.model().name()));
    writeFacts(html, contents);
    html.add("<div class=\"figures\">\n");
    writeFigure(html, "blocks", blocks == 1 ? "block" : "blocks", blocks, blockNote(session));
    writeFigure(html, "signals", signals == 1 ? "signal" : "signals", signals, signalNote(session, index));
    writeFigure(html, index.strays().empty() ? "signals" : "clients", clients == 1 ? "client" : "clients", clients,
                clientNote(session, index));
    writeFindingFigure(html, contents.checked);
    writeRunFigure(html, index.run(), signals);
    html.add("</div></header>\n");
}

}  // namespace report
