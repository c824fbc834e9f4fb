#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/json/json_file.h"
#include "workbench/model_file/model_file.h"
#include "workbench/model_file/record_table.h"

namespace workbench {

/// Gathers what a model file holds, whatever the order of its keys, and puts the contents together at the
/// end. Throws `Error` at the file's current line for what cannot be.
class ModelFileParts {
public:
    /// `faults` may be null: the first one is thrown then.
    ModelFileParts(const JsonFile& file, const FaultSink* faults)
        : m_file(file),
          m_faults(faults),
          m_signals(file, RecordKind::signal),
          m_clients(file, RecordKind::client),
          m_parkedSignals(file, RecordKind::signal),
          m_parkedClients(file, RecordKind::client) {}

    void setVersion(double version, const std::string& pointer);
    void setName(std::u16string name) {
        m_name = std::move(name);
        m_nameLine = m_file.line();
    }

    void beginOrigin() { m_extras.origin.emplace(); }
    Origin& origin() noexcept { return *m_extras.origin; }
    /// A text of the origin or, for the keys of a gone block, of the last one.
    std::string& originText(std::string_view key);

    void checkOrigin(const std::string& pointer) const;

    void beginBlock();
    kestrel::Block& block() noexcept { return m_blocks.back().block; }
    void setBlockText(std::string_view key, std::u16string text);
    bool isLenient() const noexcept { return m_faults != nullptr; }
    /// What is wrong with a block, a chart's items or a value.
    void tell(const Error& fault) const;
    /// A chart's items must be told apart by identifier, states by path and data by name.
    void checkChart(const std::string& pointer) const;

    RecordTable& records(RecordKind kind) noexcept { return kind == RecordKind::signal ? m_signals : m_clients; }

    void beginParked() { m_extras.parked.emplace_back(); }
    ParkedMark& parked() noexcept { return m_extras.parked.back(); }
    /// Of the parked mark that is being read.
    RecordTable& parkedRecords(RecordKind kind) noexcept {
        return kind == RecordKind::signal ? m_parkedSignals : m_parkedClients;
    }
    void endParked();

    ModelFile finish();

private:
    struct PlacedBlock {
        kestrel::Block block;
        std::size_t line = 0;
    };

    kestrel::Model buildModel();

    const JsonFile& m_file;
    const FaultSink* m_faults;
    std::u16string m_name;
    std::size_t m_nameLine = 0;
    std::vector<PlacedBlock> m_blocks;
    RecordTable m_signals;
    RecordTable m_clients;
    RecordTable m_parkedSignals;
    RecordTable m_parkedClients;
    ModelExtras m_extras;
};

}  // namespace workbench
