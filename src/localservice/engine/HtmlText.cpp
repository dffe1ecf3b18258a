#include "localservice/engine/HtmlText.h"

#include "localservice/engine/HtmlEntities.h"

#include <QList>
#include <QRegularExpression>
#include <QSet>

namespace quillmate::localservice
{

namespace
{

struct Tag {
    QString name;
    QStringView attributes;
    bool closing = false;
};

bool isVoid(const QString& name)
{
    static const QSet<QString> names = {QStringLiteral("area"),   QStringLiteral("base"), QStringLiteral("br"),
                                        QStringLiteral("col"),    QStringLiteral("hr"),   QStringLiteral("img"),
                                        QStringLiteral("input"),  QStringLiteral("link"), QStringLiteral("meta"),
                                        QStringLiteral("source"), QStringLiteral("wbr"),  QStringLiteral("o:p")};
    return names.contains(name);
}

bool isBlock(const QString& name)
{
    static const QSet<QString> names = {
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

bool isParagraph(const QString& name)
{
    return name == QStringLiteral("p") || name == QStringLiteral("table") || name == QStringLiteral("ul") ||
           name == QStringLiteral("ol") || (name.size() == 2 && name[0] == u'h' && name[1].isDigit());
}

bool isUnseen(const Tag& tag)
{
    static const QSet<QString> names = {QStringLiteral("head"),   QStringLiteral("style"),    QStringLiteral("script"),
                                        QStringLiteral("title"),  QStringLiteral("template"), QStringLiteral("svg"),
                                        QStringLiteral("object"), QStringLiteral("select")};
    static const QRegularExpression hidden(
        QStringLiteral("display\\s*:\\s*none|visibility\\s*:\\s*hidden|\\bhidden(?=[\\s/]|$)"),
        QRegularExpression::CaseInsensitiveOption);
    return names.contains(tag.name) || hidden.match(tag.attributes.toString()).hasMatch();
}

bool isQuote(const Tag& tag)
{
    return tag.name == QStringLiteral("blockquote") ||
           (tag.name == QStringLiteral("div") &&
            (tag.attributes.contains(u"gmail_quote") || tag.attributes.contains(u"yahoo_quoted") ||
             tag.attributes.contains(u"moz-cite-prefix")));
}

class Reader
{
public:
    explicit Reader(const QString& html)
        : m_html(html)
    {
    }

    QString read()
    {
        qsizetype position = 0;
        while (position < m_html.size()) {
            const qsizetype tag = m_html.indexOf(u'<', position);
            addText(m_html.mid(position, tag < 0 ? -1 : tag - position));
            if (tag < 0) {
                break;
            }
            position = readTag(tag);
        }
        breakLine(false);
        return m_text.trimmed();
    }

private:
    struct Open {
        QString name;
        bool unseen = false;
        bool quote = false;
    };

    /// Reads the tag or comment at `start`; returns where the text goes on.
    qsizetype readTag(qsizetype start)
    {
        if (m_html.mid(start, 4) == u"<!--") {
            const qsizetype end = m_html.indexOf(u"-->", start + 4);
            return end < 0 ? m_html.size() : end + 3;
        }
        const qsizetype end = m_html.indexOf(u'>', start);
        if (end < 0) {
            return m_html.size();
        }
        QStringView inside = m_html.mid(start + 1, end - start - 1);
        Tag tag;
        tag.closing = inside.startsWith(u'/');
        inside = tag.closing ? inside.mid(1) : inside;
        qsizetype length = 0;
        while (length < inside.size() && (inside[length].isLetterOrNumber() || inside[length] == u':')) {
            ++length;
        }
        if (length == 0 && !inside.startsWith(u'!') && !inside.startsWith(u'?') && !tag.closing) {
            addText(m_html.mid(start, 1));
            return start + 1;
        }
        tag.name = inside.first(length).toString().toLower();
        tag.attributes = inside.mid(length);
        apply(tag);
        const bool raw = !tag.closing && (tag.name == QStringLiteral("style") || tag.name == QStringLiteral("script"));
        if (!raw) {
            return end + 1;
        }
        const qsizetype close = m_html.indexOf(QString(QStringLiteral("</") + tag.name), end, Qt::CaseInsensitive);
        return close >= 0 ? close : m_html.size();
    }

    void apply(const Tag& tag)
    {
        if (isBlock(tag.name)) {
            breakLine(isParagraph(tag.name));
        }
        if (tag.name == QStringLiteral("li") && !tag.closing) {
            addText(u"- ");
        }
        if (isVoid(tag.name) || tag.name.isEmpty()) {
            return;
        }
        if (!tag.closing) {
            constexpr qsizetype depthLimit = 512;
            if (m_open.size() < depthLimit) {
                m_open.append({tag.name, isUnseen(tag), isQuote(tag)});
                m_unseen += m_open.last().unseen ? 1 : 0;
                m_quotes += m_open.last().quote ? 1 : 0;
            }
            return;
        }
        qsizetype index = m_open.size() - 1;
        while (index >= 0 && m_open[index].name != tag.name) {
            --index;
        }
        while (index >= 0 && m_open.size() > index) {
            m_unseen -= m_open.last().unseen ? 1 : 0;
            m_quotes -= m_open.last().quote ? 1 : 0;
            m_open.removeLast();
        }
    }

    void addText(QStringView html)
    {
        if (m_unseen == 0) {
            m_line += withoutEntities(html);
        }
    }

    void breakLine(bool paragraph)
    {
        const QString line = m_line.simplified();
        m_line.clear();
        if (!line.isEmpty()) {
            m_text += (m_quotes > 0 ? QStringLiteral("> ") : QString()) + line + u'\n';
        }
        if (paragraph && !m_text.endsWith(QStringLiteral("\n\n"))) {
            m_text += u'\n';
        }
    }

    QStringView m_html;
    QString m_text;
    QString m_line;
    QList<Open> m_open;
    int m_unseen = 0;
    int m_quotes = 0;
};

} // namespace

bool looksLikeHtml(const QString& text)
{
    constexpr qsizetype lookedAt = 4096;
    static const QRegularExpression start(
        QStringLiteral("^\\s*(<!doctype html|<html|<head|<body|<div|<p>|<p |<table|<span|<meta)"),
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression close(QStringLiteral("</(html|body|div|p|table|span|a)>"),
                                          QRegularExpression::CaseInsensitiveOption);
    return start.match(text.left(lookedAt)).hasMatch() && close.match(text).hasMatch();
}

QString htmlText(const QString& html)
{
    return Reader(html).read();
}

} // namespace quillmate::localservice
