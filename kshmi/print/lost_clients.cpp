#include "kshmi/print/lost_clients.h"

#include <fmt/format.h>

#include "workbench/find/client_names.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

void warnOfLost(const Session& session, const DanglingWatch& watch, bool isDryRun, std::ostream& err) {
    const Positions lost = watch.lost();
    if (lost.empty()) return;
    std::string names;
    for (const std::size_t position : lost) names += (names.empty() ? "" : ", ") + nameOfClient(session, position);
    err << "warning: " << (isDryRun ? "would be " : "") << "left without a signal: " << names;
    if (!isDryRun)
        err << fmt::format("; \"kshmi unobserve {} --dangling\" removes {}",
                           printable(std::string_view(session.path())), lost.size() == 1 ? "it" : "them");
    err << '\n';
}

}  // namespace kshmi
