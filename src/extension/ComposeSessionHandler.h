#pragma once

#include "platform/mailkit/MEComposeSessionHandler.h"

namespace quillmate
{

/// Reacts to compose windows. Keeps nothing: what it learns goes into the shared record.
class ComposeSessionHandler final : public MEComposeSessionHandler
{
public:
    void mailComposeSessionDidBegin(const MEComposeSession& session) override;
    /// Does nothing: the record stays as it is until the next session begins.
    void mailComposeSessionDidEnd(const MEComposeSession& session) override;
    std::shared_ptr<MEExtensionViewController> viewControllerForSession(const MEComposeSession& session) override;
};

} // namespace quillmate
