#include "state/AuthManager.h"

#include "platform/foundation/NotificationCenter.h"
#include "platform/foundation/net/URLCache.h"
#include "platform/foundation/schedule/DispatchQueue.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "platform/foundation/text/print.h"
#include "state/Notifications.h"
#include "state/SettingsKeys.h"
#include "state/SummarizeManager.h"
#include "state/UserDetailsManager.h"

namespace quillmate
{

AuthManager& AuthManager::shared()
{
    static AuthManager manager;
    return manager;
}

void AuthManager::signIn(const std::string& token, std::int64_t logouts)
{
    m_wasRefused = false;
    accessToken.set(token);
    UserDefaults::standard().setBoolean(SettingsKeys::hasSignedIn, true, logouts);
}

AuthManager::SignInLoss AuthManager::signInLoss() const
{
    if (accessToken.get() || !UserDefaults::standard().boolean(SettingsKeys::hasSignedIn)) {
        return SignInLoss::None;
    }
    return m_wasRefused ? SignInLoss::Refusal : SignInLoss::Restart;
}

void AuthManager::logout()
{
    giveUpToken();
    clearSettingsStore();
    URLCache::shared().removeAllCachedResponses();
    print("URLSession cache cleared");
    NotificationCenter::defaultCenter().post(userDidLogout);
}

std::int64_t AuthManager::logouts()
{
    const std::int64_t now = UserDefaults::standard().timesEmptied();
    const std::int64_t before = m_logoutsSeen.exchange(now);
    if (before >= 0 && before < now) {
        DispatchQueue::main().async([now] { shared().loggedOutElsewhere(now); });
    }
    return now;
}

void AuthManager::loggedOutElsewhere(std::int64_t logouts)
{
    if (logouts <= m_lastLogout) {
        return;
    }
    m_lastLogout = logouts;
    URLCache::shared().removeAllCachedResponses();
    // Where nobody is signed in nothing ends: least of all the sign-in that has just begun, and found it out.
    if (accessToken.get()) {
        giveUpToken();
        NotificationCenter::defaultCenter().post(userDidLogout);
    }
}

void AuthManager::endSignIn(const std::string& refusedToken)
{
    if (accessToken.get() == refusedToken) {
        giveUpToken();
        m_wasRefused = true;
        NotificationCenter::defaultCenter().post(userDidLogout);
    }
}

void AuthManager::giveUpToken()
{
    ++m_tokensGivenUp;
    accessToken.set(std::nullopt);
    UserDetailsManager::shared().setEmail("");
    UserDetailsManager::shared().name.set(std::nullopt);
    SummarizeManager::shared().responses.set({});
}

void clearSettingsStore()
{
    UserDefaults::standard().removeAll();
    AuthManager& manager = AuthManager::shared();
    manager.m_lastLogout = UserDefaults::standard().timesEmptied();
    manager.m_logoutsSeen = manager.m_lastLogout;
    print("UserDefaults cleared");
}

} // namespace quillmate
