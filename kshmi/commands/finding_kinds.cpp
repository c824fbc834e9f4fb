#include "kshmi/commands/finding_kinds.h"

#include <fmt/format.h>

#include "workbench/text/error.h"
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

FindingKinds requireKinds(const std::vector<std::string>& words, IsOfKind isAllowed, const char* option) {
    FindingKinds kinds;
    for (const std::string& word : words) {
        const std::optional<FindingKind> kind = findingKindOf(word);
        if (word != "all" && !(kind && isAllowed(*kind)))
            throw Error(fmt::format("{}: there is no kind {}; it takes {}, or all", option,
                                    inQuotes(std::string_view(word)), kindList(isAllowed)));
        for (const FindingKind one : findingKinds(isAllowed))
            if (word == "all" || one == *kind) kinds.set(static_cast<std::size_t>(one));
    }
    return kinds;
}

}  // namespace kshmi
