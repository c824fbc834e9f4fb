#include "workbench/change/marking.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>

#include "signals/signal_specification.h"
#include "workbench/session/records.h"
#include "workbench/session/script.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using ks_hmi::SignalSpecification;

std::u16string lastOf(const std::u16string& path) { return path.substr(path.rfind(u'/') + 1); }

std::u16string ownName(const SignalSource& source) {
    if (!source.item) return portName(source);
    return lastOf(source.item->subPath.empty() ? source.block->path : source.item->subPath);
}

std::unique_ptr<SignalSpecification> makeRecord(const kestrel::Model& model, const SignalSource& source,
                                                const std::u16string& activity) {
    const kestrel::Block& block = *source.block;
    // A chart item has no handle of its own, and shares none with the chart's ports.
    const double handle = source.item ? 0.0 : block.handle;
    auto record = SignalSpecification::createSigSpecFromPort(block.path, block.eid, source.port, 0, handle,
                                                             model.name(), /*excludeForSave=*/false);
    record->m_signalName = ownName(source);
    record->m_subSysPath = parentPath(block.path);
    if (!source.item) return record;
    record->m_subPath = source.item->subPath;
    record->m_domainType = source.item->domainType;
    record->m_domainParams = {{u"Activity", activity}, {u"SSID", toUtf16(std::to_string(source.item->ssid))}};
    return record;
}

void apply(const SignalSettings& settings, SignalSpecification& record) {
    if (settings.name) record.m_signalName = toUtf16(*settings.name);
    if (settings.visualType) record.m_visualType = toUtf16(*settings.visualType);
    record.m_decimation = settings.decimation.value_or(record.m_decimation);
    record.m_maxPoints = settings.maxPoints.value_or(record.m_maxPoints);
    record.m_isFrameBased = settings.isFrameBased.value_or(record.m_isFrameBased);
    record.m_hideInPLV = settings.isHidden.value_or(record.m_hideInPLV);
    record.m_targetBufferedStreaming = settings.isBuffered.value_or(record.m_targetBufferedStreaming);
    record.m_excludeForSave = settings.isExcludedFromSave.value_or(record.m_excludeForSave);
}

bool isAscii(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c > 0; });
}

void keepUuid(const Session& session, const hvArray* set, std::size_t position) {
    const SignalSource source = sourceOf(session.model(), *session.signals().get(position));
    const std::string uuid = script::uuidOf(set, position + 1);
    if (source.block && !source.item && isAscii(uuid)) script::rememberUuid(source.block->handle, source.port, uuid);
}

}  // namespace

bool SignalSettings::isAny() const noexcept {
    return name || decimation || maxPoints || isFrameBased || isHidden || isExcludedFromSave || isBuffered ||
           visualType;
}

void addSignal(Session& session, const SignalSource& source, const std::u16string& activity,
               const SignalSettings& settings) {
    const kestrel::Model& model = session.model();
    const auto record = makeRecord(model, source, activity);
    apply(settings, *record);
    const HvArrayPtr object = record->getHOSObject(model.name(), /*asStruct=*/false);
    if (!object) throw Error(inQuotes(fullName(model, source)) + ": the host made no signal object", ErrorCode::host);
    script::add(session.signalSet(), object.get());
}

Positions changeSignals(Session& session, Positions positions, const SignalSettings& settings) {
    sortUnique(positions);
    std::erase_if(positions, [&](std::size_t position) {
        const SignalSpecification& before = *session.signals().get(position);
        ks_hmi::InstrumentedSignals::SignalPtr record(before.clone().release());
        apply(settings, *record);
        const bool isSame = isSavedAlike(*record, before);
        if (!isSame) session.signals().set(position, std::move(record));
        return isSame;
    });
    // Putting a record in another's place takes the index entries of other signals on the same path along.
    if (!positions.empty()) session.signals().updateObservedPortMap();
    return positions;
}

bool isMarked(const Session& session, const SignalSource& source, const std::u16string& activity) {
    return source.item ? session.isObserved(*source.block, *source.item, activity)
                       : session.isObserved(*source.block, source.port);
}

void removeSignals(Session& session, Positions positions) {
    // From the last to the first: positions stay valid, and of a port's signals the first keeps its UUID.
    sortUnique(positions, std::greater<>());
    session.names().forget(positions);
    for (const std::size_t position : positions) {
        keepUuid(session, session.signalSet(), position);
        script::remove(session.signalSet(), position + 1);
    }
    // A removal takes the index entries of other signals on the same path along.
    if (!positions.empty()) session.signals().updateObservedPortMap();
}

}  // namespace workbench
