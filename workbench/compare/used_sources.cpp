#include "workbench/compare/used_sources.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "host/values.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

// "s" or "d" with the name; empty when there is none of that number.
std::u16string itemOf(const kestrel::Block& block, std::u16string_view text) {
    const std::string digits = toUtf8(text);
    std::uint32_t ssid = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), ssid);
    if (!block.chart || ssid == 0) return {};
    const auto isIt = [=](const auto& item) { return item.ssid == ssid; };
    const auto& [states, data] = *block.chart;
    if (const auto state = std::ranges::find_if(states, isIt); state != states.end()) return u's' + state->path;
    if (const auto datum = std::ranges::find_if(data, isIt); datum != data.end()) return u'd' + datum->name;
    return {};
}

}  // namespace

bool hasItemOf(const kestrel::Block& block, const kestrel::Block& meant, std::u16string_view ssid) {
    return itemOf(block, ssid) == itemOf(meant, ssid);
}

void UsedSources::note(const kestrel::Block& block, const RecordPlace& signal) {
    Used& used = m_used[&block];
    if (!recordView(signal.records, signal.position, "DomainType_").empty()) {
        used.items.emplace(domainParameter(signal.records, signal.position, "SSID"));
        return;
    }
    const auto number =
        ks_host::numberAt(hvGetField(signal.records, signal.position, "OutputPortIndex_")).value_or(0.0);
    if (number >= 1.0 && number <= static_cast<double>(block.outputs.size()))
        used.ports.insert(static_cast<std::size_t>(number));
}

bool UsedSources::arePortsIn(const kestrel::Block& block, const std::vector<std::u16string>& outputs) const {
    const auto used = m_used.find(&block);
    if (used == m_used.end() || outputs == block.outputs) return true;
    std::unordered_map<std::u16string_view, std::size_t> counts;
    for (const std::u16string& name : outputs) ++counts[name];
    return std::ranges::all_of(used->second.ports, [&](std::size_t number) {
        const std::u16string& name = block.outputs[number - 1];
        if (number <= outputs.size() && outputs[number - 1] == name) return true;
        const auto found = counts.find(name);
        return found != counts.end() && found->second == 1;
    });
}

bool UsedSources::areItemsIn(const kestrel::Block& block, const kestrel::Block& merged) const {
    const auto used = m_used.find(&block);
    return used == m_used.end() || std::ranges::all_of(used->second.items, [&](const std::u16string& ssid) {
               return hasItemOf(merged, block, ssid);
           });
}

}  // namespace workbench
