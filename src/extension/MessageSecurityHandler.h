#pragma once

#include "platform/mailkit/MEHandlers.h"

namespace quillmate
{

/// Declines to sign, encrypt and decode. Every completion runs once, before the call returns.
class MessageSecurityHandler final : public MEMessageSecurityHandler
{
public:
    void getEncodingStatus(const MEMessage& message,
                           const std::function<void(MEOutgoingMessageEncodingStatus)>& completion) override;
    void encodeMessage(const MEMessage& message,
                       const std::function<void(MEMessageEncodingResult)>& completion) override;
    std::optional<MEDecodedMessage> decodedMessage(const std::string& messageData) override;
    std::shared_ptr<MEExtensionViewController> extensionViewControllerForMessageSigners() override;
    std::shared_ptr<MEExtensionViewController> extensionViewControllerForMessageContext() override;
    void primaryActionClickedForMessageContext(
        const std::function<void(std::shared_ptr<MEExtensionViewController>)>& completion) override;
};

} // namespace quillmate
