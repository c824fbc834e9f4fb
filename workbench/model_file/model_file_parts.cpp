#include "workbench/model_file/model_file_parts.h"

#include <fmt/format.h>

#include <set>
#include <string_view>
#include <utility>

#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

constexpr double kFormatVersion = 1.0;

}  // namespace

void ModelFileParts::setVersion(double version, const std::string& pointer) {
    if (version != kFormatVersion)
        m_file.fail(pointer, "this program reads version 1 of the format only; save the model in that version");
}

void ModelFileParts::beginBlock() { m_blocks.push_back({{}, m_file.line()}); }

std::string& ModelFileParts::originText(std::string_view key) {
    if (key == "kind") return m_extras.origin->kind;
    if (key == "version") return m_extras.origin->version;
    if (key == "file") return m_extras.origin->file;
    if (key == "hash") return m_extras.origin->hash;
    GoneBlock& block = m_extras.origin->gone.back();
    return key == "source" ? block.source : block.eid;
}

void ModelFileParts::checkOrigin(const std::string& pointer) const {
    for (const char* const kind : {"ssd", "ssp", "fmi", "fmu"})
        if (m_extras.origin->kind == kind) return;
    m_file.fail(pointer + "/kind", "a model comes from ssd, ssp, fmi or fmu; correct it");
}

void ModelFileParts::setBlockText(std::string_view key, std::u16string text) {
    if (key == "path")
        block().path = std::move(text);
    else if (key == "eid")
        block().eid = toUtf8(text);
    else
        block().source = toUtf8(text);
}

void ModelFileParts::tell(const Error& fault) const {
    if (!m_faults) throw Error(fault);
    (*m_faults)(fault);
}

void ModelFileParts::checkChart(const std::string& pointer) const {
    const kestrel::Chart& chart = *m_blocks.back().block.chart;
    std::set<std::uint32_t> identifiers;
    std::set<std::u16string_view> texts;
    const auto refuse = [&](const std::string& text) {
        tell(Error({m_file.path(), m_file.line(), pointer}, text, ErrorCode::format));
    };
    const auto check = [&](std::uint32_t ssid, std::u16string_view text) {
        if (text.empty()) return refuse("a state needs a path and a datum a name");
        if (!identifiers.insert(ssid).second)
            refuse("the SSID " + std::to_string(ssid) + " appears twice; give each item its own");
        if (!texts.insert(text).second) refuse(inQuotes(text) + " appears twice; give each item its own name");
    };
    for (const kestrel::ChartState& state : chart.states) check(state.ssid, state.path);
    texts.clear();
    for (const kestrel::ChartData& datum : chart.data) check(datum.ssid, datum.name);
}

void ModelFileParts::endParked() {
    ParkedMark& mark = parked();
    mark.signal = m_parkedSignals.build();
    mark.markedName = std::move(m_parkedSignals.takeMarkedNames().front());
    mark.clients = m_parkedClients.build();
    m_parkedSignals.takeLines();
    m_parkedClients.takeLines();
}

ModelFile ModelFileParts::finish() {
    m_extras.markedNames = m_signals.takeMarkedNames();
    kestrel::Model model = buildModel();
    HvArrayPtr signals = m_signals.build();
    HvArrayPtr clients = m_clients.build();
    return {std::move(model),      std::move(signals),    std::move(clients),
            m_signals.takeLines(), m_clients.takeLines(), std::move(m_extras)};
}

kestrel::Model ModelFileParts::buildModel() {
    const auto refusal = [&](std::size_t line, const std::string& pointer, const kestrel::ModelError& error) {
        return Error({m_file.path(), line, pointer}, fmt::format("{} Change it.", printableMessage(error.what())),
                     ErrorCode::model);
    };
    std::optional<kestrel::Model> model;
    try {
        model.emplace(m_name);
    } catch (const kestrel::ModelError& error) {
        throw refusal(m_nameLine, "/name", error);
    }
    for (std::size_t i = 0; i < m_blocks.size(); ++i) {
        kestrel::Block& block = m_blocks[i].block;
        const bool isPathBad = !kestrel::isBlockPath(block.path) || model->findByPath(block.path);
        try {
            model->add(std::move(block));
        } catch (const kestrel::ModelError& error) {
            tell(refusal(m_blocks[i].line, fmt::format("/blocks/{}/{}", i, isPathBad ? "path" : "eid"), error));
        }
    }
    return std::move(*model);
}

}  // namespace workbench
