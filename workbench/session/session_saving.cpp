#include <fmt/format.h>

#include <algorithm>
#include <span>
#include <utility>

#include "host/values.h"
#include "signals/signal_specification.h"
#include "workbench/session/records.h"
#include "workbench/session/script.h"
#include "workbench/session/session.h"
#include "workbench/text/error.h"

namespace workbench {

namespace {

// A record that is to be saved, and where it stands in its set. Shared: scripts that the host runs meanwhile may
// change the set.
template <class Ptr>
struct Saved {
    Ptr record;
    std::size_t position;
};

template <class Set, class IsSaved, class Ptr = decltype(std::declval<const Set&>().share(0))>
std::vector<Saved<Ptr>> sharedOf(const Set& set, IsSaved isSaved) {
    std::vector<Saved<Ptr>> shared;
    shared.reserve(set.getCount());
    for (const auto& [position, record] : numbered(set))
        if (isSaved(record)) shared.push_back({set.share(position), position});
    return shared;
}

// Hands over a few records at a time, in the form in which a set saves them that has no others.
template <class Set, class Ptr, class Take>
void inSlices(std::span<const Saved<Ptr>> records, HvArrayPtr (*newSet)(const std::u16string&),
              const std::u16string& modelName, Take take) {
    while (!records.empty()) {
        const auto slice = records.first(std::min(kSlice, records.size()));
        const HvArrayPtr object = newSet(modelName);
        Set* const set = Set::getFromHvArray(object.get());
        if (!set) throw Error("the host made no set for what is to be saved", ErrorCode::host);
        for (const Saved<Ptr>& saved : slice) set->add(saved.record);
        take(slice, script::persistence(object.get()));
        records = records.subspan(slice.size());
    }
}

}  // namespace

// A signal that the host cannot align is saved without its path; no file is to lose paths to that.
void Session::requirePath(const hvArray* saved, std::size_t element, std::size_t position) const {
    if (!hvIsEmpty(hvGetField(saved, element, "BlockPath_"))) return;
    throw Error({fileName()},
                fmt::format("not saved, the file is as it was: the host cannot tell where the block of signal {} is; "
                            "try again",
                            position + 1),
                ErrorCode::host);
}

// Only what is there can be aligned; what is settled later keeps the path that it had.
void Session::keepLostPath(hvArray* saved, std::size_t element, const ks_hmi::SignalSpecification& signal) const {
    if (blockOf(model(), signal)) return;
    hvReplaceField(saved, element, "BlockPath_", ks_host::makeText(signal.m_blockPath).release());
}

void Session::saveSignals(const SliceSink& sink) const {
    using Ptr = ks_hmi::InstrumentedSignals::SignalPtr;
    const auto signals = sharedOf(*m_signals, [](const auto& signal) { return !signal.m_excludeForSave; });
    MarkedNames::Saver names(*m_names);
    std::size_t position = 0;
    const auto take = [&](std::span<const Saved<Ptr>> slice, const HvArrayPtr& records) {
        MarkedNameList markedNames;
        for (std::size_t i = 0; i < slice.size(); ++i, ++position) {
            if (m_keepsUnsettled) keepLostPath(records.get(), i, *slice[i].record);
            requirePath(records.get(), i, position);
            markedNames.push_back(names.nameOf(*slice[i].record, slice[i].position));
        }
        sink(records.get(), markedNames);
    };
    inSlices<ks_hmi::InstrumentedSignals>(std::span(signals), script::newSet, model().name(), take);
}

void Session::saveClients(const SliceSink& sink) const {
    const auto clients = sharedOf(*m_clients, [](const auto&) { return true; });
    inSlices<ks_hmi::StreamingClients>(std::span(clients), script::newClientSet, model().name(),
                                       [&](const auto&, const HvArrayPtr& records) { sink(records.get(), {}); });
}

SliceSink Session::watched(RecordKind kind, const SliceSink& sink) const {
    if (!m_watch) return sink;
    return [this, kind, &sink](const hvArray* records, const MarkedNameList& markedNames) {
        m_watch(kind, records, markedNames);
        sink(records, markedNames);
    };
}

ModelContents Session::contents() {
    requireSettledNames();
    return {model(), [this](const SliceSink& sink) { saveSignals(watched(RecordKind::signal, sink)); },
            [this](const SliceSink& sink) { saveClients(watched(RecordKind::client, sink)); }, m_extras};
}

std::size_t Session::leftOut() const {
    return positionsWhere(signals(), [](const auto& signal) { return signal.m_excludeForSave; }).size();
}

Session::SaveResult Session::noteWritten(WrittenFile file) {
    m_version = file.version;
    return {leftOut(), std::move(file.warnings)};
}

Session::SaveResult Session::save() {
    if (isStream() && !m_sink)
        throw Error({fileName()}, "the model came from standard input; name a file to save it in", ErrorCode::request);
    if (!m_sink) return noteWritten(writeModelFile(m_path, contents(), m_version));
    // The sink is not to have half of it when the host refuses the rest.
    m_sink(text());
    return {leftOut(), {}};
}

Session::SaveResult Session::saveAs(const std::string& path, Existing existing) {
    SaveResult result = noteWritten(existing == Existing::refuse ? writeNewModelFile(path, contents())
                                                                 : writeModelFile(path, contents()));
    m_path = path;
    m_sink = nullptr;
    return result;
}

std::string Session::text() { return modelText(contents()); }

}  // namespace workbench
