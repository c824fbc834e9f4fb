#include "workbench/session/record_alignment.h"

#include <optional>
#include <string>

#include "host/values.h"
#include "memory_host/kestrel/signal_block.h"
#include "workbench/session/chart_item_finder.h"
#include "workbench/session/signal_source.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

// One saved signal.
class Record {
public:
    Record(hvArray* signals, std::size_t position) : m_signals(signals), m_position(position) {}

    std::u16string text(const char* field) const { return ks_host::textOf(hvGetField(m_signals, m_position, field)); }
    std::u16string parameter(const char* name) const {
        return ks_host::textOf(hvGetField(hvGetField(m_signals, m_position, "DomainParams_"), 0, name));
    }
    void setText(const char* field, const std::u16string& text) {
        hvReplaceField(m_signals, m_position, field, ks_host::makeText(text).release());
    }

private:
    hvArray* m_signals;
    std::size_t m_position;
};

void alignPath(Record& record, const kestrel::Block& block) {
    const std::u16string path = record.text("BlockPath_");
    if (path.empty() || path == block.path) return;
    if (const auto followed = followedSubSysPath(record.text("SubSysPath_"), path, block.path))
        record.setText("SubSysPath_", *followed);
    record.setText("BlockPath_", block.path);
}

void alignItem(Record& record, const kestrel::Block& block, ChartItemFinder& items) {
    const std::optional<std::uint32_t> ssid = ssidOf(record.parameter("SSID"));
    const ChartItem* const item = ssid ? items.find(block, *ssid) : nullptr;
    if (!item || item->domainType != record.text("DomainType_") || item->subPath == record.text("SubPath_")) return;
    record.setText("SubPath_", item->subPath);
}

}  // namespace

void alignRecords(hvArray* signals, const kestrel::Model& model) {
    ChartItemFinder items;
    for (std::size_t i = 0; i < hvGetNumberOfElements(signals); ++i) {
        Record record(signals, i);
        const std::string eid = toUtf8(record.text("EID_"));
        const kestrel::Block* const block = kestrel::signalBlock(model, eid, record.text("BlockPath_"));
        if (!block) continue;
        alignPath(record, *block);
        alignItem(record, *block, items);
    }
}

}  // namespace workbench
