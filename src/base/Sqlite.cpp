#include "base/Sqlite.h"

#include <utility>

namespace quillmate
{

SqliteConnection::SqliteConnection(SqliteConnection&& other) noexcept
    : m_database(std::exchange(other.m_database, nullptr))
    , m_statements(std::exchange(other.m_statements, {}))
{
}

SqliteConnection& SqliteConnection::operator=(SqliteConnection&& other) noexcept
{
    if (this != &other) {
        close();
        m_database = std::exchange(other.m_database, nullptr);
        m_statements = std::exchange(other.m_statements, {});
    }
    return *this;
}

void SqliteConnection::close() noexcept
{
    for (const auto& [text, statement] : m_statements) {
        sqlite3_finalize(statement);
    }
    m_statements.clear();
    sqlite3_close(std::exchange(m_database, nullptr));
}

SqliteConnection openSqlite(const std::string& name, int flags, int busyMilliseconds)
{
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(name.c_str(), &opened, flags, nullptr);
    SqliteConnection connection(opened);
    if (result != SQLITE_OK) {
        throw SqliteError(opened);
    }
    sqlite3_busy_timeout(opened, busyMilliseconds);
    return connection;
}

SqliteStatement::SqliteStatement(SqliteConnection& connection, std::string_view sql)
    : m_connection(connection)
{
    const auto found = connection.m_statements.find(sql);
    if (found == connection.m_statements.end()) {
        check(sqlite3_prepare_v3(connection.get(), sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT,
                                 &m_statement, nullptr));
        // One that is in use already is not there either; of two, the first to end is kept.
        SqliteConnection::Statements made;
        made.emplace(sql, m_statement);
        m_kept = made.extract(made.begin());
    } else {
        m_statement = found->second;
        m_kept = connection.m_statements.extract(found);
    }
}

SqliteStatement::~SqliteStatement()
{
    sqlite3_reset(m_statement);
    sqlite3_clear_bindings(m_statement);
    if (!m_connection.m_statements.insert(std::move(m_kept)).inserted) {
        sqlite3_finalize(m_statement);
    }
}

void SqliteStatement::check(int result) const
{
    if (result != SQLITE_OK) {
        throw SqliteError(m_connection.get());
    }
}

SqliteStatement& SqliteStatement::text(std::string_view value)
{
    // A null pointer would bind NULL, so an empty view binds the empty text.
    const char* bytes = value.empty() ? "" : value.data();
    check(sqlite3_bind_text64(m_statement, ++m_parameter, bytes, value.size(), SQLITE_STATIC, SQLITE_UTF8));
    return *this;
}

SqliteStatement& SqliteStatement::blob(std::string_view value)
{
    const char* bytes = value.empty() ? "" : value.data(); // As above.
    check(sqlite3_bind_blob64(m_statement, ++m_parameter, bytes, value.size(), SQLITE_STATIC));
    return *this;
}

SqliteStatement& SqliteStatement::number(std::int64_t value)
{
    check(sqlite3_bind_int64(m_statement, ++m_parameter, value));
    return *this;
}

bool SqliteStatement::step()
{
    const int result = sqlite3_step(m_statement);
    if (result != SQLITE_ROW && result != SQLITE_DONE) {
        throw SqliteError(m_connection.get());
    }
    return result == SQLITE_ROW;
}

std::string_view SqliteStatement::bytesAt(int column) const
{
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(m_statement, column));
    const int size = sqlite3_column_bytes(m_statement, column);
    return bytes == nullptr ? std::string_view() : std::string_view(bytes, static_cast<std::size_t>(size));
}

std::int64_t SqliteStatement::numberAt(int column) const
{
    return sqlite3_column_int64(m_statement, column);
}

void runSql(const SqliteConnection& connection, const char* sql)
{
    if (connection.get() == nullptr || sqlite3_exec(connection.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw SqliteError(connection.get());
    }
}

SqliteTransaction::SqliteTransaction(const SqliteConnection& connection)
    : m_connection(connection)
{
    runSql(m_connection, "BEGIN IMMEDIATE");
}

SqliteTransaction::~SqliteTransaction()
{
    if (sqlite3_get_autocommit(m_connection.get()) == 0) { // Some failures have undone it already.
        sqlite3_exec(m_connection.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void SqliteTransaction::commit()
{
    runSql(m_connection, "COMMIT");
}

} // namespace quillmate
