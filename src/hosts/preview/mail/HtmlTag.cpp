#include "hosts/preview/mail/HtmlTag.h"

#include <algorithm>
#include <utility>

namespace quillmate
{
namespace
{

constexpr std::string_view whiteSpace = " \t\r\n\f";
// Those behind it are passed over; no tag that a mail program writes comes near.
constexpr std::size_t mostAttributes = 64;

char lower(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

std::string lowerCase(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), lower);
    return result;
}

} // namespace

std::string_view HtmlTag::value(std::string_view attribute) const
{
    const auto found = std::find_if(attributes.begin(), attributes.end(),
                                    [attribute](const Attribute& entry) { return entry.name == attribute; });
    return found == attributes.end() ? std::string_view() : found->value;
}

bool HtmlTagReader::next(HtmlTag& tag)
{
    constexpr std::string_view commentStart = "<!--";
    constexpr std::string_view commentEnd = "-->";
    for (;;) {
        const std::size_t start = m_rest.find('<');
        if (start == std::string_view::npos) {
            return false;
        }
        m_rest.remove_prefix(start);
        if (m_rest.starts_with(commentStart)) {
            const std::size_t end = m_rest.find(commentEnd);
            take(end == std::string_view::npos ? m_rest.size() : end + commentEnd.size());
        } else if (m_rest.size() > 1 && lower(m_rest[1]) >= 'a' && lower(m_rest[1]) <= 'z') {
            take(1);
            if (readTag(tag)) {
                return true;
            }
        } else {
            take(1);
        }
    }
}

bool HtmlTagReader::readTag(HtmlTag& tag)
{
    tag.name = lowerCase(take(m_rest.find_first_of(" \t\r\n\f/>")));
    tag.attributes.clear();
    for (;;) {
        skipBlanks();
        if (m_rest.empty()) {
            return false; // A tag without an end is none.
        }
        if (m_rest.front() == '>') {
            take(1);
            skipInside(tag.name);
            return true;
        }
        HtmlTag::Attribute attribute = readAttribute();
        if (tag.attributes.size() < mostAttributes) {
            tag.attributes.push_back(std::move(attribute));
        }
    }
}

HtmlTag::Attribute HtmlTagReader::readAttribute()
{
    HtmlTag::Attribute attribute;
    // An equals sign that stands first belongs to the name.
    attribute.name = lowerCase(take(m_rest.find_first_of(" \t\r\n\f/>=", 1)));
    const std::size_t blanks = m_rest.find_first_not_of(whiteSpace);
    if (blanks != std::string_view::npos && m_rest[blanks] == '=') {
        take(blanks + 1);
        attribute.value = readValue();
    }
    return attribute;
}

std::string_view HtmlTagReader::readValue()
{
    take(m_rest.find_first_not_of(whiteSpace));
    if (m_rest.empty()) {
        return {};
    }
    const char mark = m_rest.front();
    if (mark != '"' && mark != '\'') {
        return take(m_rest.find_first_of(" \t\r\n\f>"));
    }
    take(1);
    const std::string_view value = take(m_rest.find(mark));
    take(1);
    return value;
}

void HtmlTagReader::skipBlanks()
{
    take(m_rest.find_first_not_of(" \t\r\n\f/"));
}

/// What stands in a script or a style is no markup. Without an end tag it is taken for markup, and no later one of the
/// kind is looked for, so that no markup takes time by the square of its length.
void HtmlTagReader::skipInside(const std::string& name)
{
    if (name != "script" && name != "style") {
        return;
    }
    bool& ends = name == "script" ? m_scriptsEnd : m_stylesEnd;
    if (!ends) {
        return;
    }
    const std::string endTag = "</" + name;
    const auto found = std::search(m_rest.begin(), m_rest.end(), endTag.begin(), endTag.end(),
                                   [](char left, char right) { return lower(left) == right; });
    ends = found != m_rest.end();
    take(ends ? static_cast<std::size_t>(found - m_rest.begin()) : 0);
}

/// Passes over that much, or over the rest.
std::string_view HtmlTagReader::take(std::size_t length)
{
    const std::string_view taken = m_rest.substr(0, length);
    m_rest.remove_prefix(taken.size());
    return taken;
}

} // namespace quillmate
