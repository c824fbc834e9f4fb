#include "workbench/record/run_columns.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <unordered_map>
#include <utility>

#include "signals/signal_specification.h"
#include "workbench/import/variable_name.h"
#include "workbench/record/recorded_run.h"
#include "workbench/session/records.h"
#include "workbench/text/text.h"
#include "workbench/unit/array_element.h"

namespace workbench {

namespace {

ValueKind kindOf(UnitType type) {
    switch (type) {
        case UnitType::float32:
        case UnitType::float64:
            return ValueKind::real;
        case UnitType::boolean:
            return ValueKind::boolean;
        case UnitType::enumeration:
            return ValueKind::enumeration;
        case UnitType::string:
            return ValueKind::text;
        case UnitType::binary:
            return ValueKind::binary;
        default:
            return ValueKind::integer;
    }
}

std::uint64_t positive(std::int32_t number, std::uint64_t otherwise) {
    return number > 0 ? static_cast<std::uint64_t>(number) : otherwise;
}

// What a block is called in the unit: as it was imported, else its path with dots.
std::string sourceNameOf(const kestrel::Block& block) {
    if (block.source) return *block.source;
    std::string name = toUtf8(block.path);
    std::replace(name.begin(), name.end(), '/', '.');
    return name;
}

class Planner {
public:
    Planner(Session& session, EnginePorts& ports, const FmiDescription& description,
            const std::vector<GivenSize>& sizes)
        : m_session(session), m_ports(ports), m_description(description), m_sizes(sizes) {
        m_variables.reserve(description.variables.size());
        for (const FmiVariable& variable : description.variables) m_variables.emplace(variable.name, &variable);
    }

    RunPlan plan() {
        const std::vector<std::string> titles = columnTitles(m_session);
        for (std::size_t i = 0; i < titles.size(); ++i) addSignal(i, titles[i]);
        placeReadings();
        return std::move(m_plan);
    }

private:
    using GroupKey = std::pair<UnitType, std::uint64_t>;
    // Variables that are read together, and the columns of each.
    struct Read {
        std::uint32_t reference;
        std::size_t count;
        std::vector<std::size_t> firstColumns;
    };

    void addSignal(std::size_t position, const std::string& title) {
        const ks_hmi::SignalSpecification& signal = *m_session.signals().get(position);
        const SignalSource source = sourceOf(m_session.model(), signal);
        if (source.item) return leaveOut(title, "is on a chart, and units have none");
        if (signal.m_excludeForSave) return leaveOut(title, "is excluded");
        const ksPort* const port = source.block != nullptr ? m_ports.find(*source.block, source.port) : nullptr;
        if (port == nullptr) return leaveOut(title, "is on a port that the model does not have");
        if (!m_ports.isObserved(*port)) return;
        const std::string name = joinVariableName(sourceNameOf(*source.block), toUtf8(portName(source)));
        const auto found = m_variables.find(name);
        if (found == m_variables.end())
            return leaveOut(title, fmt::format("needs a variable {}, which the unit does not have", inQuotes(name)));
        const FmiVariable& variable = *found->second;
        if (!variable.valueReference || !unitTypeOf(variable.type))
            return leaveOut(title,
                            fmt::format("is a {}, which cannot be read", printable(std::string_view(variable.type))));
        addColumns(position, source, variable, title);
    }

    void leaveOut(const std::string& title, const std::string& reason) {
        m_plan.warnings.push_back(fmt::format("{} is not recorded: it {}", inQuotes(title), reason));
    }

    void addColumns(std::size_t position, const SignalSource& source, const FmiVariable& variable,
                    const std::string& title) {
        const ks_hmi::SignalSpecification& signal = *m_session.signals().get(position);
        const UnitType type = *unitTypeOf(variable.type);
        RunColumn column;
        column.kind = kindOf(type);
        column.isSingle = type == UnitType::float32;
        column.isUnsigned = isUnsigned(type);
        column.unit = variable.unit;
        if (variable.items)
            for (const FmiItem& item : *variable.items) column.names.push_back({item.value, item.name});
        column.signal = signal.m_uuid;
        column.position = position;
        column.block = toUtf8(m_session.model().fullPath(*source.block));
        column.port = source.port;
        column.portName = toUtf8(portName(source));
        column.variable = variable.name;
        column.decimation = positive(signal.m_decimation, 1);
        column.maxPoints = positive(signal.m_maxPoints, 0);
        const std::vector<std::uint64_t> extents = extentsOf(variable, m_description, m_sizes);
        const std::size_t count = elementCount(extents);
        noteReading({type, column.decimation}, *variable.valueReference, count);
        for (std::size_t i = 0; i < count; ++i) {
            column.element = extents.empty() ? "" : elementText(i, extents);
            column.title = m_titles.take(title + column.element);
            m_plan.columns.push_back(column);
        }
    }

    void noteReading(const GroupKey& key, std::uint32_t reference, std::size_t count) {
        std::vector<Read>& group = m_groups[key];
        const auto [place, isNew] = m_places[key].try_emplace(reference, group.size());
        if (isNew) group.push_back({reference, count, {}});
        group[place->second].firstColumns.push_back(m_plan.columns.size());
    }

    void placeReadings() {
        for (const auto& [key, group] : m_groups) {
            UnitReadingPlan& plan = m_plan.readings.emplace_back();
            plan.reading.type = key.first;
            plan.decimation = key.second;
            plan.firstSlot = m_plan.slotCount;
            for (const Read& read : group) {
                plan.reading.references.push_back(read.reference);
                for (const std::size_t first : read.firstColumns)
                    for (std::size_t i = 0; i < read.count; ++i) m_plan.columns[first + i].slot = m_plan.slotCount + i;
                plan.reading.count += read.count;
                m_plan.slotCount += read.count;
            }
        }
    }

    Session& m_session;
    EnginePorts& m_ports;
    const FmiDescription& m_description;
    const std::vector<GivenSize>& m_sizes;
    std::unordered_map<std::string_view, const FmiVariable*> m_variables;
    UniqueTitles m_titles;
    std::map<GroupKey, std::vector<Read>> m_groups;
    std::map<GroupKey, std::unordered_map<std::uint32_t, std::size_t>> m_places;
    RunPlan m_plan;
};

}  // namespace

RunPlan planRun(Session& session, EnginePorts& ports, const FmiDescription& description,
                const std::vector<GivenSize>& sizes) {
    return Planner(session, ports, description, sizes).plan();
}

}  // namespace workbench
