#include "hosts/preview/mail/HtmlText.h"

#include <algorithm>
#include <array>

namespace quillmate
{
namespace
{

constexpr std::string_view whiteSpace = " \t\r\n\f";
// A deeper quotation is shown at this depth, so that nesting costs no memory.
constexpr int deepestQuotation = 16;
constexpr std::size_t longestReference = 10;

constexpr std::array<std::string_view, 10> paragraphTags = {"p",  "h1", "h2", "h3",         "h4",
                                                            "h5", "h6", "hr", "blockquote", "pre"};
constexpr std::array<std::string_view, 13> lineTags = {"br", "div", "tr",      "li",      "ul",      "ol",  "table",
                                                       "dt", "dd",  "section", "article", "address", "body"};
// The head itself is not among them: its end tag, even its body's start tag, may be left out.
constexpr std::array<std::string_view, 3> hiddenTags = {"script", "style", "title"};

template<std::size_t Count>
bool contains(const std::array<std::string_view, Count>& names, std::string_view name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

char lower(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// Where the ASCII letters of `part` first stand in `text`, whatever their case; `part` is in lower case.
std::size_t findAnyCase(std::string_view text, std::string_view part)
{
    const auto found = std::search(text.begin(), text.end(), part.begin(), part.end(),
                                   [](char left, char right) { return lower(left) == right; });
    return found == text.end() ? std::string_view::npos : static_cast<std::size_t>(found - text.begin());
}

/// Collects lines: blanks collapse, line ends are held back until text follows, quotation marks begin each line.
class LineWriter
{
public:
    void addText(std::string_view text)
    {
        if (m_heldLineEnds > 0 && !m_text.empty()) {
            for (int i = 0; i < m_heldLineEnds; ++i) {
                m_text.push_back('\n');
                const bool isBlankLine = i + 1 < m_heldLineEnds;
                for (int depth = 0; depth < std::min(m_quotation, deepestQuotation); ++depth) {
                    m_text.append(isBlankLine ? ">" : depth + 1 < m_quotation ? ">" : "> ");
                }
            }
        } else if (m_text.empty()) {
            m_text.append(static_cast<std::size_t>(std::min(m_quotation, deepestQuotation)), '>');
            m_text.append(m_quotation > 0 ? " " : "");
        } else if (m_heldBlank) {
            m_text.push_back(' ');
        }
        m_heldLineEnds = 0;
        m_heldBlank = false;
        m_text.append(text);
    }

    void addBlank() { m_heldBlank = true; }
    void endLine() { m_heldLineEnds = std::max(m_heldLineEnds, 1); }
    void breakLine() { m_heldLineEnds = std::min(m_heldLineEnds + 1, 2); }
    void endParagraph() { m_heldLineEnds = 2; }
    void quote(int change) { m_quotation = std::max(0, m_quotation + change); }
    std::string take() { return std::move(m_text); }

private:
    std::string m_text;
    int m_heldLineEnds = 0;
    int m_quotation = 0;
    bool m_heldBlank = false;
};

class HtmlReader
{
public:
    explicit HtmlReader(std::string_view html)
        : m_rest(html)
    {
    }

    std::string read()
    {
        while (!m_rest.empty()) {
            const std::size_t special = m_rest.find_first_of("<&");
            readText(m_rest.substr(0, special));
            m_rest.remove_prefix(special == std::string_view::npos ? m_rest.size() : special);
            if (m_rest.starts_with('<')) {
                readTag();
            } else if (m_rest.starts_with('&')) {
                readReference();
            }
        }
        return m_writer.take();
    }

private:
    void readText(std::string_view text)
    {
        while (!text.empty()) {
            const std::size_t word = std::min(text.find_first_not_of(whiteSpace), text.size());
            if (word > 0) {
                readBlanks(text.substr(0, word));
            }
            text.remove_prefix(word);
            const std::size_t length = std::min(text.find_first_of(whiteSpace), text.size());
            if (length > 0) {
                m_writer.addText(text.substr(0, length));
            }
            text.remove_prefix(length);
        }
    }

    void readBlanks(std::string_view run)
    {
        if (m_preformatted == 0) {
            m_writer.addBlank();
            return;
        }
        for (const char blank : run) {
            if (blank == '\n') {
                m_writer.breakLine();
            } else {
                m_writer.addText(" ");
            }
        }
    }

    void readReference()
    {
        const std::size_t end = m_rest.substr(0, longestReference).find(';');
        const std::string text =
            end == std::string_view::npos ? std::string() : characterReference(m_rest.substr(1, end - 1));
        if (text.empty()) {
            m_writer.addText("&");
            m_rest.remove_prefix(1);
            return;
        }
        // A non-breaking space separates words as any other in a proportional text.
        if (text == " ") {
            m_writer.addBlank();
        } else {
            m_writer.addText(text);
        }
        m_rest.remove_prefix(end + 1);
    }

    void readTag()
    {
        if (m_rest.starts_with("<!--")) {
            skipPast("-->");
            return;
        }
        const bool closing = m_rest.starts_with("</");
        const std::size_t nameStart = closing ? 2 : 1;
        std::string name;
        for (std::size_t i = nameStart; i < m_rest.size() && name.size() < 16; ++i) {
            const char letter = lower(m_rest[i]);
            if ((letter < 'a' || letter > 'z') && (letter < '0' || letter > '9')) {
                break;
            }
            name.push_back(letter);
        }
        if (name.empty() && !m_rest.starts_with("<!") && !m_rest.starts_with("<?")) {
            m_writer.addText("<");
            m_rest.remove_prefix(1);
            return;
        }
        skipPast(">");
        applyTag(name, closing);
    }

    void applyTag(const std::string& name, bool closing)
    {
        m_inBody = m_inBody || name == "body";
        if (!closing && contains(hiddenTags, name)) {
            skipHidden(name);
        } else if (name == "br") {
            m_writer.breakLine();
        } else if (contains(paragraphTags, name)) {
            m_writer.endParagraph();
            m_writer.quote(name != "blockquote" ? 0 : closing ? -1 : 1);
            m_preformatted = std::max(0, m_preformatted + (name != "pre" ? 0 : closing ? -1 : 1));
        } else if (contains(lineTags, name)) {
            m_writer.endLine();
            if (name == "li" && !closing) {
                m_writer.addText("- ");
            }
        } else if (name == "td" || name == "th") {
            m_writer.addBlank();
        }
    }

    /// Drops everything up to the end tag; without one, up to the body, and within the body the rest.
    void skipHidden(const std::string& name)
    {
        std::size_t end = findAnyCase(m_rest, "</" + name);
        if (end != std::string_view::npos) {
            m_rest.remove_prefix(end);
            skipPast(">");
            return;
        }
        end = m_inBody ? std::string_view::npos : findAnyCase(m_rest, "<body");
        m_rest.remove_prefix(std::min(end, m_rest.size()));
        m_inBody = true; // Looked for once only, so that no text takes time by the square of its length.
    }

    void skipPast(std::string_view end)
    {
        const std::size_t found = m_rest.find(end);
        m_rest.remove_prefix(found == std::string_view::npos ? m_rest.size() : found + end.size());
    }

    std::string_view m_rest;
    LineWriter m_writer;
    int m_preformatted = 0;
    bool m_inBody = false;
};

} // namespace

std::string textOfHtml(std::string_view html)
{
    return HtmlReader(html).read();
}

} // namespace quillmate
