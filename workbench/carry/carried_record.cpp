#include "workbench/carry/carried_record.h"

#include <charconv>

#include "host/values.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

int numberOf(const hvArray* records, std::size_t position, const char* field) {
    return static_cast<int>(ks_host::numberAt(hvGetField(records, position, field)).value_or(0.0));
}

void setNumber(hvArray* records, std::size_t position, const char* field, int number) {
    hvReplaceField(records, position, field, ks_host::makeDouble(number).release());
}

std::uint32_t ssidNumber(std::u16string_view text) {
    const std::string digits = toUtf8(text);
    std::uint32_t number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return number;
}

void setSsid(hvArray* signals, std::size_t position, std::uint32_t ssid) {
    const hvArray* const saved = hvGetField(signals, position, "DomainParams_");
    if (!saved || ks_host::textOf(hvGetField(saved, 0, "SSID")) == toUtf16(std::to_string(ssid))) return;
    HvArrayPtr parameters(hvCreateDeepCopy(saved));
    hvReplaceField(parameters.get(), 0, "SSID", ks_host::makeText(toUtf16(std::to_string(ssid))).release());
    hvReplaceField(signals, position, "DomainParams_", parameters.release());
}

void replaceFirst(hvArray* records, std::size_t position, const char* field, std::u16string_view text) {
    const hvArray* const list = hvGetField(records, position, field);
    if (hvGetClassID(list) != hvCELL_CLASS || hvGetNumberOfElements(list) == 0) return;
    HvArrayPtr copy(hvCreateDeepCopy(list));
    hvSetCell(copy.get(), 0, ks_host::makeText(text).release());
    hvReplaceField(records, position, field, copy.release());
}

std::u16string firstOf(const hvArray* records, std::size_t position, const char* field) {
    for (const hvArray* const cell : ks_host::cellsOf(hvGetField(records, position, field)))
        return ks_host::textOf(cell);
    return {};
}

}  // namespace

const ItemNames& MarkedSources::itemsOf(const kestrel::Block& block) {
    return m_items.try_emplace(&block, &block).first->second;
}

// What the old version calls the port or item now, nothing when it does not have it.
std::optional<std::u16string_view> MarkedSources::nameNow(const MarkedSource& source) {
    using Name = std::optional<std::u16string_view>;
    if (!source.block) return std::nullopt;
    if (source.place.domain.empty()) {
        const auto number = static_cast<std::size_t>(source.place.port);
        const std::vector<std::u16string>& ports = source.block->outputs;
        return number >= 1 && number <= ports.size() ? Name(ports[number - 1]) : std::nullopt;
    }
    if (source.place.domain == u"cw_chart") return std::nullopt;
    const ItemNames::Items& items = itemsOf(*source.block).of(source.place.domain);
    const auto found = items.bySsid.find(source.place.ssid);
    return found == items.bySsid.end() ? std::nullopt : Name(found->second);
}

MarkedSource MarkedSources::of(const hvArray* signals, std::size_t position, const std::u16string* markedName) {
    MarkedSource source;
    source.savedPath = recordView(signals, position, "BlockPath_");
    source.savedEid = recordView(signals, position, "EID_");
    source.block = m_blocks.of(source.savedEid, source.savedPath);
    MarkPlace& place = source.place;
    place.block = source.block ? std::u16string_view(source.block->path) : source.savedPath;
    place.domain = recordView(signals, position, "DomainType_");
    const bool isItem = !place.domain.empty();
    if (isItem) {
        place.ssid = ssidNumber(domainParameter(signals, position, "SSID"));
        place.activity = domainParameter(signals, position, "Activity");
    } else {
        place.port = numberOf(signals, position, "OutputPortIndex_");
    }
    const std::optional<std::u16string_view> name = nameNow(source);
    // An item keeps its identifier when it is renamed; it has slid only where its name is another's now.
    if (isItem && name && markedName && !itemsOf(*source.block).has(*markedName)) markedName = nullptr;
    place.name = markedName ? *markedName : name ? *name : recordView(signals, position, "SubPath_");
    source.isNameKnown = markedName || name || isItem;
    source.hadSlid = place.domain != u"cw_chart" && source.block && markedName && (!name || *name != *markedName);
    return source;
}

void putOn(hvArray* signals, std::size_t position, const MarkPlace& before, const kestrel::Block& block,
           const MarkPlace& after) {
    const std::u16string_view subsystem = recordView(signals, position, "SubSysPath_");
    const bool isSavedParent = subsystem == parentView(recordView(signals, position, "BlockPath_"));
    if (isSavedParent || subsystem == parentView(before.block))
        setRecordText(signals, position, "SubSysPath_", parentView(block.path));
    setRecordText(signals, position, "BlockPath_", block.path);
    setRecordText(signals, position, "EID_", toUtf16(block.eid));
    if (recordView(signals, position, "SignalName_") == before.name)
        setRecordText(signals, position, "SignalName_", after.name);
    if (!before.domain.empty()) {
        setRecordText(signals, position, "SubPath_", after.name);
        if (before.domain != u"cw_chart") setSsid(signals, position, after.ssid);
        return;
    }
    const int number = numberOf(signals, position, "OutputPortIndex_");
    if (number == after.port) return;
    if (numberOf(signals, position, "LogicalPortIndex_") == number)
        setNumber(signals, position, "LogicalPortIndex_", after.port);
    setNumber(signals, position, "OutputPortIndex_", after.port);
}

void ClientFollower::follow(hvArray* clients, std::size_t position, const kestrel::Block* block) const {
    followPath(clients, position, block);
    if (m_old.name() == m_next.name()) return;
    if (recordText(clients, position, "SourceModel_") == m_old.name())
        setRecordText(clients, position, "SourceModel_", m_next.name());
    const hvArray* const saved = hvGetField(clients, position, "ObserverParams_");
    if (!ks_host::isStruct(saved) || ks_host::textOf(hvGetField(saved, 0, "ModelName")) != m_old.name()) return;
    HvArrayPtr parameters(hvCreateDeepCopy(saved));
    hvReplaceField(parameters.get(), 0, "ModelName", ks_host::makeText(m_next.name()).release());
    hvReplaceField(clients, position, "ObserverParams_", parameters.release());
}

// Only the first part of the path is in this model.
void ClientFollower::followPath(hvArray* clients, std::size_t position, const kestrel::Block* block) const {
    const std::u16string path = firstOf(clients, position, "ModelPath_");
    if (path.empty()) return;
    const bool isInModel = hvGetNumberOfElements(hvGetField(clients, position, "ModelPath_")) == 1;
    const std::string eid = toUtf8(firstOf(clients, position, "ModelPathEID_"));
    const kestrel::Block* old = eid.empty() ? nullptr : m_old.findByEid(eid);
    if (!old) old = m_old.findByPath(path);
    const BlockMatch match = old ? m_blocks.of(*old) : BlockMatch{};
    const bool isCertain = match.how != MatchHow::none && match.how != MatchHow::guess;
    const kestrel::Block* const target = block && isInModel ? block : isCertain ? match.block : nullptr;
    if (!target) return;
    replaceFirst(clients, position, "ModelPath_", target->path);
    replaceFirst(clients, position, "ModelPathEID_", toUtf16(target->eid));
}

}  // namespace workbench
