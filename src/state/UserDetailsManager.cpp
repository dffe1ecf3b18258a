#include "state/UserDetailsManager.h"

#include "state/MainThreadObject.h"

namespace quillmate
{

UserDetailsManager::UserDetailsManager()
{
    belongToMainThread(*this);
}

UserDetailsManager& UserDetailsManager::shared()
{
    static UserDetailsManager manager;
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
