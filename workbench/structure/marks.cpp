#include "workbench/structure/marks.h"

#include <fmt/format.h>

#include <algorithm>

#include "workbench/change/marking.h"
#include "workbench/find/client_names.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

Positions marksOn(const Session& session, const std::function<bool(const SignalSource&)>& isMeant) {
    Positions positions;
    for (std::size_t i = 0; i < session.signals().getCount(); ++i) {
        const SignalSource source = sourceOf(session.model(), *session.signals().get(i));
        if (source.block && isMeant(source)) positions.push_back(i);
    }
    return positions;
}

std::string namesOf(const Session& session, const Positions& signals) {
    constexpr std::size_t kMost = 5;
    std::string names;
    for (std::size_t i = 0; i < std::min(kMost, signals.size()); ++i)
        names += fmt::format("{}signal {} on {}", i > 0 ? ", " : "", signals[i] + 1, nameOfSignal(session, signals[i]));
    if (signals.size() > kMost) names += fmt::format(" and {} more", signals.size() - kMost);
    return names;
}

void settleMarks(Session& session, const Positions& signals, Marks marks, const std::string& what) {
    if (!signals.empty() && marks == Marks::keep)
        throw Error(fmt::format("{} is marked: {}", what, namesOf(session, signals)), ErrorCode::request,
                    Remedy::unmark);
    removeSignals(session, signals);
}

void requireName(const std::u16string& name) {
    if (name.empty()) throw Error("a name is empty; give one");
    if (name.find(u'\0') != std::u16string::npos)
        throw Error(fmt::format("{}: a name has no NUL characters", inQuotes(name)));
}

}  // namespace workbench
