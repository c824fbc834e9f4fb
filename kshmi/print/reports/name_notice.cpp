#include "kshmi/print/reports/name_notice.h"

#include <fmt/format.h>

#include "kshmi/print/json/json_records.h"
#include "kshmi/print/reports/findings.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

void noticeNames(const Session& session, std::ostream& err) {
    const std::size_t count = session.names().unsettled().size();
    if (count == 0) return;
    err << fmt::format("notice: {}: {} not stand where {} marked; \"kshmi check {}\" lists {}\n",
                       printable(std::string_view(session.fileName())),
                       counted(count, "mark") + (count == 1 ? " does" : " do"), count == 1 ? "it was" : "they were",
                       printableMessage(shellWord(session.path())), count == 1 ? "it" : "them");
}

void listUnsettled(JsonMembers& json, const Session& session) {
    const std::vector<UnsettledMark> marks = session.names().unsettled();
    if (marks.empty()) return;
    json.list("unsettled", marks, [&](const UnsettledMark& mark) {
        JsonObject object(json.text());
        appendSignalId(object, session, mark.position);
        object.text("markedName", mark.name.markedName);
        object.text("text", std::string_view(describe("the signal", mark.name, mark.isItem))).close();
    });
}

void noticeUnconfirmed(const Session& session, std::ostream& err) {
    const std::size_t count = session.names().unconfirmed().size();
    if (count == 0) return;
    err << fmt::format(
        "notice: {}: {} without a name, so changed port numbers go unnoticed; \"kshmi set {} --all '*' --confirm\" "
        "keeps the names of today\n",
        printable(std::string_view(session.fileName())), counted(count, "mark") + (count == 1 ? " is" : " are"),
        printableMessage(shellWord(session.path())));
}

}  // namespace kshmi
