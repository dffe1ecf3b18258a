#pragma once

#include "state/AuthManager.h"

namespace quillmate
{

/// The time up to the next sign-out, in this process or another one. Any thread.
class SignInPeriod
{
public:
    /// The period of now.
    SignInPeriod()
        : m_logouts(AuthManager::shared().logouts())
        , m_tokens(AuthManager::shared().tokensGivenUp())
    {
    }

    /// What a panel asked for before must be neither stored nor shown: the store was emptied, and another user may have
    /// signed in.
    [[nodiscard]] bool isOver() const { return AuthManager::shared().logouts() != m_logouts; }
    /// The token of before is gone, after a change of environment as well: nothing more may be sent in the name of
    /// whoever signs in next.
    [[nodiscard]] bool isTokenGone() const { return isOver() || AuthManager::shared().tokensGivenUp() != m_tokens; }
    /// How often somebody had logged out by then; for a write that must not bring back what a log-out has removed.
    [[nodiscard]] std::int64_t logouts() const { return m_logouts; }

private:
    std::int64_t m_logouts;
    unsigned m_tokens;
};

} // namespace quillmate
