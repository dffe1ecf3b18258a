#pragma once

#include "platform/mailkit/MEMessage.h"

#include <memory>
#include <string>
#include <utility>

namespace quillmate
{

/// What the Mail host tells of one compose window.
class MEComposeContext
{
public:
    explicit MEComposeContext(std::shared_ptr<const MEMessage> originalMessage = nullptr)
        : m_originalMessage(std::move(originalMessage))
    {
    }

    /// The message being replied to or forwarded, null for a new message. Any thread.
    [[nodiscard]] std::shared_ptr<const MEMessage> originalMessage() const { return m_originalMessage; }

private:
    std::shared_ptr<const MEMessage> m_originalMessage;
};

/// One compose window of the Mail host. Immutable, so any thread may read it.
class MEComposeSession
{
public:
    MEComposeSession(std::string sessionID, MEComposeContext composeContext)
        : m_sessionID(std::move(sessionID))
        , m_composeContext(std::move(composeContext))
    {
    }

    [[nodiscard]] const std::string& sessionID() const { return m_sessionID; }
    [[nodiscard]] const MEComposeContext& composeContext() const { return m_composeContext; }

private:
    std::string m_sessionID;
    MEComposeContext m_composeContext;
};

} // namespace quillmate
