#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

/// SQLite with owners and errors.
namespace workbench {

class SqliteStatement {
public:
    /// Values of parameters, 1-based. Texts and bytes are copied.
    SqliteStatement& bind(int position, std::int64_t value);
    SqliteStatement& bind(int position, int value) { return bind(position, std::int64_t{value}); }
    SqliteStatement& bind(int position, double value);
    SqliteStatement& bind(int position, std::string_view text);
    SqliteStatement& bindBytes(int position, std::string_view bytes);

    /// Whether there is a row (another one). Throws `Error`.
    bool step();
    /// Runs it, for what gives no rows, and makes it ready for the next time. Throws `Error`.
    void run();

    /// Values of the row's columns, 0-based.
    bool isNull(int column) const;
    std::int64_t integer(int column) const;
    double real(int column) const;
    /// Also of bytes; valid until the next step.
    std::string_view text(int column) const;

private:
    friend class SqliteDatabase;
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const noexcept;
    };
    SqliteStatement(sqlite3_stmt* statement, std::string path) : m_statement(statement), m_path(std::move(path)) {}
    SqliteStatement& checked(int code);

    std::unique_ptr<sqlite3_stmt, Finalizer> m_statement;
    std::string m_path;
};

/// A database in a file. Throws `Error`, with the file, for whatever fails.
class SqliteDatabase {
public:
    enum class Mode : std::uint8_t { read, write };
    /// `write` makes a file that is not there. Another program may hold the file for some seconds.
    SqliteDatabase(std::string path, Mode mode);

    void execute(const char* statements);
    SqliteStatement prepare(std::string_view statement);
    /// Of the row that was inserted last.
    std::int64_t lastRow() const;
    bool hasTable(const std::string& name);
    /// Whether a transaction is open.
    bool isInTransaction() const;

    /// Whether bytes begin as a database does.
    static bool isDatabase(std::string_view bytes) noexcept;

private:
    struct Closer {
        void operator()(sqlite3* database) const noexcept;
    };
    std::string m_path;
    std::unique_ptr<sqlite3, Closer> m_database;
};

}  // namespace workbench
