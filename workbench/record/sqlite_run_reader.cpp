#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <unordered_map>

#include "workbench/record/run_readers.h"
#include "workbench/run_file/sqlite.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

std::string hexadecimal(std::string_view bytes) {
    std::string digits;
    for (const char byte : bytes) digits += fmt::format("{:02x}", static_cast<unsigned char>(byte));
    return digits;
}

class SqliteRunReader {
public:
    explicit SqliteRunReader(const std::string& path) : m_database(path, SqliteDatabase::Mode::read) {
        m_run.file = path;
        for (const char* const table : {"runs", "signals", "samples"})
            if (!m_database.hasTable(table))
                throw Error({path}, fmt::format("holds no recorded runs: it has no table \"{}\"", table),
                            ErrorCode::format);
    }

    RecordedRun read(std::optional<int> number) {
        readRun(idOf(number));
        readSignals();
        // Databases of before enumerations had names lack this one.
        if (m_database.hasTable("items")) readItems();
        readSamples();
        return std::move(m_run);
    }

private:
    std::int64_t idOf(std::optional<int> number) {
        SqliteStatement runs = m_database.prepare("SELECT id FROM runs ORDER BY id");
        std::vector<std::int64_t> ids;
        while (runs.step()) ids.push_back(runs.integer(0));
        m_run.runCount = static_cast<int>(ids.size());
        m_run.number = number.value_or(m_run.runCount);
        if (m_run.number < 1 || m_run.number > m_run.runCount)
            throw Error({m_run.file},
                        fmt::format("has no run {}; it holds {}", m_run.number, counted(ids.size(), "run")),
                        ErrorCode::request);
        return ids[static_cast<std::size_t>(m_run.number - 1)];
    }

    void readRun(std::int64_t id) {
        m_id = id;
        SqliteStatement run =
            m_database.prepare("SELECT model, started, start, stop, until, outcome, message FROM runs WHERE id = ?");
        run.bind(1, id).step();
        const auto number = [&](int column) {
            return run.isNull(column) ? std::nullopt : std::optional(run.real(column));
        };
        m_run.model = run.text(0);
        m_run.started = run.text(1);
        m_run.start = number(2);
        m_run.stop = number(3);
        m_run.until = number(4);
        m_run.outcome = run.text(5);
        m_run.message = run.text(6);
    }

    void readSignals() {
        SqliteStatement signals = m_database.prepare(
            "SELECT id, title, kind, unit, uuid, block, port, portName, element FROM signals WHERE run = ? ORDER BY "
            "id");
        signals.bind(1, m_id);
        while (signals.step()) {
            m_columns[signals.integer(0)] = m_run.columns.size();
            RecordedColumn& column = m_run.columns.emplace_back();
            column.title = signals.text(1);
            column.kind = valueKindOf(signals.text(2)).value_or(ValueKind::real);
            column.unit = signals.text(3);
            column.signal = signals.text(4);
            column.block = signals.text(5);
            column.port = static_cast<int>(signals.integer(6));
            column.portName = signals.text(7);
            column.element = signals.text(8);
        }
    }

    void readItems() {
        SqliteStatement items = m_database.prepare(
            "SELECT signal, value, name FROM items WHERE signal IN (SELECT id FROM signals WHERE run = ?) ORDER BY "
            "rowid");
        items.bind(1, m_id);
        while (items.step())
            if (const auto found = m_columns.find(items.integer(0)); found != m_columns.end())
                m_run.columns[found->second].names.push_back({items.integer(1), std::string(items.text(2))});
    }

    void readSamples() {
        SqliteStatement samples = m_database.prepare(
            "SELECT signal, time, value FROM samples WHERE signal IN (SELECT id FROM signals WHERE run = ?) "
            "ORDER BY signal, time, rowid");
        samples.bind(1, m_id);
        while (samples.step()) {
            const auto found = m_columns.find(samples.integer(0));
            if (found != m_columns.end()) readSample(samples, m_run.columns[found->second]);
        }
        // Of a run that was cut off, the last sample says how far it came.
        const bool isCutOff = !m_run.stop;
        for (const RecordedColumn& column : m_run.columns)
            if (isCutOff && !column.times.empty())
                m_run.stop = std::max(column.times.back(), m_run.stop.value_or(column.times.back()));
    }

    static void readSample(const SqliteStatement& samples, RecordedColumn& column) {
        column.times.push_back(samples.real(1));
        if (column.kind == ValueKind::text)
            column.texts.emplace_back(samples.text(2));
        else if (column.kind == ValueKind::binary)
            column.texts.push_back(hexadecimal(samples.text(2)));
        else
            // The database has no other place for what is no number.
            column.values.push_back(samples.isNull(2) ? std::numeric_limits<double>::quiet_NaN() : samples.real(2));
    }

    SqliteDatabase m_database;
    RecordedRun m_run;
    std::int64_t m_id = 0;
    std::unordered_map<std::int64_t, std::size_t> m_columns;
};

}  // namespace

RecordedRun readSqliteRun(const std::string& path, std::optional<int> number) {
    return SqliteRunReader(path).read(number);
}

}  // namespace workbench
