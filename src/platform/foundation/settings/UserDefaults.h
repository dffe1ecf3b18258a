#pragma once

#include "platform/foundation/settings/SettingsCheckpointer.h"
#include "platform/foundation/settings/SettingsDatabase.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace quillmate
{

/// The user's settings: texts, Booleans and data under keys that may be any text. Any thread; a read sees the last
/// write of any thread at once, and of another process as soon as that write returned. A write that returned survives
/// the end of the process at any instant; a loss of power costs at most the last second.
///
/// A damaged file is moved aside and a new one begun. What cannot be stored (rights, a full disk) stays readable in
/// this process. Both cost one diagnostic line.
class UserDefaults
{
public:
    /// The store of the extension, in the application's data folder.
    static UserDefaults& standard();

    explicit UserDefaults(std::filesystem::path file);
    ~UserDefaults();
    UserDefaults(const UserDefaults&) = delete;
    UserDefaults& operator=(const UserDefaults&) = delete;

    /// Absent when nothing is stored or the value is no text.
    [[nodiscard]] std::optional<std::string> string(const std::string& key);
    /// False when nothing is stored or the value is no Boolean.
    [[nodiscard]] bool boolean(const std::string& key);
    /// Absent when nothing is stored or the value is no data.
    [[nodiscard]] std::optional<std::string> data(const std::string& key);

    // A write that says how often the settings had been emptied when it was decided on does nothing when they have been
    // emptied since, by any process.
    using During = std::optional<std::int64_t>;
    void setString(const std::string& key, std::string text, During during = {});
    void setBoolean(const std::string& key, bool value, During during = {});
    void setData(const std::string& key, std::string bytes, During during = {});
    void removeObject(const std::string& key);
    /// Stores as data what `change` makes of what the key holds, of whatever type; no other thread or process writes in
    /// between.
    void update(const std::string& key, const SettingsChange& change, During during = {});
    /// Removes every key, for this process at once, in the file in one step, which is tried again until it has happened
    /// when another process or a full disk is in the way. Files that were moved aside as damaged go as well, and the
    /// log as soon as nobody reads it.
    void removeAll();
    /// How often the settings have been emptied, by any process, since this one first saw them. Never falls.
    [[nodiscard]] std::int64_t timesEmptied();
    /// How many bytes the key holds, which are not read for it.
    [[nodiscard]] std::size_t size(const std::string& key);

    [[nodiscard]] std::map<std::string, SettingsValue> dictionaryRepresentation();
    /// Asks for everything written so far to be brought to the disk now, without waiting for it.
    void synchronize();

private:
    [[nodiscard]] std::optional<SettingsValue> value(const std::string& key);
    /// The same for who holds the lock.
    [[nodiscard]] std::optional<SettingsValue> find(const std::string& key);
    /// What the reading of the database gives, or an empty value.
    template<typename Value, typename Read>
    [[nodiscard]] Value read(Read read);
    /// As `withDatabase`, after another attempt at opening it for writing.
    bool write(const std::function<Result<void, SettingsError>(SettingsDatabase&)>& operation);
    /// A write has worked: what could not be stored before is tried again.
    void written();
    void store(const std::string& key, std::optional<SettingsValue> value, During during = {});
    /// What `removeAll` has yet to do. True when nothing is left.
    bool finishEmptying();
    /// The same for the log of what it has removed.
    bool cutLog();
    /// Takes note of what the file says of it; what this process could not store before is gone as well.
    void noteTimesEmptied();
    /// The file's count for one of this process's.
    [[nodiscard]] During inFile(During during) const;
    /// Runs the operation on the database, once more on a fresh one after damage. False when it did not work.
    bool withDatabase(const std::function<Result<void, SettingsError>(SettingsDatabase&)>& operation);
    bool openDatabase();
    void removeDamaged() const;
    void replaceDamaged(const std::string& reason);
    /// Tries again what could not be stored before.
    void storeOutstanding();
    void reportOnce(const std::string& text);

    std::filesystem::path m_file;
    std::mutex m_mutex;
    std::unique_ptr<SettingsDatabase> m_database;
    /// What could not be stored: the value, or its absence after a removal.
    std::map<std::string, std::optional<SettingsValue>> m_unstored;
    std::int64_t m_timesEmptied = 0;
    /// What the file counted when that was 0. A file in the place of a damaged one counts anew.
    std::optional<std::int64_t> m_timesAtFirst;
    bool m_isEmptying = false; // Nothing that the file holds counts any more.
    bool m_isLogToCut = false;
    std::mutex m_reportMutex;
    bool m_reported = false;
    SettingsCheckpointer m_checkpointer;
};

} // namespace quillmate
