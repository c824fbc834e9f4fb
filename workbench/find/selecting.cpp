#include "workbench/find/selecting.h"

#include <algorithm>
#include <set>
#include <utility>

#include "workbench/find/glob.h"
#include "workbench/find/signal_index.h"
#include "workbench/find/spelling.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using Sources = std::vector<SignalSource>;

Sources allSourcesOf(const kestrel::Model& model) {
    std::size_t ports = 0;
    for (const kestrel::Block& block : model.blocks()) ports += block.outputs.size();
    Sources sources;
    sources.reserve(ports);
    for (const kestrel::Block& block : model.blocks()) {
        for (int port = 1; port <= static_cast<int>(block.outputs.size()); ++port)
            sources.push_back({&block, port, std::nullopt});
        for (ChartItem& item : chartItemsOf(block)) sources.push_back({&block, 0, std::move(item)});
    }
    return sources;
}

bool isAnyMatched(const kestrel::Model& model, const Sources& sources, const std::string& pattern) {
    const Globs globs({pattern});
    return std::any_of(sources.begin(), sources.end(),
                       [&](const SignalSource& source) { return globs.matches(model, source); });
}

Error nothingMatches(const kestrel::Model& model, const Sources& sources, const std::string& pattern) {
    std::string text = "nothing matches " + inQuotes(pattern);
    const std::string near =
        nearPatterns(model, pattern, [&](const std::string& one) { return isAnyMatched(model, sources, one); });
    if (!near.empty())
        text += near;
    else if (hasUnescapedBracket(pattern))
        text += R"(; "[" and "]" enclose a set of characters: for the brackets themselves write "\[" and "\]")";
    else
        text += R"(; patterns match whole paths like "MODEL/block/path", "block/path:1" and "chart/State")";
    return Error(text, ErrorCode::noMatch);
}

Sources matchingSources(const kestrel::Model& model, const std::vector<std::string>& patterns) {
    if (patterns.empty()) return {};
    Sources sources = allSourcesOf(model);
    for (const std::string& pattern : patterns)
        if (!isAnyMatched(model, sources, pattern)) throw nothingMatches(model, sources, pattern);
    std::erase_if(sources,
                  [&, globs = Globs(patterns)](const SignalSource& one) { return !globs.matches(model, one); });
    return sources;
}

NamedSources namedBy(const kestrel::Model& model, ListedReference reference, const ReferenceOptions& options) {
    try {
        Sources sources = resolveReference(model, reference.text, options);
        return {std::move(reference), std::move(sources)};
    } catch (const Error& error) {
        if (reference.place.file.empty()) throw;
        throw error.at(std::move(reference.place));
    }
}

template <class IsDropped>
void drop(Selected& selected, IsDropped isDropped) {
    for (NamedSources& named : selected.named) std::erase_if(named.sources, isDropped);
    std::erase_if(selected.matching, isDropped);
}

void dropExcepted(const kestrel::Model& model, const std::vector<std::string>& patterns, Selected& selected) {
    const Sources before = patterns.empty() ? Sources() : selected.sources();
    for (const std::string& pattern : patterns)
        if (!isAnyMatched(model, before, pattern)) selected.idle.push_back(pattern);
    if (!patterns.empty())
        drop(selected, [&, globs = Globs(patterns)](const SignalSource& one) { return globs.matches(model, one); });
}

void dropOtherKinds(const std::vector<SourceKind>& kinds, Selected& selected) {
    if (kinds.empty()) return;
    drop(selected, [&](const SignalSource& source) {
        return std::find(kinds.begin(), kinds.end(), kindOf(source)) == kinds.end();
    });
}

Error notMarked(const ListedReference& reference) {
    const Error error(inQuotes(reference.text) + ": is not marked", ErrorCode::noMatch, Remedy::listSignals);
    return reference.place.file.empty() ? error : error.at(reference.place);
}

std::vector<const kestrel::Block*> blocksOf(const Selected& selected) {
    std::vector<const kestrel::Block*> blocks;
    const auto add = [&](const Sources& sources) {
        for (const SignalSource& source : sources)
            if (blocks.empty() || blocks.back() != source.block) blocks.push_back(source.block);
    };
    for (const NamedSources& named : selected.named) add(named.sources);
    add(selected.matching);
    return blocks;
}

}  // namespace

SourceKind kindOf(const SignalSource& source) {
    if (!source.item) return SourceKind::port;
    if (source.item->domainType == kStateDomain) return SourceKind::state;
    return source.item->domainType == kDataDomain ? SourceKind::datum : SourceKind::chart;
}

std::optional<SourceKind> sourceKindOf(std::string_view word) noexcept {
    const auto found = std::ranges::find(kSourceKinds, word);
    if (found == kSourceKinds.end()) return std::nullopt;
    return static_cast<SourceKind>(found - kSourceKinds.begin());
}

SourceKey keyOf(const SignalSource& source) {
    return {source.block, source.port, source.item ? std::int64_t{source.item->ssid} : -1};
}

Sources Selected::sources() && {
    // Patterns match each once.
    return named.empty() ? std::move(matching) : std::as_const(*this).sources();
}

Sources Selected::sources() const& {
    if (named.empty()) return matching;
    std::set<SourceKey> seen;
    Sources result;
    const auto add = [&](const Sources& sources) {
        for (const SignalSource& source : sources)
            if (seen.insert(keyOf(source)).second) result.push_back(source);
    };
    for (const NamedSources& one : named) add(one.sources);
    add(matching);
    return result;
}

Selected select(const kestrel::Model& model, const Selection& selection) {
    Selected selected;
    for (const std::string& reference : selection.references)
        selected.named.push_back(namedBy(model, {reference, {}}, selection.options));
    for (const ListedReference& reference : selection.listed)
        selected.named.push_back(namedBy(model, reference, selection.options));
    selected.matching = matchingSources(model, selection.all);
    dropExcepted(model, selection.except, selected);
    dropOtherKinds(selection.kinds, selected);
    if (selection.options.activity.empty()) return selected;
    const std::u16string activity = toUtf16(selection.options.activity);
    std::erase_if(selected.matching,
                  [&](const SignalSource& source) { return !source.item || !hasActivity(*source.item, activity); });
    return selected;
}

Positions signalsOn(const Session& session, const Selected& selected, const ReferenceOptions& options) {
    const SignalIndex index(session, blocksOf(selected));
    Positions positions;
    const auto add = [&](const Sources& sources) {
        const std::size_t before = positions.size();
        for (const SignalSource& source : sources) {
            const Positions found = index.on(source, options);
            positions.insert(positions.end(), found.begin(), found.end());
        }
        return positions.size() > before;
    };
    for (const NamedSources& named : selected.named)
        if (!add(named.sources) && !named.sources.empty()) throw notMarked(named.reference);
    add(selected.matching);
    sortUnique(positions);
    return positions;
}

}  // namespace workbench
