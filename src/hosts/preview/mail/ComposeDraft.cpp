#include "hosts/preview/mail/ComposeDraft.h"

#include <QLocale>
#include <QString>
#include <algorithm>
#include <initializer_list>

namespace quillmate
{
namespace
{

constexpr std::string_view cutNotice = "[The rest of this message is too long to be quoted.]";

bool beginsWithWord(std::string_view text, std::string_view word)
{
    const auto same = [](char left, char right) {
        return (left >= 'A' && left <= 'Z' ? left - 'A' + 'a' : left) == right;
    };
    return text.size() >= word.size() && std::equal(word.begin(), word.end(), text.begin(),
                                                    [&same](char right, char left) { return same(left, right); });
}

/// Whether the subject begins with one of the words and a colon, "Re[2]:" included.
bool hasPrefix(std::string_view subject, std::initializer_list<std::string_view> words)
{
    return std::any_of(words.begin(), words.end(), [subject](std::string_view word) {
        if (!beginsWithWord(subject, word)) {
            return false;
        }
        std::string_view rest = subject.substr(word.size());
        if (rest.starts_with('[')) {
            rest.remove_prefix(std::min(rest.size(), rest.find(']')));
            rest.remove_prefix(rest.empty() ? 0 : 1);
        }
        return rest.starts_with(':');
    });
}

std::string nameOf(const Mailbox& sender)
{
    if (!sender.name.empty()) {
        return sender.name;
    }
    return sender.address.empty() ? "the sender" : sender.address;
}

std::string introduction(const MessageSummary& summary)
{
    if (!summary.date.isValid()) {
        const std::string name = nameOf(summary.sender);
        return (name == "the sender" ? "The sender" : name) + " wrote:";
    }
    return "On " + letterDate(summary.date) + ", " + nameOf(summary.sender) + " wrote:";
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

void appendField(std::string& block, std::string_view name, const std::string& value)
{
    if (!value.empty()) {
        block.append(name).append(": ").append(value).append("\n");
    }
}

} // namespace

std::string prefixedSubject(std::string_view prefix, std::string_view subject)
{
    const bool isPrefixed = prefix == "Re" ? hasPrefix(subject, {"re"}) : hasPrefix(subject, {"fwd", "fw"});
    if (isPrefixed) {
        return std::string(subject);
    }
    std::string text(prefix);
    return text.append(": ").append(subject);
}

std::string quotedText(std::string_view text)
{
    std::string quoted;
    quoted.reserve(text.size() + text.size() / 16);
    while (!text.empty()) {
        const std::size_t lineFeed = text.find('\n');
        const std::string_view line = text.substr(0, lineFeed);
        const bool needsNoBlank = line.empty() || line.starts_with('>');
        quoted.append(needsNoBlank ? ">" : "> ").append(line).push_back('\n');
        text.remove_prefix(lineFeed == std::string_view::npos ? text.size() : lineFeed + 1);
    }
    return quoted;
}

std::string letterDate(const QDateTime& date)
{
    return QLocale::c().toString(date, QStringLiteral("ddd, d MMMM yyyy 'at' HH:mm")).toStdString();
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
