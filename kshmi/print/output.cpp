#include "kshmi/print/output.h"

#include <utility>

#include "kshmi/print/progress.h"
#include "workbench/session/host_process.h"

namespace kshmi {

void enterHost(std::ostream& err) {
    workbench::enterHost([&err](const std::string& text) { err << "warning: " << text << '\n'; });
}

void tellProgress(const Output& output, std::string work) {
    if (output.progress != nullptr) output.progress->tell(std::move(work));
}

}  // namespace kshmi
