#pragma once

#include "platform/mailkit/MEExtension.h"

namespace quillmate
{

/// The extension's principal object: hands out the handlers. Any thread.
class MailExtension final : public MEExtension
{
public:
    /// A new handler for each call.
    std::shared_ptr<MEComposeSessionHandler> handlerForComposeSession(const MEComposeSession& session) override;
    // The one handler of its kind, made on the first call.
    std::shared_ptr<MEContentBlocker> handlerForContentBlocker() override;
    std::shared_ptr<MEMessageActionHandler> handlerForMessageActions() override;
    std::shared_ptr<MEMessageSecurityHandler> handlerForMessageSecurity() override;
};

} // namespace quillmate
