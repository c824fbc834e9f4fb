#include "workbench/carry/matching/block_features.h"

#include <algorithm>
#include <iterator>

namespace workbench {

namespace {

constexpr double kHalf = 0.5;

void count(std::vector<std::size_t>& uses, std::uint32_t number) {
    if (number >= uses.size()) uses.resize(number + 1);
    ++uses[number];
}

}  // namespace

std::optional<std::size_t> VersionBlocks::at(const kestrel::Block* block) const {
    const auto found = positions.find(block);
    return found == positions.end() ? std::nullopt : std::optional(found->second);
}

BothVersions::BothVersions(const kestrel::Model& oldModel, const kestrel::Model& newModel)
    : old(oldModel), next(newModel) {
    add(old);
    add(next);
    for (const auto uses : {&VersionBlocks::uses, &VersionBlocks::setUses}) {
        const std::size_t most = std::max((old.*uses).size(), (next.*uses).size());
        (old.*uses).resize(most);
        (next.*uses).resize(most);
    }
}

void BothVersions::add(VersionBlocks& version) {
    for (const kestrel::Block& block : version.model.blocks()) {
        if (const std::optional<std::size_t> twin = &version == &next ? twinOf(block) : std::nullopt) {
            version.names.push_back(old.names[*twin]);
            version.sets.push_back(old.sets[*twin]);
        } else {
            addNew(version, block);
        }
        for (const std::uint32_t name : version.names.back()) count(version.uses, name);
        count(version.setUses, version.sets.back());
        for (auto parent = parentView(block.path); !parent.empty(); parent = parentView(parent))
            if (!version.parents.insert(parent).second) break;
        version.positions.emplace(&block, version.blocks.size());
        version.blocks.push_back(&block);
    }
}

void BothVersions::addNew(VersionBlocks& version, const kestrel::Block& block) {
    std::vector<std::uint32_t> names;
    names.reserve(block.outputs.size());
    for (const std::u16string& output : block.outputs) names.push_back(m_names.of(output));
    if (block.chart) appendItems(names, *block.chart);
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    version.sets.push_back(m_sets.of(std::u32string(names.begin(), names.end())));
    version.names.push_back(std::move(names));
}

// The old block at the same path, where it has the same names without a look at each.
std::optional<std::size_t> BothVersions::twinOf(const kestrel::Block& block) const {
    const kestrel::Block* const before = block.chart ? nullptr : old.model.findByPath(block.path);
    const bool isTwin = before && !before->chart && before->outputs == block.outputs;
    return isTwin ? old.at(before) : std::nullopt;
}

// Kinds of items are told apart by a character that ends a port's name nowhere.
void BothVersions::appendItems(std::vector<std::uint32_t>& names, const kestrel::Chart& chart) {
    const std::u16string mark(1, u'\0');
    const auto append = [&](std::u16string name) {
        names.push_back(m_names.of(m_itemNames.emplace_back(std::move(name))));
    };
    append(mark);
    for (const kestrel::ChartState& state : chart.states) append(mark + u's' + state.path);
    for (const kestrel::ChartData& datum : chart.data) append(mark + u'd' + datum.name);
}

std::vector<std::uint32_t> BothVersions::sharedNames(std::size_t oldBlock, std::size_t newBlock) const {
    std::vector<std::uint32_t> both;
    std::ranges::set_intersection(old.names[oldBlock], next.names[newBlock], std::back_inserter(both));
    return both;
}

std::size_t BothVersions::shared(std::size_t oldBlock, std::size_t newBlock) const {
    return isAlike(oldBlock, newBlock) ? old.names[oldBlock].size() : sharedNames(oldBlock, newBlock).size();
}

double BothVersions::likeness(std::size_t oldBlock, std::size_t newBlock) const {
    const std::size_t both = shared(oldBlock, newBlock);
    const std::size_t all = old.names[oldBlock].size() + next.names[newBlock].size() - both;
    return all == 0 ? 0.0 : static_cast<double>(both) / static_cast<double>(all);
}

bool BothVersions::isWeak(std::size_t oldBlock) const {
    if (old.setUses[old.sets[oldBlock]] > 1) return true;
    return old.names[oldBlock].size() == 1 && !isRare(old.names[oldBlock].front());
}

bool BothVersions::isUniqueSet(std::uint32_t set) const { return old.setUses[set] <= 1 && next.setUses[set] <= 1; }

bool BothVersions::shareRareName(std::size_t oldBlock, std::size_t newBlock) const {
    const std::vector<std::uint32_t> both = sharedNames(oldBlock, newBlock);
    return std::ranges::any_of(both, [this](std::uint32_t name) { return isRare(name); });
}

bool BothVersions::isTelling(std::size_t oldBlock, std::size_t newBlock) const {
    return (likeness(oldBlock, newBlock) >= kHalf && !isWeak(oldBlock)) || shareRareName(oldBlock, newBlock);
}

std::u16string_view parentView(std::u16string_view path) noexcept {
    const std::size_t at = path.rfind(u'/');
    return at == std::u16string_view::npos ? std::u16string_view() : path.substr(0, at);
}

std::u16string_view lastSegment(std::u16string_view path) noexcept { return path.substr(path.rfind(u'/') + 1); }

std::u16string_view lastTwoSegments(std::u16string_view path) noexcept {
    const std::size_t last = path.rfind(u'/');
    if (last == std::u16string_view::npos || last == 0) return path;
    return path.substr(path.rfind(u'/', last - 1) + 1);
}

std::u16string plainName(std::u16string_view name) {
    std::u16string plain;
    for (const char16_t c : name) {
        if (c == u'_' || c == u' ' || c == u'-') continue;
        plain += c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c - u'A' + u'a') : c;
    }
    return plain;
}

std::u16string plainPath(std::u16string_view path) {
    std::u16string plain = plainName(path);
    std::erase(plain, u'/');
    return plain;
}

bool areNumberedApart(std::u16string_view one, std::u16string_view other) {
    const auto isDigit = [](char16_t c) { return c >= u'0' && c <= u'9'; };
    const auto without = [](std::u16string_view name, auto isLeftOut) {
        std::u16string rest = plainName(name);
        std::erase_if(rest, isLeftOut);
        return rest;
    };
    const auto isOther = [&](char16_t c) { return !isDigit(c); };
    return without(one, isDigit) == without(other, isDigit) && without(one, isOther) != without(other, isOther);
}

}  // namespace workbench
