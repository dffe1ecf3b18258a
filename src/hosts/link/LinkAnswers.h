#pragma once

#include "hosts/link/LinkFrame.h"
#include "hosts/startup/ServiceChoice.h"
#include "platform/mailkit/MEExtension.h"

#include <optional>
#include <string>

namespace quillmate
{

// The frames that this process sends, each as JSON.

/// Answers the questions of the link: by the extension's handlers, and by what is known of the program. One thread.
class LinkAnswers
{
public:
    LinkAnswers(MEExtension& extension, ServiceOffer service)
        : m_extension(extension)
        , m_service(service)
    {
    }

    /// Asks on the calling thread.
    [[nodiscard]] std::string answerTo(const LinkQuestion& question);

private:
    MEExtension& m_extension;
    ServiceOffer m_service;
};

/// Whether the service can be reached: it cannot where there is a problem, a sentence for people.
[[nodiscard]] std::string writeStatus(const std::optional<std::string>& problem);

/// What tells of an error, short enough for one frame.
[[nodiscard]] std::string writeLinkError(const LinkError& error);

} // namespace quillmate
