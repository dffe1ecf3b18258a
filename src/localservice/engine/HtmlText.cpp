#include "localservice/engine/HtmlText.h"

#include "localservice/engine/HtmlEntities.h"
#include "localservice/engine/HtmlTag.h"

#include <QList>
#include <QRegularExpression>
#include <QSet>

namespace quillmate::localservice
{

namespace
{

bool isUnseenElement(const QString& name)
{
    static const QSet<QString> names = {QStringLiteral("head"),   QStringLiteral("style"),    QStringLiteral("script"),
                                        QStringLiteral("title"),  QStringLiteral("template"), QStringLiteral("svg"),
                                        QStringLiteral("object"), QStringLiteral("select")};
    return names.contains(name);
}

class Reader
{
public:
    Reader(const QString& html, bool hides)
        : m_html(html)
        , m_hides(hides)
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
        ElementKind kind = ElementKind::Inline;
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
        const HtmlTag tag = readHtmlTag(m_html, start);
        if (tag.end == start) {
            addText(m_html.mid(start, 1));
            return start + 1;
        }
        apply(tag);
        const bool raw = !tag.closing && (tag.name == QStringLiteral("style") || tag.name == QStringLiteral("script"));
        if (!raw) {
            return tag.end;
        }
        const qsizetype close = m_html.indexOf(QString(QStringLiteral("</") + tag.name), tag.end, Qt::CaseInsensitive);
        return close >= 0 ? close : m_html.size();
    }

    void apply(const HtmlTag& tag)
    {
        if (isBlockElement(tag.name)) {
            breakLine(isParagraphElement(tag.name));
        }
        const ElementKind kind = elementKind(tag.name);
        if (!tag.closing && kind != ElementKind::Inline) {
            endImplied(kind);
        }
        if (isVoidElement(tag) || tag.name.isEmpty()) {
            return;
        }
        if (!tag.closing) {
            constexpr qsizetype depthLimit = 512;
            if (m_open.size() < depthLimit) {
                const bool unseen = m_hides && (isUnseenElement(tag.name) || isHiddenByAttributes(tag));
                m_open.append({tag.name, kind, unseen, isQuoteElement(tag)});
                m_unseen += m_open.last().unseen ? 1 : 0;
                m_quotes += m_open.last().quote ? 1 : 0;
                m_leavable += isLeavable(kind) ? 1 : 0;
            }
            if (tag.name == QStringLiteral("li")) {
                addText(u"- ");
            }
            return;
        }
        qsizetype index = m_open.size() - 1;
        while (index >= 0 && m_open.at(index).name != tag.name) {
            --index;
        }
        if (index >= 0) {
            closeTo(index);
        }
    }

    /// Ends the open elements whose end tags may be left out before such an element.
    void endImplied(ElementKind started)
    {
        for (qsizetype index = m_open.size() - 1; index >= 0 && m_leavable > 0; --index) {
            const ElementKind open = m_open.at(index).kind;
            if (shieldsFromEnd(started, open)) {
                break;
            }
            if (endsElement(started, open)) {
                closeTo(index);
            }
        }
    }

    /// Whether some element that follows may end it without an end tag.
    static bool isLeavable(ElementKind kind)
    {
        return kind != ElementKind::Inline && kind != ElementKind::Block && kind != ElementKind::Table &&
               kind != ElementKind::List;
    }

    void closeTo(qsizetype index)
    {
        while (m_open.size() > index) {
            m_unseen -= m_open.last().unseen ? 1 : 0;
            m_quotes -= m_open.last().quote ? 1 : 0;
            m_leavable -= isLeavable(m_open.last().kind) ? 1 : 0;
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
    bool m_hides;
    QString m_text;
    QString m_line;
    QList<Open> m_open;
    int m_unseen = 0;
    int m_quotes = 0;
    int m_leavable = 0; ///< so that thousands of blocks inside each other need not be looked through for each tag
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
    const QString shown = Reader(html, true).read();
    // A message that seems to hide everything was misread: better a line too many than no text.
    return shown.isEmpty() ? Reader(html, false).read() : shown;
}

} // namespace quillmate::localservice
