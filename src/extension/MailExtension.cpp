#include "extension/MailExtension.h"

#include "extension/ComposeSessionHandler.h"
#include "extension/ContentBlocker.h"
#include "extension/MessageActionHandler.h"
#include "extension/MessageSecurityHandler.h"

namespace quillmate
{

std::shared_ptr<MEComposeSessionHandler> MailExtension::handlerForComposeSession(const MEComposeSession&)
{
    return std::make_shared<ComposeSessionHandler>();
}

std::shared_ptr<MEContentBlocker> MailExtension::handlerForContentBlocker()
{
    static const auto blocker = std::make_shared<ContentBlocker>();
    return blocker;
}

std::shared_ptr<MEMessageActionHandler> MailExtension::handlerForMessageActions()
{
    static const auto handler = std::make_shared<MessageActionHandler>();
    return handler;
}

std::shared_ptr<MEMessageSecurityHandler> MailExtension::handlerForMessageSecurity()
{
    static const auto handler = std::make_shared<MessageSecurityHandler>();
    return handler;
}

} // namespace quillmate
