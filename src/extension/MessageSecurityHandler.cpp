#include "extension/MessageSecurityHandler.h"

#include "extension/MessageSecurityViewController.h"

namespace quillmate
{

void MessageSecurityHandler::getEncodingStatus(const MEMessage&,
                                               const std::function<void(MEOutgoingMessageEncodingStatus)>& completion)
{
    completion({});
}

void MessageSecurityHandler::encodeMessage(const MEMessage&,
                                           const std::function<void(MEMessageEncodingResult)>& completion)
{
    completion({});
}

std::optional<MEDecodedMessage> MessageSecurityHandler::decodedMessage(const std::string&)
{
    return std::nullopt;
}

std::shared_ptr<MEExtensionViewController> MessageSecurityHandler::extensionViewControllerForMessageSigners()
{
    return std::make_shared<MessageSecurityViewController>();
}

std::shared_ptr<MEExtensionViewController> MessageSecurityHandler::extensionViewControllerForMessageContext()
{
    return nullptr;
}

void MessageSecurityHandler::primaryActionClickedForMessageContext(
    const std::function<void(std::shared_ptr<MEExtensionViewController>)>& completion)
{
    completion(nullptr);
}

} // namespace quillmate
