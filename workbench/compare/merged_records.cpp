#include "workbench/compare/merged_records.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>

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

// The saved fields, and of a signal the name when it was marked.
const std::vector<const char*>& mergedFields(RecordKind kind) {
    const auto saved = [](RecordKind one) {
        return std::vector<const char*>(fieldsOf(one).begin(), fieldsOf(one).end());
    };
    static const std::vector<const char*> clients = saved(RecordKind::client);
    static const std::vector<const char*> signals = [&] {
        std::vector<const char*> fields = saved(RecordKind::signal);
        fields.push_back(kMarkedName.data());
        return fields;
    }();
    return kind == RecordKind::signal ? signals : clients;
}

// One file's records of one kind.
class Side {
public:
    Side(RecordKind kind, const ModelFile& file, MergeKeys& keys)
        : m_kind(kind), m_file(file), m_records(kind == RecordKind::signal ? file.signals.get() : file.clients.get()) {
        std::vector<std::size_t> counts;
        for (const std::size_t i : ks_host::indicesOf(m_records)) {
            const std::string uuid = toUtf8(recordView(m_records, i, "UUID"));
            std::uint32_t key = keys.of(uuid);
            if (key >= counts.size()) counts.resize(keys.size());
            if (const std::size_t count = counts[key]++; count > 0)
                key = keys.of(fmt::format("{} ({})", uuid, count + 1));
            if (key >= m_positions.size()) m_positions.resize(keys.size());
            if (!m_positions[key]) m_positions[key] = i;
            m_keys.push_back(key);
        }
    }

    const std::vector<std::uint32_t>& keys() const noexcept { return m_keys; }
    std::optional<std::size_t> at(std::uint32_t key) const {
        return key < m_positions.size() ? m_positions[key] : std::nullopt;
    }
    RecordPlace placeOf(std::uint32_t key) const {
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
        if (field == kMarkedName) return isSameName(position, other, otherPosition);
        return isSameField(m_records, position, other.m_records, otherPosition, field);
    }
    bool isSame(std::size_t position, const Side& other, std::size_t otherPosition) const {
        return isSameName(position, other, otherPosition) &&
               isSameRecord(m_kind, {m_records, position}, {other.m_records, otherPosition});
    }
    const std::u16string* markedName(std::size_t position) const {
        return m_kind == RecordKind::signal ? m_file.extras.markedName(position) : nullptr;
    }

private:
    bool isSameName(std::size_t position, const Side& other, std::size_t otherPosition) const {
        const std::u16string* const one = markedName(position);
        const std::u16string* const another = other.markedName(otherPosition);
        return one && another ? *one == *another : one == another;
    }

    RecordKind m_kind;
    const ModelFile& m_file;
    const hvArray* m_records;
    std::vector<std::uint32_t> m_keys;
    std::vector<std::optional<std::size_t>> m_positions;  // by key
};

class RecordsMerge {
public:
    RecordsMerge(RecordKind kind, const ModelFile& base, const ModelFile& ours, const ModelFile& theirs,
                 std::vector<MergeConflict>& conflicts)
        : m_kind(kind),
          m_base(kind, base, m_merged.keys),
          m_ours(kind, ours, m_merged.keys),
          m_theirs(kind, theirs, m_merged.keys),
          m_conflicts(conflicts) {}

    MergedRecords run() {
        const auto stays = [this](std::uint32_t key) { return isIn(key); };
        for (const std::uint32_t key : mergedOrder(m_merged.keys, m_base.keys(), m_ours.keys(), m_theirs.keys(), stays))
            m_merged.records.push_back(mergeOne(key));
        return std::move(m_merged);
    }

private:
    bool isIn(std::uint32_t key) {
        const auto base = m_base.at(key), ours = m_ours.at(key), theirs = m_theirs.at(key);
        if (ours && theirs) return true;
        const bool isOurChange = base && ours && !m_base.isSame(*base, m_ours, *ours);
        const bool isTheirChange = base && theirs && !m_base.isSame(*base, m_theirs, *theirs);
        const Presence presence =
            presenceOf(base.has_value(), ours.has_value(), theirs.has_value(), isOurChange, isTheirChange);
        const bool isConflict = presence == Presence::conflictIn || presence == Presence::conflictOut;
        if (isConflict)
            m_conflicts.push_back({listName(), m_merged.keys.text(key), "", "present", ours ? "present" : "",
                                   theirs ? "present" : "",
                                   ours ? "they removed it, and it has changed in ours; it stays"
                                        : "it was removed in ours, and they changed it; it stays removed"});
        return presence == Presence::in || presence == Presence::conflictIn;
    }
    const char* listName() const noexcept { return m_kind == RecordKind::signal ? "signals" : "clients"; }

    MergedRecord mergeOne(std::uint32_t key) {
        MergedRecord merged{key, m_ours.placeOf(key), m_theirs.placeOf(key)};
        const bool isOurs = merged.ours.records != nullptr;
        merged.isPlacedByThem = !isOurs;
        merged.markedName = (isOurs ? m_ours : m_theirs).markedName(merged.place().position);
        const bool isInBoth = isOurs && merged.theirs.records;
        if (isInBoth && !m_ours.isSame(merged.ours.position, m_theirs, merged.theirs.position)) mergeFields(merged);
        return merged;
    }
    void mergeFields(MergedRecord& merged) {
        std::vector<const char*> place;
        for (const char* const field : mergedFields(m_kind)) {
            if (isPlaceField(m_kind, field))
                place.push_back(field);
            else
                mergeGroup({field}, merged);
        }
        merged.isPlacedByThem = mergeGroup(place, merged);
    }
    // Returns whether theirs was taken.
    bool mergeGroup(const std::vector<const char*>& group, MergedRecord& merged) {
        const std::size_t ours = merged.ours.position;
        const std::size_t theirs = merged.theirs.position;
        const auto isSame = [&](const Side& a, std::size_t i, const Side& b, std::size_t j) {
            return std::ranges::all_of(group, [&](const char* field) { return a.isSame(i, b, j, field); });
        };
        if (isSame(m_ours, ours, m_theirs, theirs)) return false;
        const auto base = m_base.at(merged.key);
        if (base && isSame(m_base, *base, m_theirs, theirs)) return false;
        if (base && isSame(m_base, *base, m_ours, ours)) {
            take(group, merged);
            return true;
        }
        for (const char* const field : group)
            if (!m_ours.isSame(ours, m_theirs, theirs, field))
                m_conflicts.push_back({listName(), m_merged.keys.text(merged.key), field,
                                       base ? m_base.json(*base, field) : "", m_ours.json(ours, field),
                                       m_theirs.json(theirs, field), "both changed it, and differently; ours stays"});
        return false;
    }
    void take(const std::vector<const char*>& group, MergedRecord& merged) const {
        for (const char* const field : group) {
            if (field == kMarkedName)
                merged.markedName = m_theirs.markedName(merged.theirs.position);
            else
                merged.theirFields.push_back(field);
        }
    }

    RecordKind m_kind;
    MergedRecords m_merged;
    Side m_base, m_ours, m_theirs;
    std::vector<MergeConflict>& m_conflicts;
};

using Keys = std::vector<std::uint32_t>;

std::vector<bool> setOf(const Keys& list, std::size_t count) {
    std::vector<bool> set(count);
    for (const std::uint32_t key : list) set[key] = true;
    return set;
}

Keys common(const Keys& list, const std::vector<bool>& others) {
    Keys result;
    std::ranges::copy_if(list, std::back_inserter(result), [&](std::uint32_t key) { return others[key]; });
    return result;
}

}  // namespace

std::uint32_t MergeKeys::of(const std::string& key) {
    const auto [place, isNew] = m_numbers.emplace(key, static_cast<std::uint32_t>(m_texts.size()));
    if (isNew) m_texts.push_back(&place->first);
    return place->second;
}

Presence presenceOf(bool inBase, bool inOurs, bool inTheirs, bool isChangedByUs, bool isChangedByThem) {
    if (inOurs == inTheirs) return inOurs ? Presence::in : Presence::out;
    if (!inBase) return Presence::in;
    if (inOurs) return isChangedByUs ? Presence::conflictIn : Presence::out;
    return isChangedByThem ? Presence::conflictOut : Presence::out;
}

std::vector<std::uint32_t> mergedOrder(const MergeKeys& keys, const Keys& base, const Keys& ours, const Keys& theirs,
                                       const std::function<bool(std::uint32_t)>& stays) {
    const bool isOursReordered = common(ours, setOf(base, keys.size())) != common(base, setOf(ours, keys.size()));
    const Keys& first = isOursReordered ? ours : theirs;
    const Keys& second = isOursReordered ? theirs : ours;
    const std::vector<bool> inFirst = setOf(first, keys.size());
    // What only the second has goes behind what stands before it there; in front of all where that has no text.
    std::vector<Keys> behind(keys.size() + 1);
    const auto placeOf = [&](std::uint32_t key) {
        return keys.text(key).empty() ? std::size_t{0} : key + std::size_t{1};
    };
    std::size_t anchor = 0;
    for (const std::uint32_t key : second)
        inFirst[key] ? static_cast<void>(anchor = placeOf(key)) : behind[anchor].push_back(key);
    Keys order;
    const auto append = [&](std::uint32_t key) {
        if (stays(key)) order.push_back(key);
    };
    std::ranges::for_each(behind[0], append);
    for (const std::uint32_t key : first) {
        append(key);
        if (const std::size_t place = placeOf(key); place > 0) std::ranges::for_each(behind[place], append);
    }
    return order;
}

MergedRecords mergeRecords(RecordKind kind, const ModelFile& base, const ModelFile& ours, const ModelFile& theirs,
                           std::vector<MergeConflict>& conflicts) {
    return RecordsMerge(kind, base, ours, theirs, conflicts).run();
}

HvArrayPtr builtRecords(RecordKind kind, const std::vector<MergedRecord>& records) {
    std::vector<RecordPlace> places;
    places.reserve(records.size());
    for (const MergedRecord& one : records) places.push_back(one.ours.records ? one.ours : one.theirs);
    HvArrayPtr built = copyRecords(kind, places);
    for (std::size_t i = 0; i < records.size(); ++i) {
        for (const char* const field : records[i].theirFields) copyField(built.get(), i, field, records[i].theirs);
        if (const auto port = records[i].newPort)
            hvReplaceField(built.get(), i, "OutputPortIndex_",
                           ks_host::makeDouble(static_cast<double>(*port)).release());
    }
    return built;
}

}  // namespace workbench
