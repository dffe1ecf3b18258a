#include "localservice/engine/HtmlTag.h"

#include <QHash>
#include <QSet>

#include <utility>

namespace quillmate::localservice
{

namespace
{

using Names = QSet<QString>;

bool isBlank(QChar c)
{
    return c.isSpace() || c == u'/';
}

bool styleHides(QStringView style)
{
    for (const QStringView declaration : style.split(u';')) {
        const qsizetype colon = declaration.indexOf(u':');
        if (colon < 0) {
            continue;
        }
        const QStringView property = declaration.first(colon).trimmed();
        const QStringView value = declaration.mid(colon + 1).trimmed();
        if ((property.compare(u"display", Qt::CaseInsensitive) == 0 &&
             value.startsWith(u"none", Qt::CaseInsensitive)) ||
            (property.compare(u"visibility", Qt::CaseInsensitive) == 0 &&
             value.startsWith(u"hidden", Qt::CaseInsensitive))) {
            return true;
        }
    }
    return false;
}

/// Takes one attribute from the front of `rest`.
std::pair<QStringView, QStringView> takeAttribute(QStringView& rest)
{
    qsizetype index = 0;
    while (index < rest.size() && rest[index] != u'=' && !isBlank(rest[index])) {
        ++index;
    }
    const QStringView name = rest.first(index);
    rest = rest.mid(index).trimmed();
    if (!rest.startsWith(u'=')) {
        return {name, {}};
    }
    rest = rest.mid(1).trimmed();
    const bool quoted = rest.startsWith(u'"') || rest.startsWith(u'\'');
    qsizetype end = quoted ? rest.indexOf(rest[0], 1) : 0;
    while (!quoted && end < rest.size() && !rest[end].isSpace()) {
        ++end;
    }
    end = end < 0 ? rest.size() : end;
    const QStringView value = rest.mid(quoted ? 1 : 0, end - (quoted ? 1 : 0));
    rest = rest.mid(quoted ? end + 1 : end);
    return {name, value};
}

} // namespace

HtmlTag readHtmlTag(QStringView html, qsizetype start)
{
    HtmlTag tag;
    tag.end = start;
    const QChar first = start + 1 < html.size() ? html[start + 1] : QChar();
    // Decided before the end is looked for: that search costs the rest of the text each time.
    if (!first.isLetterOrNumber() && first != u':' && first != u'/' && first != u'!' && first != u'?') {
        return tag;
    }
    const qsizetype end = html.indexOf(u'>', start);
    if (end < 0) {
        tag.end = html.size();
        return tag;
    }
    tag.end = end + 1;
    tag.closing = first == u'/';
    const QStringView inside = html.sliced(start + 1, end - start - 1).mid(tag.closing ? 1 : 0);
    qsizetype length = 0;
    while (length < inside.size() && (inside[length].isLetterOrNumber() || inside[length] == u':')) {
        ++length;
    }
    tag.name = inside.first(length).toString().toLower();
    tag.attributes = inside.mid(length);
    return tag;
}

bool isVoidElement(const HtmlTag& tag)
{
    static const Names names = {QStringLiteral("area"),   QStringLiteral("base"), QStringLiteral("br"),
                                QStringLiteral("col"),    QStringLiteral("hr"),   QStringLiteral("img"),
                                QStringLiteral("input"),  QStringLiteral("link"), QStringLiteral("meta"),
                                QStringLiteral("source"), QStringLiteral("wbr"),  QStringLiteral("o:p")};
    // A slash before the end means something in SVG alone.
    return names.contains(tag.name) || (tag.name == QStringLiteral("svg") && tag.attributes.endsWith(u'/'));
}

bool isBlockElement(const QString& name)
{
    static const Names names = {
        QStringLiteral("address"), QStringLiteral("article"), QStringLiteral("blockquote"), QStringLiteral("body"),
        QStringLiteral("br"),      QStringLiteral("center"),  QStringLiteral("dd"),         QStringLiteral("div"),
        QStringLiteral("dl"),      QStringLiteral("dt"),      QStringLiteral("footer"),     QStringLiteral("form"),
        QStringLiteral("h1"),      QStringLiteral("h2"),      QStringLiteral("h3"),         QStringLiteral("h4"),
        QStringLiteral("h5"),      QStringLiteral("h6"),      QStringLiteral("header"),     QStringLiteral("hr"),
        QStringLiteral("li"),      QStringLiteral("ol"),      QStringLiteral("p"),          QStringLiteral("pre"),
        QStringLiteral("section"), QStringLiteral("table"),   QStringLiteral("td"),         QStringLiteral("th"),
        QStringLiteral("tr"),      QStringLiteral("ul")};
    return names.contains(name);
}

bool isParagraphElement(const QString& name)
{
    return name == QStringLiteral("p") || name == QStringLiteral("table") || name == QStringLiteral("ul") ||
           name == QStringLiteral("ol") || (name.size() == 2 && name[0] == u'h' && name[1].isDigit());
}

bool isHiddenByAttributes(const HtmlTag& tag)
{
    QStringView rest = tag.attributes;
    while (!rest.isEmpty()) {
        if (isBlank(rest[0]) || rest[0] == u'=') {
            rest = rest.mid(1);
            continue;
        }
        const auto [name, value] = takeAttribute(rest);
        if (name.compare(u"hidden", Qt::CaseInsensitive) == 0 ||
            (name.compare(u"style", Qt::CaseInsensitive) == 0 && styleHides(value))) {
            return true;
        }
    }
    return false;
}

bool isQuoteElement(const HtmlTag& tag)
{
    return tag.name == QStringLiteral("blockquote") ||
           (tag.name == QStringLiteral("div") &&
            (tag.attributes.contains(u"gmail_quote") || tag.attributes.contains(u"yahoo_quoted") ||
             tag.attributes.contains(u"moz-cite-prefix")));
}

ElementKind elementKind(const QString& name)
{
    static const QHash<QString, ElementKind> kinds = {
        {QStringLiteral("head"), ElementKind::Head},   {QStringLiteral("title"), ElementKind::Head},
        {QStringLiteral("p"), ElementKind::Paragraph}, {QStringLiteral("br"), ElementKind::Inline},
        {QStringLiteral("li"), ElementKind::Item},     {QStringLiteral("dd"), ElementKind::Item},
        {QStringLiteral("dt"), ElementKind::Item},     {QStringLiteral("ul"), ElementKind::List},
        {QStringLiteral("ol"), ElementKind::List},     {QStringLiteral("dl"), ElementKind::List},
        {QStringLiteral("tr"), ElementKind::Row},      {QStringLiteral("td"), ElementKind::Cell},
        {QStringLiteral("th"), ElementKind::Cell},     {QStringLiteral("table"), ElementKind::Table}};
    const auto found = kinds.find(name);
    return found != kinds.end() ? *found : isBlockElement(name) ? ElementKind::Block : ElementKind::Inline;
}

bool endsElement(ElementKind started, ElementKind open)
{
    switch (open) {
    case ElementKind::Head:
    case ElementKind::Paragraph:
        return started != ElementKind::Inline && started != ElementKind::Head;
    case ElementKind::Item:
        return started == ElementKind::Item;
    case ElementKind::Cell:
        return started == ElementKind::Cell || started == ElementKind::Row;
    case ElementKind::Row:
        return started == ElementKind::Row;
    default:
        return false;
    }
}

bool shieldsFromEnd(ElementKind started, ElementKind open)
{
    const bool tablePart = started == ElementKind::Cell || started == ElementKind::Row;
    return open == ElementKind::Table || (open == ElementKind::List && started == ElementKind::Item) ||
           (open == ElementKind::Cell && !tablePart);
}

} // namespace quillmate::localservice
