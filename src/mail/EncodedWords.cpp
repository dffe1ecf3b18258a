#include "mail/EncodedWords.h"

#include "base/AsciiText.h"
#include "mail/Charset.h"
#include "mail/TextParts.h"

#include <algorithm>
#include <optional>

// Written here and not left to the MIME library, whose version in use drops every base64 word that follows a padded
// one.

namespace quillmate
{
namespace
{

struct EncodedWord {
    std::string charset;
    std::string bytes;
    std::size_t length = 0; // in the value
};

bool isBlank(char letter)
{
    return letter == ' ' || letter == '\t';
}

/// The bytes that an encoded word's text stands for; Q is quoted-printable but for the blank (RFC 2047, 4.2).
std::string bytesOf(std::string text, bool isBase64)
{
    if (!isBase64) {
        std::replace(text.begin(), text.end(), '_', ' ');
    }
    TextPart word;
    word.content = text;
    word.encoding = isBase64 ? "base64" : "quoted-printable";
    return decodedBytes(word, text.size()).bytes;
}

/// The encoded word at the start of `text`: =?charset[*language]?encoding?text?=
std::optional<EncodedWord> wordAt(std::string_view text)
{
    // Longer than any word in use (RFC 2047 allows 75), and a bound on what a broken one costs.
    constexpr std::size_t longestWord = 1024;
    if (!text.starts_with("=?")) {
        return std::nullopt;
    }
    const std::string_view window = text.substr(0, longestWord);
    const std::size_t charsetEnd = window.find('?', 2);
    if (charsetEnd == std::string_view::npos || charsetEnd == 2 || charsetEnd + 2 >= window.size() ||
        window[charsetEnd + 2] != '?') {
        return std::nullopt;
    }
    const std::size_t contentStart = charsetEnd + 3;
    const std::size_t end = window.find("?=", contentStart);
    if (end == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view charset = window.substr(2, charsetEnd - 2);
    charset = charset.substr(0, charset.find('*')); // RFC 2231, 5
    if (std::any_of(charset.begin(), charset.end(), isBlank)) {
        return std::nullopt;
    }
    const std::string_view content = window.substr(contentStart, end - contentStart);
    const char encoding = lowerCase(window[charsetEnd + 1]);
    if (encoding != 'b' && encoding != 'q') {
        return std::nullopt;
    }
    return EncodedWord{std::string(charset), bytesOf(std::string(content), encoding == 'b'), end + 2};
}

} // namespace

std::string decodeHeaderText(std::string_view value)
{
    // Converters are loaded and unloaded as the charsets change, which no text that somebody wrote does more often.
    constexpr int mostChanges = 64;
    int changes = 0;
    std::string lastCharset;
    std::string text;
    EncodedWord pending; // What is of one charset is collected before it is decoded; what is no word has none.
    const auto add = [&text, &pending](const std::string& charset, std::string_view bytes) {
        if (pending.charset != charset) {
            text += pending.bytes.empty() ? std::string() : utf8Of(pending.bytes, pending.charset);
            pending = {charset, {}, 0};
        }
        pending.bytes += bytes;
    };
    bool afterWord = false;
    while (!value.empty() && changes <= mostChanges) {
        const std::size_t blanks =
            static_cast<std::size_t>(std::find_if_not(value.begin(), value.end(), isBlank) - value.begin());
        if (auto word = wordAt(value.substr(blanks)); word && (afterWord || blanks == 0)) {
            value.remove_prefix(blanks + word->length);
            changes += word->charset != lastCharset ? 1 : 0;
            lastCharset = word->charset;
            add(word->charset, word->bytes);
            afterWord = true;
            continue;
        }
        afterWord = false;
        const std::size_t next = std::min(value.find("=?", blanks == 0 ? 1 : blanks), value.size());
        add({}, value.substr(0, next));
        value.remove_prefix(next);
    }
    add({}, value);
    return text + utf8Of(pending.bytes, pending.charset);
}

} // namespace quillmate
