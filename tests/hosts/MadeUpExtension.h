#pragma once

#include "platform/appkit/MEExtensionViewController.h"
#include "platform/mailkit/MEExtension.h"

#include <functional>

namespace quillmate
{

/// An extension whose panel is empty and whose rules, decisions and security a test makes up. It outlives its
/// handlers.
class MadeUpExtension : public MEExtension, MEComposeSessionHandler, MEContentBlocker, MEMessageActionHandler
{
public:
    /// The background of a message, 0 for none; asked on any thread.
    std::function<int(const MEMessage&)> color = [](const MEMessage&) { return 0; };
    std::string rules;
    bool hasPanel = true;
    std::shared_ptr<MEMessageSecurityHandler> security;
    /// Told of what a session's handler is asked: "begin", "end", "panel"; on the thread that asks.
    std::function<void(const char*, const MEComposeSession&)> asked = [](const char*, const MEComposeSession&) {};

    std::shared_ptr<MEComposeSessionHandler> handlerForComposeSession(const MEComposeSession&) override
    {
        return {std::shared_ptr<void>(), this};
    }
    std::shared_ptr<MEContentBlocker> handlerForContentBlocker() override { return {std::shared_ptr<void>(), this}; }
    std::shared_ptr<MEMessageActionHandler> handlerForMessageActions() override
    {
        return {std::shared_ptr<void>(), this};
    }
    std::shared_ptr<MEMessageSecurityHandler> handlerForMessageSecurity() override { return security; }

private:
    void mailComposeSessionDidBegin(const MEComposeSession& session) override { asked("begin", session); }
    void mailComposeSessionDidEnd(const MEComposeSession& session) override { asked("end", session); }
    std::shared_ptr<MEExtensionViewController> viewControllerForSession(const MEComposeSession& session) override
    {
        asked("panel", session);
        return hasPanel ? std::make_shared<MEExtensionViewController>() : nullptr;
    }
    std::string contentRulesJSON() override { return rules; }
    void decideActionForMessage(const MEMessage& message, const Completion& completion) override
    {
        const int decided = color(message);
        completion(decided == 0
                       ? std::nullopt
                       : std::optional(MEMessageActionDecision{MEMessageAction::setBackgroundColorAction(decided)}));
    }
};

} // namespace quillmate
