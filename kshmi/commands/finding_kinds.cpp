#include "kshmi/commands/finding_kinds.h"

#include <fmt/format.h>

#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

namespace {

// The words for help and completion; what is none of them is refused where the option is read.
CLI::Validator kindList(IsOfKind isAllowed) {
    std::string words;
    for (const FindingKind kind : findingKinds(isAllowed)) words += fmt::format("{},", textOf(kind));
    return {[](std::string&) { return std::string(); }, fmt::format("{{{}all}}", words)};
}

}  // namespace

CLI::Option* addKinds(CLI::App& command, const char* name, std::vector<std::string>& words, IsOfKind isAllowed,
                      const std::string& help) {
    return command.add_option(name, words, help)
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("KINDS")
        ->check(kindList(isAllowed));
}

}  // namespace kshmi
