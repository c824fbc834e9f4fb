#include "workbench/compare/block_fields.h"

#include <fmt/format.h>

#include "workbench/json/json_object.h"

namespace workbench {

std::string jsonOf(std::u16string_view text) {
    std::string out;
    appendJsonText(out, text);
    return out;
}

std::string jsonOf(const std::vector<std::u16string>& names) {
    std::string out;
    appendJsonTexts(out, names);
    return out;
}

std::string jsonOf(const std::optional<kestrel::Chart>& chart) {
    if (!chart) return "";
    std::string out;
    for (const kestrel::ChartState& state : chart->states)
        out += fmt::format("{} {}, ", jsonOf(state.path), state.ssid);
    for (const kestrel::ChartData& datum : chart->data) out += fmt::format("{} {}, ", jsonOf(datum.name), datum.ssid);
    if (!out.empty()) out.resize(out.size() - 2);
    return fmt::format("{{{}}}", out);
}

bool isSame(const std::optional<kestrel::Chart>& one, const std::optional<kestrel::Chart>& other) {
    return (!one && !other) || jsonOf(one) == jsonOf(other);
}

bool isSame(const kestrel::Block& one, const kestrel::Block& other) {
    return one.path == other.path && one.outputs == other.outputs && isSame(one.chart, other.chart);
}

}  // namespace workbench
