#include "kshmi/print/output.h"

#include <string_view>
#include <utility>

#include "kshmi/print/progress.h"
#include "workbench/session/host_process.h"
#include "workbench/text/text.h"

namespace kshmi {

void enterHost(std::ostream& err) {
    workbench::enterHost([&err](const std::string& text) { err << "warning: " << text << '\n'; });
}

void tellProgress(const Output& output, std::string work) {
    if (output.progress != nullptr) output.progress->tell(std::move(work));
}

void warnOfSave(const std::string& file, const std::vector<std::string>& warnings, std::ostream& err) {
    for (const std::string& warning : warnings)
        err << "kshmi: warning: " << workbench::printable(std::string_view(file)) << ": " << warning << '\n';
}

}  // namespace kshmi
