#include "hosts/preview/mail/ReadableSource.h"

#include "base/AsciiText.h"
#include "mail/Charset.h"
#include "mail/ContentFields.h"
#include "mail/TextParts.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace quillmate
{
namespace
{

constexpr std::size_t largestHeader = std::size_t{1024} * 1024;
// How far a message of several parts is looked into.
constexpr std::size_t partsLookedAt = std::size_t{64} * 1024;
constexpr std::string_view blanks = " \t\r\n";

/// A field of a header block, with the lines that continue it.
struct FieldPlace {
    std::size_t start = 0;
    std::size_t valueStart = 0;
    std::size_t end = 0; ///< behind the last line feed
};

struct HeaderBlock {
    std::size_t fieldsEnd = 0; ///< where the empty line begins
    ContentFields content;
    std::vector<FieldPlace> types;
    std::vector<FieldPlace> encodings;
};

/// Reads the header block at the text's beginning; nothing when there is no end of it before the limit.
std::optional<HeaderBlock> headerBlockOf(std::string_view text, std::size_t limit)
{
    HeaderBlock block;
    FieldPlace* last = nullptr;
    for (std::size_t line = 0; line <= std::min(limit, text.size());) {
        const std::size_t end = text.find('\n', line);
        if (end == std::string_view::npos) {
            return std::nullopt;
        }
        if (end == line) {
            block.fieldsEnd = line;
            block.content = contentFieldsOf(text.substr(0, line), limit);
            return block;
        }
        const std::string_view whole = text.substr(line, end - line);
        if (whole.front() == ' ' || whole.front() == '\t') {
            if (last) {
                last->end = end + 1;
            }
        } else {
            const std::size_t colon = whole.find(':');
            const std::string_view named = whole.substr(0, colon == std::string_view::npos ? 0 : colon);
            const std::string name = lowerCase(named.substr(0, named.find_last_not_of(" \t") + 1));
            auto* places = name == "content-type"                ? &block.types
                           : name == "content-transfer-encoding" ? &block.encodings
                                                                 : nullptr;
            last = places ? &places->emplace_back(FieldPlace{line, line + colon + 1, end + 1}) : nullptr;
        }
        line = end + 1;
    }
    return std::nullopt;
}

/// A parameter of a Content-Type field (RFC 2045, 5.1): where its value stands, in quotes or not.
struct Parameter {
    std::size_t start = 0;
    std::size_t end = 0;
};

std::optional<Parameter> findParameter(std::string_view value, std::string_view wanted)
{
    const auto skipTo = [value](std::size_t from, std::string_view stops) {
        return std::min(value.find_first_of(stops, from), value.size());
    };
    std::size_t at = skipTo(0, ";");
    while (at < value.size()) {
        const std::size_t nameStart = std::min(value.find_first_not_of(" \t\r\n;", at), value.size());
        const std::size_t nameEnd = skipTo(nameStart, "=; \t\r\n");
        const std::size_t equals = std::min(value.find_first_not_of(blanks, nameEnd), value.size());
        if (equals == value.size() || value[equals] != '=') {
            at = skipTo(nameEnd, ";");
            continue;
        }
        const std::size_t start = std::min(value.find_first_not_of(blanks, equals + 1), value.size());
        std::size_t end = skipTo(start, "; \t\r\n");
        if (start < value.size() && value[start] == '"') {
            for (end = start + 1; end < value.size() && value[end] != '"'; ++end) {
                end += value[end] == '\\' ? 1 : 0;
            }
            end = std::min(end + 1, value.size());
        }
        if (lowerCase(value.substr(nameStart, nameEnd - nameStart)) == wanted) {
            return Parameter{start, end};
        }
        at = skipTo(end, ";");
    }
    return std::nullopt;
}

std::string_view valueOf(std::string_view text, const FieldPlace& field)
{
    return text.substr(field.valueStart, field.end - 1 - field.valueStart);
}

bool isNamedAsEncrypted(std::string_view text, const HeaderBlock& header)
{
    if (header.types.empty()) {
        return false;
    }
    const std::string_view value = valueOf(text, header.types.front());
    const auto name = findParameter(value, "name");
    std::string file = name ? lowerCase(value.substr(name->start, name->end - name->start)) : std::string();
    std::erase(file, '"');
    return file.ends_with(".p7m");
}

bool isEncrypted(std::string_view text, const HeaderBlock& header)
{
    const ContentFields& content = header.content;
    if (content.type == "multipart") {
        return content.subtype == "encrypted";
    }
    if (content.type != "application") {
        return false;
    }
    return content.subtype == "pkcs7-mime" || content.subtype == "x-pkcs7-mime" || content.subtype == "pgp-encrypted" ||
           (content.subtype == "octet-stream" && isNamedAsEncrypted(text, header));
}

bool startsEncrypted(std::string_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text.starts_with("-----BEGIN PGP MESSAGE-----");
}

/// Lists wrap an encrypted message, and some servers take it apart and put an empty text before it.
bool hasEncryptedParts(std::string_view body, const std::string& boundary)
{
    if (boundary.empty()) {
        return false;
    }
    body = body.substr(0, partsLookedAt);
    const std::string delimiter = "\n--" + boundary;
    std::size_t at = body.starts_with(std::string_view(delimiter).substr(1)) ? 0 : body.find(delimiter);
    while (at != std::string_view::npos) {
        const std::size_t line = body.find('\n', at + delimiter.size() - (at == 0 ? 1 : 0));
        if (line == std::string_view::npos) {
            return false;
        }
        const std::string_view part = body.substr(line + 1);
        const auto header = headerBlockOf(part, partsLookedAt);
        if (!header) {
            return false;
        }
        const std::size_t next = part.find(delimiter, header->fieldsEnd);
        const std::string_view content = part.substr(0, next).substr(std::min(header->fieldsEnd, next));
        if (isEncrypted(part, *header) || startsEncrypted(content)) {
            return true;
        }
        if (content.find_first_not_of(blanks) != std::string_view::npos || next == std::string_view::npos) {
            return false;
        }
        at = line + 1 + next;
    }
    return false;
}

bool isPlain(char c)
{
    return static_cast<unsigned char>(c) < 0x80 && c != '\x1B'; // An escape may switch to another alphabet.
}

/// The text of a single part in UTF-8; nothing when it can be read as it is.
std::optional<std::string> decodedText(std::string_view body, const ContentFields& content)
{
    const std::string encoding = lowerCase(content.encoding);
    const std::string charset = lowerCase(content.charset);
    const bool isEncoded = encoding == "base64" || encoding == "quoted-printable";
    const bool saysAscii = charset.empty() || charset == "us-ascii" || charset == "ascii";
    const bool isReadable =
        charset == "utf-8" || charset == "utf8" || (saysAscii && std::all_of(body.begin(), body.end(), isPlain));
    if (!isEncoded &&
        (isReadable || !(encoding.empty() || encoding == "7bit" || encoding == "8bit" || encoding == "binary"))) {
        return std::nullopt;
    }
    TextPart part;
    part.content = body;
    part.encoding = isEncoded ? encoding : std::string();
    std::string bytes = decodedBytes(part, body.size()).bytes;
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    const bool isMarked = bytes.starts_with(mark);
    std::string text = utf8Of(isMarked ? bytes.substr(mark.size()) : bytes, isMarked ? "utf-8" : charset);
    for (std::size_t at = text.find("\r\n"); at != std::string::npos;) { // Rare: then line by line.
        std::string bare;
        bare.reserve(text.size());
        std::size_t kept = 0;
        for (; at != std::string::npos; at = text.find("\r\n", kept)) {
            bare.append(text, kept, at - kept);
            kept = at + 1;
        }
        bare.append(text, kept);
        text = std::move(bare);
    }
    return text;
}

/// The source with that text; all of its header but what says how the text is encoded stays, byte by byte.
std::string withText(std::string_view source, const HeaderBlock& header, std::string_view text)
{
    struct Change {
        std::size_t start = 0;
        std::size_t end = 0;
        std::string text;
    };
    constexpr auto encodingField = "Content-Transfer-Encoding: 8bit\n";
    constexpr auto typeField = "Content-Type: text/plain; charset=utf-8\n";
    std::vector<Change> changes;
    for (const auto* fields : {&header.types, &header.encodings}) {
        for (std::size_t i = 1; i < fields->size(); ++i) {
            changes.push_back({(*fields)[i].start, (*fields)[i].end, {}});
        }
    }
    const std::size_t end = header.fieldsEnd;
    if (header.types.empty()) {
        changes.push_back({end, end, typeField});
    } else {
        const FieldPlace& field = header.types.front();
        const std::string_view value = valueOf(source, field);
        const std::size_t typeEnd = std::min(value.find(';'), value.find_last_not_of(blanks) + 1);
        if (const auto charset = findParameter(value, "charset")) {
            changes.push_back({field.valueStart + charset->start, field.valueStart + charset->end, "utf-8"});
        } else if (value.substr(0, typeEnd).find('/') == std::string_view::npos) {
            changes.push_back({field.start, field.end, typeField});
        } else {
            changes.push_back({field.valueStart + typeEnd, field.valueStart + typeEnd, "; charset=utf-8"});
        }
    }
    if (header.encodings.empty()) {
        changes.push_back({end, end, encodingField});
    } else {
        changes.push_back({header.encodings.front().start, header.encodings.front().end, encodingField});
    }
    std::stable_sort(changes.begin(), changes.end(),
                     [](const Change& one, const Change& other) { return one.start < other.start; });

    std::string written;
    std::size_t kept = 0;
    for (const Change& change : changes) {
        written.append(source.substr(kept, change.start - kept)).append(change.text);
        kept = change.end;
    }
    return written.append(source.substr(kept, end + 1 - kept)).append(text);
}

} // namespace

std::optional<std::string> readableSource(std::string source)
{
    const auto header = headerBlockOf(source, largestHeader);
    if (!header) {
        return source;
    }
    const std::string_view body = std::string_view(source).substr(header->fieldsEnd + 1);
    const ContentFields& content = header->content;
    if (isEncrypted(source, *header) || (content.type == "multipart" && hasEncryptedParts(body, content.boundary))) {
        return std::nullopt;
    }
    if (content.type != "text") {
        return source;
    }
    const auto text = decodedText(body, content);
    if (startsEncrypted(text ? std::string_view(*text) : body)) {
        return std::nullopt;
    }
    return text ? withText(source, *header, *text) : std::move(source);
}

} // namespace quillmate
