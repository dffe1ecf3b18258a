#include "extension/ComposeSessionHandler.h"

#include "extension/ComposeSessionViewController.h"
#include "extension/RepliedMessageExtraction.h"
#include "features/RepliedMessage.h"

#include <utility>

namespace quillmate
{

void ComposeSessionHandler::mailComposeSessionDidBegin(const MEComposeSession& session)
{
    auto message = std::make_shared<const RepliedMessage>(extractRepliedMessage(session));
    m_messages.with([&](auto& messages) { messages.insert_or_assign(session.sessionID(), std::move(message)); });
}

void ComposeSessionHandler::mailComposeSessionDidEnd(const MEComposeSession& session)
{
    const auto ended = m_messages.with([&](auto& messages) { return messages.extract(session.sessionID()); });
    if (ended.empty() || !ended.mapped()->content()) {
        return;
    }
    ReplyEmailManager::shared().update([&ended](ReplyEmail& shared) {
        if (shared.content && shared.content->isOneWith(*ended.mapped()->content())) {
            shared.content.reset();
        }
    });
}

std::shared_ptr<MEExtensionViewController>
ComposeSessionHandler::viewControllerForSession(const MEComposeSession& session)
{
    auto message = m_messages.with([&](const auto& messages) {
        const auto found = messages.find(session.sessionID());
        return found == messages.end() ? nullptr : found->second;
    });
    if (!message) { // A session that never began has told of no message.
        message = std::make_shared<const RepliedMessage>(ReplyEmail());
    }
    return ComposeSessionViewController::make(std::move(message));
}

} // namespace quillmate
