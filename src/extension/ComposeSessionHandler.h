#pragma once

#include "platform/mailkit/MEComposeSessionHandler.h"
#include "state/Synchronized.h"

#include <map>
#include <memory>
#include <string>

namespace quillmate
{

class RepliedMessage;

/// Reacts to compose windows, and keeps the message of each for its panel. Any thread.
class ComposeSessionHandler final : public MEComposeSessionHandler
{
public:
    void mailComposeSessionDidBegin(const MEComposeSession& session) override;
    /// Forgets the session's message. The shared record stays as it is until the next session begins, but for the text,
    /// which nobody reads there any more and which may be long.
    void mailComposeSessionDidEnd(const MEComposeSession& session) override;
    std::shared_ptr<MEExtensionViewController> viewControllerForSession(const MEComposeSession& session) override;

private:
    Synchronized<std::map<std::string, std::shared_ptr<const RepliedMessage>>> m_messages; // By the session's id.
};

} // namespace quillmate
