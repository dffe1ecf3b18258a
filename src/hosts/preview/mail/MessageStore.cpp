#include "hosts/preview/mail/MessageStore.h"

#include "hosts/preview/mail/InputFile.h"
#include "hosts/preview/mail/MboxScanner.h"
#include "mail/SourceText.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <system_error>

namespace quillmate
{
namespace
{

// Enough for the header block and the first lines of text of ordinary mail.
constexpr std::size_t headBytes = std::size_t{128} * 1024;
constexpr std::size_t scanChunkBytes = std::size_t{1024} * 1024;

namespace files = std::filesystem;
using Names = Result<std::vector<std::string>, std::string>;

std::string notMail(const std::string& name)
{
    return name + " is no mail message (it does not begin with mail header fields): name an .eml file, an mbox or a "
                  "Maildir.";
}

MessageEntries listMbox(const InputFile& file, const std::stop_token& stop)
{
    MboxScanner scanner;
    for (std::uint64_t offset = 0; offset < file.size() && !stop.stop_requested(); offset += scanChunkBytes) {
        const auto chunk = file.readAt(offset, scanChunkBytes);
        if (!chunk) {
            return Failure(chunk.error());
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
            return Failure(head.error());
        }
        entries.push_back(
            {{file.name(), range.offset, range.length, true, file.content()}, summarizeMessage(head.value())});
    }
    if (entries.empty()) {
        return Failure(notMail(file.name()));
    }
    return entries;
}

MessageEntries listFile(const InputFile& file, bool mayBeMbox, const std::stop_token& stop)
{
    if (file.size() == 0) {
        return Failure(file.name() + " is empty: name a file that holds a mail message.");
    }
    const auto head = file.readAt(0, headBytes);
    if (!head) {
        return Failure(head.error());
    }
    if (mayBeMbox && head.value().starts_with("From ")) {
        return listMbox(file, stop);
    }
    if (file.size() > maximumMessageBytes) {
        return Failure(tooLarge(file.name()));
    }
    if (!looksLikeMail(head.value())) {
        return Failure(notMail(file.name()));
    }
    return std::vector<MessageEntry>{
        {{file.name(), 0, file.size(), false, file.content()}, summarizeMessage(head.value())}};
}

Names filesIn(const files::path& folder)
{
    std::vector<std::string> names;
    std::error_code failure;
    for (files::directory_iterator entry(folder, failure), end; !failure && entry != end; entry.increment(failure)) {
        std::error_code ignored; // A file that vanishes meanwhile is no message any more.
        const bool isHidden = entry->path().filename().native().starts_with('.');
        if (!isHidden && entry->is_regular_file(ignored)) {
            names.push_back(entry->path().native());
        }
    }
    if (failure) {
        return Failure(systemFailure(folder.native(), failure.value()));
    }
    std::sort(names.begin(), names.end());
    return names;
}

bool isFolder(const std::string& path)
{
    std::error_code ignored; // What cannot be asked about is opened as a file, and the opening says what is wrong.
    return files::is_directory(path, ignored);
}

/// The message files of a Maildir, those in "new" first, each folder in the order of the names.
Names maildirFiles(const std::string& path)
{
    std::vector<std::string> names;
    bool isMaildir = false;
    for (const char* part : {"new", "cur"}) {
        const files::path folder = files::path(path) / part;
        if (!isFolder(folder.native())) {
            continue;
        }
        isMaildir = true;
        Names found = filesIn(folder);
        if (!found) {
            return found;
        }
        std::copy(found.value().begin(), found.value().end(), std::back_inserter(names));
    }
    if (!isMaildir) {
        return Failure(
            path + " is a folder but no Maildir (it has neither \"cur\" nor \"new\"): name a Maildir, an mbox or an "
                   ".eml file.");
    }
    return names;
}

MessageEntries listMaildir(const std::string& path, const std::stop_token& stop)
{
    const auto files = maildirFiles(path);
    if (!files) {
        return Failure(files.error());
    }
    std::vector<MessageEntry> entries;
    for (const std::string& name : files.value()) {
        if (stop.stop_requested()) {
            break; // As above.
        }
        auto file = InputFile::open(name, stop);
        if (std::error_code ignored; !file && !files::exists(name, ignored)) {
            continue; // A mail program has moved or deleted it since the folder was read, which a Maildir allows.
        }
        MessageEntries listed = file ? listFile(file.value(), false, stop) : Failure(file.error());
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
    return file ? listFile(file.value(), argument != "-", stop) : Failure(file.error());
}

Result<MailDocument, std::string> loadMessage(const MessageLocation& location, const ContentRules& rules)
{
    std::string source;
    if (location.content != nullptr) {
        source = location.content->substr(location.offset, location.length);
    } else {
        if (location.length > maximumMessageBytes) {
            return Failure(tooLarge("A message in " + location.path));
        }
        const auto file = InputFile::open(location.path);
        if (!file) {
            return Failure(file.error());
        }
        auto bytes = file.value().readAt(location.offset, location.length);
        if (!bytes) {
            return Failure(bytes.error());
        }
        source = std::move(bytes).value();
        if (source.size() < location.length || !looksLikeMail(std::string_view(source).substr(0, headBytes))) {
            return Failure(location.path +
                           " was changed by another program since it was listed: close this window and open it "
                           "again.");
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
