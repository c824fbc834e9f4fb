#include <deque>
#include <utility>

#include "workbench/run_file/run_writer.h"
#include "workbench/unit/unit_texts.h"

namespace workbench {

namespace {

// A row is written once each of its values is known to stay, or is gone: no more rows wait than the column that takes
// longest has samples to keep.
class LastPoints final : public RunWriter {
public:
    LastPoints(std::unique_ptr<RunWriter> writer, const std::vector<RunColumn>& columns, std::size_t slotCount)
        : m_writer(std::move(writer)), m_columns(columns), m_slotCount(slotCount), m_kept(columns.size()) {}

    void write(const std::vector<RunRow>& rows) override {
        for (const RunRow& row : rows) add(row);
    }

    void flush() override { m_writer->flush(); }

    void finish(const UnitEnd& end) override {
        while (!m_rows.empty()) writeFirst();
        m_writer->finish(end);
    }

    std::optional<double> keptUntil() const noexcept override { return m_writer->keptUntil(); }

private:
    struct Waiting {
        double time = 0.0;
        std::vector<std::uint64_t> slots;
        std::string texts;
        std::vector<std::uint8_t> isPresent;
        std::size_t undecided = 0;  // values that later ones may push out
    };
    struct Kept {
        std::uint64_t count = 0;
        std::uint64_t oldest = 0;  // number of its row
    };

    void add(const RunRow& row) {
        Waiting& waiting = m_rows.emplace_back();
        waiting.time = row.time;
        waiting.slots.assign(row.slots, row.slots + m_slotCount);
        waiting.texts = row.texts;
        waiting.isPresent.assign(m_columns.size(), 1);
        if (row.isPresent != nullptr) waiting.isPresent.assign(row.isPresent, row.isPresent + m_columns.size());
        for (std::size_t i = 0; i < m_columns.size(); ++i)
            if (waiting.isPresent[i] != 0 && m_columns[i].maxPoints > 0) keep(i, waiting);
        while (!m_rows.empty() && m_rows.front().undecided == 0) writeFirst();
    }

    void keep(std::size_t column, Waiting& waiting) {
        ++waiting.undecided;
        Kept& kept = m_kept[column];
        if (kept.count == 0) kept.oldest = m_written + m_rows.size() - 1;
        if (++kept.count <= m_columns[column].maxPoints) return;
        --kept.count;
        Waiting& oldest = rowAt(kept.oldest);
        oldest.isPresent[column] = 0;
        --oldest.undecided;
        do ++kept.oldest;
        while (rowAt(kept.oldest).isPresent[column] == 0);
    }

    Waiting& rowAt(std::uint64_t number) { return m_rows[static_cast<std::size_t>(number - m_written)]; }

    void writeFirst() {
        const Waiting& row = m_rows.front();
        bool isEmpty = true;
        for (const std::uint8_t isPresent : row.isPresent) isEmpty = isEmpty && isPresent == 0;
        if (!isEmpty) m_writer->write({{row.time, row.slots.data(), row.texts, row.isPresent.data()}});
        m_rows.pop_front();
        ++m_written;
    }

    std::unique_ptr<RunWriter> m_writer;
    const std::vector<RunColumn>& m_columns;
    std::size_t m_slotCount;
    std::deque<Waiting> m_rows;
    std::uint64_t m_written = 0;  // or left out, of all rows
    std::vector<Kept> m_kept;
};

}  // namespace

std::unique_ptr<RunWriter> keepingLastPoints(std::unique_ptr<RunWriter> writer, const std::vector<RunColumn>& columns,
                                             std::size_t slotCount) {
    for (const RunColumn& column : columns)
        if (column.maxPoints > 0) return std::make_unique<LastPoints>(std::move(writer), columns, slotCount);
    return writer;
}

}  // namespace workbench
