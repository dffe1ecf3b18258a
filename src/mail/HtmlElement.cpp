#include "mail/HtmlElement.h"

#include "base/AsciiText.h"

#include <algorithm>
#include <array>
#include <string>
#include <unordered_map>

namespace quillmate
{
namespace
{

using Break = HtmlElement::Break;
using Kind = HtmlElement::Kind;

struct ElementGroup {
    std::string_view names; ///< with a blank between two
    HtmlElement element;
};

constexpr std::array groups = std::to_array<ElementGroup>({
    {"address article aside body caption center div fieldset figure footer form header main nav section",
     {Break::Line, Kind::Block}},
    {"blockquote h1 h2 h3 h4 h5 h6 pre", {Break::Paragraph, Kind::Block}},
    {"hr", {Break::Paragraph, Kind::Block, true}},
    {"area base br col img input link meta o:p source wbr", {Break::None, Kind::Inline, true}},
    {"p", {Break::Paragraph, Kind::Paragraph}},
    {"li dd dt", {Break::Line, Kind::Item}},
    {"ol ul", {Break::Paragraph, Kind::List}},
    {"dl", {Break::Line, Kind::List}},
    {"table", {Break::Paragraph, Kind::Table}},
    {"tr", {Break::Line, Kind::Row}},
    {"td th", {Break::Blank, Kind::Cell}},
    {"head script style title", {Break::None, Kind::Head, false, true}},
    {"object select svg template", {Break::None, Kind::Inline, false, true}},
});

std::unordered_map<std::string_view, HtmlElement> elementsByName()
{
    std::unordered_map<std::string_view, HtmlElement> elements;
    for (ElementGroup group : groups) {
        while (!group.names.empty()) {
            const std::string_view name = group.names.substr(0, group.names.find(' '));
            elements.emplace(name, group.element);
            group.names.remove_prefix(std::min(group.names.size(), name.size() + 1));
        }
    }
    return elements;
}

/// "0", "0px", "0.0 !important", whatever the unit.
bool isZero(std::string_view value)
{
    const std::string_view number = value.substr(0, value.find_first_not_of("0123456789."));
    return !number.empty() && number.find_first_not_of("0.") == std::string_view::npos;
}

} // namespace

HtmlElement htmlElement(std::string_view name)
{
    static const std::unordered_map<std::string_view, HtmlElement> elements = elementsByName();
    const auto found = elements.find(name);
    return found != elements.end() ? found->second : HtmlElement{};
}

bool endsElement(Kind started, Kind open)
{
    switch (open) {
    case Kind::Head:
    case Kind::Paragraph:
        return started != Kind::Inline && started != Kind::Head;
    case Kind::Item:
        return started == Kind::Item;
    case Kind::Cell:
        return started == Kind::Cell || started == Kind::Row;
    case Kind::Row:
        return started == Kind::Row;
    default:
        return false;
    }
}

bool shieldsFromEnd(Kind started, Kind open)
{
    const bool isTablePart = started == Kind::Cell || started == Kind::Row;
    return open == Kind::Table || (open == Kind::List && started == Kind::Item) || (open == Kind::Cell && !isTablePart);
}

HtmlVisibility visibilityOf(const HtmlToken& startTag)
{
    HtmlVisibility visibility;
    visibility.isHidden = startTag.has("hidden");
    bool hasNoHeight = false;
    bool hidesOverflow = false;
    std::string_view style = startTag.value("style");
    while (!style.empty()) {
        const std::string_view declaration = style.substr(0, style.find(';'));
        style.remove_prefix(std::min(style.size(), declaration.size() + 1));
        const std::size_t colon = declaration.find(':');
        if (colon == std::string_view::npos) {
            continue;
        }
        const std::string property = lowerCase(trimmed(declaration.substr(0, colon)));
        const std::string value = lowerCase(trimmed(declaration.substr(colon + 1)));
        visibility.isHidden = visibility.isHidden || (property == "display" && value.starts_with("none")) ||
                              (property == "visibility" && value.starts_with("hidden")) ||
                              (property == "opacity" && isZero(value));
        hasNoHeight = hasNoHeight || ((property == "max-height" || property == "height") && isZero(value));
        hidesOverflow = hidesOverflow || (property == "overflow" && value.starts_with("hidden"));
        if (property == "font-size") {
            visibility.hasNoSize = isZero(value);
        }
    }
    visibility.isHidden = visibility.isHidden || (hasNoHeight && hidesOverflow);
    return visibility;
}

bool marksQuotation(const HtmlToken& startTag)
{
    constexpr std::array<std::string_view, 3> marks = {"gmail_quote", "yahoo_quoted", "moz-cite-prefix"};
    const std::string_view names = startTag.value("class");
    return startTag.name == "div" && std::any_of(marks.begin(), marks.end(), [names](std::string_view mark) {
               return names.find(mark) != std::string_view::npos;
           });
}

} // namespace quillmate
