#include "mail/SourceText.h"

#include "base/AsciiText.h"
#include "mail/HeaderFields.h"

#include <algorithm>
#include <array>

namespace quillmate
{
namespace
{

constexpr std::string_view fromLineStart = "From ";

// "Name:" alone is common in other text files; these fields are not.
constexpr std::array<std::string_view, 12> mailFields = {"from",         "to",          "subject",      "date",
                                                         "message-id",   "received",    "reply-to",     "mime-version",
                                                         "content-type", "return-path", "delivered-to", "sender"};

/// Whether a line begins here with ">", any more of them, and "From ".
bool beginsQuotedFromLine(std::string_view rest)
{
    const std::size_t depth = std::min(rest.find_first_not_of('>'), rest.size());
    return depth > 0 && rest.substr(depth).starts_with(fromLineStart);
}

} // namespace

bool beginsHeaderField(std::string_view text)
{
    std::size_t length = 0;
    while (length < text.size() && text[length] > ' ' && text[length] < '\x7f' && text[length] != ':') {
        ++length;
    }
    if (length == 0) {
        return false;
    }
    while (length < text.size() && (text[length] == ' ' || text[length] == '\t')) {
        ++length;
    }
    return length < text.size() && text[length] == ':';
}

bool looksLikeMail(std::string_view source)
{
    if (source.starts_with(fromLineStart)) {
        takeLine(source);
    }
    if (!beginsHeaderField(source)) {
        return false;
    }
    const HeaderFields headers = HeaderFields::parse(source);
    return std::any_of(mailFields.begin(), mailFields.end(),
                       [&headers](std::string_view name) { return headers.first(name).has_value(); });
}

void useBareLineFeeds(std::string& source)
{
    std::size_t write = 0;
    for (std::size_t read = 0; read < source.size(); ++read) {
        const char letter = source[read];
        if (letter != '\r' || source[read + 1] != '\n') {
            source[write++] = letter;
        }
    }
    source.resize(write);
}

void unquoteFromLines(std::string& source)
{
    std::size_t write = 0;
    bool atLineStart = true;
    for (std::size_t read = 0; read < source.size(); ++read) {
        const char letter = source[read];
        if (!atLineStart || !beginsQuotedFromLine(std::string_view(source).substr(read))) {
            source[write++] = letter;
        }
        atLineStart = letter == '\n';
    }
    source.resize(write);
}

void dropFromLine(std::string& source)
{
    if (source.starts_with(fromLineStart)) {
        std::string_view rest = source;
        takeLine(rest);
        source.erase(0, source.size() - rest.size());
    }
}

std::string_view cutUtf8(std::string_view text, std::size_t limit)
{
    if (text.size() <= limit) {
        return text;
    }
    std::size_t length = limit;
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
        --length;
    }
    return text.substr(0, length);
}

} // namespace quillmate
