#pragma once

#include "platform/mailkit/MEHandlers.h"

namespace quillmate
{

/// Colours messages about Mars, and keeps the body of each message it is shown in the shared record.
class MessageActionHandler final : public MEMessageActionHandler
{
public:
    /// The completion runs once, before the call returns.
    void decideActionForMessage(const MEMessage& message, const Completion& completion) override;
};

} // namespace quillmate
