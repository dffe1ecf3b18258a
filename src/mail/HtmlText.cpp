#include "mail/HtmlText.h"

#include "base/AsciiText.h"
#include "mail/CharacterReference.h"
#include "mail/HtmlElement.h"
#include "mail/QuotedLines.h"

#include <algorithm>
#include <array>
#include <unordered_map>
#include <vector>

namespace quillmate
{
namespace
{

constexpr std::size_t deepestElement = 400;

class TextReader
{
public:
    TextReader(std::string_view html, std::size_t limit, bool hides)
        : m_markup(html)
        , m_limit(limit)
        , m_hides(hides)
    {
    }

    std::string read()
    {
        HtmlToken token;
        while (m_lines.size() <= m_limit && m_markup.next(token)) {
            switch (token.kind) {
            case HtmlToken::Kind::Text:
                readText(token.text);
                break;
            case HtmlToken::Kind::StartTag:
                start(token);
                break;
            case HtmlToken::Kind::EndTag:
                end(token.name);
                break;
            }
        }
        return m_lines.take();
    }

private:
    struct Open {
        std::string name;
        HtmlElement::Kind kind = HtmlElement::Kind::Inline;
        bool isUnseen = false;
        bool hasNoSize = false; ///< also where an outer one has none
        int quotations = 0;
        int unclaimed = 0; ///< quotations marked by a class whose <blockquote> is still to come
        bool isPreformatted = false;
    };

    [[nodiscard]] bool hidesText() const
    {
        return m_hides && (m_unseen > 0 || (!m_open.empty() && m_open.back().hasNoSize));
    }

    void readText(std::string_view source)
    {
        if (hidesText()) {
            return;
        }
        const std::string text = withReferencesResolved(source);
        std::size_t word = 0;
        for (std::size_t i = 0; i <= text.size() && m_lines.size() <= m_limit; ++i) {
            // A non-breaking space separates words as any other in a proportional text.
            const bool isNoBreak = text.compare(i, 2, "\xC2\xA0") == 0;
            const char letter = i < text.size() ? text[i] : ' ';
            if (!isNoBreak && letter != ' ' && letter != '\t' && letter != '\r' && letter != '\n' && letter != '\f' &&
                letter != '\0') {
                continue;
            }
            m_lines.addText(std::string_view(text).substr(word, i - word));
            if (i < text.size()) {
                readBlank(letter);
            }
            i += isNoBreak ? 1 : 0;
            word = i + 1;
        }
    }

    void readBlank(char letter)
    {
        if (m_preformatted == 0) {
            m_lines.addBlank();
        } else if (letter == '\n') {
            m_lines.breakLine();
        } else if (letter != '\r') {
            m_lines.addText(" ");
        }
    }

    void separate(const HtmlElement& element)
    {
        using Break = HtmlElement::Break;
        // The lists in a list stand in its lines.
        const bool isInnerList = element.kind == HtmlElement::Kind::List && m_openNames.contains("li");
        switch (isInnerList ? Break::Line : element.around) {
        case Break::None:
            break;
        case Break::Blank:
            m_lines.addBlank();
            break;
        case Break::Line:
            m_lines.endLine();
            break;
        case Break::Paragraph:
            m_lines.endParagraph();
            break;
        }
    }

    void start(const HtmlToken& tag)
    {
        const HtmlElement element = htmlElement(tag.name);
        if (tag.name == "br" && !hidesText()) {
            m_lines.breakLine();
        }
        if (element.kind != HtmlElement::Kind::Inline) {
            endImplied(element.kind);
        }
        if (element.isVoid || m_open.size() == deepestElement) {
            separate(element);
            return;
        }
        const HtmlVisibility visibility = visibilityOf(tag);
        Open open{tag.name, element.kind, element.isUnseen || visibility.isHidden};
        open.hasNoSize = visibility.hasNoSize.value_or(!m_open.empty() && m_open.back().hasNoSize);
        open.isPreformatted = tag.name == "pre";
        if (marksQuotation(tag)) {
            open.quotations = 1;
            open.unclaimed = 1;
        } else if (tag.name == "blockquote") {
            open.quotations = m_unclaimed > 0 ? 0 : 1;
            open.unclaimed = m_unclaimed > 0 ? -1 : 0;
        }
        count(open, 1);
        m_open.push_back(std::move(open));
        if (!hidesText()) {
            separate(element);
            if (tag.name == "li") {
                m_lines.beginItem();
            }
        }
    }

    void end(const std::string& name)
    {
        const bool isHidden = hidesText();
        if (m_openNames.contains(name)) { // So that an end tag that ends nothing costs nothing.
            std::size_t index = m_open.size() - 1;
            while (m_open[index].name != name) {
                --index;
            }
            closeTo(index);
        }
        if (!isHidden) {
            separate(htmlElement(name));
        }
    }

    /// Ends the open elements whose end tags may be left out before such an element.
    void endImplied(HtmlElement::Kind started)
    {
        for (std::size_t index = m_open.size(); index-- > 0 && canEndAny(started);) {
            if (shieldsFromEnd(started, m_open[index].kind)) {
                break;
            }
            if (endsElement(started, m_open[index].kind)) {
                closeTo(index);
            }
        }
    }

    /// So that thousands of blocks inside each other need not be looked through for each tag.
    [[nodiscard]] bool canEndAny(HtmlElement::Kind started) const
    {
        for (std::size_t kind = 0; kind < m_openKinds.size(); ++kind) {
            if (m_openKinds[kind] > 0 && endsElement(started, static_cast<HtmlElement::Kind>(kind))) {
                return true;
            }
        }
        return false;
    }

    void closeTo(std::size_t index)
    {
        while (m_open.size() > index) {
            count(m_open.back(), -1);
            m_open.pop_back();
        }
    }

    void count(const Open& open, int change)
    {
        if ((m_openNames[open.name] += change) == 0) {
            m_openNames.erase(open.name);
        }
        m_openKinds[static_cast<std::size_t>(open.kind)] += change;
        m_unseen += open.isUnseen ? change : 0;
        m_preformatted += open.isPreformatted ? change : 0;
        m_unclaimed += open.unclaimed * change;
        m_lines.quote(open.quotations * change);
        if (open.kind == HtmlElement::Kind::Item && change < 0) {
            m_lines.endItem();
        }
    }

    HtmlMarkup m_markup;
    std::size_t m_limit;
    bool m_hides;
    QuotedLines m_lines;
    std::vector<Open> m_open;
    std::unordered_map<std::string, int> m_openNames;
    std::array<int, static_cast<std::size_t>(HtmlElement::Kind::Table) + 1> m_openKinds{};
    int m_unseen = 0;
    int m_preformatted = 0;
    int m_unclaimed = 0;
};

} // namespace

std::string textOfHtml(std::string_view html, std::size_t limit)
{
    std::string shown = TextReader(html, limit, true).read();
    // A message that seems to hide everything was misread: better a line too many than no text.
    return shown.empty() ? TextReader(html, limit, false).read() : shown;
}

bool looksLikeHtml(std::string_view text)
{
    constexpr std::array<std::string_view, 10> starts = {
        "<!doctype html", "<html", "<head", "<body", "<div", "<p>", "<p ", "<table", "<span", "<meta"};
    constexpr std::array<std::string_view, 7> ends = {"</html>",  "</body>", "</div>", "</p>",
                                                      "</table>", "</span>", "</a>"};
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    const auto begins = [text](std::string_view start) {
        return findAnyCase(text.substr(0, start.size()), start) == 0;
    };
    const auto holds = [text](std::string_view end) { return findAnyCase(text, end) != std::string_view::npos; };
    return std::any_of(starts.begin(), starts.end(), begins) && std::any_of(ends.begin(), ends.end(), holds);
}

} // namespace quillmate
