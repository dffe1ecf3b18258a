#include "features/FeatureFixture.h"

#include "features/ChatErrorMessage.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "state/APIManager.h"
#include "state/AuthManager.h"
#include "state/ReplyEmailManager.h"
#include "state/StartChatManager.h"
#include "state/UserDetailsManager.h"

namespace quillmate
{

FeatureFixture::FeatureFixture()
{
    TestEnvironment::connectTo(m_server);
}

void FeatureFixture::reset()
{
    MainSchedule::shared().clear();
    m_server.reset();
    AuthManager::shared().accessToken.set("token");
    UserDetailsManager::shared().setEmail("e@a.example");
    StartChatManager::shared().assistantId.set(std::nullopt);
    StartChatManager::shared().threadId.set(std::nullopt);
    ChatErrorMessage::shared().setChatErrorMessage(std::nullopt);
    replyTo("m1", "The content");
    clearSettingsStore();
    static_cast<void>(currentApiURL()); // which says so once
    m_log.take();
}

void FeatureFixture::replyTo(const Text& messageId, const Text& content)
{
    ReplyEmailManager::shared().update([&](ReplyEmail& record) {
        record = {"ana@a.example", "Plans", std::nullopt, content, messageId};
    });
}

QStringList FeatureFixture::sent() const
{
    QStringList sent;
    for (const ReceivedRequest& request : m_server.requests()) {
        const QString target = QString::fromStdString(request.target).remove(QStringLiteral("/api/v1"));
        sent.append(QStringLiteral("%1 %2 %3")
                        .arg(target, QString::fromStdString(request.headers.at("authorization")),
                             QString::fromStdString(request.body)));
    }
    return sent;
}

QStringList FeatureFixture::stored()
{
    QStringList stored;
    for (const auto& [key, value] : UserDefaults::standard().dictionaryRepresentation()) {
        const auto* text = std::get_if<std::string>(&value);
        const auto* boolean = std::get_if<bool>(&value);
        const std::string shown = text ? *text : boolean ? (*boolean ? "true" : "false") : "data";
        stored.append(QString::fromStdString(key + "=" + shown));
    }
    return stored;
}

} // namespace quillmate
