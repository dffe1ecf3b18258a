#include "state/AuthManager.h"

#include "platform/foundation/NotificationCenter.h"
#include "platform/foundation/net/URLCache.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "platform/foundation/text/print.h"
#include "state/Notifications.h"
#include "state/UserDetailsManager.h"

namespace quillmate
{

AuthManager& AuthManager::shared()
{
    static AuthManager manager;
    return manager;
}

void AuthManager::logout()
{
    ++m_logouts;
    giveUpToken();
    clearSettingsStore();
    URLCache::shared().removeAllCachedResponses();
    print("URLSession cache cleared");
    NotificationCenter::defaultCenter().post(userDidLogout);
}

void AuthManager::endSignIn(const std::string& refusedToken)
{
    if (accessToken.get() == refusedToken) {
        giveUpToken();
        NotificationCenter::defaultCenter().post(userDidLogout);
    }
}

void AuthManager::giveUpToken()
{
    ++m_tokensGivenUp;
    accessToken.set(std::nullopt);
    UserDetailsManager::shared().setEmail("");
    UserDetailsManager::shared().name.set(std::nullopt);
}

void clearSettingsStore()
{
    UserDefaults& defaults = UserDefaults::standard();
    for (const auto& [key, value] : defaults.dictionaryRepresentation()) {
        defaults.removeObject(key);
    }
    defaults.synchronize();
    print("UserDefaults cleared");
}

} // namespace quillmate
