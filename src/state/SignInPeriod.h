#pragma once

#include "state/AuthManager.h"

namespace quillmate
{

/// The time up to the next sign-out. What a panel asked for in one period must not be stored in the next: the store was
/// emptied, and another user may have signed in. Any thread.
class SignInPeriod
{
public:
    /// The period of now.
    SignInPeriod()
        : m_number(AuthManager::shared().logoutCount())
    {
    }

    [[nodiscard]] bool isOver() const { return AuthManager::shared().logoutCount() != m_number; }

private:
    unsigned m_number;
};

} // namespace quillmate
