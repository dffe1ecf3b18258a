#include "state/UserDetailsManager.h"

#include "state/MainThreadObject.h"

namespace quillmate
{

UserDetailsManager& UserDetailsManager::shared()
{
    // One step for both: only the thread that has made an object can hand it to another.
    static UserDetailsManager& manager = []() -> UserDetailsManager& {
        static UserDetailsManager made;
        belongToMainThread(made);
        return made;
    }();
    return manager;
}

void UserDetailsManager::setEmail(std::string email)
{
    if (m_email.get() == email) {
        return;
    }
    m_email.set(std::move(email));
    Q_EMIT emailChanged();
}

} // namespace quillmate
