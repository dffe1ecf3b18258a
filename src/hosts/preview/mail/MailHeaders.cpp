#include "hosts/preview/mail/MailHeaders.h"

#include "hosts/preview/mail/EncodedWords.h"
#include "hosts/preview/mail/MimeLibrary.h"
#include "hosts/preview/mail/SourceText.h"

#include <algorithm>

namespace quillmate
{
namespace
{

constexpr std::string_view blanks = " \t";

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string lowerCase(std::string_view name)
{
    std::string lower(name);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return lower;
}

// The address parser is kept from decoding encoded words, which decodeHeaderText does better: while it reads, their
// opening mark is another one that is an atom to it as well.
constexpr std::string_view encodedMark = "=?";
constexpr std::string_view hiddenMark = "=!~!";

std::string replaced(std::string_view text, std::string_view mark, std::string_view replacement)
{
    std::string result;
    while (!text.empty()) {
        const std::size_t found = std::min(text.find(mark), text.size());
        result.append(text.substr(0, found));
        text.remove_prefix(found);
        if (!text.empty()) {
            result.append(replacement);
            text.remove_prefix(mark.size());
        }
    }
    return result;
}

void collectMailboxes(InternetAddressList* list, std::vector<Mailbox>& found, int depth)
{
    constexpr int deepestGroup = 8;
    const int count = list == nullptr || depth > deepestGroup ? 0 : internet_address_list_length(list);
    for (int i = 0; i < count; ++i) {
        InternetAddress* address = internet_address_list_get_address(list, i);
        if (INTERNET_ADDRESS_IS_GROUP(address)) {
            collectMailboxes(internet_address_group_get_members(INTERNET_ADDRESS_GROUP(address)), found, depth + 1);
            continue;
        }
        const char* bare = internet_address_mailbox_get_addr(INTERNET_ADDRESS_MAILBOX(address));
        if (bare != nullptr && *bare != '\0') {
            const char* name = internet_address_get_name(address);
            const std::string shown = name == nullptr ? std::string() : replaced(name, hiddenMark, encodedMark);
            found.push_back({decodeHeaderText(shown), replaced(bare, hiddenMark, encodedMark)});
        }
    }
}

} // namespace

MailHeaders MailHeaders::parse(std::string_view source)
{
    MailHeaders headers;
    bool inField = false;
    while (!source.empty()) {
        const std::size_t lineFeed = source.find('\n');
        std::string_view line = source.substr(0, lineFeed);
        source.remove_prefix(lineFeed == std::string_view::npos ? source.size() : lineFeed + 1);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (line.empty()) {
            break;
        }
        if (blanks.find(line.front()) != std::string_view::npos) {
            if (inField) {
                headers.m_fields.back().value.append(line);
            }
            continue;
        }
        inField = beginsHeaderField(line);
        if (inField) {
            const std::size_t colon = line.find(':');
            headers.m_fields.push_back(
                {lowerCase(trimmed(line.substr(0, colon))), std::string(line.substr(colon + 1))});
        }
    }
    for (Field& field : headers.m_fields) {
        field.value = std::string(trimmed(field.value));
    }
    return headers;
}

std::optional<std::string_view> MailHeaders::first(std::string_view name) const
{
    const auto found =
        std::find_if(m_fields.begin(), m_fields.end(), [name](const Field& field) { return field.name == name; });
    return found == m_fields.end() ? std::nullopt : std::optional<std::string_view>(found->value);
}

std::string MailHeaders::decoded(std::string_view name) const
{
    std::string text = decodeHeaderText(first(name).value_or(std::string_view()));
    // An encoded word may smuggle in line breaks and other controls, which a one-line field has no use for.
    std::replace_if(
        text.begin(), text.end(),
        [](char letter) { return static_cast<unsigned char>(letter) < 0x20 || letter == 0x7f; }, ' ');
    return text;
}

MEMessage::Headers MailHeaders::toMessageHeaders() const
{
    MEMessage::Headers headers;
    for (const Field& field : m_fields) {
        headers[field.name].push_back(field.name == "message-id" ? field.value : decodeHeaderText(field.value));
    }
    return headers;
}

std::string Mailbox::text() const
{
    if (name.empty()) {
        return address;
    }
    return address.empty() ? name : name + " <" + address + ">";
}

std::vector<Mailbox> parseMailboxes(std::string_view value)
{
    prepareMimeLibrary();
    std::vector<Mailbox> mailboxes;
    const ObjectPointer<InternetAddressList> list(
        internet_address_list_parse(nullptr, replaced(value, encodedMark, hiddenMark).c_str()));
    collectMailboxes(list.get(), mailboxes, 0);
    return mailboxes;
}

} // namespace quillmate
