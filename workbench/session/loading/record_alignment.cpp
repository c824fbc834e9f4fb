#include "workbench/session/loading/record_alignment.h"

#include <optional>
#include <string>
#include <string_view>

#include "host/values.h"
#include "memory_host/kestrel/signal_block.h"
#include "workbench/session/signal_source.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

// One saved signal.
class Record {
public:
    Record(hvArray* signals, std::size_t position) : m_signals(signals), m_position(position) {}

    // Valid until the field is written.
    std::u16string_view text(const char* field) const { return viewOf(hvGetField(m_signals, m_position, field)); }
    std::u16string_view parameter(const char* name) const {
        return viewOf(hvGetField(hvGetField(m_signals, m_position, "DomainParams_"), 0, name));
    }
    void setText(const char* field, const std::u16string& text) {
        hvReplaceField(m_signals, m_position, field, ks_host::makeText(text).release());
    }

private:
    static std::u16string_view viewOf(const hvArray* value) {
        if (!ks_host::isText(value)) return {};
        return {hvGetChars(value), hvGetNumberOfElements(value)};
    }

    hvArray* m_signals;
    std::size_t m_position;
};

void alignPath(Record& record, const kestrel::Block& block) {
    if (record.text("BlockPath_").empty() || record.text("BlockPath_") == block.path) return;
    const std::u16string path(record.text("BlockPath_"));
    if (const auto followed = followedSubSysPath(std::u16string(record.text("SubSysPath_")), path, block.path))
        record.setText("SubSysPath_", *followed);
    record.setText("BlockPath_", block.path);
}

void alignItem(Record& record, const kestrel::Block& block, ChartItemFinder& items) {
    if (record.text("DomainType_").empty()) return;
    const std::optional<std::uint32_t> ssid = ssidOf(record.parameter("SSID"));
    const ChartItem* const item = ssid ? items.find(block, *ssid) : nullptr;
    if (!item || item->domainType != record.text("DomainType_") || item->subPath == record.text("SubPath_")) return;
    record.setText("SubPath_", item->subPath);
}

}  // namespace

void RecordAligner::align(hvArray* signals) {
    for (std::size_t i = 0; i < hvGetNumberOfElements(signals); ++i) {
        Record record(signals, i);
        const std::string eid = toUtf8(record.text("EID_"));
        // The path is asked only where there is no identifier.
        const std::u16string path(eid.empty() ? record.text("BlockPath_") : std::u16string_view());
        const kestrel::Block* const block = kestrel::signalBlock(m_model, eid, path);
        if (!block) continue;
        alignPath(record, *block);
        alignItem(record, *block, m_items);
    }
}

}  // namespace workbench
