#pragma once

#include "localservice/ThreadMessage.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

struct sqlite3;

namespace quillmate::localservice
{

struct User {
    std::int64_t id = 0;
    std::string email;
    std::string name;
    bool operator==(const User&) const = default;
};

/// A chat: the text it is about and its latest turns in order.
struct ChatThread {
    std::string text;
    std::vector<ThreadMessage> messages;
};

/// Users, tokens, chats and training data in one SQLite file (WAL, mode 0600). A token is kept as its SHA-256 only.
/// Any thread; a call that the database refuses throws `std::runtime_error`.
class ServiceStore
{
public:
    /// Opens or makes DIR/service.db; the failure is one sentence.
    static std::variant<std::unique_ptr<ServiceStore>, std::string> open(const std::string& folder);
    ~ServiceStore();
    ServiceStore(const ServiceStore&) = delete;
    ServiceStore& operator=(const ServiceStore&) = delete;

    /// Makes the user of this address, or gives the known one the new name, and a new token for it, in clear.
    /// A token is good for 90 days.
    std::string signIn(const std::string& email, const std::string& name);
    [[nodiscard]] std::optional<User> userOfToken(std::string_view token);

    /// Returns the id of a new chat about the text.
    std::string startThread(std::int64_t user, const std::string& text);
    /// Nothing when there is no such chat of this user. Of a long chat the last `latestTurns` come back, and of a long
    /// turn its first `turnLength` characters; all of it stays stored.
    static constexpr int latestTurns = 40;
    static constexpr int turnLength = 8000;
    [[nodiscard]] std::optional<ChatThread> thread(std::int64_t user, const std::string& id);
    void addMessages(const std::string& thread, const std::vector<ThreadMessage>& messages);

    void addTrainingData(std::int64_t user, const std::string& question, const std::string& answer);

    /// Closes the database although other threads may still want it: their later calls throw. False when one of them
    /// used it for longer than the limit; then it stays open.
    bool closeEarly(std::chrono::milliseconds limit);

private:
    explicit ServiceStore(sqlite3* database)
        : m_database(database)
    {
    }
    void prepare();

    std::timed_mutex m_mutex;
    sqlite3* m_database;
};

} // namespace quillmate::localservice
