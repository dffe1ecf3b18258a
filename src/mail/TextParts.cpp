#include "mail/TextParts.h"

#include "base/AsciiText.h"
#include "mail/BodyGuess.h"
#include "mail/ContentFields.h"
#include "mail/HeaderFields.h"
#include "mail/MimeLibrary.h"
#include "mail/SourceText.h"

#include <algorithm>
#include <optional>
#include <utility>

// The structure of a message is found here, and the MIME library gets the fields and the bytes of one part at a time:
// it makes an object of every part (25 MB of empty ones took it 38 s and 6 GB) and recurses into what is nested.

namespace quillmate
{
namespace
{

constexpr std::size_t deepestPart = 32;
constexpr std::size_t mostParts = 1000;
constexpr std::size_t longestMessageHeader = std::size_t{1024} * 1024;
constexpr std::size_t longestPartHeader = std::size_t{16} * 1024;

class PartFinder
{
public:
    explicit PartFinder(std::string_view text)
        : m_text(text)
    {
    }

    std::vector<TextPart> find(ContentFields fields)
    {
        begin(std::move(fields), false);
        for (std::size_t count = 0; endAtBoundary() && count < mostParts; ++count) {
            const bool isForwarded = m_scopes.back().isForwarded;
            ContentFields part = takeHeader(longestPartHeader);
            if (m_scopes.back().isDigest && !part.saysType) {
                part.type = "message"; // RFC 2046, 5.1.5
                part.subtype = "rfc822";
            }
            begin(std::move(part), isForwarded);
        }
        return std::move(m_parts);
    }

    /// Reads a message from its header block on.
    std::vector<TextPart> findFromHeader() { return find(takeHeader(longestMessageHeader)); }

private:
    struct Scope {
        std::string boundary;
        int alternative = 0;
        bool isDigest = false;
        bool isForwarded = false;
    };

    /// Begins a part whose content stands at m_position.
    void begin(ContentFields fields, bool isForwarded)
    {
        m_open.reset();
        for (std::size_t depth = 0; fields.isMessage() && depth < deepestPart; ++depth) {
            isForwarded = true;
            fields = takeHeader(longestPartHeader);
        }
        if (fields.type == "multipart" && fields.boundary.empty() && m_scopes.empty()) {
            fields.boundary = findBoundary(m_text.substr(m_position)).value_or(std::string());
        }
        if (fields.type == "multipart" && !fields.boundary.empty() && m_scopes.size() < deepestPart) {
            const int outer = m_scopes.empty() ? 0 : m_scopes.back().alternative;
            const int alternative = fields.subtype == "alternative" ? ++m_alternatives : outer;
            m_scopes.push_back({fields.boundary, alternative, fields.subtype == "digest", isForwarded});
            return;
        }
        if (fields.type != "text" || fields.isAttachment) {
            return;
        }
        TextPart part;
        part.kind = fields.subtype == "plain"  ? TextPart::Kind::Plain
                    : fields.subtype == "html" ? TextPart::Kind::Html
                                               : TextPart::Kind::Other;
        part.content = m_text.substr(m_position);
        part.encoding = std::move(fields.encoding);
        part.charset = std::move(fields.charset);
        part.isFlowed = fields.isFlowed;
        part.deletesBlank = fields.deletesBlank;
        part.alternative = m_scopes.empty() ? 0 : m_scopes.back().alternative;
        part.isForwarded = isForwarded;
        m_open = m_parts.size();
        m_parts.push_back(std::move(part));
    }

    /// Ends the part that is open before the next boundary and goes behind that; false at the end of the last
    /// multipart.
    bool endAtBoundary()
    {
        while (!m_scopes.empty()) {
            const std::size_t start = nextDashes();
            if (start == std::string_view::npos) {
                return false;
            }
            m_position = start;
            if (leavesTo(takeLine())) {
                endPart(start);
                if (!m_scopes.empty() && !m_isEnd) {
                    return true;
                }
            }
        }
        return false;
    }

    /// The line at m_position, which goes behind it.
    std::string_view takeLine()
    {
        std::string_view rest = m_text.substr(m_position);
        const std::string_view line = quillmate::takeLine(rest);
        m_position = m_text.size() - rest.size();
        return line;
    }

    /// Where the next line begins that may be a boundary.
    [[nodiscard]] std::size_t nextDashes() const
    {
        const bool atLineStart = m_position == 0 || m_text[m_position - 1] == '\n';
        if (atLineStart && m_text.substr(m_position).starts_with("--")) {
            return m_position;
        }
        const std::size_t found = m_text.find("\n--", m_position);
        return found == std::string_view::npos ? found : found + 1;
    }

    /// Whether the line is a boundary of an open multipart (RFC 2046, 5.1.1); those inside that one have ended then.
    bool leavesTo(std::string_view line)
    {
        const std::optional<std::pair<std::size_t, bool>> boundary = boundaryOf(line);
        if (!boundary) {
            return false;
        }
        m_isEnd = boundary->second;
        m_scopes.resize(boundary->first + (m_isEnd ? 0 : 1));
        return true;
    }

    /// Which multipart's boundary it is, and whether it is its last.
    [[nodiscard]] std::optional<std::pair<std::size_t, bool>> boundaryOf(std::string_view line) const
    {
        constexpr std::string_view dashes = "--";
        if (!line.starts_with(dashes)) {
            return std::nullopt;
        }
        line = line.substr(dashes.size(), line.find_last_not_of(" \t") + 1 - dashes.size());
        for (std::size_t i = m_scopes.size(); i-- > 0;) {
            const std::string& boundary = m_scopes[i].boundary;
            if (line == boundary) {
                return std::pair(i, false);
            }
            if (line.starts_with(boundary) && line.substr(boundary.size()) == dashes) {
                return std::pair(i, true);
            }
        }
        return std::nullopt;
    }

    void endPart(std::size_t boundaryStart)
    {
        if (!m_open) {
            return;
        }
        std::string_view& content = m_parts[*m_open].content;
        const auto start = static_cast<std::size_t>(content.data() - m_text.data());
        content = content.substr(0, std::max(boundaryStart, start) - start);
        // The line end before a boundary belongs to it.
        content.remove_suffix(content.ends_with("\r\n") ? 2 : content.ends_with('\n') ? 1 : 0);
        m_open.reset();
    }

    /// Reads the header block at m_position and goes to the content behind it. A part may have none.
    ContentFields takeHeader(std::size_t limit)
    {
        const bool isPart = !m_scopes.empty();
        const std::size_t start = m_position;
        std::size_t end = start;
        while (m_position < m_text.size()) {
            const std::size_t lineStart = m_position;
            const std::string_view line = takeLine();
            if (boundaryOf(line) || (isPart && end == start && !line.empty() && !beginsHeaderField(line))) {
                m_position = lineStart;
                break;
            }
            if (line.empty()) {
                break;
            }
            end = m_position;
        }
        return contentFieldsOf(m_text.substr(start, end - start), limit);
    }

    std::string_view m_text;
    std::size_t m_position = 0;
    std::vector<Scope> m_scopes;
    std::vector<TextPart> m_parts;
    std::optional<std::size_t> m_open; ///< index of the part whose end is not known yet
    int m_alternatives = 0;
    bool m_isEnd = false;
};

/// Nobody said that the parts are alternatives; they are, when the plain text comes first, as it must (RFC
/// 2046, 5.1.4). A plain text behind the HTML is a mailing list's footer.
void separateUnlessPlainFirst(std::vector<TextPart>& parts)
{
    const auto first = std::find_if(parts.begin(), parts.end(),
                                    [](const TextPart& part) { return part.alternative == 1 && !part.isForwarded; });
    if (first != parts.end() && first->kind != TextPart::Kind::Plain) {
        for (TextPart& part : parts) {
            part.alternative = part.alternative == 1 ? 0 : part.alternative;
        }
    }
}

} // namespace

std::vector<TextPart> textPartsOf(std::string_view source)
{
    return PartFinder(source).findFromHeader();
}

std::vector<TextPart> textPartsOfBody(std::string_view body)
{
    ContentFields fields;
    if (auto boundary = findBoundary(body)) {
        fields.type = "multipart";
        fields.subtype = "alternative";
        fields.boundary = std::move(*boundary);
        std::vector<TextPart> parts = PartFinder(body).find(std::move(fields));
        separateUnlessPlainFirst(parts);
        return parts;
    }
    fields.encoding = guessTransferEncoding(body);
    return PartFinder(body).find(std::move(fields));
}

namespace
{

/// Up to the end that base64 names: what lists put below a message is not encoded.
std::string_view withoutFooter(std::string_view base64)
{
    const std::size_t padding = base64.find('=');
    return padding == std::string_view::npos ? base64 : base64.substr(0, base64.find_first_not_of("= \t\r\n", padding));
}

} // namespace

DecodedBytes decodedBytes(const TextPart& part, std::size_t limit)
{
    prepareMimeLibrary();
    const GMimeContentEncoding encoding = g_mime_content_encoding_from_string(part.encoding.c_str());
    if (encoding != GMIME_CONTENT_ENCODING_BASE64 && encoding != GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE &&
        encoding != GMIME_CONTENT_ENCODING_UUENCODE) {
        return {std::string(cutUtf8(part.content, limit)), part.content.size() > limit};
    }
    constexpr std::size_t step = std::size_t{16} * 1024;
    const ObjectPointer<GMimeFilter> decoder(g_mime_filter_basic_new(encoding, FALSE));
    DecodedBytes decoded;
    std::string_view rest = encoding == GMIME_CONTENT_ENCODING_BASE64 ? withoutFooter(part.content) : part.content;
    while (!rest.empty() && decoded.bytes.size() <= limit) {
        std::string input(rest.substr(0, step)); // The filter's interface takes a writable buffer.
        rest.remove_prefix(input.size());
        char* out = nullptr;
        std::size_t length = 0;
        std::size_t prespace = 0;
        const auto filter = rest.empty() ? g_mime_filter_complete : g_mime_filter_filter;
        filter(decoder.get(), input.data(), input.size(), 0, &out, &length, &prespace);
        decoded.bytes.append(out, length);
    }
    decoded.isCut = decoded.bytes.size() > limit || !rest.empty();
    decoded.bytes.resize(cutUtf8(decoded.bytes, limit).size());
    return decoded;
}

} // namespace quillmate
