#include "extension/ComposeSessionHandler.h"

#include "extension/ComposeSessionViewController.h"
#include "extension/RepliedMessageExtraction.h"
#include "features/RepliedMessage.h"
#include "platform/foundation/schedule/DispatchQueue.h"

#include <utility>

namespace quillmate
{

void ComposeSessionHandler::mailComposeSessionDidBegin(const MEComposeSession& session)
{
    const auto original = session.composeContext().originalMessage();
    ReplyEmail record = extractRepliedMessage(session);
    auto content = record.content;
    const bool follows = original && original->rawDataFollows;
    const auto message = std::make_shared<const RepliedMessage>(std::move(record), follows);
    const auto known = m_sessions.with([&](auto& sessions) -> std::shared_ptr<Session> {
        const auto [place, isNew] = sessions.try_emplace(session.sessionID(), nullptr);
        if (isNew) {
            place->second = std::make_shared<Session>();
            place->second->message.set(message);
        }
        return isNew ? nullptr : place->second;
    });
    if (!known) {
        return;
    }
    // There, so that nobody types anything between the look and the change.
    DispatchQueue::main().async([known, message, content = std::move(content), follows] {
        const auto before = known->message.get();
        const bool changes = before->canGiveWayTo(*message);
        before->receiveContent(content, follows); // Also for whoever waits in a panel that changes.
        if (changes) {
            known->message.set(message);
            if (const auto controller = known->controller.lock()) {
                controller->changeMessage(message);
            }
        }
    });
}

void ComposeSessionHandler::mailComposeSessionDidEnd(const MEComposeSession& session)
{
    const auto ended = m_sessions.with([&](auto& sessions) { return sessions.extract(session.sessionID()); });
    const auto content = ended.empty() ? std::nullopt : ended.mapped()->message.get()->content();
    if (!content) {
        return;
    }
    ReplyEmailManager::shared().update([&content](ReplyEmail& shared) {
        if (shared.content && shared.content->isOneWith(*content)) {
            shared.content.reset();
        }
    });
}

std::shared_ptr<MEExtensionViewController>
ComposeSessionHandler::viewControllerForSession(const MEComposeSession& session)
{
    const auto known = m_sessions.with([&](const auto& sessions) {
        const auto found = sessions.find(session.sessionID());
        return found == sessions.end() ? nullptr : found->second;
    });
    // A session that never began has told of no message.
    auto controller = ComposeSessionViewController::make(known ? known->message.get()
                                                               : std::make_shared<const RepliedMessage>(ReplyEmail()));
    if (known) {
        known->controller = controller;
    }
    return controller;
}

} // namespace quillmate
