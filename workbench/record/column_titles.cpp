#include <fmt/format.h>

#include <unordered_map>

#include "signals/signal_specification.h"
#include "workbench/record/recorded_run.h"
#include "workbench/session/records.h"
#include "workbench/session/session.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

std::string ownTitle(const ks_hmi::SignalSpecification& signal, const SignalSource& source) {
    if (!signal.m_signalName.empty()) return toUtf8(signal.m_signalName);
    if (source.block == nullptr || source.item) return toUtf8(signal.m_blockPath);
    const std::u16string name = portName(source);
    return toUtf8(name.empty() ? source.block->path : name);
}

// Where the "[1,2]" of an array's element begins; the end when there is none.
std::size_t elementStart(const std::string& title) {
    if (!title.ends_with(']')) return title.size();
    const std::size_t start = title.rfind('[');
    return start == std::string::npos ? title.size() : start;
}

void identify(RecordedColumn& column, const ks_hmi::SignalSpecification& signal, const kestrel::Model& model) {
    column.signal = signal.m_uuid;
    const SignalSource source = sourceOf(model, signal);
    if (source.block == nullptr || source.item) return;
    column.block = toUtf8(model.fullPath(*source.block));
    column.port = source.port;
    column.portName = toUtf8(portName(source));
}

}  // namespace

std::string UniqueTitles::take(const std::string& title) {
    std::string free = title;
    for (int number = 2; !m_taken.insert(free).second; ++number) free = fmt::format("{} ({})", title, number);
    return free;
}

std::vector<std::string> columnTitles(const Session& session) {
    UniqueTitles titles;
    std::vector<std::string> result;
    for (const ks_hmi::SignalSpecification& signal : recordsOf(session.signals()))
        result.push_back(titles.take(ownTitle(signal, sourceOf(session.model(), signal))));
    return result;
}

bool identifyColumns(RecordedRun& run, const Session& session) {
    const std::vector<std::string> titles = columnTitles(session);
    std::unordered_map<std::string_view, std::size_t> positions;
    for (std::size_t i = 0; i < titles.size(); ++i) positions.emplace(titles[i], i);
    bool areAllKnown = true;
    for (RecordedColumn& column : run.columns) {
        if (!column.signal.empty()) continue;
        auto found = positions.find(column.title);
        const std::size_t start = elementStart(column.title);
        if (found == positions.end()) found = positions.find(std::string_view(column.title).substr(0, start));
        areAllKnown = areAllKnown && found != positions.end();
        if (found == positions.end()) continue;
        if (found->first.size() < column.title.size()) column.element = column.title.substr(start);
        identify(column, *session.signals().get(found->second), session.model());
    }
    return areAllKnown;
}

}  // namespace workbench
