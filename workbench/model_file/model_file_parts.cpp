#include "workbench/model_file/model_file_parts.h"

#include <fmt/format.h>

#include <cmath>
#include <limits>
#include <set>
#include <string_view>
#include <utility>

#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using shapes::Place;

constexpr double kFormatVersion = 1.0;

}  // namespace

void ModelFileParts::begin(Place place) {
    switch (place) {
        case Place::origin:
            m_extras.origin.emplace();
            break;
        case Place::goneBlock:
            m_extras.origin->gone.emplace_back();
            break;
        case Place::block:
            m_blocks.push_back({{}, m_file.line()});
            break;
        case Place::chart:
            block().chart.emplace();
            break;
        case Place::state:
            block().chart->states.emplace_back();
            break;
        case Place::datum:
            block().chart->data.emplace_back();
            break;
        case Place::parkedMark:
            m_extras.parked.emplace_back();
            break;
        case Place::signals:
            if (m_sink && m_nameLine > 0 && m_hasBlocks) handOverModel();
            break;
        default:
            if (shapes::isRecord(place)) records(place).begin();
    }
}

void ModelFileParts::end(Place place) {
    switch (place) {
        case Place::origin:
            return checkOrigin();
        case Place::chart:
            return checkChart();
        case Place::parkedMark:
            return endParked();
        case Place::blocks:
            m_hasBlocks = true;
            return;
        case Place::signal:
            return endRecord(m_signals, Stage::model, m_keptSignals);
        case Place::client:
            return endRecord(m_clients, Stage::signals, m_keptClients);
        case Place::signals:
            if (m_stage == Stage::model) endHandingOver(m_signals, Stage::signals);
            return;
        case Place::clients:
            if (m_stage == Stage::signals) endHandingOver(m_clients, Stage::clients);
            return;
        default:
            return;
    }
}

void ModelFileParts::setText(Place place, std::string_view key, std::u16string text) {
    switch (place) {
        case Place::document:
            m_name = std::move(text);
            m_nameLine = m_file.line();
            break;
        case Place::parkedMark:
            setParkedText(key, std::move(text));
            break;
        case Place::outputs:
            block().outputs.push_back(std::move(text));
            break;
        case Place::state:
            block().chart->states.back().path = std::move(text);
            break;
        case Place::datum:
            block().chart->data.back().name = std::move(text);
            break;
        case Place::origin:
        case Place::goneBlock:
            originText(key) = toUtf8(text);
            break;
        default:
            setBlockText(key, std::move(text));
    }
}

std::string& ModelFileParts::originText(std::string_view key) {
    if (key == "kind") return m_extras.origin->kind;
    if (key == "version") return m_extras.origin->version;
    if (key == "file") return m_extras.origin->file;
    if (key == "hash") return m_extras.origin->hash;
    GoneBlock& gone = m_extras.origin->gone.back();
    return key == "source" ? gone.source : gone.eid;
}

void ModelFileParts::setBlockText(std::string_view key, std::u16string text) {
    if (key == "path")
        block().path = std::move(text);
    else if (key == "eid")
        block().eid = toUtf8(text);
    else
        block().source = toUtf8(text);
}

void ModelFileParts::setParkedText(std::string_view key, std::u16string text) {
    ParkedMark& mark = m_extras.parked.back();
    if (key == "from") {
        mark.from = std::move(text);
        return;
    }
    const std::optional<LostWith> lost = lostWithOf(toUtf8(text));
    if (!lost) fail(inQuotes(text) + " appears where block, port or item is expected; correct it");
    mark.lost = *lost;
}

void ModelFileParts::setNumber(Place place, double value) {
    if (place == Place::state)
        block().chart->states.back().ssid = ssidOf(value);
    else if (place == Place::datum)
        block().chart->data.back().ssid = ssidOf(value);
    else if (value != kFormatVersion)
        fail("this program reads version 1 of the format only; save the model in that version");
}

std::uint32_t ModelFileParts::ssidOf(double value) const {
    constexpr double kMostSsid = std::numeric_limits<std::uint32_t>::max();
    if (!(value >= 1.0) || value > kMostSsid || value != std::floor(value))
        fail("an SSID is a whole number from 1 on (0 is the chart itself)");
    return static_cast<std::uint32_t>(value);
}

RecordTable& ModelFileParts::records(Place record) noexcept {
    switch (record) {
        case Place::signal:
            return m_signals;
        case Place::client:
            return m_clients;
        case Place::parkedSignal:
            return m_parkedSignals;
        default:
            return m_parkedClients;
    }
}

void ModelFileParts::setField(Place record, std::size_t field, HvArrayPtr value) {
    try {
        records(record).setField(field, std::move(value));
    } catch (const Error& fault) {
        if (!m_faults) throw;
        tell(fault.text());
    }
}

void ModelFileParts::checkOrigin() const {
    for (const char* const kind : {"ssd", "ssp", "fmi", "fmu"})
        if (m_extras.origin->kind == kind) return;
    m_file.fail(m_pointer() + "/kind", "a model comes from ssd, ssp, fmi or fmu; correct it");
}

void ModelFileParts::tell(const Error& fault) const {
    if (!m_faults) throw Error(fault);
    (*m_faults)(fault);
}

// A chart's items are told apart by identifier, states by path and data by name.
void ModelFileParts::checkChart() const {
    const kestrel::Chart& chart = *m_blocks.back().block.chart;
    std::set<std::uint32_t> identifiers;
    std::set<std::u16string_view> texts;
    const auto check = [&](std::uint32_t ssid, std::u16string_view text) {
        if (text.empty()) return tell("a state needs a path and a datum a name");
        if (!identifiers.insert(ssid).second)
            tell(fmt::format("the SSID {} appears twice; give each item its own", ssid));
        if (!texts.insert(text).second) tell(inQuotes(text) + " appears twice; give each item its own name");
    };
    for (const kestrel::ChartState& state : chart.states) check(state.ssid, state.path);
    texts.clear();
    for (const kestrel::ChartData& datum : chart.data) check(datum.ssid, datum.name);
}

void ModelFileParts::endParked() {
    ParkedMark& mark = m_extras.parked.back();
    RecordSlice signal = m_parkedSignals.takeSlice();
    mark.signal = std::move(signal.records);
    mark.markedName = std::move(signal.markedNames.front());
    mark.clients = m_parkedClients.takeSlice().records;
    m_parkedSignals.takeLines();
    m_parkedClients.takeLines();
}

}  // namespace workbench
