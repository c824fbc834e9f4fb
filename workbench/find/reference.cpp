#include "workbench/find/reference.h"

#include <fmt/format.h>

#include <charconv>
#include <vector>

#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using kestrel::Block;

std::optional<int> portOf(const Block& block, std::u16string_view text) {
    const std::string digits = toUtf8(text);
    unsigned number = 0;
    const char* const end = digits.data() + digits.size();
    const bool isNumber = std::from_chars(digits.data(), end, number).ptr == end && !digits.empty();
    if (isNumber && number >= 1 && number <= block.outputs.size()) return static_cast<int>(number);
    std::optional<int> found;
    for (std::size_t i = 0; i < block.outputs.size(); ++i) {
        if (block.outputs[i] != text) continue;
        if (found)
            throw Error("two ports of " + inQuotes(block.path) + " are named " + inQuotes(text) + "; use the number");
        found = static_cast<int>(i) + 1;
    }
    return found;
}

std::string noSuchBlock(const kestrel::Model& model, std::string_view reference) {
    return fmt::format("{}: the model {} has no such block", inQuotes(reference), inQuotes(model.name()));
}

std::string portList(const Block& block) {
    if (block.outputs.empty()) return "it has none";
    std::string list = "it has";
    for (std::size_t i = 0; i < block.outputs.size(); ++i)
        list += fmt::format("{} {} ({})", i == 0 ? "" : ",", i + 1, printable(block.outputs[i]));
    return list;
}

std::string identifiers(const std::vector<ChartItem>& items) {
    std::string list;
    for (const ChartItem& item : items) list += (list.empty() ? "" : " or ") + std::to_string(item.ssid);
    return list;
}

/// Looks one spelling of a reference up.
class Lookup {
public:
    Lookup(const kestrel::Model& model, std::u16string_view text, const ReferenceOptions& options)
        : m_model(model), m_text(text), m_options(options) {}

    std::optional<SignalSource> find() {
        if (const Block* const block = m_model.findByPath(m_text)) return whole(*block);
        for (std::size_t at = m_text.size(); at-- > 0;) {
            if (m_text[at] != u':' && m_text[at] != u'/') continue;
            const Block* const block = m_model.findByPath(m_text.substr(0, at));
            if (!block) continue;
            const std::u16string_view rest = m_text.substr(at + 1);
            if (auto source = m_text[at] == u':' ? port(*block, rest) : item(*block, rest)) return source;
        }
        return std::nullopt;
    }
    /// Why nothing was found, when a block was; else empty.
    const std::string& reason() const noexcept { return m_reason; }

private:
    std::optional<SignalSource> whole(const Block& block) {
        const bool isChartItself = block.chart && (!m_options.activity.empty() || block.outputs.empty());
        if (m_options.ssid || isChartItself) return bySsid(block, m_options.ssid.value_or(0));
        return port(block, u"1");
    }

    std::optional<SignalSource> bySsid(const Block& block, std::uint32_t ssid) {
        if (auto found = chartItemOf(block, ssid)) return SignalSource{&block, 0, std::move(found)};
        return miss(block.chart ? fmt::format("the chart {} has no item with the SSID {}", inQuotes(block.path), ssid)
                                : "the block " + inQuotes(block.path) + " is not a chart");
    }

    std::optional<SignalSource> port(const Block& block, std::u16string_view text) {
        if (const auto number = portOf(block, text)) return SignalSource{&block, *number, std::nullopt};
        return miss("the block " + inQuotes(block.path) + " has no output port " + printable(text) + "; " +
                    portList(block));
    }

    std::optional<SignalSource> item(const Block& block, std::u16string_view text) {
        if (!block.chart) return std::nullopt;
        std::vector<ChartItem> found = chartItemsOf(block);
        std::erase_if(found, [&](const ChartItem& one) { return one.ssid == 0 || one.subPath != text; });
        const std::string list = identifiers(found);
        const bool isAnyNamed = !found.empty();
        if (m_options.ssid) std::erase_if(found, [&](const ChartItem& one) { return one.ssid != *m_options.ssid; });
        if (isAnyNamed && found.empty())
            return miss(fmt::format("the SSID of {} in the chart {} is {}, not {}", inQuotes(text),
                                    inQuotes(block.path), list, *m_options.ssid));
        if (found.size() > 1)
            return miss("the chart " + inQuotes(block.path) + " has a state and a datum named " + inQuotes(text) +
                        "; give --ssid: " + list);
        if (!found.empty()) return SignalSource{&block, 0, std::move(found.front())};
        return miss("the chart " + inQuotes(block.path) + " has no state or datum " + inQuotes(text));
    }

    std::nullopt_t miss(std::string reason) {
        if (m_reason.empty()) m_reason = std::move(reason);
        return std::nullopt;
    }

    const kestrel::Model& m_model;
    std::u16string_view m_text;
    const ReferenceOptions& m_options;
    std::string m_reason;
};

}  // namespace

SignalSource resolveReference(const kestrel::Model& model, std::string_view reference,
                              const ReferenceOptions& options) {
    const std::u16string text = toUtf16(reference);
    const std::u16string inModel = withoutModel(model, reference);
    std::string reason;
    std::vector<std::u16string_view> spellings{inModel};
    if (inModel != text) spellings.emplace_back(text);
    for (const std::u16string_view spelling : spellings) {
        Lookup lookup(model, spelling, options);
        if (auto source = lookup.find()) {
            if (!source->item && (!options.activity.empty() || options.ssid))
                throw Error(inQuotes(reference) +
                            ": --activity and --ssid are for charts; name a chart without a port");
            return *source;
        }
        if (reason.empty()) reason = lookup.reason();
    }
    if (reason.empty()) throw Error(noSuchBlock(model, reference), ErrorCode::request, Remedy::listBlocks);
    throw Error(inQuotes(reference) + ": " + reason);
}

std::u16string withoutModel(const kestrel::Model& model, std::string_view path) {
    const std::u16string text = toUtf16(path);
    const std::u16string prefix = model.name() + u"/";
    return text.starts_with(prefix) ? text.substr(prefix.size()) : text;
}

const Block& resolveBlock(const kestrel::Model& model, std::string_view path) {
    const Block* block = model.findByPath(withoutModel(model, path));
    if (!block) block = model.findByPath(toUtf16(path));
    if (!block) throw Error(noSuchBlock(model, path), ErrorCode::request, Remedy::listBlocks);
    return *block;
}

std::u16string activityFor(const ChartItem& item, const ReferenceOptions& options) {
    if (options.activity.empty()) return defaultActivity(item);
    std::u16string activity = toUtf16(options.activity);
    if (!hasActivity(item, activity))
        throw Error("the activity " + inQuotes(activity) +
                    " is not one of the chart item's; use one of: " + activityList(item));
    return activity;
}

}  // namespace workbench
