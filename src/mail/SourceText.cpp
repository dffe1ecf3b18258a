#include "mail/SourceText.h"

#include "mail/HeaderFields.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace quillmate
{
namespace
{

constexpr std::string_view fromLineStart = "From ";

// "Name:" alone is common in other text files; these fields are not.
constexpr std::array<std::string_view, 12> mailFields = {"from",         "to",          "subject",      "date",
                                                         "message-id",   "received",    "reply-to",     "mime-version",
                                                         "content-type", "return-path", "delivered-to", "sender"};

std::string_view firstLine(std::string_view text)
{
    return text.substr(0, text.find('\n'));
}

/// The length of the run of ">" at the start of a line that goes on with "From ", else 0.
std::size_t quotedFromDepth(std::string_view rest)
{
    const std::size_t depth = rest.find_first_not_of('>');
    if (depth == std::string_view::npos || depth == 0 || !rest.substr(depth).starts_with(fromLineStart)) {
        return 0;
    }
    return depth;
}

} // namespace

bool beginsHeaderField(std::string_view line)
{
    std::size_t length = 0;
    while (length < line.size() && line[length] > ' ' && line[length] < '\x7f' && line[length] != ':') {
        ++length;
    }
    if (length == 0) {
        return false;
    }
    while (length < line.size() && (line[length] == ' ' || line[length] == '\t')) {
        ++length;
    }
    return length < line.size() && line[length] == ':';
}

bool looksLikeMail(std::string_view source)
{
    if (source.starts_with(fromLineStart)) {
        source.remove_prefix(std::min(source.size(), firstLine(source).size() + 1));
    }
    if (!beginsHeaderField(firstLine(source))) {
        return false;
    }
    const HeaderFields headers = HeaderFields::parse(source);
    return std::any_of(mailFields.begin(), mailFields.end(),
                       [&headers](std::string_view name) { return headers.first(name).has_value(); });
}

void useBareLineFeeds(std::string& source)
{
    std::size_t read = source.find("\r\n");
    if (read == std::string::npos) {
        return;
    }
    // Moves the stretch between two CR LF pairs at a time, so that the cost is one memmove over the text.
    std::size_t write = read;
    while (read < source.size()) {
        ++read; // the CR
        std::size_t next = source.find("\r\n", read);
        next = next == std::string::npos ? source.size() : next;
        std::memmove(source.data() + write, source.data() + read, next - read);
        write += next - read;
        read = next;
    }
    source.resize(write);
}

void unquoteFromLines(std::string& source)
{
    std::size_t write = 0;
    std::size_t lineStart = 0;
    while (lineStart < source.size()) {
        std::size_t lineEnd = source.find('\n', lineStart);
        lineEnd = lineEnd == std::string::npos ? source.size() : lineEnd + 1;
        const std::string_view line = std::string_view(source).substr(lineStart, lineEnd - lineStart);
        const std::size_t skipped = quotedFromDepth(line) > 0 ? 1 : 0;
        const std::size_t length = line.size() - skipped;
        if (write != lineStart + skipped) {
            std::memmove(source.data() + write, source.data() + lineStart + skipped, length);
        }
        write += length;
        lineStart = lineEnd;
    }
    source.resize(write);
}

void dropFromLine(std::string& source)
{
    if (source.starts_with(fromLineStart)) {
        source.erase(0, std::min(source.size(), firstLine(source).size() + 1));
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
