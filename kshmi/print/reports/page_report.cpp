#include "kshmi/print/reports/page_report.h"

#include <filesystem>

#include "kshmi/print/json/json_document.h"
#include "kshmi/print/reports/findings.h"

namespace kshmi {

using namespace workbench;

std::string remedyOnPage(const Finding& finding) {
    Finding here = finding;
    here.place.file = std::filesystem::path(finding.place.file).filename().string();
    return remedyOf(here);
}

void printPageJson(const Session& session, const CheckedFile& checked, const RecordedRun* run, const std::string& file,
                   std::size_t bytes, std::ostream& out) {
    JsonDocument document("report");
    JsonObject& object = document.object();
    object.text("file", file).text("model", session.model().name()).number("bytes", bytes);
    object.number("blocks", session.model().blocks().size()).number("signals", session.signals().getCount());
    object.number("clients", session.clients().getCount()).number("errors", checked.count(FindingLevel::error));
    object.number("warnings", checked.count(FindingLevel::warning)).number("notes", checked.count(FindingLevel::note));
    if (run != nullptr) object.number("recorded", run->columns.size());
    document.print(out);
}

}  // namespace kshmi
