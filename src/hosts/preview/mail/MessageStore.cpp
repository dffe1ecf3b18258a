#include "hosts/preview/mail/MessageStore.h"

#include "hosts/preview/mail/InputFile.h"
#include "hosts/preview/mail/MaildirFolder.h"
#include "hosts/preview/mail/MboxScanner.h"
#include "mail/SourceText.h"

#include <algorithm>

namespace quillmate
{
namespace
{

// Enough for the header block and the first lines of text of ordinary mail.
constexpr std::size_t headBytes = std::size_t{128} * 1024;
constexpr std::size_t chunkBytes = std::size_t{1024} * 1024;

using Loading = Result<MailDocument, MailFailure>;

MailFailure empty(const std::string& name)
{
    return {MailFailure::Kind::Empty, name + " is empty: name a file that holds a mail message."};
}

MailFailure notMail(const std::string& name)
{
    return {MailFailure::Kind::NotMail,
            name + " is no mail message (it does not begin with mail header fields): name an .eml file, an mbox or a "
                   "Maildir."};
}

MailFailure changed(const std::string& name)
{
    return {MailFailure::Kind::Unreadable,
            name + " was changed by another program since it was listed: close this window and open it again."};
}

MessageEntries failed(MailFailure failure)
{
    return MessageEntries::failure(std::move(failure));
}

MessageEntries listMbox(const InputFile& file, const std::stop_token& stop)
{
    MboxScanner scanner;
    for (std::uint64_t offset = 0; offset < file.size() && !stop.stop_requested(); offset += chunkBytes) {
        const auto chunk = file.readAt(offset, chunkBytes);
        if (!chunk) {
            return failed(chunk.error());
        }
        scanner.feed(chunk.value());
    }
    std::vector<MessageEntry> entries;
    for (const MboxScanner::Range& range : scanner.finish()) {
        if (stop.stop_requested()) {
            break; // Nobody waits for the list any more.
        }
        const auto head = file.readAt(range.offset, std::min<std::uint64_t>(range.length, headBytes));
        if (!head) {
            return failed(head.error());
        }
        entries.push_back(
            {{file.name(), range.offset, range.length, true, file.content()}, summarizeMessage(head.value())});
    }
    return entries.empty() ? failed(notMail(file.name())) : entries;
}

MessageEntries listFile(const InputFile& file, bool mayBeMbox, const std::stop_token& stop)
{
    if (file.size() == 0) {
        return failed(empty(file.name()));
    }
    const auto head = file.readAt(0, headBytes);
    if (!head) {
        return failed(head.error());
    }
    if (mayBeMbox && beginsMbox(head.value())) {
        return listMbox(file, stop);
    }
    if (file.size() > maximumMessageBytes) {
        return failed(tooLarge(file.name()));
    }
    if (!looksLikeMail(head.value())) {
        return failed(notMail(file.name()));
    }
    return std::vector<MessageEntry>{
        {{file.name(), 0, file.size(), false, file.content()}, summarizeMessage(head.value())}};
}

MessageEntries listMaildir(const std::string& path, const std::stop_token& stop)
{
    const auto files = maildirFiles(path);
    if (!files) {
        return failed(files.error());
    }
    std::vector<MessageEntry> entries;
    for (const std::string& name : files.value()) {
        if (stop.stop_requested()) {
            break; // As above.
        }
        auto file = InputFile::open(name, stop);
        if (!file && file.error().kind == MailFailure::Kind::Missing) {
            continue; // A mail program has moved or deleted it since the folder was read, which a Maildir allows.
        }
        MessageEntries listed = file ? listFile(file.value(), false, stop) : failed(file.error());
        if (!listed) {
            return listed;
        }
        entries.push_back(listed.value().front());
    }
    std::stable_sort(entries.begin(), entries.end(), [](const MessageEntry& left, const MessageEntry& right) {
        return left.summary.date > right.summary.date;
    });
    return entries;
}

} // namespace

MessageEntries listMessages(const std::string& argument, const std::stop_token& stop)
{
    if (isFolder(argument)) {
        return listMaildir(argument, stop);
    }
    const auto file = InputFile::open(argument, stop);
    // What comes by standard input is one message, whatever its lines begin with.
    return file ? listFile(file.value(), argument != "-", stop) : failed(file.error());
}

Loading loadMessage(const MessageLocation& location, const ContentRules& rules)
{
    std::string source;
    if (location.content != nullptr) {
        source = location.content->substr(location.offset, location.length);
    } else {
        if (location.length > maximumMessageBytes) {
            return Loading::failure(tooLarge("A message in " + location.path));
        }
        const auto file = InputFile::open(location.path);
        if (!file) {
            return Loading::failure(file.error());
        }
        auto bytes = file.value().readAt(location.offset, location.length);
        if (!bytes) {
            return Loading::failure(bytes.error());
        }
        source = std::move(bytes).value();
        if (source.size() < location.length || !looksLikeMail(std::string_view(source).substr(0, headBytes))) {
            return Loading::failure(changed(location.path));
        }
    }
    useBareLineFeeds(source);
    if (location.inMbox) {
        unquoteFromLines(source);
    } else {
        dropFromLine(source);
    }
    return readDocument(std::move(source), rules);
}

} // namespace quillmate
