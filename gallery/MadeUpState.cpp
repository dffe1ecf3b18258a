#include "MadeUpState.h"

#include "features/MessageHistory.h"
#include "features/RepliedMessage.h"
#include "platform/foundation/schedule/MainOwned.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "state/AuthManager.h"
#include "state/IncommingUpdatesManager.h"
#include "state/SettingsKeys.h"
#include "views/HostedViewOf.h"
#include "views/session/SessionTabsViewState.h"

namespace quillmate
{
namespace
{

const std::string messageId = "<gallery@mail.example>";

} // namespace

Scene usualScene()
{
    return {"Quarterly planning",
            "Ana proposes to move the planning meeting to Thursday at 10:00.\n"
            "She needs the revised budget by Wednesday evening.\n"
            "She asks whether Jonas can join by phone.",
            "Hello Ana,\n\nthank you for your message. Thursday at 10:00 suits me well, and you will have the revised "
            "budget by Wednesday evening.\n\nJonas can join by phone.\n\nKind regards\nMaria",
            {"When does she want to meet?", "The message says:\nI would like to move our meeting to Thursday at 10:00.",
             "And what does she need from me?", "The message says:\nPlease send me the revised budget by Wednesday."}};
}

std::shared_ptr<const RepliedMessage> messageOf(const Scene& scene)
{
    ReplyEmail record;
    record.messageId = messageId;
    record.subject = scene.subject;
    record.content = "Text of the message.";
    return std::make_shared<const RepliedMessage>(std::move(record));
}

void setUp(const Scene& scene)
{
    clearSettingsStore();
    IncommingUpdatesManager::shared().setIncommingUpdatesAvailable(scene.updateAnnounced);
    UserDefaults& defaults = UserDefaults::standard();
    if (!scene.summary.empty()) {
        defaults.setString(SettingsKeys::summarizeResponse(messageId), scene.summary);
    }
    if (!scene.reply.empty()) {
        defaults.setString(SettingsKeys::generateResponse(messageId), scene.reply);
        defaults.setBoolean(SettingsKeys::generateResponseFlag(messageId), true);
    }
    MessageHistory history;
    for (std::size_t i = 0; i < scene.conversation.size(); ++i) {
        const std::string& text = scene.conversation[i];
        history.append(i % 2 == 0 ? Message::question(text) : Message::answer(text));
    }
    if (const auto encoded = history.encode()) {
        defaults.setData(SettingsKeys::chatHistory(messageId), std::string(encoded.value()));
    }
}

HostedView panelIn(const Scene& scene, const std::function<void(SessionTabsViewState&)>& change)
{
    setUp(scene);
    auto state = makeMainOwned<SessionTabsViewState>(messageOf(scene), nullptr);
    if (change) {
        change(*state);
    }
    return hostedViewOf(QStringLiteral("SessionTabsView"), std::move(state));
}

HostedView chatIn(const Scene& scene, const std::function<void(ChatViewState&)>& change)
{
    setUp(scene);
    auto state = makeMainOwned<ChatViewState>(messageOf(scene));
    if (change) {
        change(*state);
    }
    return hostedViewOf(QStringLiteral("ChatContentView"), std::move(state));
}

} // namespace quillmate
