#include "extension/ComposeSessionHandler.h"

#include "extension/ComposeSessionViewController.h"
#include "extension/RepliedMessageExtraction.h"
#include "features/RepliedMessage.h"

namespace quillmate
{

void ComposeSessionHandler::mailComposeSessionDidBegin(const MEComposeSession& session)
{
    auto message = std::make_shared<const RepliedMessage>(extractRepliedMessage(session));
    m_messages.with([&](auto& messages) { messages.insert_or_assign(session.sessionID(), std::move(message)); });
}

void ComposeSessionHandler::mailComposeSessionDidEnd(const MEComposeSession& session)
{
    m_messages.with([&](auto& messages) { messages.erase(session.sessionID()); });
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
