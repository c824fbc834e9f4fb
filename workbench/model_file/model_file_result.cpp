#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <iterator>
#include <optional>
#include <utility>

#include "memory_host/orvex/values/values.h"
#include "workbench/model_file/model_file_parts.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

// What becomes of the parts that were read: handed over as they come, or kept until the file is whole.
namespace workbench {

// What the sink throws is kept until the file is known to be without a fault.
template <class Action>
void ModelFileParts::atSink(Action action) {
    if (m_refusal) return;
    try {
        action();
    } catch (...) {
        m_refusal = std::current_exception();
    }
}

void ModelFileParts::handOverModel() {
    m_stage = Stage::model;
    atSink([&] { m_sink->takeModel(buildModel()); });
    m_blocks = {};
}

void ModelFileParts::handOver(RecordTable& table) {
    atSink([&] { m_sink->takeRecords(table.kind(), table.takeSlice(), table.lines()); });
    if (m_refusal) table.takeSlice();
}

void ModelFileParts::endHandingOver(RecordTable& table, Stage stage) {
    m_stage = stage;
    if (table.size() > 0 || !table.hasGivenSlice()) handOver(table);
}

RestOfModelFile ModelFileParts::finishRest() {
    if (m_stage == Stage::nothing) handOverModel();
    if (m_stage == Stage::model) endHandingOver(m_signals, Stage::signals);
    if (m_stage == Stage::signals) endHandingOver(m_clients, Stage::clients);
    if (m_refusal) std::rethrow_exception(m_refusal);
    return {m_signals.takeLines(), m_clients.takeLines(), std::move(m_extras), std::nullopt};
}

void ModelFileParts::endRecord(RecordTable& table, Stage stage, std::vector<RecordSlice>& kept) {
    if (table.size() < kSlice) return;
    if (m_stage == stage) handOver(table);
    if (!m_sink) keep(table, kept);
}

// Most fields of a record are as they are in the one before, and are kept once for both.
void ModelFileParts::keep(RecordTable& table, std::vector<RecordSlice>& kept) {
    kept.push_back(table.takeSlice());
    orvex::shareRepeats(kept.back().records.get());
}

RecordSlice ModelFileParts::takeKept(RecordTable& table, std::vector<RecordSlice>& kept) {
    keep(table, kept);
    RecordSlice all;
    std::vector<HvArrayPtr> columns;
    for (RecordSlice& slice : kept) {
        columns.push_back(std::move(slice.records));
        std::ranges::move(slice.markedNames, std::back_inserter(all.markedNames));
    }
    all.records = orvex::joinedColumns(columns);
    return all;
}

ModelFile ModelFileParts::finish() {
    kestrel::Model model = buildModel();
    RecordSlice signals = takeKept(m_signals, m_keptSignals);
    RecordSlice clients = takeKept(m_clients, m_keptClients);
    m_extras.markedNames = std::move(signals.markedNames);
    return {std::move(model),      std::move(signals.records), std::move(clients.records),
            m_signals.takeLines(), m_clients.takeLines(),      std::move(m_extras)};
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
