#include "workbench/check/settling.h"

#include <string>
#include <utility>
#include <vector>

#include "workbench/check/pruning.h"

namespace workbench {

namespace {

// Saves, or has the text made that would be saved, and tells what is found in that. It is read again only for the
// places of what there is.
class CheckedSave {
public:
    explicit CheckedSave(Session& session)
        : m_session(session),
          m_check(session.path(), session.model(), session.signals().getCount(), session.clients().getCount()) {
        session.watchSaves([this](RecordKind kind, const hvArray* records, const MarkedNameList& names) {
            m_check.take(kind, records, names);
        });
    }
    CheckedSave(const CheckedSave&) = delete;
    CheckedSave& operator=(const CheckedSave&) = delete;
    ~CheckedSave() { m_session.watchSaves(nullptr); }

    // The check of a file, or of what is in none.
    std::vector<std::string> save(CheckedFile& now) {
        std::vector<std::string> warnings = m_session.save().warnings;
        now = m_check.end(m_session.parked());
        m_session.watchSaves(nullptr);
        if (!now.findings.empty())
            now = m_session.isStream() ? checkText(m_session.path(), m_session.text()) : checkFile(m_session.path());
        return warnings;
    }
    CheckedFile dryRun() {
        const std::string text = m_session.text();
        CheckedFile now = m_check.end(m_session.parked());
        return now.findings.empty() ? std::move(now) : checkText(m_session.path(), text);
    }

private:
    Session& m_session;
    WrittenCheck m_check;
};

}  // namespace

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
    CheckedSave save(session);
    SettledFile result{std::move(settled), {}, {}};
    if (isDryRun)
        result.now = save.dryRun();
    else
        result.warnings = save.save(result.now);
    return result;
}

}  // namespace workbench
