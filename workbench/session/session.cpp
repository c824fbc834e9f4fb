#include "workbench/session/session.h"

#include <fmt/format.h>

#include "foundation/model_path.h"
#include "workbench/session/host_process.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

std::u16string fullEid(const kestrel::Model& model, const kestrel::Block& block) {
    return toUtf16(ks_hmi_foundation::AddModelToEID(block.eid, model.name()));
}

}  // namespace

Session::~Session() {
    leaveSignals(signalSet());
    const std::u16string name = m_loaded->model().name();
    kestrel::loadedModels().unload(name);
}

void Session::requireSettledNames() const {
    const std::vector<UnsettledMark> marks = m_names->unsettled();
    if (marks.empty() || m_keepsUnsettled) return;
    const UnsettledMark& mark = marks.front();
    const std::string name = toUtf8(fullName(model(), sourceOf(model(), *signals().get(mark.position))));
    const std::string more = marks.size() > 1 ? fmt::format(" (and {} more)", counted(marks.size() - 1, "mark")) : "";
    throw Error(
        {fileName()},
        fmt::format("not saved: {}{}", describe(inQuotes(std::string_view(name)), mark.name, mark.isItem), more),
        ErrorCode::model, Remedy::settleNames);
}

bool Session::isObserved(const kestrel::Block& block, int port) const {
    return m_signals->isPortObserved(block.handle, port) ||
           m_signals->isPortObserved(block.handle, block.path, std::u16string(), port, 0, 0);
}

bool Session::isObserved(const kestrel::Block& block, const ChartItem& item, const std::u16string& activity) const {
    return signals().isCWActivityObserved(fullEid(model(), block), item.ssid, activity);
}

bool Session::isAnyObserved(const kestrel::Block& block, const ChartItem& item) const {
    return m_signals->isAnyCWActivityObserved(fullEid(model(), block), item.ssid);
}

}  // namespace workbench
