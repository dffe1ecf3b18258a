#pragma once

#include "platform/mailkit/MEComposeSession.h"

#include <memory>

namespace quillmate
{

class MEExtensionViewController;

/// What the Mail host asks of an extension while a compose window is open. The optional questions of the platform
/// (annotating addresses, holding back a send, additional headers) are left to the host's defaults.
class MEComposeSessionHandler
{
public:
    MEComposeSessionHandler() = default;
    virtual ~MEComposeSessionHandler() = default;
    MEComposeSessionHandler(const MEComposeSessionHandler&) = delete;
    MEComposeSessionHandler& operator=(const MEComposeSessionHandler&) = delete;

    /// The window has opened; or more is known of the message, whose place this one takes. Runs to completion on the
    /// calling thread; with a message of many megabytes that takes a while, so a host calls it away from its main
    /// thread.
    virtual void mailComposeSessionDidBegin(const MEComposeSession& session) = 0;
    /// The window has closed.
    virtual void mailComposeSessionDidEnd(const MEComposeSession& session) = 0;
    /// A new view controller for the panel beside the window. Main thread.
    virtual std::shared_ptr<MEExtensionViewController> viewControllerForSession(const MEComposeSession& session) = 0;
};

} // namespace quillmate
