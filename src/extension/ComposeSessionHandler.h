#pragma once

#include "platform/mailkit/MEComposeSessionHandler.h"
#include "state/Synchronized.h"

#include <map>
#include <memory>
#include <string>

namespace quillmate
{

class ComposeSessionViewController;
class RepliedMessage;

/// Reacts to compose windows, and keeps the message of each for its panel. Any thread.
class ComposeSessionHandler final : public MEComposeSessionHandler
{
public:
    /// A session that has begun before has its message completed; its panel changes over to another one unless the
    /// person is at work in it.
    void mailComposeSessionDidBegin(const MEComposeSession& session) override;
    /// Forgets the session's message. The shared record stays as it is until the next session begins, but for the text,
    /// which nobody reads there any more and which may be long.
    void mailComposeSessionDidEnd(const MEComposeSession& session) override;
    std::shared_ptr<MEExtensionViewController> viewControllerForSession(const MEComposeSession& session) override;

private:
    struct Session {
        Synchronized<std::shared_ptr<const RepliedMessage>> message;
        std::weak_ptr<ComposeSessionViewController> controller; // Main thread.
    };
    Synchronized<std::map<std::string, std::shared_ptr<Session>>> m_sessions; // By the session's id.
};

} // namespace quillmate
