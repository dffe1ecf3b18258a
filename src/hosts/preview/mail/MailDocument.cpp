#include "hosts/preview/mail/MailDocument.h"

#include "hosts/preview/mail/MessageParts.h"
#include "hosts/preview/mail/SourceText.h"

namespace quillmate
{
namespace
{

constexpr std::size_t snippetBytes = 200;
// White space and quotations at the top take room before the first readable words.
constexpr std::size_t snippetTextBytes = 4096;

QDateTime dateOf(const MailHeaders& headers)
{
    const auto value = headers.first("date");
    if (!value) {
        return {};
    }
    prepareMimeLibrary();
    GDateTime* date = g_mime_utils_header_decode_date(std::string(*value).c_str());
    if (date == nullptr) {
        return {};
    }
    constexpr std::int64_t microsecondsPerSecond = 1000000;
    const auto offsetSeconds = static_cast<int>(g_date_time_get_utc_offset(date) / microsecondsPerSecond);
    QDateTime result = QDateTime::fromSecsSinceEpoch(g_date_time_to_unix(date), Qt::OffsetFromUTC, offsetSeconds);
    g_date_time_unref(date);
    return result;
}

Mailbox senderOf(const MailHeaders& headers)
{
    for (const std::string_view field : {"from", "sender"}) {
        const std::vector<Mailbox> mailboxes = parseMailboxes(headers.first(field).value_or(std::string_view()));
        if (!mailboxes.empty()) {
            return mailboxes.front();
        }
    }
    return {headers.decoded("from"), {}};
}

std::string snippetOf(std::string_view text)
{
    std::string snippet;
    bool blankHeld = false;
    for (const char letter : text) {
        if (letter == ' ' || letter == '\n' || letter == '\t' || letter == '\r') {
            blankHeld = !snippet.empty();
            continue;
        }
        if (blankHeld) {
            snippet.push_back(' ');
            blankHeld = false;
        }
        snippet.push_back(letter);
        if (snippet.size() > snippetBytes) {
            break;
        }
    }
    return std::string(cutUtf8(snippet, snippetBytes));
}

MessageSummary summaryOf(const MailHeaders& headers, std::string_view text)
{
    return {senderOf(headers), headers.decoded("subject"), snippetOf(text), dateOf(headers)};
}

} // namespace

MessageSummary summarizeMessage(std::string_view head)
{
    return summaryOf(MailHeaders::parse(head), displayTextOf(head, snippetTextBytes).text);
}

MailDocument readDocument(std::string source, const ContentRules& rules)
{
    const MailHeaders headers = MailHeaders::parse(source);
    MailDocument document;
    {
        const MessageParts parts(source);
        document.text = displayTextOf(parts, displayTextBytes);
        document.remoteImages = countRemoteImages(parts.html(displayTextBytes * markupPerText).text, rules);
    }
    document.summary = summaryOf(headers, document.text.text);
    document.to = headers.decoded("to");
    document.cc = headers.decoded("cc");
    document.replyTo = parseMailboxes(headers.first("reply-to").value_or(std::string_view()));
    if (document.replyTo.empty()) {
        document.replyTo = parseMailboxes(headers.first("from").value_or(std::string_view()));
    }
    const std::string& address = document.summary.sender.address;
    document.message = std::make_shared<const MEMessage>(MEMessage{
        .rawData = std::move(source),
        .subject = document.summary.subject,
        .fromAddress = {address.empty() ? std::nullopt : std::optional(address)},
        .headers = headers.toMessageHeaders(),
    });
    return document;
}

} // namespace quillmate
