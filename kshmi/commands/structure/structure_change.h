#pragma once

#include <fmt/format.h>

#include <cstddef>
#include <string>

#include "kshmi/commands/command_options.h"
#include "kshmi/print/reports/change_report.h"
#include "kshmi/print/reports/lost_clients.h"
#include "workbench/find/watching.h"
#include "workbench/text/text.h"

/// What the commands that edit a model's structure have in common.
namespace kshmi {

/// What runs such a command, called `name` in JSON: opens the model of `file`, has `change` make and tell the change,
/// saves, and warns of clients that have lost their signals.
template <class Arguments, class Change>
auto changing(const char* name, Change change) {
    return [=](const Arguments& arguments, const Output& output) {
        kshmi::enterHost(output.err);
        workbench::Session session(arguments.file);
        ChangeReport report(output, name, arguments.options, session);
        const workbench::DanglingWatch watch(session);
        change(session, report, arguments);
        const ExitCode code = report.finish();
        warnOfLost(session, watch, arguments.options.isDryRun, output.err);
        return code;
    };
}

/// Tells how many signals go with what is removed; nothing when none does.
inline void tellRemoved(std::size_t signals, ChangeReport& report) {
    if (signals == 0) return;
    const std::string text = workbench::counted(signals, "signal");
    report.note(fmt::format("  {} would go with it", text), fmt::format("  {} went with it", text));
}

}  // namespace kshmi
