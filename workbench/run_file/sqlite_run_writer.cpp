#include <fmt/chrono.h>
#include <fmt/format.h>

#include <bit>
#include <chrono>
#include <ctime>
#include <limits>

#include "workbench/run_file/run_writer.h"
#include "workbench/run_file/sqlite.h"
#include "workbench/text/error.h"
#include "workbench/unit/unit_texts.h"

namespace workbench {

namespace {

constexpr const char* kTables = R"(
CREATE TABLE IF NOT EXISTS runs (
  id INTEGER PRIMARY KEY, model TEXT, unit TEXT, hash TEXT, fmiVersion TEXT, started TEXT,
  start REAL, until REAL, step REAL, stop REAL, outcome TEXT, message TEXT);
CREATE TABLE IF NOT EXISTS signals (
  id INTEGER PRIMARY KEY, run INTEGER NOT NULL REFERENCES runs, title TEXT, kind TEXT, unit TEXT, uuid TEXT,
  block TEXT, port INTEGER, portName TEXT, element TEXT, variable TEXT, decimation INTEGER, maxPoints INTEGER);
CREATE TABLE IF NOT EXISTS items (signal INTEGER NOT NULL REFERENCES signals, value INTEGER NOT NULL, name TEXT);
CREATE TABLE IF NOT EXISTS samples (signal INTEGER NOT NULL REFERENCES signals, time REAL NOT NULL, value);
CREATE INDEX IF NOT EXISTS samplesOfSignal ON samples (signal, time);
)";

class SqliteRunWriter final : public RunWriter {
public:
    SqliteRunWriter(const RunTarget& target, const RunHead& head, const std::vector<RunColumn>& columns)
        : m_database(target.path, SqliteDatabase::Mode::write), m_columns(columns) {
        m_database.execute("BEGIN IMMEDIATE");
        m_database.execute(kTables);
        addRun(head);
        for (const RunColumn& column : columns) addColumn(column);
        m_insert.emplace(m_database.prepare("INSERT INTO samples VALUES (?, ?, ?)"));
        flush();
    }

    void write(const std::vector<RunRow>& rows) override {
        if (!m_database.isInTransaction()) m_database.execute("BEGIN IMMEDIATE");
        for (const RunRow& row : rows) writeRow(row);
    }

    void flush() override {
        if (m_database.isInTransaction()) m_database.execute("COMMIT");
        m_keptUntil = m_time;
    }

    void finish(const UnitEnd& end) override {
        if (!m_database.isInTransaction()) m_database.execute("BEGIN IMMEDIATE");
        m_database.prepare("UPDATE runs SET stop = ?, outcome = ?, message = ? WHERE id = ?")
            .bind(1, end.time)
            .bind(2, std::string_view(nameOf(end.kind)))
            .bind(3, std::string_view(end.message))
            .bind(4, m_run)
            .run();
        flush();
    }

    std::optional<double> keptUntil() const noexcept override { return m_keptUntil; }

private:
    void writeRow(const RunRow& row) {
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            if (row.isPresent != nullptr && row.isPresent[i] == 0) continue;
            m_insert->bind(1, m_ids[i]).bind(2, row.time);
            bindValue(m_columns[i], row.slots[m_columns[i].slot], row.texts);
            m_insert->run();
        }
        m_time = row.time;
    }

    void addRun(const RunHead& head) {
        const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
        m_database
            .prepare(
                "INSERT INTO runs (model, unit, hash, fmiVersion, started, start, until, step, outcome) "
                "VALUES (?, ?, ?, ?, ?, ?, ?, ?, 'running')")
            .bind(1, std::string_view(head.model))
            .bind(2, std::string_view(head.unit))
            .bind(3, std::string_view(head.hash))
            .bind(4, std::string_view(head.fmiVersion))
            .bind(5, std::string_view(fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(now))))
            .bind(6, head.start)
            .bind(7, head.until)
            .bind(8, head.step)
            .run();
        m_run = m_database.lastRow();
    }

    void addColumn(const RunColumn& column) {
        m_database
            .prepare(
                "INSERT INTO signals (run, title, kind, unit, uuid, block, port, portName, element, variable, "
                "decimation, maxPoints) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")
            .bind(1, m_run)
            .bind(2, std::string_view(column.title))
            .bind(3, std::string_view(nameOf(column.kind)))
            .bind(4, std::string_view(column.unit))
            .bind(5, std::string_view(column.signal))
            .bind(6, std::string_view(column.block))
            .bind(7, column.port)
            .bind(8, std::string_view(column.portName))
            .bind(9, std::string_view(column.element))
            .bind(10, std::string_view(column.variable))
            .bind(11, static_cast<std::int64_t>(column.decimation))
            .bind(12, static_cast<std::int64_t>(column.maxPoints))
            .run();
        m_ids.push_back(m_database.lastRow());
        for (const ValueName& item : column.names) addItem(m_ids.back(), item);
    }

    void addItem(std::int64_t signal, const ValueName& item) {
        m_database.prepare("INSERT INTO items VALUES (?, ?, ?)")
            .bind(1, signal)
            .bind(2, item.value)
            .bind(3, std::string_view(item.name))
            .run();
    }

    void bindValue(const RunColumn& column, std::uint64_t slot, std::string_view texts) {
        constexpr int kValue = 3;
        constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
        if (column.kind == ValueKind::real)
            m_insert->bind(kValue, std::bit_cast<double>(slot));
        else if (column.kind == ValueKind::text)
            m_insert->bind(kValue, utf8At(texts, slot, m_mended));
        else if (column.kind == ValueKind::binary)
            m_insert->bindBytes(kValue, textAt(texts, slot));
        else if (column.isUnsigned && slot > kMost)
            m_insert->bind(kValue, std::string_view(std::to_string(slot)));
        else
            m_insert->bind(kValue, static_cast<std::int64_t>(slot));
    }

    SqliteDatabase m_database;
    const std::vector<RunColumn>& m_columns;
    std::optional<SqliteStatement> m_insert;
    std::string m_mended;
    std::optional<double> m_time;  // of the last row
    std::optional<double> m_keptUntil;
    std::int64_t m_run = 0;
    std::vector<std::int64_t> m_ids;
};

}  // namespace

std::unique_ptr<RunWriter> makeSqliteWriter(const RunTarget& target, const RunHead& head,
                                            const std::vector<RunColumn>& columns) {
    return std::make_unique<SqliteRunWriter>(target, head, columns);
}

}  // namespace workbench
