#include "support/StateFixture.h"

#include "platform/foundation/net/URLSessionThread.h"
#include "platform/foundation/schedule/MainSchedule.h"
#include "state/AppVersion.h"
#include "state/AuthManager.h"
#include "state/IncommingUpdatesManager.h"
#include "state/ReplyEmailManager.h"
#include "state/StartChatManager.h"
#include "state/SummarizeManager.h"
#include "state/UserDetailsManager.h"

namespace quillmate
{

StateFixture::StateFixture()
{
    TestEnvironment::connectTo(m_server);
}

void StateFixture::reset()
{
    // What the case before has asked for must not be answered by this one's server, nor its next poll be sent.
    URLSessionThread::stop();
    m_server.dropConnections();
    MainSchedule::shared().clear();
    m_server.reset();
    AuthManager::shared().logout();
    ReplyEmailManager::shared().update([](ReplyEmail& record) { record = {}; });
    SummarizeManager::shared().responses.set({});
    StartChatManager::shared().assistantId.set(std::nullopt);
    StartChatManager::shared().threadId.set(std::nullopt);
    IncommingUpdatesManager::shared().setIncommingUpdatesAvailable(false);
    IncommingUpdatesManager::shared().updateUrl.set(std::nullopt);
    IncommingUpdatesManager::shared().newVersion.set(std::nullopt);
    m_log.take();
}

void StateFixture::replyTo(const Text& messageId, const Text& content)
{
    ReplyEmailManager::shared().update([&](ReplyEmail& record) {
        record = {"ana@a.example", "Plans", std::nullopt, content, messageId};
    });
}

void StateFixture::signIn()
{
    AuthManager::shared().accessToken.set("token");
    UserDetailsManager::shared().setEmail("e@a.example");
}

std::string StateFixture::versionCheck()
{
    return "/apple-version?currentVersion=" + appVersion().value();
}

} // namespace quillmate
