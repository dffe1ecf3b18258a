#include "platform/foundation/settings/SettingsDatabase.h"

#include "base/PrivateFiles.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <tuple>
#include <type_traits>
#include <unistd.h>

namespace quillmate
{
namespace
{

// Stored numbers: never renumber.
enum class StoredKind { Text = 0, Boolean = 1, Data = 2 };

// Keys and values are blobs, so that every byte of them counts and none ends them early. The checkpoints belong to a
// thread of their own. A page that is written twice in one step goes to the log once, when the step ends.
constexpr auto setUp =
    "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL; PRAGMA wal_autocheckpoint=0;"
    "PRAGMA cache_spill=OFF;"
    "CREATE TABLE IF NOT EXISTS settings("
    "key BLOB PRIMARY KEY NOT NULL, kind INTEGER NOT NULL, value BLOB NOT NULL);"
    "CREATE TABLE IF NOT EXISTS emptied(id INTEGER PRIMARY KEY CHECK(id = 0), times INTEGER NOT NULL)";
// Another process holds the file for the microseconds of one write; past this it is stuck.
constexpr int busyMilliseconds = 2000;

SettingsError::Kind kindOf(int code)
{
    switch (code) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return SettingsError::Kind::Damaged;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return SettingsError::Kind::Busy;
    default:
        return SettingsError::Kind::Unavailable;
    }
}

/// What the work on a database gives, or why it failed.
template<typename Work>
Result<std::invoke_result_t<Work>, SettingsError> attempt(Work work)
{
    try {
        if constexpr (std::is_void_v<std::invoke_result_t<Work>>) {
            work();
            return {};
        } else {
            return work();
        }
    } catch (const SqliteError& error) {
        return Failure(SettingsError{kindOf(error.code()), error.what()});
    }
}

SqliteConnection connect(const std::string& name, int flags)
{
    return openSqlite(name, flags | SQLITE_OPEN_NOMUTEX, busyMilliseconds);
}

/// Columns `first` and the next: kind and value.
SettingsValue valueColumns(const SqliteStatement& statement, int first)
{
    std::string bytes = statement.textAt(first + 1);
    switch (static_cast<StoredKind>(statement.numberAt(first))) {
    case StoredKind::Text:
        return bytes;
    case StoredKind::Boolean:
        return bytes == "1";
    case StoredKind::Data:
        break;
    }
    return SettingsData{std::move(bytes)};
}

std::pair<StoredKind, std::string_view> stored(const SettingsValue& value)
{
    if (const auto* text = std::get_if<std::string>(&value)) {
        return {StoredKind::Text, *text};
    }
    if (const auto* boolean = std::get_if<bool>(&value)) {
        return {StoredKind::Boolean, *boolean ? "1" : "0"};
    }
    return {StoredKind::Data, std::get<SettingsData>(value).bytes};
}

void put(SqliteConnection& connection, const std::string& key, StoredKind kind, std::string_view bytes)
{
    SqliteStatement(connection, "INSERT INTO settings(key, kind, value) VALUES(?, ?, ?) ON CONFLICT(key) "
                                "DO UPDATE SET kind = excluded.kind, value = excluded.value")
        .blob(key)
        .number(static_cast<int>(kind))
        .blob(bytes)
        .step();
}

std::int64_t timesEmptiedIn(SqliteConnection& connection)
{
    SqliteStatement statement(connection, "SELECT times FROM emptied");
    return statement.step() ? statement.numberAt(0) : 0;
}

void putTimesEmptied(SqliteConnection& connection, std::int64_t times)
{
    SqliteStatement(connection, "INSERT OR REPLACE INTO emptied(id, times) VALUES(0, ?)").number(times).step();
}

/// For a file: URI.
std::string percentEncodedPath(const std::filesystem::path& file)
{
    std::string encoded;
    for (const char c : file.string()) {
        switch (c) {
        case '%':
            encoded += "%25";
            break;
        case '?':
            encoded += "%3f";
            break;
        case '#':
            encoded += "%23";
            break;
        default:
            encoded += c;
        }
    }
    return encoded;
}

/// The log files that SQLite makes beside it take over the file's mode, so it is right before the first byte.
void makePrivateFile(const std::filesystem::path& file)
{
    std::ignore = makePrivateFolder(file.parent_path()); // Opening the file tells.
    // Only a file of our own making is opened here: closing a descriptor drops the locks that this process has on it.
    if (const int made = ::open(file.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR); made >= 0) {
        ::close(made);
    }
    ::chmod(file.c_str(), S_IRUSR | S_IWUSR);
}

} // namespace

Result<std::unique_ptr<SettingsDatabase>, SettingsError> SettingsDatabase::open(const std::filesystem::path& file)
{
    const auto held = [](SqliteConnection connection, bool readOnly) {
        return std::unique_ptr<SettingsDatabase>(new SettingsDatabase(std::move(connection), readOnly));
    };
    makePrivateFile(file);
    auto opened = attempt([&] {
        SqliteConnection connection = connect(file.string(), SQLITE_OPEN_READWRITE);
        runSql(connection, setUp);
        return held(std::move(connection), false);
    });
    if (opened || opened.error().kind != SettingsError::Kind::Unavailable || !std::filesystem::exists(file)) {
        return opened;
    }
    // No log can be made beside the file: what it holds can still be read, as it is.
    auto readable = attempt([&] {
        SqliteConnection connection =
            connect("file:" + percentEncodedPath(file) + "?immutable=1", SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
        runSql(connection, "SELECT 1 FROM settings LIMIT 1");
        return held(std::move(connection), true);
    });
    return readable ? std::move(readable) : std::move(opened);
}

Result<std::optional<SettingsValue>, SettingsError> SettingsDatabase::read(const std::string& key)
{
    return attempt([&] {
        SqliteStatement statement(m_connection, "SELECT kind, value FROM settings WHERE key = ?");
        return statement.blob(key).step() ? std::optional(valueColumns(statement, 0)) : std::nullopt;
    });
}

Result<std::map<std::string, SettingsValue>, SettingsError> SettingsDatabase::readAll()
{
    return attempt([&] {
        SqliteStatement statement(m_connection, "SELECT key, kind, value FROM settings");
        std::map<std::string, SettingsValue> values;
        while (statement.step()) {
            values.emplace(statement.textAt(0), valueColumns(statement, 1));
        }
        return values;
    });
}

Result<void, SettingsError> SettingsDatabase::write(const std::string& key, const SettingsValue& value,
                                                    std::optional<std::int64_t> during)
{
    const auto [kind, bytes] = stored(value);
    return attempt([&, kind = kind, bytes = bytes] {
        SqliteTransaction transaction(m_connection);
        if (!during || timesEmptiedIn(m_connection) == *during) {
            put(m_connection, key, kind, bytes);
        }
        transaction.commit();
    });
}

Result<void, SettingsError> SettingsDatabase::update(const std::string& key, const SettingsChange& change,
                                                     std::optional<std::int64_t> during)
{
    return attempt([&] {
        SqliteTransaction transaction(m_connection);
        if (!during || timesEmptiedIn(m_connection) == *during) {
            SqliteStatement statement(m_connection, "SELECT value FROM settings WHERE key = ?");
            const auto stored = statement.blob(key).step() ? std::optional(statement.bytesAt(0)) : std::nullopt;
            for (const auto& [changed, bytes] : change(stored)) {
                // The pages of before are overwritten with zeros when they are given up. Given up first, they take the
                // new bytes, where they would go to the log beside them. A value of the same size stays in its pages,
                // of which only those that change are written.
                if (stored && changed == key && stored->size() != bytes.size()) {
                    put(m_connection, changed, StoredKind::Data, {});
                }
                put(m_connection, changed, StoredKind::Data, bytes);
            }
        }
        transaction.commit();
    });
}

Result<std::size_t, SettingsError> SettingsDatabase::size(const std::string& key)
{
    return attempt([&] {
        SqliteStatement statement(m_connection, "SELECT length(value) FROM settings WHERE key = ?");
        return statement.blob(key).step() ? static_cast<std::size_t>(statement.numberAt(0)) : 0;
    });
}

Result<void, SettingsError> SettingsDatabase::remove(const std::string& key)
{
    return attempt([&] { SqliteStatement(m_connection, "DELETE FROM settings WHERE key = ?").blob(key).step(); });
}

Result<std::int64_t, SettingsError> SettingsDatabase::timesEmptied()
{
    return attempt([&] { return timesEmptiedIn(m_connection); });
}

Result<void, SettingsError> SettingsDatabase::empty()
{
    sqlite3_busy_timeout(m_connection.get(), 0);
    auto done = attempt([&] {
        SqliteTransaction transaction(m_connection);
        const std::int64_t before = timesEmptiedIn(m_connection);
        SqliteStatement(m_connection, "DELETE FROM settings").step();
        putTimesEmptied(m_connection, before + 1);
        transaction.commit();
    });
    if (done) {
        std::ignore = attempt([&] { runSql(m_connection, "VACUUM"); }); // The pages that held the values.
    }
    sqlite3_busy_timeout(m_connection.get(), busyMilliseconds);
    return done;
}

bool SettingsDatabase::cutLog()
{
    sqlite3_busy_timeout(m_connection.get(), 0);
    const auto cut = attempt([&] {
        SqliteStatement statement(m_connection, "PRAGMA wal_checkpoint(TRUNCATE)");
        return statement.step() && statement.numberAt(0) == 0; // The first column: whether somebody was in the way.
    });
    sqlite3_busy_timeout(m_connection.get(), busyMilliseconds);
    return cut && cut.value();
}

Result<void, SettingsError> SettingsDatabase::check()
{
    const auto verdict = attempt([&] {
        SqliteStatement statement(m_connection, "PRAGMA quick_check(1)");
        statement.step();
        return statement.textAt(0);
    });
    if (!verdict) {
        return Failure(verdict.error());
    }
    if (verdict.value() != "ok") {
        return Failure(SettingsError{SettingsError::Kind::Damaged, verdict.value()});
    }
    return {};
}

Result<void, SettingsError> SettingsDatabase::checkpoint(const std::filesystem::path& file)
{
    auto done = attempt([&] {
        const SqliteConnection connection = connect(file.string(), SQLITE_OPEN_READWRITE);
        runSql(connection, "PRAGMA synchronous=NORMAL");
        if (sqlite3_wal_checkpoint_v2(connection.get(), nullptr, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr) !=
            SQLITE_OK) {
            throw SqliteError(connection.get());
        }
    });
    return !done && done.error().kind == SettingsError::Kind::Busy ? Result<void, SettingsError>() : done;
}

} // namespace quillmate
