#pragma once

#include "hosts/preview/mail/MailDocument.h"

#include <string>

namespace quillmate
{

/// What a compose window opens with. All texts UTF-8.
struct ComposeDraft {
    std::string to;
    std::string subject;
    std::string body; ///< the caret belongs at its top

    bool operator==(const ComposeDraft&) const = default;
};

/// To the Reply-To mailboxes, else the sender; the text quoted below "On DATE, NAME wrote:".
ComposeDraft composeReply(const MailDocument& original);
/// To nobody yet; the message below a line that says it is forwarded.
ComposeDraft composeForward(const MailDocument& original);

/// `subject` behind `prefix` ("Re", "Fwd"), unless it has one of that meaning already, "Re[2]:" included.
std::string prefixedSubject(const std::string& prefix, const std::string& subject);

} // namespace quillmate
