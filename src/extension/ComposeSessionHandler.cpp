#include "extension/ComposeSessionHandler.h"

#include "extension/ComposeSessionViewController.h"
#include "extension/RepliedMessageExtraction.h"

namespace quillmate
{

void ComposeSessionHandler::mailComposeSessionDidBegin(const MEComposeSession& session)
{
    extractRepliedMessage(session);
}

void ComposeSessionHandler::mailComposeSessionDidEnd(const MEComposeSession&) {}

std::shared_ptr<MEExtensionViewController> ComposeSessionHandler::viewControllerForSession(const MEComposeSession&)
{
    return ComposeSessionViewController::make();
}

} // namespace quillmate
