#include "server/store/ServiceStore.h"

#include "server/signin/Secrets.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <type_traits>
#include <unistd.h>
#include <utility>

namespace quillmate::server
{

namespace
{

constexpr std::int64_t schemaVersion = 2;
constexpr int busyMilliseconds = 5000;

constexpr const char* schema = R"sql(
CREATE TABLE users (id INTEGER PRIMARY KEY, email TEXT NOT NULL UNIQUE, name TEXT NOT NULL, created INTEGER NOT NULL);
CREATE TABLE tokens (hash BLOB PRIMARY KEY, user INTEGER NOT NULL REFERENCES users (id), created INTEGER NOT NULL)
  WITHOUT ROWID;
CREATE TABLE threads (id TEXT PRIMARY KEY, user INTEGER NOT NULL REFERENCES users (id), text TEXT NOT NULL,
  created INTEGER NOT NULL);
CREATE TABLE messages (id INTEGER PRIMARY KEY, thread TEXT NOT NULL REFERENCES threads (id), role TEXT NOT NULL,
  text TEXT NOT NULL, created INTEGER NOT NULL);
CREATE INDEX messages_thread ON messages (thread);
CREATE TABLE training (id INTEGER PRIMARY KEY, user INTEGER NOT NULL REFERENCES users (id), question TEXT NOT NULL,
  answer TEXT NOT NULL, created INTEGER NOT NULL);
)sql";

// Version 2.
constexpr const char* browserSchema = R"sql(
CREATE TABLE browsers (hash BLOB PRIMARY KEY, user INTEGER NOT NULL REFERENCES users (id), created INTEGER NOT NULL)
  WITHOUT ROWID;
PRAGMA user_version = 2;
)sql";

} // namespace

Result<std::unique_ptr<ServiceStore>, StoreFailure> ServiceStore::open(const std::string& folder, Clock clock)
{
    const std::string path = folder + "/service.db";
    // SQLite gives its log and shared-memory files the mode of the database, so the mode is right before the first
    // byte.
    const int descriptor = ::open(path.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
    const bool isOurs = descriptor >= 0 && fchmod(descriptor, 0600) == 0;
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    if (!isOurs) {
        return Failure(
            StoreFailure{"cannot write " + path + ": check the folder's rights, or give another with --data"});
    }
    SqliteConnection database;
    try {
        database = openSqlite(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, busyMilliseconds);
    } catch (const SqliteError& error) {
        return Failure(StoreFailure{"cannot open " + path + ": " + error.what()});
    }
    std::unique_ptr<ServiceStore> store(new ServiceStore(std::move(database), std::move(clock)));
    try {
        store->prepare();
    } catch (const std::runtime_error& error) {
        return Failure(StoreFailure{"cannot use " + path + ": " + error.what() + "; move it away to begin a new one"});
    }
    return store;
}

bool ServiceStore::closeEarly(std::chrono::milliseconds limit)
{
    const std::unique_lock lock(m_mutex, limit);
    if (!lock) {
        return false;
    }
    m_database.close();
    return true;
}

void ServiceStore::prepare()
{
    runSql(m_database, "PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL; PRAGMA foreign_keys = ON");
    SqliteTransaction transaction(m_database);
    std::int64_t version = 0;
    {
        SqliteStatement statement(m_database, "PRAGMA user_version");
        statement.step();
        version = statement.numberAt(0);
    }
    if (version > schemaVersion) {
        throw std::runtime_error("a newer version of this program wrote it");
    }
    if (version == 0) {
        runSql(m_database, schema);
    }
    if (version < schemaVersion) {
        runSql(m_database, browserSchema);
    }
    transaction.commit();
}

template<typename Work>
auto ServiceStore::alone(Work work) -> Result<decltype(work()), StoreFailure>
{
    const std::lock_guard lock(m_mutex);
    try {
        if constexpr (std::is_void_v<decltype(work())>) {
            work();
            return {};
        } else {
            return work();
        }
    } catch (const SqliteError& error) {
        return Failure(StoreFailure{error.what()});
    }
}

std::int64_t ServiceStore::now() const
{
    return std::chrono::duration_cast<std::chrono::seconds>(m_clock().time_since_epoch()).count();
}

Result<SignIn, StoreFailure> ServiceStore::signIn(const std::string& email, const std::string& name,
                                                  const std::string& formerBrowser)
{
    SignIn made{randomSecret(), randomSecret()};
    return alone([&] {
        SqliteTransaction transaction(m_database);
        SqliteStatement user(m_database, "INSERT INTO users (email, name, created) VALUES (?, ?, ?) "
                                         "ON CONFLICT (email) DO UPDATE SET name = excluded.name RETURNING id");
        user.text(email).text(name).number(now()).step();
        const std::int64_t id = user.numberAt(0);
        user.step();
        const auto add = [&](const std::string& table, const std::string& secret, std::chrono::seconds life) {
            SqliteStatement(m_database, "DELETE FROM " + table + " WHERE created < ?")
                .number(now() - life.count())
                .step();
            const std::string hash = secretHash(secret);
            SqliteStatement(m_database, "INSERT INTO " + table + " (hash, user, created) VALUES (?, ?, ?)")
                .blob(hash)
                .number(id)
                .number(now())
                .step();
        };
        add("tokens", made.token, tokenLife);
        const std::string formerHash = secretHash(formerBrowser);
        SqliteStatement(m_database, "DELETE FROM browsers WHERE hash = ?").blob(formerHash).step();
        add("browsers", made.browser, browserLife);
        transaction.commit();
        return made;
    });
}

std::optional<User> ServiceStore::userOf(const std::string& table, std::string_view secret, std::chrono::seconds life)
{
    const std::string hash = secretHash(secret);
    SqliteStatement statement(m_database, "SELECT users.id, users.email, users.name FROM " + table +
                                              " AS held JOIN users ON users.id = held.user "
                                              "WHERE held.hash = ? AND held.created >= ?");
    statement.blob(hash).number(now() - life.count());
    if (!statement.step()) {
        return std::nullopt;
    }
    return User{statement.numberAt(0), statement.textAt(1), statement.textAt(2)};
}

Result<std::optional<User>, StoreFailure> ServiceStore::userByToken(std::string_view token)
{
    return alone([&] { return userOf("tokens", token, tokenLife); });
}

Result<std::optional<User>, StoreFailure> ServiceStore::userByBrowser(std::string_view browser)
{
    return alone([&] { return userOf("browsers", browser, browserLife); });
}

Result<std::string, StoreFailure> ServiceStore::startThread(std::int64_t user, const std::string& text)
{
    std::string id = "thread-" + randomSecret();
    return alone([&] {
        SqliteStatement(m_database, "INSERT INTO threads (id, user, text, created) VALUES (?, ?, ?, ?)")
            .text(id)
            .number(user)
            .text(text)
            .number(now())
            .step();
        return id;
    });
}

Result<std::optional<ChatThread>, StoreFailure> ServiceStore::thread(std::int64_t user, const std::string& id)
{
    return alone([&]() -> std::optional<ChatThread> {
        SqliteStatement statement(m_database, "SELECT text FROM threads WHERE id = ? AND user = ?");
        if (!statement.text(id).number(user).step()) {
            return std::nullopt;
        }
        ChatThread thread{statement.textAt(0), {}};
        SqliteStatement messages(m_database, "SELECT role, substr(text, 1, ?) FROM messages WHERE thread = ? "
                                             "ORDER BY id DESC LIMIT ?");
        messages.number(turnLength).text(id).number(latestTurns);
        while (messages.step()) {
            const auto role = messages.textAt(0) == "user" ? ThreadMessage::Role::User : ThreadMessage::Role::Assistant;
            thread.messages.push_back({role, messages.textAt(1)});
        }
        std::reverse(thread.messages.begin(), thread.messages.end());
        return thread;
    });
}

Result<void, StoreFailure> ServiceStore::addMessages(const std::string& thread,
                                                     const std::vector<ThreadMessage>& messages)
{
    return alone([&] {
        SqliteTransaction transaction(m_database);
        for (const ThreadMessage& message : messages) {
            SqliteStatement(m_database, "INSERT INTO messages (thread, role, text, created) VALUES (?, ?, ?, ?)")
                .text(thread)
                .text(message.role == ThreadMessage::Role::User ? "user" : "assistant")
                .text(message.text)
                .number(now())
                .step();
        }
        transaction.commit();
    });
}

Result<void, StoreFailure> ServiceStore::addTrainingData(std::int64_t user, const std::string& question,
                                                         const std::string& answer)
{
    return alone([&] {
        SqliteStatement(m_database, "INSERT INTO training (user, question, answer, created) VALUES (?, ?, ?, ?)")
            .number(user)
            .text(question)
            .text(answer)
            .number(now())
            .step();
    });
}

} // namespace quillmate::server
