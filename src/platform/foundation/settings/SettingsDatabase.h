#pragma once

#include "base/Result.h"
#include "base/Sqlite.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace quillmate
{

/// Bytes that are no text.
struct SettingsData {
    std::string bytes;
    bool operator==(const SettingsData&) const = default;
};

/// What a settings key can hold: a text, a Boolean or data.
using SettingsValue = std::variant<std::string, bool, SettingsData>;

/// Data to be stored under keys; the bytes must live until they are.
using SettingsChanges = std::vector<std::pair<std::string, std::string_view>>;
/// Makes of the bytes that a key holds, absent when it holds none, what is to be stored. It may be asked more than
/// once, about other bytes, and must not use the settings itself.
using SettingsChange = std::function<SettingsChanges(std::optional<std::string_view> stored)>;

/// Why the settings' database could not do something.
struct SettingsError {
    enum class Kind {
        Damaged,     ///< The file is no database, or its pages contradict each other.
        Busy,        ///< Another process holds it, for longer than a write takes.
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
    /// Opens the file, made when missing with mode 0600 in a folder with mode 0700. When it can only be read, an
    /// existing file is opened for reading and every write fails.
    static Result<std::unique_ptr<SettingsDatabase>, SettingsError> open(const std::filesystem::path& file);
    /// Whether the file was opened for reading because it could not be opened otherwise.
    [[nodiscard]] bool isReadOnly() const { return m_readOnly; }
    Result<std::optional<SettingsValue>, SettingsError> read(const std::string& key);
    Result<std::map<std::string, SettingsValue>, SettingsError> readAll();
    // A write that says how often the database has been emptied when it was decided on does nothing when it has been
    // emptied since.
    Result<void, SettingsError> write(const std::string& key, const SettingsValue& value,
                                      std::optional<std::int64_t> during = {});
    /// Stores what `change` makes of what the key holds. No other process writes in between.
    Result<void, SettingsError> update(const std::string& key, const SettingsChange& change,
                                       std::optional<std::int64_t> during = {});
    /// How many bytes the key holds, without reading them.
    Result<std::size_t, SettingsError> size(const std::string& key);
    Result<void, SettingsError> remove(const std::string& key);
    /// How often the database has been emptied, by any process.
    Result<std::int64_t, SettingsError> timesEmptied();
    /// Removes every key and counts it, all or nothing. The values are still in the log. Waits
    /// for no other process.
    Result<void, SettingsError> empty();
    /// Brings the log to the file and cuts it back to nothing. False while somebody else reads or writes; does not
    /// wait.
    [[nodiscard]] bool cutLog();
    /// Looks at every page.
    Result<void, SettingsError> check();

    /// Makes everything written to the file so far safe against a loss of power. Uses a connection of its own, so any
    /// thread may call it while others write. Another process at the same work counts as success.
    static Result<void, SettingsError> checkpoint(const std::filesystem::path& file);

private:
    SettingsDatabase(SqliteConnection connection, bool readOnly)
        : m_connection(std::move(connection))
        , m_readOnly(readOnly)
    {
    }

    SqliteConnection m_connection;
    bool m_readOnly;
};

} // namespace quillmate
