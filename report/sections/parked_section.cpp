#include "report/sections/sections.h"
#include "workbench/compare/saved_records.h"
#include "workbench/text/text.h"

namespace report {

using namespace workbench;

namespace {

const char* lossOf(LostWith lost) noexcept {
    return lost == LostWith::block  ? "its block is gone"
           : lost == LostWith::port ? "its port is gone"
                                    : "its item is gone";
}

void writeMark(Html& html, const ParkedMark& mark) {
    const hvArray* const signal = mark.signal.get();
    const std::size_t clients = hvGetNumberOfElements(mark.clients.get());
    html.add("<li><div class=\"what\"><h3>{}</h3><p class=\"from\">{}", Name(recordText(signal, 0, "SignalName_")),
             Path(recordText(signal, 0, "BlockPath_")));
    if (mark.markedName && !mark.markedName->empty())
        html.add(" <span class=\"set\">{}</span>", Name(*mark.markedName));
    html.add("</p></div><p>{}, marked in {}</p><p>{}</p></li>\n", lossOf(mark.lost), Name(mark.from),
             clients == 0 ? std::string("no client") : countedText(clients, "client"));
}

}  // namespace

void writeParked(Html& html, const Contents& contents) {
    const std::vector<ParkedMark>& parked = contents.session.parked();
    if (parked.empty()) return;
    openSection(html, "parked", "Parked marks", parked.size());
    html.add(
        "<p class=\"lead\">They come back when a later version of the model has their place again.</p>\n"
        "<ul class=\"parked list\">\n");
    for (const ParkedMark& mark : parked) writeMark(html, mark);
    html.add("</ul>\n");
    closeSection(html);
}

}  // namespace report
