#pragma once

#include "base/Result.h"
#include "server/store/ServiceStore.h"

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

namespace quillmate::server
{

/// The sign-ins under way, in memory only: a restart forgets them, and no clear token ever reaches the disk.
/// A session lives 15 minutes, and two minutes from the first time its token was fetched (a lost reply is asked for
/// again). The client polls by the session's id, the browser has the name of its page: who knows the page's address
/// alone cannot fetch the token. Any thread.
class SignInSessions
{
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;
    static constexpr std::chrono::minutes life{15};
    static constexpr std::chrono::minutes lifeAfterDelivery{2};
    /// More unfinished sign-ins than a service of this kind sees; a flood ends here instead of in memory.
    static constexpr std::size_t limit = 4096;

    explicit SignInSessions(Clock clock = &std::chrono::steady_clock::now)
        : m_clock(std::move(clock))
    {
    }

    /// The id of a new session, or nothing when there are too many.
    std::optional<std::string> begin();

    struct State {
        std::string formToken;                  ///< what a form of this session must bring back
        std::optional<std::string> accessToken; ///< present once signed in
    };
    /// The name of a session's page, which tells nothing about the id.
    [[nodiscard]] static std::string pageOf(const std::string& id);
    /// Nothing when there is no such page or its session is over.
    [[nodiscard]] std::optional<State> state(const std::string& page);
    /// The access token as the client gets it; the first fetch shortens the session's life.
    [[nodiscard]] std::optional<State> fetch(const std::string& id);

    enum class Outcome { SignedIn, AlreadySignedIn, WrongFormToken, Unknown };
    using Issue = std::function<Result<std::string, StoreFailure>()>;
    /// Uses the form token up and signs in, once: `issue` makes the access token and runs for one caller only. Where it
    /// fails, the form can be sent again.
    Result<Outcome, StoreFailure> complete(const std::string& page, const std::string& formToken, const Issue& issue);

private:
    struct Session {
        std::chrono::steady_clock::time_point end;
        State state;
        bool delivered = false;
    };
    Session* find(const std::string& page);
    void dropEnded();

    std::mutex m_mutex;
    Clock m_clock;
    std::unordered_map<std::string, Session> m_sessions; // by their pages
};

} // namespace quillmate::server
