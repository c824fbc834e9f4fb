#include "workbench/structure/marks.h"

#include <fmt/format.h>

#include "workbench/change/marking.h"
#include "workbench/find/client_names.h"
#include "workbench/session/records.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

Positions marksOn(const Session& session, const std::function<bool(const SignalSource&)>& isMeant) {
    return positionsWhere(session.signals(), [&](const ks_hmi::SignalSpecification& signal) {
        const SignalSource source = sourceOf(session.model(), signal);
        return source.block && isMeant(source);
    });
}

std::string namesOf(const Session& session, const Positions& signals) {
    constexpr std::size_t kMost = 5;
    return listed(signals, kMost, [&](std::size_t signal) {
        return fmt::format("signal {} on {}", signal + 1, nameOfSignal(session, signal));
    });
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
        throw Error(fmt::format("{}: a name cannot contain NUL characters", inQuotes(name)));
}

}  // namespace workbench
