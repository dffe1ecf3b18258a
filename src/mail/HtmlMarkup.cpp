#include "mail/HtmlMarkup.h"

#include "base/AsciiText.h"

#include <algorithm>
#include <utility>

// Written here and not left to libxml2, whose push parser was tried: text behind "</html>", where mailing lists put
// their footer, is lost to it, "<https://a.example/>" loses its address, a NUL ends the message, and 0.5 MB of
// different attributes in one tag take 18 s without a callback that could stop it.

namespace quillmate
{
namespace
{

constexpr std::string_view whiteSpace = " \t\r\n\f";
// Those behind it are passed over; no tag that a mail program writes comes near.
constexpr std::size_t mostAttributes = 64;

bool isLetter(char letter)
{
    return lowerCase(letter) >= 'a' && lowerCase(letter) <= 'z';
}

/// Whether a tag, comment or declaration begins at this "<"; else it is a sign of the text.
bool beginsMarkup(std::string_view rest)
{
    const char first = rest.size() > 1 ? rest[1] : '\0';
    return isLetter(first) || first == '!' || first == '?' || (first == '/' && rest.size() > 2 && isLetter(rest[2]));
}

/// An address in angle brackets that was not written as text, so that it looks like a tag.
bool beginsAddress(std::string_view rest)
{
    return rest.starts_with("<http://") || rest.starts_with("<https://") || rest.starts_with("<mailto:");
}

} // namespace

std::string_view HtmlToken::value(std::string_view attribute) const
{
    const auto found = std::find_if(attributes.begin(), attributes.end(),
                                    [attribute](const Attribute& entry) { return entry.name == attribute; });
    return found == attributes.end() ? std::string_view() : found->value;
}

bool HtmlToken::has(std::string_view attribute) const
{
    return std::any_of(attributes.begin(), attributes.end(),
                       [attribute](const Attribute& entry) { return entry.name == attribute; });
}

bool HtmlMarkup::next(HtmlToken& token)
{
    while (!m_rest.empty()) {
        if (m_rest.front() != '<' || !beginsMarkup(m_rest) || beginsAddress(m_rest)) {
            token.kind = HtmlToken::Kind::Text;
            token.text = take(m_rest.find('<', 1));
            return true;
        }
        if (skipsDeclaration()) {
            continue;
        }
        return readTag(token);
    }
    return false;
}

/// Passes over a comment or a declaration, if one begins here.
bool HtmlMarkup::skipsDeclaration()
{
    constexpr std::string_view commentEnd = "-->";
    if (m_rest.starts_with("<!--")) {
        const std::size_t end = m_rest.find(commentEnd, 2); // "<!-->" is whole.
        take(end == std::string_view::npos ? end : end + commentEnd.size());
        return true;
    }
    if (m_rest[1] == '!' || m_rest[1] == '?') {
        take(m_rest.find('>'));
        take(1);
        return true;
    }
    return false;
}

bool HtmlMarkup::readTag(HtmlToken& token)
{
    take(1);
    const bool isEnd = m_rest.front() == '/';
    take(isEnd ? 1 : 0);
    token.kind = isEnd ? HtmlToken::Kind::EndTag : HtmlToken::Kind::StartTag;
    token.name = lowerCase(take(m_rest.find_first_of(" \t\r\n\f/>")));
    token.attributes.clear();
    for (;;) {
        take(m_rest.find_first_not_of(" \t\r\n\f/"));
        if (m_rest.empty()) {
            return false; // A tag without an end is none.
        }
        if (m_rest.front() == '>') {
            take(1);
            if (!isEnd) {
                skipInside(token.name);
            }
            return true;
        }
        HtmlToken::Attribute attribute = readAttribute();
        if (token.attributes.size() < mostAttributes) {
            token.attributes.push_back(std::move(attribute));
        }
    }
}

HtmlToken::Attribute HtmlMarkup::readAttribute()
{
    HtmlToken::Attribute attribute;
    // An equals sign that stands first belongs to the name.
    attribute.name = lowerCase(take(m_rest.find_first_of(" \t\r\n\f/>=", 1)));
    const std::size_t blanks = m_rest.find_first_not_of(whiteSpace);
    if (blanks != std::string_view::npos && m_rest[blanks] == '=') {
        take(blanks + 1);
        attribute.value = readValue();
    }
    return attribute;
}

std::string_view HtmlMarkup::readValue()
{
    take(m_rest.find_first_not_of(whiteSpace));
    const char mark = m_rest.empty() ? '\0' : m_rest.front();
    return mark == '"' || mark == '\'' ? readQuoted(mark) : take(m_rest.find_first_of(" \t\r\n\f>"));
}

/// Without its second mark a value ends with the tag, so that the text behind it is not lost. No later mark of the kind
/// is looked for then, so that no markup takes time by the square of its length.
std::string_view HtmlMarkup::readQuoted(char mark)
{
    bool& marksEnd = mark == '"' ? m_doubleMarksEnd : m_singleMarksEnd;
    take(1);
    const std::size_t end = marksEnd ? m_rest.find(mark) : std::string_view::npos;
    if (end == std::string_view::npos) {
        marksEnd = false;
        return take(m_rest.find('>'));
    }
    const std::string_view value = take(end);
    take(1);
    return value;
}

/// What stands in a script or a style is no markup. Without an end tag it is taken for markup, and no later one of the
/// kind is looked for.
void HtmlMarkup::skipInside(const std::string& name)
{
    if (name != "script" && name != "style") {
        return;
    }
    bool& ends = name == "script" ? m_scriptsEnd : m_stylesEnd;
    if (!ends) {
        return;
    }
    const std::size_t end = findAnyCase(m_rest, "</" + name);
    ends = end != std::string_view::npos;
    take(ends ? end : 0);
}

/// Passes over that much, or over the rest.
std::string_view HtmlMarkup::take(std::size_t length)
{
    const std::string_view taken = m_rest.substr(0, length);
    m_rest.remove_prefix(taken.size());
    return taken;
}

} // namespace quillmate
