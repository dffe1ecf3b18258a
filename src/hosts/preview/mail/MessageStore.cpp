#include "hosts/preview/mail/MessageStore.h"

#include "hosts/preview/mail/InputFile.h"
#include "hosts/preview/mail/MaildirFolder.h"
#include "hosts/preview/mail/MboxScanner.h"
#include "hosts/preview/mail/SourceText.h"

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

MessageEntries listContent(const std::string& name, std::string content)
{
    if (content.empty()) {
        return failed(empty(name));
    }
    if (!looksLikeMail(std::string_view(content).substr(0, headBytes))) {
        return failed(notMail(name));
    }
    dropFromLine(content);
    const std::uint64_t length = content.size();
    MessageSummary summary = summarizeMessage(std::string_view(content).substr(0, headBytes));
    const auto shared = std::make_shared<const std::string>(std::move(content));
    return std::vector<MessageEntry>{{{name, 0, length, false, shared}, std::move(summary)}};
}

MessageEntries listMbox(const InputFile& file, const std::stop_token& stop)
{
    MboxScanner scanner;
    for (std::uint64_t offset = 0; offset < file.size(); offset += chunkBytes) {
        if (stop.stop_requested()) {
            return failed({MailFailure::Kind::Stopped, "Reading " + file.name() + " was stopped before its end."});
        }
        const auto chunk = file.readAt(offset, chunkBytes);
        if (!chunk) {
            return failed(chunk.error());
        }
        scanner.feed(chunk.value());
    }
    std::vector<MessageEntry> entries;
    for (const MboxScanner::Range& range : scanner.finish()) {
        const auto head = file.readAt(range.offset, std::min<std::uint64_t>(range.length, headBytes));
        if (!head) {
            return failed(head.error());
        }
        if (stop.stop_requested()) {
            return failed({MailFailure::Kind::Stopped, "Reading " + file.name() + " was stopped before its end."});
        }
        entries.push_back({{file.name(), range.offset, range.length, true, nullptr}, summarizeMessage(head.value())});
    }
    if (entries.empty()) {
        return failed(notMail(file.name()));
    }
    return entries;
}

MessageEntries listMessageFile(const InputFile& file)
{
    if (file.size() == 0) {
        return failed(empty(file.name()));
    }
    if (file.size() > maximumMessageBytes) {
        return failed(tooLarge(file.name()));
    }
    const auto head = file.readAt(0, headBytes);
    if (!head) {
        return failed(head.error());
    }
    if (!looksLikeMail(head.value())) {
        return failed(notMail(file.name()));
    }
    return std::vector<MessageEntry>{{{file.name(), 0, file.size(), false, nullptr}, summarizeMessage(head.value())}};
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
            return failed({MailFailure::Kind::Stopped, "Reading " + path + " was stopped before its end."});
        }
        auto file = InputFile::open(name);
        if (!file && file.error().kind == MailFailure::Kind::Missing) {
            continue; // A mail program has moved or deleted it since the folder was read, which a Maildir allows.
        }
        MessageEntries listed = file ? listMessageFile(file.value()) : failed(file.error());
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
    if (argument == "-") {
        const InputFile input = InputFile::standardInput();
        auto content = input.readAll(stop);
        return content ? listContent(input.name(), std::move(content).value()) : failed(content.error());
    }
    if (isFolder(argument)) {
        return listMaildir(argument, stop);
    }
    const auto file = InputFile::open(argument);
    if (!file) {
        return failed(file.error());
    }
    if (!file.value().isRegular()) {
        auto content = file.value().readAll(stop);
        return content ? listContent(argument, std::move(content).value()) : failed(content.error());
    }
    const auto head = file.value().readAt(0, headBytes);
    if (!head) {
        return failed(head.error());
    }
    return beginsMbox(head.value()) ? listMbox(file.value(), stop) : listMessageFile(file.value());
}

Loading loadMessage(const MessageLocation& location, const ContentRules& rules)
{
    std::string source;
    if (location.content != nullptr) {
        source = *location.content;
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
