#include "workbench/check/settling.h"

#include <utility>

#include "workbench/check/pruning.h"

namespace workbench {

SettledFile settleFile(CheckedFile checked, Settling how, const FindingKinds& kinds, bool isDryRun, TextSink sink) {
    if (!checked.contents) return {{}, std::move(checked), {}};
    if (!checked.isWhole)
        throw Error({checked.path, 0, {}}, "is not changed: correct by hand what could not be read, then try again",
                    ErrorCode::model);
    Session session(checked.path, std::move(*checked.contents), Session::Opening::anyhow);
    session.saveTo(std::move(sink));
    session.keepUnsettledNames();
    std::vector<Settled> settled =
        how == Settling::mend ? mend(session, checked.findings, kinds) : prune(session, checked.findings, kinds);
    checked.contents.reset();
    if (settled.empty()) return {{}, std::move(checked), {}};
    if (isDryRun || session.isStream()) {
        if (!isDryRun) session.save();
        return {std::move(settled), checkText(session.path(), session.text()), {}};
    }
    std::vector<std::string> warnings = session.save().warnings;
    return {std::move(settled), checkFile(session.path()), std::move(warnings)};
}

}  // namespace workbench
