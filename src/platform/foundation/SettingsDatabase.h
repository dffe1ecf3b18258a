#pragma once

#include "platform/foundation/Result.h"

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>

struct sqlite3;
struct sqlite3_stmt;

namespace quillmate
{

/// Bytes that are no text.
struct SettingsData {
    std::string bytes;
    bool operator==(const SettingsData&) const = default;
};

/// What a settings key can hold: a text, a Boolean or data.
using SettingsValue = std::variant<std::string, bool, SettingsData>;

/// Why the settings' database could not do something.
struct SettingsError {
    enum class Kind {
        Damaged,     ///< The file is no database, or its pages contradict each other.
        Unavailable, ///< It cannot be opened, read or written: rights, a full disk, a device error.
    };
    Kind kind = Kind::Unavailable;
    std::string text;
};

/// The settings' table in one SQLite database file, write-ahead logged, so that a write that returned survives the end
/// of the process at any instant and other processes see it at once. Not safe to use from two threads at a time.
class SettingsDatabase
{
public:
    using Error = SettingsError;
    /// Absent when all went well.
    using Failure = std::optional<SettingsError>;

    /// Opens the file, made when missing with mode 0600 in a folder with mode 0700. When it can only be read, an
    /// existing file is opened for reading and every write fails.
    static Result<std::unique_ptr<SettingsDatabase>, SettingsError> open(const std::filesystem::path& file);
    ~SettingsDatabase();
    SettingsDatabase(const SettingsDatabase&) = delete;
    SettingsDatabase& operator=(const SettingsDatabase&) = delete;

    /// Whether the file was opened for reading because it could not be opened otherwise.
    [[nodiscard]] bool isReadOnly() const { return m_readOnly; }
    [[nodiscard]] Result<std::optional<SettingsValue>, SettingsError> read(const std::string& key);
    [[nodiscard]] Result<std::map<std::string, SettingsValue>, SettingsError> readAll();
    [[nodiscard]] Failure write(const std::string& key, const SettingsValue& value);
    [[nodiscard]] Failure remove(const std::string& key);
    /// Looks at every page; absent when the file is sound.
    [[nodiscard]] Failure check();

    /// Makes everything written to the file so far safe against a loss of power. Uses a connection of its own, so any
    /// thread may call it while others write. Another process at the same work counts as success.
    static Failure checkpoint(const std::filesystem::path& file);

private:
    SettingsDatabase() = default;
    [[nodiscard]] Failure prepare(sqlite3_stmt*& statement, const char* text);
    [[nodiscard]] Failure step(sqlite3_stmt* statement);
    [[nodiscard]] SettingsError lastError() const;

    sqlite3* m_connection = nullptr;
    bool m_readOnly = false;
    sqlite3_stmt* m_select = nullptr;
    sqlite3_stmt* m_upsert = nullptr;
    sqlite3_stmt* m_delete = nullptr;
};

} // namespace quillmate
