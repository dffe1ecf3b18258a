#include "platform/foundation/SettingsDatabase.h"

#include "platform/foundation/ApplicationFolders.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace quillmate
{
namespace
{

// Stored numbers: never renumber.
enum class StoredKind { Text = 0, Boolean = 1, Data = 2 };

// Keys and values are blobs, so that every byte of them counts and none ends them early.
constexpr auto schema = "CREATE TABLE IF NOT EXISTS settings("
                        "key BLOB PRIMARY KEY NOT NULL, kind INTEGER NOT NULL, value BLOB NOT NULL)";
// Another process holds the file for the microseconds of one write; past this it is stuck.
constexpr int busyMilliseconds = 2000;

SettingsError errorOf(sqlite3* connection, int code)
{
    const int primary = code & 0xFF;
    const bool damaged = primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB;
    return {damaged ? SettingsError::Kind::Damaged : SettingsError::Kind::Unavailable,
            connection ? sqlite3_errmsg(connection) : sqlite3_errstr(code)};
}

std::string blobColumn(sqlite3_stmt* statement, int column)
{
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
    return size == 0 ? std::string()
                     : std::string(static_cast<const char*>(sqlite3_column_blob(statement, column)), size);
}

/// Columns `first` and the next: kind and value.
SettingsValue valueColumns(sqlite3_stmt* statement, int first)
{
    std::string bytes = blobColumn(statement, first + 1);
    switch (static_cast<StoredKind>(sqlite3_column_int(statement, first))) {
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

int bindBytes(sqlite3_stmt* statement, int index, std::string_view bytes)
{
    // A null pointer would bind NULL; an empty text needs an address.
    return sqlite3_bind_blob64(statement, index, bytes.empty() ? "" : bytes.data(), bytes.size(), SQLITE_STATIC);
}

int openConnection(const std::string& name, int flags, sqlite3** connection)
{
    const int code = sqlite3_open_v2(name.c_str(), connection, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    sqlite3_extended_result_codes(*connection, 1);
    sqlite3_busy_timeout(*connection, busyMilliseconds);
    return code;
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

int execute(sqlite3* connection, const char* text)
{
    return sqlite3_exec(connection, text, nullptr, nullptr, nullptr);
}

} // namespace

Result<std::unique_ptr<SettingsDatabase>, SettingsError> SettingsDatabase::open(const std::filesystem::path& file)
{
    using Opened = Result<std::unique_ptr<SettingsDatabase>, SettingsError>;
    std::unique_ptr<SettingsDatabase> database(new SettingsDatabase);
    // The log files that SQLite makes beside it take over the file's mode.
    if (makePrivateFolder(file.parent_path())) {
        // Only a file of our own making is opened here: closing a descriptor drops the locks that this process has on
        // it.
        if (const int made = ::open(file.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR);
            made >= 0) {
            ::close(made);
        }
        ::chmod(file.c_str(), S_IRUSR | S_IWUSR);
    }
    int code = openConnection(file.string(), SQLITE_OPEN_READWRITE, &database->m_connection);
    // The checkpoints belong to a thread of their own.
    for (const char* text :
         {"PRAGMA journal_mode=WAL", "PRAGMA synchronous=NORMAL", "PRAGMA wal_autocheckpoint=0", schema}) {
        code = code == SQLITE_OK ? execute(database->m_connection, text) : code;
    }
    if (code == SQLITE_OK) {
        return Opened(std::move(database));
    }
    SettingsError error = errorOf(database->m_connection, code);
    // One that is only busy will be free again.
    if (error.kind == SettingsError::Kind::Unavailable && (code & 0xFF) != SQLITE_BUSY &&
        std::filesystem::exists(file)) {
        // No log can be made beside the file: what it holds can still be read, as it is.
        sqlite3_close(std::exchange(database->m_connection, nullptr));
        const int flags = SQLITE_OPEN_READONLY | SQLITE_OPEN_URI;
        if (openConnection("file:" + percentEncodedPath(file) + "?immutable=1", flags, &database->m_connection) ==
                SQLITE_OK &&
            execute(database->m_connection, "SELECT 1 FROM settings LIMIT 1") == SQLITE_OK) {
            database->m_readOnly = true;
            return Opened(std::move(database));
        }
    }
    return Opened::failure(std::move(error));
}

SettingsDatabase::~SettingsDatabase()
{
    for (sqlite3_stmt* statement : {m_select, m_upsert, m_delete}) {
        sqlite3_finalize(statement);
    }
    sqlite3_close(m_connection);
}

SettingsError SettingsDatabase::lastError() const
{
    return errorOf(m_connection, sqlite3_extended_errcode(m_connection));
}

SettingsDatabase::Failure SettingsDatabase::prepare(sqlite3_stmt*& statement, const char* text)
{
    if (!statement &&
        sqlite3_prepare_v3(m_connection, text, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) != SQLITE_OK) {
        return lastError();
    }
    return std::nullopt;
}

SettingsDatabase::Failure SettingsDatabase::step(sqlite3_stmt* statement)
{
    Failure failure;
    if (sqlite3_step(statement) != SQLITE_DONE) {
        failure = lastError();
    }
    sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
    return failure;
}

Result<std::optional<SettingsValue>, SettingsError> SettingsDatabase::read(const std::string& key)
{
    using Read = Result<std::optional<SettingsValue>, SettingsError>;
    if (auto failure = prepare(m_select, "SELECT kind, value FROM settings WHERE key = ?")) {
        return Read::failure(std::move(*failure));
    }
    bindBytes(m_select, 1, key);
    const int code = sqlite3_step(m_select);
    std::optional<SettingsValue> value;
    std::optional<SettingsError> failure;
    if (code == SQLITE_ROW) {
        value = valueColumns(m_select, 0);
    } else if (code != SQLITE_DONE) {
        failure = lastError();
    }
    sqlite3_reset(m_select);
    sqlite3_clear_bindings(m_select);
    return failure ? Read::failure(std::move(*failure)) : Read(std::move(value));
}

Result<std::map<std::string, SettingsValue>, SettingsError> SettingsDatabase::readAll()
{
    using Read = Result<std::map<std::string, SettingsValue>, SettingsError>;
    sqlite3_stmt* statement = nullptr;
    if (auto failure = prepare(statement, "SELECT key, kind, value FROM settings")) {
        return Read::failure(std::move(*failure));
    }
    std::map<std::string, SettingsValue> values;
    int code = SQLITE_ROW;
    while ((code = sqlite3_step(statement)) == SQLITE_ROW) {
        values.emplace(blobColumn(statement, 0), valueColumns(statement, 1));
    }
    const auto failure = code == SQLITE_DONE ? Failure() : Failure(lastError());
    sqlite3_finalize(statement);
    return failure ? Read::failure(*failure) : Read(std::move(values));
}

SettingsDatabase::Failure SettingsDatabase::write(const std::string& key, const SettingsValue& value)
{
    if (auto failure = prepare(m_upsert, "INSERT INTO settings(key, kind, value) VALUES(?, ?, ?) ON CONFLICT(key) "
                                         "DO UPDATE SET kind = excluded.kind, value = excluded.value")) {
        return failure;
    }
    const auto [kind, bytes] = stored(value);
    bindBytes(m_upsert, 1, key);
    sqlite3_bind_int(m_upsert, 2, static_cast<int>(kind));
    if (bindBytes(m_upsert, 3, bytes) != SQLITE_OK) {
        auto failure = lastError(); // Longer than a row can be.
        sqlite3_clear_bindings(m_upsert);
        return failure;
    }
    return step(m_upsert);
}

SettingsDatabase::Failure SettingsDatabase::remove(const std::string& key)
{
    if (auto failure = prepare(m_delete, "DELETE FROM settings WHERE key = ?")) {
        return failure;
    }
    bindBytes(m_delete, 1, key);
    return step(m_delete);
}

SettingsDatabase::Failure SettingsDatabase::check()
{
    sqlite3_stmt* statement = nullptr;
    if (auto failure = prepare(statement, "PRAGMA quick_check(1)")) {
        return failure;
    }
    Failure failure;
    if (sqlite3_step(statement) != SQLITE_ROW) {
        failure = lastError();
    } else if (blobColumn(statement, 0) != "ok") {
        failure = SettingsError{SettingsError::Kind::Damaged, blobColumn(statement, 0)};
    }
    sqlite3_finalize(statement);
    return failure;
}

SettingsDatabase::Failure SettingsDatabase::checkpoint(const std::filesystem::path& file)
{
    sqlite3* connection = nullptr;
    int code = openConnection(file.string(), SQLITE_OPEN_READWRITE, &connection);
    code = code == SQLITE_OK ? execute(connection, "PRAGMA synchronous=NORMAL") : code;
    if (code == SQLITE_OK) {
        code = sqlite3_wal_checkpoint_v2(connection, nullptr, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
    }
    const bool done = code == SQLITE_OK || (code & 0xFF) == SQLITE_BUSY || (code & 0xFF) == SQLITE_LOCKED;
    auto failure = done ? Failure() : Failure(errorOf(connection, code));
    sqlite3_close(connection);
    return failure;
}

} // namespace quillmate
