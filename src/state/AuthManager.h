#pragma once

#include "state/Synchronized.h"

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>

namespace quillmate
{

/// The sign-in state. Fields: any thread.
class AuthManager
{
public:
    static AuthManager& shared();

    /// The bearer token of the signed-in user; present means signed in. Never stored.
    Synchronized<std::optional<std::string>> accessToken;

    /// A sign-in that began after that many log-outs has brought the token. Main thread.
    void signIn(const std::string& token, std::int64_t logouts);
    /// Why there is no token though somebody has signed in and not logged out since.
    enum class SignInLoss {
        None,
        Restart, ///< the token was another process's
        Refusal, ///< the service has refused it
    };
    [[nodiscard]] SignInLoss signInLoss() const;

    /// Signs out: forgets the token and its user, empties the settings store and the URL cache, posts "UserDidLogout".
    /// Main thread.
    void logout();
    /// The service refuses a token: when it is the one of now, it is forgotten, and "UserDidLogout" posted. What is
    /// stored stays. Main thread.
    void endSignIn(const std::string& refusedToken);
    /// The token, and what is known of its user, are no more. Main thread.
    void giveUpToken();

    /// How often somebody has logged out, in this process or another one with the same settings. Another's log-out that
    /// is found out so ends the sign-in here.
    [[nodiscard]] std::int64_t logouts();
    /// How often a user's time has ended: by a log-out, by another environment, by the service's refusal.
    [[nodiscard]] unsigned tokensGivenUp() const { return m_tokensGivenUp; }

private:
    AuthManager() = default;

    /// The settings have been emptied: is that known here?
    void loggedOutElsewhere(std::int64_t logouts);
    friend void clearSettingsStore();

    std::atomic<std::int64_t> m_logoutsSeen = -1; // None looked for yet.
    std::int64_t m_lastLogout = -1;               // The last that has ended the sign-in here. Main thread.
    std::atomic<unsigned> m_tokensGivenUp = 0;
    bool m_wasRefused = false; // The last token. Main thread.
};

/// Removes every key of the settings store. Main thread.
void clearSettingsStore();

} // namespace quillmate
