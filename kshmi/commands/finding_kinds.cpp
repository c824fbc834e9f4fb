#include "kshmi/commands/finding_kinds.h"

#include <fmt/format.h>

#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

namespace {

std::string kindList(IsOfKind isAllowed) {
    std::vector<std::string> kinds;
    for (std::size_t i = 0; i < kFindingKinds; ++i)
        if (const auto kind = static_cast<FindingKind>(i); isAllowed(kind)) kinds.emplace_back(textOf(kind));
    return listed(kinds);
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
        for (std::size_t i = 0; i < kFindingKinds; ++i) {
            const auto one = static_cast<FindingKind>(i);
            if (isAllowed(one) && (word == "all" || one == *kind)) kinds.set(i);
        }
    }
    return kinds;
}

}  // namespace kshmi
