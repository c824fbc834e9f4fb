#include "kshmi/commands/finding_kinds.h"

#include <fmt/format.h>

#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

namespace {

std::string kindList(IsOfKind isAllowed) {
    const std::vector<FindingKind> kinds = findingKinds(isAllowed);
    return listed(kinds, kinds.size(), [](FindingKind kind) { return textOf(kind); });
}

}  // namespace

CLI::Option* addKinds(CLI::App& command, const char* name, std::vector<std::string>& words, IsOfKind isAllowed,
                      const std::string& help) {
    return command.add_option(name, words, fmt::format("{}: {}, or all", help, kindList(isAllowed)))
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("KINDS");
}

}  // namespace kshmi
