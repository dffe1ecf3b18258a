#pragma once

#include "state/Synchronized.h"

#include <atomic>
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

    /// Signs out: forgets the token, empties the settings store and the URL cache, posts "UserDidLogout" on the calling
    /// thread.
    void logout();

    /// How often `logout` has run in this process.
    [[nodiscard]] unsigned logouts() const { return m_logouts; }
    /// How often a user's time has ended, by `logout` or by another environment.
    [[nodiscard]] unsigned tokensGivenUp() const { return m_tokensGivenUp; }
    void countTokenGivenUp() { ++m_tokensGivenUp; }

private:
    AuthManager() = default;

    std::atomic<unsigned> m_logouts = 0;
    std::atomic<unsigned> m_tokensGivenUp = 0;
};

/// Removes every key of the settings store.
void clearSettingsStore();

} // namespace quillmate
