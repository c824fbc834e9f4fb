#include "workbench/carry/carry_map.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "workbench/compare/saved_records.h"
#include "workbench/text/csv_row.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

std::u16string withoutModel(std::u16string text, const kestrel::Model& model, bool isKnown) {
    const std::u16string front = model.name() + u"/";
    return !isKnown && text.starts_with(front) ? text.substr(front.size()) : text;
}

bool isPrefix(const std::u16string& text) { return text.ends_with(u"/*"); }

std::u16string keyOf(std::u16string_view path, std::u16string_view name) {
    return std::u16string(path).append(1, u'\0').append(name);
}

}  // namespace

bool hasSource(const kestrel::Block& block, const std::u16string& name) {
    if (std::ranges::find(block.outputs, name) != block.outputs.end()) return true;
    return block.chart &&
           (std::ranges::find(block.chart->states, name, &kestrel::ChartState::path) != block.chart->states.end() ||
            std::ranges::find(block.chart->data, name, &kestrel::ChartData::name) != block.chart->data.end());
}

CarryMap::CarryMap(std::string file, std::string_view text, const ModelFile& old, const kestrel::Model& next)
    : m_file(std::move(file)), m_old(&old.model), m_next(&next) {
    for (const kestrel::Block& block : old.model.blocks()) m_oldPaths.emplace(block.path, &block);
    for (const ParkedMark& mark : old.extras.parked)
        m_oldPaths.emplace(recordText(mark.signal.get(), 0, "BlockPath_"), nullptr);
    SavedBlocks blocks(old.model);
    for (std::size_t i = 0; i < hvGetNumberOfElements(old.signals.get()); ++i)
        if (!blocks.of({old.signals.get(), i}))
            m_oldPaths.emplace(recordText(old.signals.get(), i, "BlockPath_"), nullptr);
    CsvRows rows(m_file, pieceOf(text), CsvComments::hash);
    std::vector<CsvCell> row;
    for (bool isFirst = true; rows.next(row); isFirst = false) {
        const bool isHeading = isFirst && row.size() == 2 && row[0].text == "old" && row[1].text == "new";
        if (!isHeading || isKnown(u"old")) read(row, rows.line());
    }
}

const CarryMap::Target* CarryMap::block(std::u16string_view oldPath) const {
    if (m_blocks.empty() && m_below.empty()) return nullptr;
    const std::u16string path(oldPath);
    if (const auto found = m_blocks.find(path); found != m_blocks.end()) return &found->second;
    const auto found = m_below.find(path);
    return found == m_below.end() ? nullptr : &found->second;
}

const CarryMap::Target* CarryMap::source(std::u16string_view oldPath, std::u16string_view name) const {
    if (m_sources.empty()) return nullptr;
    const auto found = m_sources.find(keyOf(oldPath, name));
    return found == m_sources.end() ? nullptr : &found->second;
}

void CarryMap::read(const std::vector<CsvCell>& row, std::size_t line) {
    if (row.size() != 2)
        fail(line, fmt::format("{} instead of two, old and new; put names with commas in double quotes",
                               counted(row.size(), "column")));
    std::u16string before = toUtf16(row[0].text);
    std::u16string after = toUtf16(row[1].text);
    before = withoutModel(before, *m_old, isKnown(before));
    after = withoutModel(after, *m_next, m_next->findByPath(after) != nullptr);
    if (isPrefix(before)) return readPrefix(std::move(before), std::move(after), line);
    if (isKnown(before)) return add(m_blocks, before, targetOf(after, false, line), row[0].text);
    const auto parts = split(before, [&](const std::u16string& path) { return isKnown(path); });
    if (!parts)
        fail(line,
             fmt::format("the old model has no block {}; correct the name or remove the line", inQuotes(row[0].text)));
    const kestrel::Block* const block = m_oldPaths.at(parts->first);
    if (block && !hasSource(*block, parts->second))
        fail(line, fmt::format("the old block {} has no port or chart item {}; correct the name or remove the line",
                               inQuotes(parts->first), inQuotes(parts->second)));
    add(m_sources, keyOf(parts->first, parts->second), targetOf(after, true, line), row[0].text);
}

CarryMap::Target CarryMap::targetOf(const std::u16string& text, bool isSource, std::size_t line) const {
    if (text.empty()) return {nullptr, {}, line};
    if (!isSource) {
        const kestrel::Block* const block = m_next->findByPath(text);
        if (!block)
            fail(line, fmt::format("the new model has no block {}; correct the name or leave it empty to say that the "
                                   "old one is gone",
                                   inQuotes(text)));
        return {block, {}, line};
    }
    const auto parts = split(text, [&](const std::u16string& path) { return m_next->findByPath(path) != nullptr; });
    const kestrel::Block* const block = parts ? m_next->findByPath(parts->first) : nullptr;
    if (!block || !hasSource(*block, parts->second))
        fail(line, fmt::format("the new model has no port or chart item {}; write it as block:name", inQuotes(text)));
    return {block, parts->second, line};
}

void CarryMap::readPrefix(std::u16string before, std::u16string after, std::size_t line) {
    if (!after.empty() && !isPrefix(after))
        fail(line, fmt::format("{} stands for all blocks below, {} for one; write both with \"/*\" at the end",
                               inQuotes(before), inQuotes(after)));
    if (const auto [there, isNew] = m_prefixLines.emplace(before, line); !isNew)
        fail(line, fmt::format("{} is on line {} already; remove one", inQuotes(before), there->second));
    before.pop_back();
    if (!after.empty()) after.pop_back();
    bool isUsed = false;
    for (const auto& [path, block] : m_oldPaths) {
        if (!path.starts_with(before)) continue;
        isUsed = true;
        std::size_t& length = m_prefixLengths[path];
        const kestrel::Block* const target =
            after.empty() ? nullptr : m_next->findByPath(after + path.substr(before.size()));
        if (length > before.size() || (!target && !after.empty())) continue;
        length = before.size();
        m_below[path] = {target, {}, line};
    }
    if (!isUsed)
        fail(line, fmt::format("the old model has no blocks below {}; correct the name or remove the line",
                               inQuotes(before.substr(0, before.size() - 1))));
}

void CarryMap::add(std::unordered_map<std::u16string, Target>& entries, const std::u16string& key, Target target,
                   std::string_view text) const {
    const std::size_t line = target.line;
    if (const auto [there, isNew] = entries.emplace(key, std::move(target)); !isNew)
        fail(line, fmt::format("{} is on line {} already; remove one", inQuotes(text), there->second.line));
}

template <class IsBlock>
std::optional<std::pair<std::u16string, std::u16string>> CarryMap::split(const std::u16string& text, IsBlock isBlock) {
    for (std::size_t at = text.find(u':'); at != std::u16string::npos; at = text.find(u':', at + 1))
        if (std::u16string path = text.substr(0, at); isBlock(path)) return std::pair(path, text.substr(at + 1));
    return std::nullopt;
}

void CarryMap::fail(std::size_t line, const std::string& text) const {
    throw Error({m_file, line, {}}, text, ErrorCode::format);
}

}  // namespace workbench
