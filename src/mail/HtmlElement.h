#pragma once

#include "mail/HtmlMarkup.h"

#include <optional>
#include <string_view>

namespace quillmate
{

/// What an element of HTML means for the text that is read of it.
struct HtmlElement {
    /// What stands around it.
    enum class Break { None, Blank, Line, Paragraph };
    /// What matters for the end tags that may be left out (HTML, "optional tags").
    enum class Kind { Inline, Block, Head, Paragraph, Item, List, Row, Cell, Table };

    Break around = Break::None;
    Kind kind = Kind::Inline;
    bool isVoid = false;   ///< it has no content and no end tag
    bool isUnseen = false; ///< its content is never shown
};

/// An element of that (lower-case) name; one that means nothing for the text is inline.
HtmlElement htmlElement(std::string_view name);

/// Whether the start of one element ends an open one whose end tag was left out.
bool endsElement(HtmlElement::Kind started, HtmlElement::Kind open);
/// Whether an open element keeps what is around it from being ended so.
bool shieldsFromEnd(HtmlElement::Kind started, HtmlElement::Kind open);

/// How an element's attributes show what is in it.
struct HtmlVisibility {
    bool isHidden = false; ///< for good: nothing inside can be shown
    /// Whether the letters are given no size; absent when no size is said. What is inside can give itself one.
    std::optional<bool> hasNoSize;
};
HtmlVisibility visibilityOf(const HtmlToken& startTag);

/// Whether a mail program marks the quoted message with it.
bool marksQuotation(const HtmlToken& startTag);

} // namespace quillmate
