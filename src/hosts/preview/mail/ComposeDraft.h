#pragma once

#include "hosts/preview/mail/MailDocument.h"

#include <string>
#include <string_view>

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

/// `subject` behind `prefix` ("Re", "Fwd"), unless it has one of that meaning already.
std::string prefixedSubject(std::string_view prefix, std::string_view subject);

/// Every line behind "> ", an empty or quoted one behind ">" alone (RFC 3676, 4.5).
std::string quotedText(std::string_view text);

/// A date as letters write it, in the offset it carries: "Tue, 4 March 2025 at 09:15".
std::string letterDate(const QDateTime& date);

} // namespace quillmate
