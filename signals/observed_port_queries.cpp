#include <array>
#include <cmath>

#include "foundation/host_call.h"
#include "foundation/host_value.h"
#include "signals/instrumented_signals.h"

namespace ks_hmi {

using namespace ks_hmi_foundation;

namespace {

constexpr std::size_t kResults = 10;

// The results of "getObservedPorts", numbered from 1.
class ObservedPortColumns {
public:
    explicit ObservedPortColumns(const HostOutputs<kResults>& results) noexcept : m_results(results) {}

    const hvArray* column(std::size_t number) const { return m_results[number - 1].get(); }
    const hvArray* cell(std::size_t number, std::size_t row) const { return hvGetCell(column(number), row); }
    double number(std::size_t number, std::size_t row) const { return numberAt(column(number), row).value_or(0.0); }
    std::int32_t integer(std::size_t number, std::size_t row) const { return toInt32(this->number(number, row)); }
    // NaN differs from 0.0 and so is true.
    bool flag(std::size_t number, std::size_t row) const { return this->number(number, row) != 0.0; }

private:
    const HostOutputs<kResults>& m_results;
};

InstrumentedSignals::Source sourceAt(const ObservedPortColumns& columns, std::size_t row) {
    InstrumentedSignals::Source source;
    source.uuid = utf8TextOf(columns.cell(1, row));
    source.blockHandle = columns.number(2, row);
    source.outputPortIndex = columns.integer(3, row);
    source.decimation = columns.integer(4, row);
    source.maxPoints = columns.integer(5, row);
    source.isFrameBased = columns.flag(6, row);
    source.targetBufferedStreaming = columns.flag(7, row);
    // Kept: result 9 comes in front of result 8; the flags stand together.
    source.hideInPLV = columns.flag(9, row);
    source.signalName = textOf(columns.cell(8, row));
    source.blockPath = textOf(columns.cell(10, row));
    return source;
}

}  // namespace

void InstrumentedSignals::getObservedPorts(const hvArray* modelObject, const char* belowPath, const char* visualType,
                                           std::vector<Source>& out, bool withHidden, bool withUnsaved) {
    const HvArrayPtr below(hvCreateString(belowPath));
    const HvArrayPtr kind(hvCreateString(visualType));
    const HvArrayPtr hidden = makeLogical(withHidden);
    const HvArrayPtr unsaved = makeLogical(withUnsaved);
    auto results =
        tryCallHost<kResults>("getObservedPorts", {modelObject, below.get(), kind.get(), hidden.get(), unsaved.get()});
    if (!results) {
        out.clear();
        return;
    }
    for (HvArrayPtr& result : *results) result = inLocalScope(std::move(result));
    const ObservedPortColumns columns(*results);
    const auto rows = ks_host::indicesOf(columns.column(2));
    std::vector<Source> sources;
    sources.reserve(rows.size());
    for (const std::size_t row : rows) sources.push_back(sourceAt(columns, row));
    out.swap(sources);
}

void InstrumentedSignals::getPortsWithBadges(const hvArray* modelObject, std::set<double>& out) {
    if (hvIsEmpty(modelObject)) return;
    const auto result = tryCallHost<1>("getPortsWithBadges", {modelObject});
    if (!result) return;
    std::set<double> handles;
    for (const double handle : ks_host::numbersOf((*result)[0].get()))
        if (!std::isnan(handle)) handles.insert(handle);
    out.merge(handles);
}

}  // namespace ks_hmi
