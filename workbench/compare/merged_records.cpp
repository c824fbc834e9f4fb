#include "workbench/compare/merged_records.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <unordered_map>
#include <unordered_set>

#include "host/values.h"
#include "workbench/json/json_text.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

// Fields that make sense together only.
constexpr std::array<std::string_view, 8> kSignalPlace{
    "BlockPath_", "EID_", "SubPath_", "OutputPortIndex_", "SubSysPath_", "DomainType_", "DomainParams_", kMarkedName};
constexpr std::array<std::string_view, 3> kClientPlace{"ModelPath_", "ModelPathEID_", "SourceModel_"};

bool isPlaceField(RecordKind kind, std::string_view field) {
    return kind == RecordKind::signal ? std::ranges::find(kSignalPlace, field) != kSignalPlace.end()
                                      : std::ranges::find(kClientPlace, field) != kClientPlace.end();
}

// One file's records of one kind.
class Side {
public:
    Side(RecordKind kind, const ModelFile& file)
        : m_kind(kind), m_file(file), m_records(kind == RecordKind::signal ? file.signals.get() : file.clients.get()) {
        std::unordered_map<std::string, std::size_t> counts;
        for (const std::size_t i : ks_host::indicesOf(m_records)) {
            std::string key = toUtf8(recordText(m_records, i, "UUID"));
            if (const std::size_t count = counts[key]++; count > 0) key += fmt::format(" ({})", count + 1);
            m_positions.emplace(key, i);
            m_keys.push_back(std::move(key));
        }
    }

    const std::vector<std::string>& keys() const noexcept { return m_keys; }
    std::optional<std::size_t> at(const std::string& key) const {
        const auto found = m_positions.find(key);
        return found == m_positions.end() ? std::nullopt : std::optional(found->second);
    }
    RecordPlace placeOf(const std::string& key) const {
        const auto position = at(key);
        return position ? RecordPlace{m_records, *position} : RecordPlace{};
    }
    std::string json(std::size_t position, const char* field) const {
        if (field != kMarkedName) return canonicalField(m_records, position, field);
        std::string out;
        if (const std::u16string* const name = markedName(position)) appendJsonText(out, std::u16string_view(*name));
        return out;
    }
    bool isSame(std::size_t position, const Side& other, std::size_t otherPosition, const char* field) const {
        if (field == kMarkedName) return json(position, field) == other.json(otherPosition, field);
        return isSameField(m_records, position, other.m_records, otherPosition, field);
    }
    bool isSame(std::size_t position, const Side& other, std::size_t otherPosition) const {
        return std::ranges::all_of(fields(),
                                   [&](const char* field) { return isSame(position, other, otherPosition, field); });
    }
    std::vector<const char*> fields() const {
        const auto saved = fieldsOf(m_kind);
        std::vector<const char*> all(saved.begin(), saved.end());
        if (m_kind == RecordKind::signal) all.push_back(kMarkedName.data());
        return all;
    }
    const std::u16string* markedName(std::size_t position) const {
        return m_kind == RecordKind::signal ? m_file.extras.markedName(position) : nullptr;
    }

private:
    RecordKind m_kind;
    const ModelFile& m_file;
    const hvArray* m_records;
    std::vector<std::string> m_keys;
    std::unordered_map<std::string, std::size_t> m_positions;
};

class RecordsMerge {
public:
    RecordsMerge(RecordKind kind, const ModelFile& base, const ModelFile& ours, const ModelFile& theirs,
                 std::vector<MergeConflict>& conflicts)
        : m_kind(kind), m_base(kind, base), m_ours(kind, ours), m_theirs(kind, theirs), m_conflicts(conflicts) {}

    std::vector<MergedRecord> run() {
        std::vector<MergedRecord> merged;
        const auto stays = [this](const std::string& key) { return isIn(key); };
        for (const std::string& key : mergedOrder(m_base.keys(), m_ours.keys(), m_theirs.keys(), stays))
            merged.push_back(mergeOne(key));
        return merged;
    }

private:
    bool isIn(const std::string& key) {
        const auto base = m_base.at(key), ours = m_ours.at(key), theirs = m_theirs.at(key);
        const bool isOurChange = base && ours && !m_base.isSame(*base, m_ours, *ours);
        const bool isTheirChange = base && theirs && !m_base.isSame(*base, m_theirs, *theirs);
        const Presence presence =
            presenceOf(base.has_value(), ours.has_value(), theirs.has_value(), isOurChange, isTheirChange);
        const bool isConflict = presence == Presence::conflictIn || presence == Presence::conflictOut;
        if (isConflict)
            m_conflicts.push_back({listName(), key, "", "present", ours ? "present" : "", theirs ? "present" : "",
                                   ours ? "they removed it, and it has changed in ours; it stays"
                                        : "it was removed in ours, and they changed it; it stays removed"});
        return presence == Presence::in || presence == Presence::conflictIn;
    }
    const char* listName() const noexcept { return m_kind == RecordKind::signal ? "signals" : "clients"; }

    MergedRecord mergeOne(const std::string& key) {
        MergedRecord merged{key, m_ours.placeOf(key), m_theirs.placeOf(key)};
        const bool isOurs = merged.ours.records != nullptr;
        merged.isPlacedByThem = !isOurs;
        merged.record = copyRecords(m_kind, {isOurs ? merged.ours : merged.theirs});
        const Side& side = isOurs ? m_ours : m_theirs;
        if (const std::u16string* const name = side.markedName((isOurs ? merged.ours : merged.theirs).position))
            merged.markedName = *name;
        if (isOurs && merged.theirs.records) mergeFields(key, merged);
        return merged;
    }
    void mergeFields(const std::string& key, MergedRecord& merged) {
        std::vector<const char*> place;
        for (const char* const field : m_ours.fields()) {
            if (isPlaceField(m_kind, field))
                place.push_back(field);
            else
                mergeGroup(key, {field}, merged);
        }
        merged.isPlacedByThem = mergeGroup(key, place, merged);
    }
    // Returns whether theirs was taken.
    bool mergeGroup(const std::string& key, const std::vector<const char*>& group, MergedRecord& merged) {
        const std::size_t ours = merged.ours.position;
        const std::size_t theirs = merged.theirs.position;
        const auto isSame = [&](const Side& a, std::size_t i, const Side& b, std::size_t j) {
            return std::ranges::all_of(group, [&](const char* field) { return a.isSame(i, b, j, field); });
        };
        if (isSame(m_ours, ours, m_theirs, theirs)) return false;
        const auto base = m_base.at(key);
        if (base && isSame(m_base, *base, m_theirs, theirs)) return false;
        if (base && isSame(m_base, *base, m_ours, ours)) {
            take(group, merged);
            return true;
        }
        for (const char* const field : group)
            if (!m_ours.isSame(ours, m_theirs, theirs, field))
                m_conflicts.push_back({listName(), key, field, base ? m_base.json(*base, field) : "",
                                       m_ours.json(ours, field), m_theirs.json(theirs, field),
                                       "both changed it, and differently; ours stays"});
        return false;
    }
    void take(const std::vector<const char*>& group, MergedRecord& merged) const {
        for (const char* const field : group) {
            if (field == kMarkedName) {
                const std::u16string* const name = m_theirs.markedName(merged.theirs.position);
                merged.markedName = name ? std::optional(*name) : std::nullopt;
                continue;
            }
            const HvArrayPtr theirs = copyRecords(m_kind, {merged.theirs});
            const hvArray* const value = hvGetField(theirs.get(), 0, field);
            hvReplaceField(merged.record.get(), 0, field, hvCreateDeepCopy(value));
        }
    }

    RecordKind m_kind;
    Side m_base, m_ours, m_theirs;
    std::vector<MergeConflict>& m_conflicts;
};

std::vector<std::string> common(const std::vector<std::string>& list, const std::unordered_set<std::string>& others) {
    std::vector<std::string> result;
    std::ranges::copy_if(list, std::back_inserter(result), [&](const auto& key) { return others.contains(key); });
    return result;
}

}  // namespace

Presence presenceOf(bool inBase, bool inOurs, bool inTheirs, bool isChangedByUs, bool isChangedByThem) {
    if (inOurs == inTheirs) return inOurs ? Presence::in : Presence::out;
    if (!inBase) return Presence::in;
    if (inOurs) return isChangedByUs ? Presence::conflictIn : Presence::out;
    return isChangedByThem ? Presence::conflictOut : Presence::out;
}

std::vector<std::string> mergedOrder(const std::vector<std::string>& base, const std::vector<std::string>& ours,
                                     const std::vector<std::string>& theirs,
                                     const std::function<bool(const std::string&)>& stays) {
    const std::unordered_set<std::string> inBase(base.begin(), base.end());
    const std::unordered_set<std::string> inOurs(ours.begin(), ours.end());
    const bool isOursReordered = common(ours, inBase) != common(base, inOurs);
    const std::vector<std::string>& first = isOursReordered ? ours : theirs;
    const std::vector<std::string>& second = isOursReordered ? theirs : ours;
    const std::unordered_set<std::string> inFirst(first.begin(), first.end());
    // What only the second has goes behind what stands before it there.
    std::unordered_map<std::string, std::vector<std::string>> behind;
    std::string anchor;
    for (const std::string& key : second)
        inFirst.contains(key) ? static_cast<void>(anchor = key) : behind[anchor].push_back(key);
    std::vector<std::string> order;
    const auto append = [&](const std::string& key) {
        if (stays(key)) order.push_back(key);
    };
    std::ranges::for_each(behind[""], append);
    for (const std::string& key : first) {
        append(key);
        if (!key.empty()) std::ranges::for_each(behind[key], append);
    }
    return order;
}

std::vector<MergedRecord> mergeRecords(RecordKind kind, const ModelFile& base, const ModelFile& ours,
                                       const ModelFile& theirs, std::vector<MergeConflict>& conflicts) {
    return RecordsMerge(kind, base, ours, theirs, conflicts).run();
}

}  // namespace workbench
