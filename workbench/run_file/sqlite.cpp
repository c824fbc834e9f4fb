#include "workbench/run_file/sqlite.h"

#include <sqlite3.h>

#include <filesystem>
#include <system_error>
#include <utility>

#include "workbench/text/error.h"

namespace workbench {

namespace {

constexpr int kLockPatience = 5000;  // milliseconds

bool hasFolder(const std::string& path) {
    std::error_code ignored;
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    return folder.empty() || std::filesystem::is_directory(folder, ignored);
}

[[noreturn]] void fail(const std::string& path, sqlite3* database, int code) {
    if (code == SQLITE_BUSY || code == SQLITE_LOCKED)
        throw Error({path}, "another program is writing to the database; wait until it is done, or name another file",
                    ErrorCode::inUse);
    if (code == SQLITE_NOTADB) throw Error({path}, "is not a database; give another name", ErrorCode::file);
    if (code == SQLITE_CANTOPEN && !hasFolder(path))
        throw Error({path}, "cannot be made: its folder is not there; make it first", ErrorCode::file);
    const std::string text = database != nullptr ? sqlite3_errmsg(database) : sqlite3_errstr(code);
    throw Error({path}, "the database reports an error: " + text, ErrorCode::file);
}

}  // namespace

void SqliteStatement::Finalizer::operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }

SqliteStatement& SqliteStatement::checked(int code) {
    if (code != SQLITE_OK) fail(m_path, sqlite3_db_handle(m_statement.get()), code);
    return *this;
}

SqliteStatement& SqliteStatement::bind(int position, std::int64_t value) {
    return checked(sqlite3_bind_int64(m_statement.get(), position, value));
}

SqliteStatement& SqliteStatement::bind(int position, double value) {
    return checked(sqlite3_bind_double(m_statement.get(), position, value));
}

SqliteStatement& SqliteStatement::bind(int position, std::string_view text) {
    const char* const start = text.data() != nullptr ? text.data() : "";
    return checked(sqlite3_bind_text64(m_statement.get(), position, start, text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
}

SqliteStatement& SqliteStatement::bindBytes(int position, std::string_view bytes) {
    const char* const start = bytes.data() != nullptr ? bytes.data() : "";
    return checked(sqlite3_bind_blob64(m_statement.get(), position, start, bytes.size(), SQLITE_TRANSIENT));
}

bool SqliteStatement::step() {
    const int code = sqlite3_step(m_statement.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE) fail(m_path, sqlite3_db_handle(m_statement.get()), code);
    return code == SQLITE_ROW;
}

void SqliteStatement::run() {
    while (step()) {
    }
    checked(sqlite3_reset(m_statement.get()));
}

bool SqliteStatement::isNull(int column) const { return sqlite3_column_type(m_statement.get(), column) == SQLITE_NULL; }

std::int64_t SqliteStatement::integer(int column) const { return sqlite3_column_int64(m_statement.get(), column); }

double SqliteStatement::real(int column) const { return sqlite3_column_double(m_statement.get(), column); }

std::string_view SqliteStatement::text(int column) const {
    const void* const start = sqlite3_column_blob(m_statement.get(), column);
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(m_statement.get(), column));
    return start != nullptr ? std::string_view(static_cast<const char*>(start), size) : std::string_view();
}

void SqliteDatabase::Closer::operator()(sqlite3* database) const noexcept { sqlite3_close(database); }

SqliteDatabase::SqliteDatabase(std::string path, Mode mode) : m_path(std::move(path)) {
    // Also who reads takes back what a recording that was cut off left half-written, where the file can be written.
    const int flags = mode == Mode::read ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    sqlite3* database = nullptr;
    const int code = sqlite3_open_v2(m_path.c_str(), &database, flags, nullptr);
    m_database.reset(database);
    if (code != SQLITE_OK) fail(m_path, database, code);
    sqlite3_busy_timeout(database, kLockPatience);
}

void SqliteDatabase::execute(const char* statements) {
    const int code = sqlite3_exec(m_database.get(), statements, nullptr, nullptr, nullptr);
    if (code != SQLITE_OK) fail(m_path, m_database.get(), code);
}

SqliteStatement SqliteDatabase::prepare(std::string_view statement) {
    sqlite3_stmt* prepared = nullptr;
    const int code =
        sqlite3_prepare_v2(m_database.get(), statement.data(), static_cast<int>(statement.size()), &prepared, nullptr);
    if (code != SQLITE_OK) fail(m_path, m_database.get(), code);
    return {prepared, m_path};
}

std::int64_t SqliteDatabase::lastRow() const { return sqlite3_last_insert_rowid(m_database.get()); }

bool SqliteDatabase::hasTable(const std::string& name) {
    return prepare("SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = ?").bind(1, name).step();
}

bool SqliteDatabase::isInTransaction() const { return sqlite3_get_autocommit(m_database.get()) == 0; }

bool SqliteDatabase::isDatabase(std::string_view bytes) noexcept {
    return bytes.starts_with(std::string_view("SQLite format 3\0", 16));
}

}  // namespace workbench
