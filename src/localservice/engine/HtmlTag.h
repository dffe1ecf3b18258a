#pragma once

#include <QString>
#include <QStringView>

namespace quillmate::localservice
{

/// One tag of an HTML text.
struct HtmlTag {
    QString name; ///< in lower case; empty for declarations
    QStringView attributes;
    bool closing = false;
    qsizetype end = 0; ///< where the text goes on
};

/// Reads the tag that begins with the "<" at `start`. Where no tag begins there, `end` is `start`; where the text ends
/// inside the tag, `end` is its size and the name is empty.
HtmlTag readHtmlTag(QStringView html, qsizetype start);

/// Whether the element has no content and no end tag.
bool isVoidElement(const HtmlTag& tag);
/// Whether it begins a new line.
bool isBlockElement(const QString& name);
/// Whether an empty line stands around it.
bool isParagraphElement(const QString& name);
/// Whether the element's attributes hide it: the attribute "hidden", or a style that does not show it.
bool isHiddenByAttributes(const HtmlTag& tag);
/// Whether a mail program marks the quoted message with it.
bool isQuoteElement(const HtmlTag& tag);

/// What matters about an element for the end tags that may be left out (HTML, "optional tags").
enum class ElementKind { Inline, Block, Head, Paragraph, Item, List, Row, Cell, Table };
ElementKind elementKind(const QString& name);
/// Whether the start of one element ends an open one whose end tag was left out.
bool endsElement(ElementKind started, ElementKind open);
/// Whether an open element keeps what is around it from being ended so.
bool shieldsFromEnd(ElementKind started, ElementKind open);

} // namespace quillmate::localservice
