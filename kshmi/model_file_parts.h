#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "kshmi/json_file.h"
#include "kshmi/model_file.h"

namespace kshmi {

/// Gathers what a model file holds, whatever the order of its keys, and puts the contents together at the
/// end. Throws `Error` at the file's current line for what cannot be.
class ModelFileParts {
public:
    explicit ModelFileParts(const JsonFile& file) : m_file(file) {}

    void setVersion(double version, const std::string& pointer);
    void setName(std::u16string name) {
        m_name = std::move(name);
        m_nameLine = m_file.line();
    }

    void beginBlock();
    kestrel::Block& block() noexcept { return m_blocks.back().block; }
    /// A chart's items must be told apart by identifier, states by path and data by name.
    void checkChart(const std::string& pointer) const;

    void beginSignal();
    void setSignalField(std::size_t field, HvArrayPtr value, const std::string& pointer);
    bool hasSignalField(std::size_t field) const noexcept { return m_signalLines.back().fields.at(field) != 0; }
    void noteSignalField(std::size_t field) { m_signalLines.back().fields.at(field) = m_file.line(); }

    void addClient(HvArrayPtr client, const std::string& pointer);

    ModelFile finish();

private:
    using Row = std::array<HvArrayPtr, ModelFile::kSignalFields>;
    struct PlacedBlock {
        kestrel::Block block;
        std::size_t line = 0;
    };

    kestrel::Model buildModel();
    HvArrayPtr buildSignals();

    const JsonFile& m_file;
    std::u16string m_name;
    std::size_t m_nameLine = 0;
    std::vector<PlacedBlock> m_blocks;
    std::vector<Row> m_rows;
    std::vector<ModelFile::SignalLines> m_signalLines;
    std::vector<HvArrayPtr> m_clients;
};

}  // namespace kshmi
