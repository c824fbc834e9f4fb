#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "workbench/json/json_file.h"
#include "workbench/model_file/model_file.h"
#include "workbench/model_file/model_file_shapes.h"
#include "workbench/model_file/record_table.h"

namespace workbench {

/// Gathers what a model file holds, whatever the order of its keys, and puts the contents together at the
/// end. Throws `Error` at the file's current line and pointer for what cannot be.
class ModelFileParts {
public:
    /// `faults` may be null: the first one is thrown then; so may `sink`: everything is kept then. `pointer` tells
    /// which value is being read.
    ModelFileParts(const JsonFile& file, const FaultSink* faults, ModelSink* sink, std::function<std::string()> pointer)
        : m_file(file),
          m_faults(faults),
          m_sink(sink),
          m_pointer(std::move(pointer)),
          m_signals(file, RecordKind::signal),
          m_clients(file, RecordKind::client),
          m_parkedSignals(file, RecordKind::signal),
          m_parkedClients(file, RecordKind::client) {}

    /// An object or array begins or has ended; what it must hold is there then.
    void begin(shapes::Place place);
    void end(shapes::Place place);
    /// The value of one of its keys, or one of its elements.
    void setText(shapes::Place place, std::string_view key, std::u16string text);
    void setNumber(shapes::Place place, double value);
    void setFlag(shapes::Place place, bool value) {
        (place == shapes::Place::origin ? m_extras.origin->locals : m_extras.parked.back().isUnsure) = value;
    }
    /// Takes a record's field. A fault in it is told or thrown.
    void setField(shapes::Place record, std::size_t field, HvArrayPtr value);
    /// The table of the records of such a place.
    RecordTable& records(shapes::Place record) noexcept;

    /// What was kept, with a sink nothing but the rest.
    ModelFile finish();
    RestOfModelFile finishRest();

private:
    struct PlacedBlock {
        kestrel::Block block;
        std::size_t line = 0;
    };

    kestrel::Block& block() noexcept { return m_blocks.back().block; }
    void setBlockText(std::string_view key, std::u16string text);
    void setParkedText(std::string_view key, std::u16string text);
    std::string& originText(std::string_view key);
    std::uint32_t ssidOf(double value) const;
    void checkOrigin() const;
    void checkChart() const;
    void endParked();
    kestrel::Model buildModel();
    /// How much of the model the sink has, in this order.
    enum class Stage : std::uint8_t { nothing, model, signals, clients };
    void handOverModel();
    void handOver(RecordTable& table);
    void endHandingOver(RecordTable& table, Stage stage);
    void endRecord(RecordTable& table, Stage stage, std::vector<RecordSlice>& kept);
    static void keep(RecordTable& table, std::vector<RecordSlice>& kept);
    static RecordSlice takeKept(RecordTable& table, std::vector<RecordSlice>& kept);
    template <class Action>
    void atSink(Action action);
    [[noreturn]] void fail(const std::string& text) const { m_file.fail(m_pointer(), text); }
    void tell(const Error& fault) const;
    void tell(const std::string& text) const {
        tell(Error({m_file.path(), m_file.line(), m_pointer()}, text, ErrorCode::format));
    }

    const JsonFile& m_file;
    const FaultSink* m_faults;
    ModelSink* m_sink;
    std::exception_ptr m_refusal;  ///< what the sink has thrown
    Stage m_stage = Stage::nothing;
    bool m_hasBlocks = false;
    std::function<std::string()> m_pointer;
    std::u16string m_name;
    std::size_t m_nameLine = 0;
    std::vector<PlacedBlock> m_blocks;
    RecordTable m_signals;
    RecordTable m_clients;
    std::vector<RecordSlice> m_keptSignals, m_keptClients;  ///< without a sink, all but the last ones
    RecordTable m_parkedSignals;
    RecordTable m_parkedClients;
    ModelExtras m_extras;
};

}  // namespace workbench
