#include "mail/MessageText.h"

#include "base/AsciiText.h"
#include "mail/Charset.h"
#include "mail/HeaderFields.h"
#include "mail/HtmlText.h"
#include "mail/SourceText.h"

#include <algorithm>
#include <array>
#include <map>

namespace quillmate
{
namespace
{

constexpr std::size_t markupBytes = std::size_t{2} * 1024 * 1024;
constexpr std::string_view blanks = " \t\r\n";

std::string_view withoutOuterBlankLines(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    const std::size_t lineFeed = text.find_last_of('\n', first);
    text.remove_prefix(lineFeed == std::string_view::npos ? 0 : lineFeed + 1);
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

/// RFC 3676, 4: a line that ends in a blank goes on in the next one.
std::string unflowed(std::string_view text, bool deletesBlank)
{
    std::string result;
    while (!text.empty()) {
        std::string_view line = takeLine(text);
        const bool isSoft = line.ends_with(' ') && line != "-- " && !line.starts_with('>');
        line.remove_suffix(isSoft && deletesBlank ? 1 : 0);
        result.append(line).append(isSoft ? "" : "\n");
    }
    return result;
}

/// Whether a person could read it: hardly any control or replacement characters.
bool isReadable(std::string_view text)
{
    constexpr std::string_view replacement = "\xEF\xBF\xBD";
    std::size_t wrong = 0;
    std::size_t characters = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto letter = static_cast<unsigned char>(text[i]);
        const bool isControl = letter == 0x7F || (letter < 0x20 && (letter < '\t' || letter > '\r'));
        wrong += isControl || text.compare(i, replacement.size(), replacement) == 0 ? 1 : 0;
        characters += (letter & 0xC0U) != 0x80U ? 1 : 0;
    }
    return wrong * 20 <= characters;
}

/// A plain text that only points to the HTML one.
bool isPlaceholder(std::string_view text, std::size_t markup)
{
    constexpr std::size_t longestNotice = 300;
    text = withoutOuterBlankLines(text);
    return text.empty() || (text.size() < longestNotice && markup > 20 * text.size() &&
                            findAnyCase(text, "html") != std::string_view::npos);
}

class TextCollector
{
public:
    TextCollector(const std::vector<TextPart>& parts, std::size_t limit)
        : m_parts(parts)
        , m_limit(limit)
    {
        for (const TextPart& part : parts) {
            std::size_t& markup = m_markup[part.alternative];
            markup = std::max(markup, part.kind == TextPart::Kind::Html ? part.content.size() : 0);
        }
    }

    /// Reads one part after the other, each once, until a choice has given text.
    MessageText collect()
    {
        m_plainAlternatives = plainAlternatives();
        for (const Choice choice : {Choice::Written, Choice::Forwarded, Choice::OtherKind, Choice::Unsaid}) {
            for (const TextPart& part : m_parts) {
                if (m_text.size() <= m_limit && choiceOf(part) == choice) {
                    add(textOf(part));
                }
            }
            if (!m_text.empty()) {
                break;
            }
        }
        const std::string_view shown = cutUtf8(m_text, m_limit);
        return {std::string(shown), m_isCut || shown.size() < m_text.size()};
    }

private:
    enum class Choice { Written, Forwarded, OtherKind, Unsaid };

    /// Which of the choices the part belongs to. Of alternatives the one that is not shown is the text after all where
    /// nothing else is: beside HTML without a word, pictures mostly, the notice.
    [[nodiscard]] Choice choiceOf(const TextPart& part) const
    {
        if (part.kind == TextPart::Kind::Other) {
            return Choice::OtherKind;
        }
        const auto plain = m_plainAlternatives.find(part.alternative);
        if (plain != m_plainAlternatives.end() && plain->second != (part.kind == TextPart::Kind::Plain)) {
            return Choice::Unsaid;
        }
        return part.isForwarded ? Choice::Forwarded : Choice::Written;
    }

    /// The alternatives that have both plain text and HTML, and whether the plain text is the one to show.
    [[nodiscard]] std::map<int, bool> plainAlternatives() const
    {
        std::map<int, bool> found;
        for (const TextPart& part : m_parts) {
            const std::size_t markup = m_markup.at(part.alternative);
            if (part.alternative != 0 && part.kind == TextPart::Kind::Plain && markup > 0) {
                bool& isPlain = found[part.alternative];
                TextPart beginning = part;
                beginning.content = part.content.substr(0, lookedAt);
                isPlain = isPlain || !isPlaceholder(decoded(beginning, lookedAt).text, markup);
            }
        }
        return found;
    }

    /// The part's text as it was written, its encodings undone.
    [[nodiscard]] static MessageText decoded(const TextPart& part, std::size_t limit)
    {
        const DecodedBytes bytes = decodedBytes(part, limit);
        MessageText content{utf8Of(bytes.bytes, part.charset), bytes.isCut};
        useBareLineFeeds(content.text);
        return content;
    }

    MessageText textOf(const TextPart& part)
    {
        const bool isHtml = part.kind == TextPart::Kind::Html;
        MessageText content = decoded(part, isHtml ? m_markupLeft : std::max(m_limit, lookedAt));
        if (isHtml || looksLikeHtml(content.text)) {
            const std::string_view markup = cutUtf8(content.text, m_markupLeft);
            m_markupLeft -= markup.size();
            content.truncated = content.truncated || markup.size() < content.text.size();
            content.text = textOfHtml(markup, m_limit);
        } else if (part.isFlowed) {
            content.text = unflowed(content.text, part.deletesBlank);
        }
        return content;
    }

    void add(const MessageText& content)
    {
        const std::string_view text = withoutOuterBlankLines(content.text);
        if (!text.empty() && isReadable(text)) {
            m_text.append(m_text.empty() ? "" : "\n\n").append(text);
        }
        m_isCut = m_isCut || (content.truncated && (text.empty() || isReadable(text)));
    }

    // Enough to tell a notice from a text, and a text from HTML.
    static constexpr std::size_t lookedAt = 4096;

    const std::vector<TextPart>& m_parts;
    std::size_t m_limit;
    std::size_t m_markupLeft = markupBytes;
    std::map<int, std::size_t> m_markup; ///< bytes of the HTML among the alternatives of a number
    std::map<int, bool> m_plainAlternatives;
    std::string m_text;
    bool m_isCut = false;
};

/// Whether it is a whole source and not a body that begins as one: fields that only those have who bring mail.
bool isWholeSource(std::string_view body)
{
    constexpr std::array<std::string_view, 4> fields = {"received", "message-id", "mime-version", "return-path"};
    constexpr std::size_t lookedAt = std::size_t{64} * 1024;
    if (!looksLikeMail(body.substr(0, lookedAt))) {
        return false;
    }
    const HeaderFields headers = HeaderFields::parse(body, lookedAt);
    return std::any_of(fields.begin(), fields.end(),
                       [&headers](std::string_view name) { return headers.first(name).has_value(); });
}

} // namespace

MessageText textOfParts(const std::vector<TextPart>& parts, std::size_t limit)
{
    return TextCollector(parts, limit).collect();
}

MessageText textOfMessage(std::string_view source, std::size_t limit)
{
    return textOfParts(textPartsOf(source), limit);
}

MessageText textOfBody(std::string_view body, std::size_t limit)
{
    return textOfParts(isWholeSource(body) ? textPartsOf(body) : textPartsOfBody(body), limit);
}

std::string htmlOfParts(const std::vector<TextPart>& parts)
{
    const auto html = std::find_if(parts.begin(), parts.end(),
                                   [](const TextPart& part) { return part.kind == TextPart::Kind::Html; });
    return html == parts.end() ? std::string() : utf8Of(decodedBytes(*html, markupBytes).bytes, html->charset);
}

} // namespace quillmate
