#include "workbench/find/reference.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "workbench/find/spelling.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using kestrel::Block;
using Sources = std::vector<SignalSource>;

// A number as it is, a name in quotes.
std::string nameOf(std::u16string_view port) {
    constexpr std::size_t kLongestNumber = 10;
    const bool isNumber = port.find_first_not_of(u"0123456789") == std::u16string_view::npos && !port.empty();
    return isNumber && port.size() <= kLongestNumber ? toUtf8(port) : inQuotes(port);
}

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
            throw Error(
                fmt::format("two ports of {} are named {}; use the number", inQuotes(block.path), inQuotes(text)));
        found = static_cast<int>(i) + 1;
    }
    return found;
}

std::string identifiers(const std::vector<ChartItem>& items) {
    std::string list;
    for (const ChartItem& item : items) list += (list.empty() ? "" : " or ") + std::to_string(item.ssid);
    return list;
}

// Looks one spelling of a reference up.
class Lookup {
public:
    Lookup(const kestrel::Model& model, std::u16string_view text, const ReferenceOptions& options)
        : m_model(model), m_text(text), m_options(options) {}

    Sources find() {
        if (const Block* const block = m_model.findByPath(m_text)) return whole(*block);
        for (std::size_t at = m_text.size(); at-- > 0;) {
            if (m_text[at] != u':' && m_text[at] != u'/') continue;
            const Block* const block = m_model.findByPath(m_text.substr(0, at));
            if (!block) continue;
            const std::u16string_view rest = m_text.substr(at + 1);
            if (auto source = m_text[at] == u':' ? port(*block, rest) : item(*block, rest)) return {std::move(*source)};
        }
        return {};
    }
    // Why nothing was found, when a block was; else empty.
    const std::string& reason() const noexcept { return m_reason; }

private:
    Sources whole(const Block& block) {
        if (m_options.ssid) {
            auto item = bySsid(block, *m_options.ssid);
            return item ? Sources{std::move(*item)} : Sources();
        }
        Sources sources;
        const bool isChartOnly = block.chart && !m_options.activity.empty();
        for (int port = 1; !isChartOnly && port <= static_cast<int>(block.outputs.size()); ++port)
            sources.push_back({&block, port, std::nullopt});
        if (block.chart) sources.push_back({&block, 0, chartItemOf(block, 0)});
        if (sources.empty()) miss(fmt::format("the block {} has no output ports", inQuotes(block.path)));
        return sources;
    }

    std::optional<SignalSource> bySsid(const Block& block, std::uint32_t ssid) {
        if (auto found = chartItemOf(block, ssid)) return SignalSource{&block, 0, std::move(found)};
        return miss(block.chart ? fmt::format("the chart {} has no item with the SSID {}", inQuotes(block.path), ssid)
                                : fmt::format("the block {} is not a chart", inQuotes(block.path)));
    }

    std::optional<SignalSource> port(const Block& block, std::u16string_view text) {
        if (const auto number = portOf(block, text)) return SignalSource{&block, *number, std::nullopt};
        return miss(fmt::format("the block {} has no output port {}; {}", inQuotes(block.path), nameOf(text),
                                portList(block, text)));
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
            return miss(fmt::format("the chart {} has a state and a datum named {}; say which by its SSID, {}",
                                    inQuotes(block.path), inQuotes(text), list));
        if (!found.empty()) return SignalSource{&block, 0, std::move(found.front())};
        return miss(fmt::format("the chart {} has no state or datum {}", inQuotes(block.path), inQuotes(text)));
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

Error twoWays(const kestrel::Model& model, std::string_view reference,
              const std::vector<std::pair<Spelling, Sources>>& found) {
    const auto blockOf = [&](std::size_t i) { return found[i].second.front().block->path; };
    return ambiguous(model, reference, found[0].first, blockOf(0), found[1].first, blockOf(1));
}

// The one way of reading the text that leads somewhere.
template <class IsThere>
std::u16string resolvePath(const kestrel::Model& model, std::string_view text, IsThere isThere) {
    std::vector<Spelling> found = spellingsOf(model, text);
    std::erase_if(found, [&](const Spelling& spelling) { return spelling.path.empty() || !isThere(spelling.path); });
    if (found.empty()) throw noSuchBlock(model, text);
    if (found.size() > 1) throw ambiguous(model, text, found[0], found[0].path, found[1], found[1].path);
    return found.front().path;
}

}  // namespace

std::vector<SignalSource> resolveReference(const kestrel::Model& model, std::string_view reference,
                                           const ReferenceOptions& options) {
    std::string reason;
    std::vector<std::pair<Spelling, Sources>> found;
    for (const Spelling& spelling : spellingsOf(model, reference)) {
        Lookup lookup(model, spelling.path, options);
        if (Sources sources = lookup.find(); !sources.empty()) found.emplace_back(spelling, std::move(sources));
        if (reason.empty()) reason = lookup.reason();
    }
    if (found.size() > 1) throw twoWays(model, reference, found);
    if (found.empty() && reason.empty()) throw noSuchBlock(model, reference);
    if (found.empty())
        throw Error(fmt::format("{}: {}", inQuotes(reference), reason), ErrorCode::request,
                    isLikePattern(reference) ? Remedy::usePatterns : Remedy::none);
    const bool isOfChart = !options.activity.empty() || options.ssid;
    if (isOfChart && !found.front().second.front().item)
        throw Error(inQuotes(reference) + ": only charts have activities and SSIDs; name a chart without a port");
    return std::move(found.front().second);
}

std::u16string withoutModel(const kestrel::Model& model, std::string_view path) {
    return spellingsOf(model, path).front().path;
}

const Block& resolveBlock(const kestrel::Model& model, std::string_view path) {
    const auto isBlock = [&](const std::u16string& text) { return model.findByPath(text) != nullptr; };
    return *model.findByPath(resolvePath(model, path, isBlock));
}

std::u16string resolveParent(const kestrel::Model& model, std::string_view path) {
    return resolvePath(model, path, [&](const std::u16string& text) {
        const auto isThere = [&](const Block& block) { return isAtOrBelow(block.path, text); };
        return std::any_of(model.blocks().begin(), model.blocks().end(), isThere);
    });
}

std::u16string activityFor(const ChartItem& item, const ReferenceOptions& options) {
    if (options.activity.empty()) return defaultActivity(item);
    std::u16string activity = toUtf16(options.activity);
    if (!hasActivity(item, activity))
        throw Error(fmt::format("the activity {} is not one of the chart item's; use one of: {}", inQuotes(activity),
                                activityList(item)));
    return activity;
}

}  // namespace workbench
