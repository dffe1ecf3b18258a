#include "localservice/Sqlite.h"

namespace quillmate::localservice
{

SqliteStatement::SqliteStatement(sqlite3* database, std::string_view sql)
    : m_database(database)
{
    check(sqlite3_prepare_v2(database, sql.data(), static_cast<int>(sql.size()), &m_statement, nullptr));
}

SqliteStatement::~SqliteStatement()
{
    sqlite3_finalize(m_statement);
}

void SqliteStatement::check(int result) const
{
    if (result != SQLITE_OK) {
        throw SqliteError(m_database);
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
    check(sqlite3_bind_blob64(m_statement, ++m_parameter, value.data(), value.size(), SQLITE_STATIC));
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
        throw SqliteError(m_database);
    }
    return result == SQLITE_ROW;
}

std::string SqliteStatement::textAt(int column) const
{
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(m_statement, column));
    const int size = sqlite3_column_bytes(m_statement, column);
    return bytes == nullptr ? std::string() : std::string(bytes, static_cast<std::size_t>(size));
}

std::int64_t SqliteStatement::numberAt(int column) const
{
    return sqlite3_column_int64(m_statement, column);
}

void runSql(sqlite3* database, const char* sql)
{
    if (sqlite3_exec(database, sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw SqliteError(database);
    }
}

} // namespace quillmate::localservice
