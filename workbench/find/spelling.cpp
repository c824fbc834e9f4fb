#include "workbench/find/spelling.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

#include "workbench/session/signal_source.h"
#include "workbench/text/nearest.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

constexpr std::size_t kLongestList = 300;
// In patterns.
constexpr std::string_view kSpecial = "*?[]\\";
constexpr std::string_view kBetweenWords = "*?[]\\/:";

// Without a port behind it.
std::string blockPart(std::string_view path) {
    const std::size_t colon = path.rfind(':');
    const bool isPort = colon != std::string_view::npos && path.find('/', colon) == std::string_view::npos;
    return std::string(isPort ? path.substr(0, colon) : path);
}

std::string nearBlocks(const kestrel::Model& model, std::string_view text) {
    const std::string written = blockPart(toUtf8(spellingsOf(model, text).front().path));
    const bool isOneName = written.find('/') == std::string::npos;
    Nearest nearest(written);
    for (const kestrel::Block& block : model.blocks()) {
        const std::string path = toUtf8(block.path);
        nearest.offer(path);
        if (!isOneName) continue;
        nearest.offer(path.substr(path.rfind('/') + 1), path);
        nearest.offer(path.substr(0, path.find('/')));
    }
    return nearest.question();
}

std::string nearPorts(const kestrel::Block& block, std::u16string_view wanted) {
    Nearest nearest(toUtf8(wanted));
    for (const std::u16string& name : block.outputs) nearest.offer(toUtf8(name));
    return nearest.question();
}

// The names that paths of ports and chart items are made of.
std::set<std::string> namesIn(const kestrel::Model& model) {
    std::set<std::string> names{toUtf8(model.name())};
    const auto add = [&](std::u16string_view path) {
        for (std::size_t end = 0; end != std::u16string_view::npos;
             path.remove_prefix(std::min(path.size(), end + 1))) {
            end = path.find(u'/');
            names.insert(toUtf8(path.substr(0, end)));
        }
    };
    for (const kestrel::Block& block : model.blocks()) {
        add(block.path);
        for (const std::u16string& name : block.outputs) names.insert(toUtf8(name));
        for (const ChartItem& item : chartItemsOf(block)) add(item.subPath);
    }
    return names;
}

std::string asPattern(std::string_view name) {
    std::string pattern;
    for (const char c : name)
        pattern += kSpecial.find(c) == std::string_view::npos ? std::string{c} : std::string{'\\', c};
    return pattern;
}

}  // namespace

std::vector<Spelling> spellingsOf(const kestrel::Model& model, std::string_view text) {
    std::u16string written = toUtf16(text);
    if (written.starts_with(u'/')) return {{written.substr(1), false}};
    const std::u16string prefix = model.name() + u"/";
    if (!written.starts_with(prefix)) return {{std::move(written), false}};
    return {{written.substr(prefix.size()), true}, {written, false}};
}

Error ambiguous(const kestrel::Model& model, std::string_view text, const Spelling& one, const std::u16string& onePath,
                const Spelling& other, const std::u16string& otherPath) {
    const auto full = [&](const std::u16string& path) { return inQuotes(model.name() + u"/" + path); };
    const auto said = [](const Spelling& spelling) { return inQuotes(u"/" + spelling.path); };
    return Error(fmt::format("{}: can be {} or {}; write {} for the one, {} for the other", inQuotes(text),
                             full(onePath), full(otherPath), said(one), said(other)));
}

Error noSuchBlock(const kestrel::Model& model, std::string_view text) {
    const bool isPattern = isLikePattern(text);
    const std::string near = isPattern ? "" : nearBlocks(model, text);
    const Remedy remedy = isPattern ? Remedy::usePatterns : near.empty() ? Remedy::listBlocks : Remedy::none;
    return Error(fmt::format("{}: the model {} has no such block{}", inQuotes(text), inQuotes(model.name()), near),
                 ErrorCode::request, remedy);
}

std::string portList(const kestrel::Block& block, std::u16string_view wanted) {
    if (block.outputs.empty()) return "it has none";
    std::string list = "it has";
    for (std::size_t i = 0; i < block.outputs.size() && list.size() <= kLongestList; ++i)
        list += fmt::format("{} {} ({})", i == 0 ? "" : ",", i + 1, printable(block.outputs[i]));
    if (list.size() > kLongestList) list = fmt::format("it has {}", counted(block.outputs.size(), "port"));
    return list + nearPorts(block, wanted);
}

bool isLikePattern(std::string_view text) { return text.find_first_of("*?[") != std::string_view::npos; }

std::string nearPatterns(const kestrel::Model& model, std::string_view pattern,
                         const std::function<bool(const std::string& pattern)>& matches) {
    const std::set<std::string> names = namesIn(model);
    Nearest meant(pattern);
    for (std::size_t start = 0; start < pattern.size();) {
        const std::size_t end = std::min(pattern.find_first_of(kBetweenWords, start), pattern.size());
        Nearest word(pattern.substr(start, end - start));
        for (const std::string& name : names) word.offer(name);
        for (const std::string& name : word.found()) {
            std::string near(pattern);
            near.replace(start, end - start, asPattern(name));
            if (matches(near)) meant.offer(near);
        }
        start = end + 1;
    }
    return meant.question();
}

}  // namespace workbench
