#include "hosts/preview/mail/MailDocument.h"

#include "hosts/preview/mail/ReadableSource.h"
#include "mail/EncodedWords.h"
#include "mail/HeaderFields.h"
#include "mail/MessageDate.h"
#include "mail/SourceText.h"

namespace quillmate
{
namespace
{

constexpr std::size_t snippetBytes = 200;
// White space and quotations at the top take room before the first readable words.
constexpr std::size_t snippetTextBytes = 4096;

Mailbox senderOf(const HeaderFields& headers)
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
    const std::string_view beginning = cutUtf8(text, snippetTextBytes);
    const auto size = static_cast<qsizetype>(beginning.size());
    return std::string(cutUtf8(QString::fromUtf8(beginning.data(), size).simplified().toStdString(), snippetBytes));
}

MessageSummary summaryOf(const HeaderFields& headers, std::string_view text)
{
    return {senderOf(headers), headers.decoded("subject"), snippetOf(text),
            parseDate(headers.first("date").value_or(std::string_view()))};
}

/// As the extension sees them: encoded words decoded to UTF-8, but "message-id" byte for byte.
MEMessage::Headers messageHeadersOf(const HeaderFields& fields)
{
    MEMessage::Headers headers;
    for (const HeaderFields::Field& field : fields.fields()) {
        headers[field.name].push_back(field.name == "message-id" ? field.value : decodeHeaderText(field.value));
    }
    return headers;
}

} // namespace

MessageSummary summarizeMessage(std::string_view head)
{
    return summaryOf(HeaderFields::parse(head), textOfMessage(head, snippetTextBytes).text);
}

MailDocument readDocument(std::string source, const ContentRules& rules)
{
    const HeaderFields headers = HeaderFields::parse(source);
    MailDocument document;
    {
        const std::vector<TextPart> parts = textPartsOf(source);
        document.text = textOfParts(parts, displayTextBytes);
        document.remoteImages = countRemoteImages(htmlOfParts(parts), rules);
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
        .rawData = readableSource(std::move(source)),
        .subject = document.summary.subject,
        .fromAddress = {address.empty() ? std::nullopt : std::optional(address)},
        .headers = messageHeadersOf(headers),
    });
    return document;
}

} // namespace quillmate
