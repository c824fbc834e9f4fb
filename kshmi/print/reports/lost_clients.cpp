#include "kshmi/print/reports/lost_clients.h"

#include <fmt/format.h>

#include <algorithm>

#include "kshmi/print/reports/findings.h"
#include "workbench/find/client_names.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

void warnOfLost(const Session& session, const DanglingWatch& watch, bool isDryRun, std::ostream& err) {
    const Positions lost = watch.lost();
    if (lost.empty()) return;
    constexpr std::size_t kMostNamed = 5;
    err << fmt::format("kshmi: warning: {}left without a signal: {}", isDryRun ? "would be " : "",
                       listed(lost, kMostNamed, [&](std::size_t position) { return nameOfClient(session, position); }));
    if (!isDryRun)
        err << fmt::format("; \"kshmi unobserve {} --dangling\" removes {}",
                           printableMessage(shellWord(session.path())), lost.size() == 1 ? "it" : "them");
    err << '\n';
}

void warnOfDeprecated(const ks_hmi::SignalClient& client, const std::string& file, std::ostream& err) {
    if (!client.isDeprecatedObserver()) return;
    err << fmt::format(
        "kshmi: warning: clients of the type {} are deprecated; validation drops them (\"kshmi unobserve {} "
        "--unused\")\n",
        inQuotes(std::string_view(client.m_observerType)), printableMessage(shellWord(file)));
}

}  // namespace kshmi
