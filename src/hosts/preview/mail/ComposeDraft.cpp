#include "hosts/preview/mail/ComposeDraft.h"

#include "base/AsciiText.h"

#include <QLocale>
#include <QRegularExpression>
#include <QString>

namespace quillmate
{
namespace
{

constexpr std::string_view cutNotice = "[The rest of this message is too long to be quoted.]";

/// As letters write it, in the offset it carries: "Tue, 4 March 2025 at 09:15".
std::string letterDate(const QDateTime& date)
{
    return QLocale::c().toString(date, QStringLiteral("ddd, d MMMM yyyy 'at' HH:mm")).toStdString();
}

std::string introduction(const MessageSummary& summary)
{
    const bool isDated = summary.date.isValid();
    const std::string date = isDated ? "On " + letterDate(summary.date) + ", " : "";
    const auto& [name, address] = summary.sender;
    const std::string unknown = isDated ? "the sender" : "The sender";
    return date + (!name.empty() ? name : !address.empty() ? address : unknown) + " wrote:";
}

std::string textOf(const MailDocument& document)
{
    std::string text = document.text.text;
    if (document.text.truncated) {
        text.append("\n\n").append(cutNotice);
    }
    return text;
}

std::string joined(const std::vector<Mailbox>& mailboxes)
{
    std::string text;
    for (const Mailbox& mailbox : mailboxes) {
        text.append(text.empty() ? "" : ", ").append(mailbox.text());
    }
    return text;
}

/// Every line behind "> ", an empty or quoted one behind ">" alone (RFC 3676, 4.5).
std::string quotedText(std::string_view text)
{
    std::string quoted;
    quoted.reserve(text.size() + text.size() / 16);
    while (!text.empty()) {
        const std::string_view line = takeLine(text);
        const bool needsNoBlank = line.empty() || line.starts_with('>');
        quoted.append(needsNoBlank ? ">" : "> ").append(line).push_back('\n');
    }
    return quoted;
}

void appendField(std::string& block, std::string_view name, const std::string& value)
{
    if (!value.empty()) {
        block.append(name).append(": ").append(value).append("\n");
    }
}

} // namespace

std::string prefixedSubject(const std::string& prefix, const std::string& subject)
{
    static const QRegularExpression reply(QStringLiteral("^re(\\[[^\\]]*\\])?:"),
                                          QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression forward(QStringLiteral("^fwd?(\\[[^\\]]*\\])?:"),
                                            QRegularExpression::CaseInsensitiveOption);
    const bool isPrefixed = (prefix == "Re" ? reply : forward).match(QString::fromStdString(subject)).hasMatch();
    return isPrefixed ? subject : prefix + ": " + subject;
}

ComposeDraft composeReply(const MailDocument& original)
{
    ComposeDraft draft;
    draft.to = joined(original.replyTo);
    draft.subject = prefixedSubject("Re", original.summary.subject);
    draft.body = "\n\n" + introduction(original.summary) + "\n" + quotedText(textOf(original));
    return draft;
}

ComposeDraft composeForward(const MailDocument& original)
{
    ComposeDraft draft;
    draft.subject = prefixedSubject("Fwd", original.summary.subject);
    draft.body = "\n\n---------- Forwarded message ----------\n";
    appendField(draft.body, "From", original.summary.sender.text());
    appendField(draft.body, "Date", original.summary.date.isValid() ? letterDate(original.summary.date) : "");
    appendField(draft.body, "Subject", original.summary.subject);
    appendField(draft.body, "To", original.to);
    appendField(draft.body, "Cc", original.cc);
    draft.body.append("\n").append(textOf(original)).append("\n");
    return draft;
}

} // namespace quillmate
