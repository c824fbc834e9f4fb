#include "kshmi/print/output.h"

#include <utility>

#include "kshmi/print/progress.h"
#include "workbench/files/standard_stream.h"
#include "workbench/session/host_process.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

void enterHost(std::ostream& err) {
    workbench::enterHost([&err](const std::string& text) { err << "kshmi: warning: " << text << '\n'; });
}

void tellProgress(const Output& output, std::string work) {
    if (output.progress != nullptr) output.progress->tell(std::move(work));
}

void sendModel(const Output& output, std::string_view text) {
    std::ostream& stream = modelStream(output);
    stream << text << std::flush;
    if (!stream)
        throw workbench::Error({"standard output"}, "the model cannot be written there", workbench::ErrorCode::file);
}

void tellWork(const Output& output, const std::string& file) {
    tellProgress(output, "working on " + workbench::printable(std::string_view(workbench::calledInMessages(file))));
}

void warnOfSave(const std::string& file, const std::vector<std::string>& warnings, std::ostream& err) {
    for (const std::string& warning : warnings)
        err << "kshmi: warning: " << workbench::printable(std::string_view(file)) << ": " << warning << '\n';
}

}  // namespace kshmi
