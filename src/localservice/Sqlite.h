#pragma once

#include <cstdint>
#include <sqlite3.h>
#include <stdexcept>
#include <string>
#include <string_view>

namespace quillmate::localservice
{

/// A failed database call, with SQLite's own words. It stays inside the store.
class SqliteError : public std::runtime_error
{
public:
    explicit SqliteError(sqlite3* database)
        : std::runtime_error(database == nullptr ? "the database is closed" : sqlite3_errmsg(database))
    {
    }
};

/// One prepared statement for one use.
class SqliteStatement
{
public:
    SqliteStatement(sqlite3* database, std::string_view sql);
    ~SqliteStatement();
    SqliteStatement(const SqliteStatement&) = delete;
    SqliteStatement& operator=(const SqliteStatement&) = delete;

    /// Binds the next parameter; the bytes must live until the last step.
    SqliteStatement& text(std::string_view value);
    SqliteStatement& blob(std::string_view value);
    SqliteStatement& number(std::int64_t value);

    /// True when there is a row to read.
    bool step();
    [[nodiscard]] std::string textAt(int column) const;
    [[nodiscard]] std::int64_t numberAt(int column) const;

private:
    void check(int result) const;

    sqlite3* m_database;
    sqlite3_stmt* m_statement = nullptr;
    int m_parameter = 0;
};

/// Runs statements without results.
void runSql(sqlite3* database, const char* sql);

} // namespace quillmate::localservice
