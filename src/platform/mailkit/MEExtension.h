#pragma once

#include "platform/mailkit/MEComposeSession.h"
#include "platform/mailkit/MEComposeSessionHandler.h"
#include "platform/mailkit/MEHandlers.h"

#include <memory>

namespace quillmate
{

/// An extension's principal object: the Mail host makes one and asks it for handlers, from any thread.
class MEExtension
{
public:
    MEExtension() = default;
    virtual ~MEExtension() = default;
    MEExtension(const MEExtension&) = delete;
    MEExtension& operator=(const MEExtension&) = delete;

    virtual std::shared_ptr<MEComposeSessionHandler> handlerForComposeSession(const MEComposeSession& session) = 0;
    virtual std::shared_ptr<MEContentBlocker> handlerForContentBlocker() = 0;
    virtual std::shared_ptr<MEMessageActionHandler> handlerForMessageActions() = 0;
    virtual std::shared_ptr<MEMessageSecurityHandler> handlerForMessageSecurity() = 0;
};

} // namespace quillmate
