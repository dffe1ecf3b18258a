#pragma once

#include "base/Result.h"
#include "base/Sqlite.h"
#include "server/store/ThreadMessage.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillmate::server
{

struct User {
    std::int64_t id = 0;
    std::string email;
    std::string name;
};

/// A chat: the text it is about and its latest turns in order.
struct ChatThread {
    std::string text;
    std::vector<ThreadMessage> messages;
};

/// Why the database refused, in its own words: for the log.
struct StoreFailure {
    std::string text;
};

/// What a sign-in gives, both in clear: the access token, and the secret by which the browser is known again.
struct SignIn {
    std::string token;
    std::string browser;
};

/// Users, tokens, browsers, chats and training data in one SQLite file (WAL, mode 0600). A token and a browser's secret
/// are kept as their SHA-256 only. Any thread.
class ServiceStore
{
public:
    using Clock = std::function<std::chrono::system_clock::time_point()>;
    static constexpr std::chrono::days tokenLife{90};
    static constexpr std::chrono::days browserLife{90};

    /// Opens or makes DIR/service.db; the failure is one sentence for the user.
    static Result<std::unique_ptr<ServiceStore>, StoreFailure> open(const std::string& folder,
                                                                    Clock clock = &std::chrono::system_clock::now);
    ServiceStore(const ServiceStore&) = delete;
    ServiceStore& operator=(const ServiceStore&) = delete;

    /// Makes the user of this address, or gives the known one the new name, and a new token. The browser's new secret
    /// takes the place of the one it had until now (empty: none), whosever that was.
    Result<SignIn, StoreFailure> signIn(const std::string& email, const std::string& name,
                                        const std::string& formerBrowser = {});
    /// Who signed in last with the browser, at most `browserLife` ago.
    Result<std::optional<User>, StoreFailure> userByBrowser(std::string_view browser);
    /// Nothing for a token that was never given, or longer ago than `tokenLife`.
    Result<std::optional<User>, StoreFailure> userByToken(std::string_view token);

    /// Returns the id of a new chat about the text.
    Result<std::string, StoreFailure> startThread(std::int64_t user, const std::string& text);
    /// Nothing when there is no such chat of this user. Of a long chat the last `latestTurns` come back, and of a long
    /// turn its first `turnLength` characters; all of it stays stored.
    static constexpr int latestTurns = 40;
    static constexpr int turnLength = 8000;
    Result<std::optional<ChatThread>, StoreFailure> thread(std::int64_t user, const std::string& id);
    Result<void, StoreFailure> addMessages(const std::string& thread, const std::vector<ThreadMessage>& messages);

    Result<void, StoreFailure> addTrainingData(std::int64_t user, const std::string& question,
                                               const std::string& answer);

    /// Closes the database although other threads may still want it: their later calls fail. False when one of them
    /// used it for longer than the limit; then it stays open.
    bool closeEarly(std::chrono::milliseconds limit);

private:
    ServiceStore(SqliteConnection database, Clock clock)
        : m_database(std::move(database))
        , m_clock(std::move(clock))
    {
    }
    void prepare();
    /// Whose secret it is, by that table of hashes.
    std::optional<User> userOf(const std::string& table, std::string_view secret, std::chrono::seconds life);
    /// Runs `work` alone on the database; what it throws becomes the failure.
    template<typename Work>
    auto alone(Work work) -> Result<decltype(work()), StoreFailure>;
    /// Seconds since 1970.
    [[nodiscard]] std::int64_t now() const;

    std::timed_mutex m_mutex;
    SqliteConnection m_database;
    Clock m_clock;
};

} // namespace quillmate::server
