#include "workbench/find/spelling.h"

#include <fmt/format.h>

#include "workbench/text/nearest.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

constexpr std::size_t kLongestList = 300;

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

}  // namespace workbench
