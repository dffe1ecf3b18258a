#include "platform/foundation/settings/UserDefaults.h"

#include "base/ApplicationFolders.h"
#include "base/PrivateFiles.h"
#include "platform/foundation/text/print.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <system_error>
#include <tuple>
#include <utility>

namespace quillmate
{
namespace
{

constexpr auto lockName = "settings.lock";
constexpr auto damagedSuffix = ".damaged-";

std::filesystem::path freeNameBeside(const std::filesystem::path& file)
{
    std::array<char, 32> stamp{};
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    std::strftime(stamp.data(), stamp.size(), "%Y%m%dT%H%M%SZ", ::gmtime_r(&now, &utc));
    const std::string base = file.string() + damagedSuffix + stamp.data();
    std::filesystem::path name = base;
    for (int i = 2; std::filesystem::exists(name); ++i) {
        name = base + "-" + std::to_string(i);
    }
    return name;
}

/// Two processes that make the same new file at once would get in each other's way.
auto openLocked(const std::filesystem::path& file)
{
    std::ignore = makePrivateFolder(file.parent_path()); // Opening the file tells.
    const FolderLock lock(file.parent_path(), lockName);
    return SettingsDatabase::open(file);
}

std::string_view bytesOf(const SettingsValue& value)
{
    if (const auto* text = std::get_if<std::string>(&value)) {
        return *text;
    }
    const auto* data = std::get_if<SettingsData>(&value);
    return data ? std::string_view(data->bytes) : std::string_view();
}

bool soundDatabaseAt(const std::filesystem::path& file)
{
    const auto opened = SettingsDatabase::open(file);
    return opened && opened.value()->check();
}

} // namespace

UserDefaults& UserDefaults::standard()
{
    static UserDefaults defaults(applicationDataFolder() / "settings.db");
    return defaults;
}

UserDefaults::UserDefaults(std::filesystem::path file)
    : m_file(std::move(file))
    , m_checkpointer(
          m_file, [this](const std::string& text) { reportOnce(text); },
          [this] {
              const std::lock_guard lock(m_mutex);
              return finishEmptying() && cutLog();
          })
{
}

UserDefaults::~UserDefaults() = default;

void UserDefaults::reportOnce(const std::string& text)
{
    const std::lock_guard lock(m_reportMutex);
    if (!std::exchange(m_reported, true)) {
        print("Settings cannot be stored in " + m_file.string() + " (" + text +
              "). They are kept until the program ends; make room or allow writing there.");
    }
}

bool UserDefaults::openDatabase()
{
    if (m_database) {
        return true;
    }
    auto opened = openLocked(m_file);
    if (!opened && opened.error().kind == SettingsError::Kind::Damaged) {
        replaceDamaged(opened.error().text);
        opened = openLocked(m_file);
    }
    if (!opened) {
        reportOnce(opened.error().text);
        return false;
    }
    m_database = std::move(opened).value();
    noteTimesEmptied();
    return true;
}

void UserDefaults::replaceDamaged(const std::string& reason)
{
    m_database.reset();
    // Two processes must not both move it.
    const FolderLock lock(m_file.parent_path(), lockName);
    if (soundDatabaseAt(m_file)) {
        return; // Another process was here first.
    }
    const auto aside = freeNameBeside(m_file);
    std::error_code error;
    std::filesystem::rename(m_file, aside, error);
    if (error) {
        reportOnce("it is damaged, and it cannot be moved aside: " + error.message());
        return;
    }
    for (const char* companion : {"-wal", "-shm"}) {
        std::error_code none; // Often there is no such file.
        std::filesystem::rename(m_file.string() + companion, aside.string() + companion, none);
    }
    print("The settings file was damaged (" + reason + "). It was moved to " + aside.string() +
          " and a new one was begun.");
}

bool UserDefaults::withDatabase(const std::function<Result<void, SettingsError>(SettingsDatabase&)>& operation)
{
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (!openDatabase()) {
            return false;
        }
        const auto done = operation(*m_database);
        if (done) {
            return true;
        }
        if (done.error().kind != SettingsError::Kind::Damaged) {
            reportOnce(done.error().text);
            return false;
        }
        replaceDamaged(done.error().text);
    }
    reportOnce("a new file is damaged as well");
    return false;
}

template<typename Value, typename Read>
Value UserDefaults::read(Read read)
{
    Value found{};
    if (m_isEmptying) {
        return found;
    }
    withDatabase([&](SettingsDatabase& database) -> Result<void, SettingsError> {
        auto result = read(database);
        if (!result) {
            return Failure(result.error());
        }
        found = std::move(result).value();
        return {};
    });
    return found;
}

std::optional<SettingsValue> UserDefaults::find(const std::string& key)
{
    if (const auto unstored = m_unstored.find(key); unstored != m_unstored.end()) {
        return unstored->second;
    }
    return read<std::optional<SettingsValue>>([&key](SettingsDatabase& database) { return database.read(key); });
}

std::optional<SettingsValue> UserDefaults::value(const std::string& key)
{
    const std::lock_guard lock(m_mutex);
    return find(key);
}

bool UserDefaults::write(const std::function<Result<void, SettingsError>(SettingsDatabase&)>& operation)
{
    if (m_database && m_database->isReadOnly()) {
        m_database.reset(); // Perhaps it can be written by now.
    }
    return finishEmptying() && withDatabase(operation);
}

void UserDefaults::written()
{
    storeOutstanding();
    {
        const std::lock_guard reportLock(m_reportMutex);
        m_reported = false;
    }
    m_checkpointer.written();
}

void UserDefaults::store(const std::string& key, std::optional<SettingsValue> value, During during)
{
    const std::lock_guard lock(m_mutex);
    if (during && *during != m_timesEmptied) {
        return;
    }
    if (!write([&](SettingsDatabase& database) {
            return value ? database.write(key, *value, inFile(during)) : database.remove(key);
        })) {
        if (during && *during != m_timesEmptied) {
            return;
        }
        m_unstored.insert_or_assign(key, std::move(value));
        return;
    }
    m_unstored.erase(key);
    written();
}

void UserDefaults::update(const std::string& key, const SettingsChange& change, During during)
{
    const std::lock_guard lock(m_mutex);
    if (during && *during != m_timesEmptied) {
        return;
    }
    if (const auto unstored = m_unstored.find(key); unstored != m_unstored.end() && unstored->second) {
        change(bytesOf(*unstored->second)); // What this process alone knows of; the answer comes with the next one.
    }
    if (write([&](SettingsDatabase& database) { return database.update(key, change, inFile(during)); })) {
        m_unstored.erase(key);
        written();
        return;
    }
    if (during && *during != m_timesEmptied) {
        return;
    }
    const auto known = find(key);
    for (const auto& [changed, bytes] : change(known ? std::optional(bytesOf(*known)) : std::nullopt)) {
        m_unstored.insert_or_assign(changed, SettingsData{std::string(bytes)});
    }
}

std::size_t UserDefaults::size(const std::string& key)
{
    const std::lock_guard lock(m_mutex);
    if (const auto unstored = m_unstored.find(key); unstored != m_unstored.end()) {
        return unstored->second ? bytesOf(*unstored->second).size() : 0;
    }
    return read<std::size_t>([&key](SettingsDatabase& database) { return database.size(key); });
}

void UserDefaults::removeAll()
{
    const std::lock_guard lock(m_mutex);
    m_unstored.clear();
    ++m_timesEmptied;
    m_isEmptying = true;
    if (!finishEmptying() || !cutLog()) {
        m_checkpointer.keepTrying();
    }
}

bool UserDefaults::finishEmptying()
{
    if (!m_isEmptying) {
        return true;
    }
    if (!withDatabase([this](SettingsDatabase& database) { return database.empty(); })) {
        m_database.reset(); // A fresh one may have more rights, or find more room.
        return false;
    }
    m_isEmptying = false;
    m_isLogToCut = true;
    m_timesAtFirst.reset(); // What others have emptied before is this emptying as well.
    noteTimesEmptied();
    removeDamaged();
    storeOutstanding(); // What was written since.
    m_checkpointer.written();
    return true;
}

bool UserDefaults::cutLog()
{
    if (m_isLogToCut) {
        withDatabase([this](SettingsDatabase& database) -> Result<void, SettingsError> {
            m_isLogToCut = !database.cutLog();
            return {};
        });
    }
    return !m_isLogToCut;
}

void UserDefaults::removeDamaged() const
{
    std::error_code error; // A file that stays is no worse than before, and the next time tries again.
    const std::string damaged = m_file.filename().string() + damagedSuffix;
    std::filesystem::directory_iterator entry(m_file.parent_path(), error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        if (entry->path().filename().string().starts_with(damaged)) {
            std::error_code stays;
            std::filesystem::remove(entry->path(), stays);
        }
    }
}

void UserDefaults::noteTimesEmptied()
{
    const auto times = m_database->timesEmptied();
    if (m_isEmptying || !times) {
        return; // What the file says is no matter, or unknown.
    }
    if (!m_timesAtFirst || times.value() < *m_timesAtFirst + m_timesEmptied) {
        m_timesAtFirst = times.value() - m_timesEmptied;
    } else if (times.value() > *m_timesAtFirst + m_timesEmptied) {
        m_timesEmptied = times.value() - *m_timesAtFirst;
        m_unstored.clear();
    }
}

UserDefaults::During UserDefaults::inFile(During during) const
{
    return during && m_timesAtFirst ? During(*during + *m_timesAtFirst) : std::nullopt;
}

std::int64_t UserDefaults::timesEmptied()
{
    const std::lock_guard lock(m_mutex);
    withDatabase([this](SettingsDatabase&) -> Result<void, SettingsError> {
        noteTimesEmptied();
        return {};
    });
    return m_timesEmptied;
}

void UserDefaults::storeOutstanding()
{
    noteTimesEmptied();
    while (!m_unstored.empty() && m_database) {
        const auto& [key, value] = *m_unstored.begin();
        if (!(value ? m_database->write(key, *value) : m_database->remove(key))) {
            return; // Still not possible; the next write tries again.
        }
        m_unstored.erase(m_unstored.begin());
    }
}

std::optional<std::string> UserDefaults::string(const std::string& key)
{
    auto found = value(key);
    auto* text = found ? std::get_if<std::string>(&*found) : nullptr;
    return text ? std::optional(std::move(*text)) : std::nullopt;
}

bool UserDefaults::boolean(const std::string& key)
{
    const auto found = value(key);
    const auto* boolean = found ? std::get_if<bool>(&*found) : nullptr;
    return boolean && *boolean;
}

std::optional<std::string> UserDefaults::data(const std::string& key)
{
    auto found = value(key);
    auto* data = found ? std::get_if<SettingsData>(&*found) : nullptr;
    return data ? std::optional(std::move(data->bytes)) : std::nullopt;
}

void UserDefaults::setString(const std::string& key, std::string text, During during)
{
    store(key, SettingsValue(std::in_place_type<std::string>, std::move(text)), during);
}

void UserDefaults::setBoolean(const std::string& key, bool value, During during)
{
    store(key, SettingsValue(std::in_place_type<bool>, value), during);
}

void UserDefaults::setData(const std::string& key, std::string bytes, During during)
{
    store(key, SettingsValue(std::in_place_type<SettingsData>, SettingsData{std::move(bytes)}), during);
}

void UserDefaults::removeObject(const std::string& key)
{
    store(key, std::nullopt);
}

std::map<std::string, SettingsValue> UserDefaults::dictionaryRepresentation()
{
    const std::lock_guard lock(m_mutex);
    auto values =
        read<std::map<std::string, SettingsValue>>([](SettingsDatabase& database) { return database.readAll(); });
    for (const auto& [key, unstored] : m_unstored) {
        if (unstored) {
            values.insert_or_assign(key, *unstored);
        } else {
            values.erase(key);
        }
    }
    return values;
}

void UserDefaults::synchronize()
{
    m_checkpointer.hurry();
}

} // namespace quillmate
