#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <sqlite3.h>
#include <stdexcept>
#include <string>
#include <string_view>

namespace quillmate
{

/// A failed database call, with SQLite's own words. It stays inside the store.
class SqliteError : public std::runtime_error
{
public:
    explicit SqliteError(sqlite3* database)
        : std::runtime_error(database == nullptr ? "the database is closed" : sqlite3_errmsg(database))
        , m_code(database == nullptr ? SQLITE_MISUSE : sqlite3_errcode(database) & 0xFF)
    {
    }

    /// SQLite's primary result code, such as SQLITE_BUSY.
    [[nodiscard]] int code() const { return m_code; }

private:
    int m_code;
};

/// An open database with the statements that are prepared for it, which are kept for their next use. Closed after its
/// last statement; not safe to use from two threads at a time.
class SqliteConnection
{
public:
    SqliteConnection() = default;
    explicit SqliteConnection(sqlite3* database)
        : m_database(database)
    {
    }
    ~SqliteConnection() { close(); }
    SqliteConnection(SqliteConnection&& other) noexcept;
    SqliteConnection& operator=(SqliteConnection&& other) noexcept;

    /// Null once it is closed.
    [[nodiscard]] sqlite3* get() const { return m_database; }
    void close() noexcept;

private:
    friend class SqliteStatement;
    using Statements = std::map<std::string, sqlite3_stmt*, std::less<>>;

    sqlite3* m_database = nullptr;
    Statements m_statements; // by their text, those that are not in use
};

/// Opens the file, or what a file: URI names, with the flags of sqlite3_open_v2. A call that meets another process's
/// lock waits that long. Throws `SqliteError`.
[[nodiscard]] SqliteConnection openSqlite(const std::string& name, int flags, int busyMilliseconds);

/// One use of a prepared statement of a connection, which must outlive it.
class SqliteStatement
{
public:
    SqliteStatement(SqliteConnection& connection, std::string_view sql);
    ~SqliteStatement();
    SqliteStatement(const SqliteStatement&) = delete;
    SqliteStatement& operator=(const SqliteStatement&) = delete;

    /// Binds the next parameter; the bytes must live until the last step.
    SqliteStatement& text(std::string_view value);
    SqliteStatement& blob(std::string_view value);
    SqliteStatement& number(std::int64_t value);

    /// True when there is a row to read.
    bool step();
    [[nodiscard]] std::string textAt(int column) const { return std::string(bytesAt(column)); }
    /// The same without a copy, up to the next step.
    [[nodiscard]] std::string_view bytesAt(int column) const;
    [[nodiscard]] std::int64_t numberAt(int column) const;

private:
    void check(int result) const;

    SqliteConnection& m_connection;
    SqliteConnection::Statements::node_type m_kept; // What the connection gets back.
    sqlite3_stmt* m_statement = nullptr;
    int m_parameter = 0;
};

/// Runs statements without results.
void runSql(const SqliteConnection& connection, const char* sql);

/// Holds the right to write from its beginning; undone unless it is committed. The connection must outlive it.
class SqliteTransaction
{
public:
    explicit SqliteTransaction(const SqliteConnection& connection);
    ~SqliteTransaction();
    SqliteTransaction(const SqliteTransaction&) = delete;
    SqliteTransaction& operator=(const SqliteTransaction&) = delete;

    void commit();

private:
    const SqliteConnection& m_connection;
};

} // namespace quillmate
