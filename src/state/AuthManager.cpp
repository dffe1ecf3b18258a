#include "state/AuthManager.h"

#include "platform/foundation/NotificationCenter.h"
#include "platform/foundation/net/URLCache.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "platform/foundation/text/print.h"
#include "state/Notifications.h"

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
    countTokenGivenUp();
    accessToken.set(std::nullopt);
    clearSettingsStore();
    URLCache::shared().removeAllCachedResponses();
    print("URLSession cache cleared");
    NotificationCenter::defaultCenter().post(userDidLogout);
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
