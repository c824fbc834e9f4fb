#include "kshmi/print/output.h"

#include <string>

#include "workbench/session/host_process.h"

namespace kshmi {

void enterHost(std::ostream& err) {
    workbench::enterHost([&err](const std::string& text) { err << "warning: " << text << '\n'; });
}

}  // namespace kshmi
