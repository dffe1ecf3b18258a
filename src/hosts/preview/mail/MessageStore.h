#pragma once

#include "base/Result.h"
#include "hosts/preview/mail/MailDocument.h"

#include <cstdint>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

namespace quillmate
{

/// Where a message's source lies.
struct MessageLocation {
    std::string path;                           ///< of the file, also the name in sentences
    std::uint64_t offset = 0;                   ///< bytes
    std::uint64_t length = 0;                   ///< bytes
    bool inMbox = false;                        ///< lines are marked as an mbox marks them
    std::shared_ptr<const std::string> content; ///< what the place is in where there is no file to go back to
};

/// One message of the list, its text left where it is.
struct MessageEntry {
    MessageLocation location;
    MessageSummary summary;
};

using MessageEntries = Result<std::vector<MessageEntry>, std::string>;

/// Lists what one argument of the command line names: a message file, an mbox, a Maildir, or "-" for standard input,
/// which holds one message. A pipe may hold a message or an mbox. Mbox messages come in file order, those of a Maildir
/// by date, newest first. One message that cannot be read fails the whole, with a sentence for the user. Takes memory
/// for the list only, except for input that cannot be read twice, which is waited for until `stop` is requested. Not on
/// the main thread.
MessageEntries listMessages(const std::string& argument, const std::stop_token& stop = {});

/// Reads a listed message whole; `rules` tell trackers from other images. Not on the main thread.
Result<MailDocument, std::string> loadMessage(const MessageLocation& location, const ContentRules& rules = {});

} // namespace quillmate
