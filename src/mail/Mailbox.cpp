#include "mail/Mailbox.h"

#include "mail/EncodedWords.h"
#include "mail/MimeLibrary.h"

#include <QByteArray>
#include <algorithm>

namespace quillmate
{
namespace
{

// What a field can say that names whom a reply goes to; the library takes time by the square of some of it.
constexpr std::size_t longestAddressField = std::size_t{64} * 1024;
// Each may open a group in a group, and the library recurses into it.
constexpr std::size_t mostColons = 200;

// The address parser is kept from decoding encoded words, which decodeHeaderText does better: while it reads, their
// opening mark is another one that is an atom to it as well.
constexpr const char* encodedMark = "=?";
constexpr const char* hiddenMark = "=!~!";

std::string replaced(std::string_view text, const char* mark, const char* replacement)
{
    return QByteArray(text.data(), static_cast<qsizetype>(text.size())).replace(mark, replacement).toStdString();
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

/// The field's beginning that the library is given.
std::string_view bounded(std::string_view value)
{
    value = value.substr(0, longestAddressField);
    std::size_t colons = 0;
    const auto* const end =
        std::find_if(value.begin(), value.end(), [&colons](char c) { return c == ':' && ++colons > mostColons; });
    return value.substr(0, static_cast<std::size_t>(end - value.begin()));
}

} // namespace

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
        internet_address_list_parse(nullptr, replaced(bounded(value), encodedMark, hiddenMark).c_str()));
    collectMailboxes(list.get(), mailboxes, 0);
    return mailboxes;
}

} // namespace quillmate
