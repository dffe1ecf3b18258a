#pragma once

#include "platform/mailkit/MEMessage.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmate
{

class MEExtensionViewController;

/// Hands the Mail host its content-blocking rules.
class MEContentBlocker
{
public:
    MEContentBlocker() = default;
    virtual ~MEContentBlocker() = default;
    MEContentBlocker(const MEContentBlocker&) = delete;
    MEContentBlocker& operator=(const MEContentBlocker&) = delete;

    virtual std::string contentRulesJSON() = 0;
};

/// An action on a message: what to do, and with which colour.
struct MEMessageAction {
    enum class Kind { SetBackgroundColor };
    Kind kind = Kind::SetBackgroundColor;
    /// The platform's number of the colour; 4 is red.
    int color = 0;

    static MEMessageAction setBackgroundColorAction(int color) { return {Kind::SetBackgroundColor, color}; }
    bool operator==(const MEMessageAction&) const = default;
};

/// The decision to apply an action.
struct MEMessageActionDecision {
    MEMessageAction action;

    static MEMessageActionDecision decisionApplyingAction(MEMessageAction action) { return {action}; }
    bool operator==(const MEMessageActionDecision&) const = default;
};

/// Decides on messages as they arrive.
class MEMessageActionHandler
{
public:
    using Completion = std::function<void(std::optional<MEMessageActionDecision>)>;

    MEMessageActionHandler() = default;
    virtual ~MEMessageActionHandler() = default;
    MEMessageActionHandler(const MEMessageActionHandler&) = delete;
    MEMessageActionHandler& operator=(const MEMessageActionHandler&) = delete;

    virtual void decideActionForMessage(const MEMessage& message, const Completion& completion) = 0;
};

struct MEOutgoingMessageEncodingStatus {
    bool canSign = false;
    bool canEncrypt = false;
    std::optional<std::string> securityError;
    std::vector<MEEmailAddress> addressesFailingEncryption;
    bool operator==(const MEOutgoingMessageEncodingStatus&) const = default;
};

struct MEMessageEncodingResult {
    std::optional<std::string> encodedMessage;
    std::optional<std::string> signingError;
    std::optional<std::string> encryptionError;
    bool operator==(const MEMessageEncodingResult&) const = default;
};

/// A decoded message; this system never makes one.
struct MEDecodedMessage {
    std::string data;
};

/// Signs, encrypts and decodes messages.
class MEMessageSecurityHandler
{
public:
    MEMessageSecurityHandler() = default;
    virtual ~MEMessageSecurityHandler() = default;
    MEMessageSecurityHandler(const MEMessageSecurityHandler&) = delete;
    MEMessageSecurityHandler& operator=(const MEMessageSecurityHandler&) = delete;

    virtual void getEncodingStatus(const MEMessage& message,
                                   const std::function<void(MEOutgoingMessageEncodingStatus)>& completion) = 0;
    virtual void encodeMessage(const MEMessage& message,
                               const std::function<void(MEMessageEncodingResult)>& completion) = 0;
    virtual std::optional<MEDecodedMessage> decodedMessage(const std::string& messageData) = 0;
    /// Main thread.
    virtual std::shared_ptr<MEExtensionViewController> extensionViewControllerForMessageSigners() = 0;
    virtual std::shared_ptr<MEExtensionViewController> extensionViewControllerForMessageContext() = 0;
    virtual void primaryActionClickedForMessageContext(
        const std::function<void(std::shared_ptr<MEExtensionViewController>)>& completion) = 0;
};

} // namespace quillmate
