#pragma once

#include "hosts/preview/mail/RemoteImages.h"
#include "mail/Mailbox.h"
#include "mail/MessageText.h"
#include "platform/mailkit/MEMessage.h"

#include <QDateTime>
#include <memory>
#include <string>
#include <string_view>

namespace quillmate
{

/// What the message list shows of a message.
struct MessageSummary {
    Mailbox sender;
    std::string subject; ///< decoded, empty when there is none
    std::string snippet; ///< the text's beginning as one line
    QDateTime date;      ///< with the offset the sender wrote; invalid when absent or unreadable

    bool operator==(const MessageSummary&) const = default;
};

/// A message read whole: what the extension gets, and what the windows show.
struct MailDocument {
    std::shared_ptr<const MEMessage> message;
    MessageSummary summary;
    MessageText text;
    RemoteImages remoteImages;    ///< those of its HTML part, also where the plain one is shown
    std::string to;               ///< the To field, decoded
    std::string cc;               ///< the Cc field, decoded
    std::vector<Mailbox> replyTo; ///< whom a reply goes to: Reply-To, else From
};

/// The most text of one message that is shown and quoted, in bytes; the extension gets the whole all the same.
inline constexpr std::size_t displayTextBytes = std::size_t{128} * 1024;

/// `head` is the source's beginning, at least the header block; line ends of either kind.
MessageSummary summarizeMessage(std::string_view head);

/// `source` has bare line feeds and no mbox marks; `rules` tell trackers from other images. Runs as long as the message
/// is large: not on the main thread.
MailDocument readDocument(std::string source, const ContentRules& rules = {});

} // namespace quillmate
