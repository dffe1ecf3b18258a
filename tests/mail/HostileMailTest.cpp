#include "mail/EncodedWords.h"
#include "mail/HeaderFields.h"
#include "mail/HtmlMarkup.h"
#include "mail/HtmlText.h"
#include "mail/Mailbox.h"
#include "mail/MessageDate.h"
#include "mail/MessageText.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

using namespace quillmate;

namespace
{

constexpr std::size_t limit = std::size_t{64} * 1024;

/// The piece again and again, a million bytes of it.
QByteArray much(const QByteArray& piece)
{
    return piece.repeated(1'000'000 / piece.size());
}

QByteArray numbered(const QByteArray& before, const QByteArray& behind)
{
    QByteArray text;
    for (int i = 0; text.size() < 1'000'000; ++i) {
        text += before + QByteArray::number(i) + behind;
    }
    return text;
}

/// Multiparts in multiparts, and what stands in the innermost.
QByteArray nested(int depth, const QByteArray& inside)
{
    QByteArray text;
    for (int i = 0; i < depth; ++i) {
        const QByteArray boundary = "b" + QByteArray::number(i);
        text += "Content-Type: multipart/mixed; boundary=" + boundary + "\n\n--" + boundary + "\n";
    }
    return text + inside;
}

} // namespace

/// Mail that was written to stop its reader: it is read as far as its bounds, and at once.
class HostileMailTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void messages_data()
    {
        QTest::addColumn<QByteArray>("source");
        QTest::addColumn<QString>("text");
        const auto row = [](const char* name, const QByteArray& source, const char* text = "Text") {
            QTest::newRow(name) << source << QString(text);
        };
        const QByteArray mixed = "Content-Type: multipart/mixed; boundary=b\n\n";
        const QByteArray first = mixed + "--b\n\nText\n";
        row("empty parts", first + much("--b\n"));
        row("parts beyond the last that is read", mixed + much("--b\n\n\n") + "--b\n\nText", "");
        row("headers in parts", first + much("--b\na:b\n\n"));
        row("header without an end in a part", first + "--b\n" + much("a:\n"));
        row("lines that begin as boundaries", first + "--b\nContent-Type: image/png\n\n" + much("--bb\n"));
        row("nested as deep as is read", nested(32, "\nText\n"));
        row("nested deeper", nested(33, "\nText\n"), "");
        row("nested far deeper", first + "--b\n" + nested(20'000, "\nText\n"));
        row("messages in messages", first + "--b\n" + much("Content-Type: message/rfc822\n\n"));
        row("messages with groups", first + "--b\nContent-Type: message/rfc822\n\nFrom: " + much("a:"));
        row("many parameters", "Content-Type: text/plain;" + numbered(" a*", "=b;") + "\n\nText");
        row("many fields", much("a:\n") + "\nText");
        row("one long field", "Subject: " + much("a") + "\n\nText");
        row("folded field", "Subject: " + much("a\n ") + "\n\nText");
        row("a field beyond the bound", much("a:b\n") + much("a:b\n") + "Content-Type: image/png\n\nText");
        row("base64 of nothing", "Content-Transfer-Encoding: base64\n\n" + much("=\n"), "");
        row("quoted-printable of nothing", "Content-Transfer-Encoding: quoted-printable\n\n" + much("=\n") + "Text");
        row("uuencode that does not begin", "Content-Transfer-Encoding: x-uuencode\n\n" + much("begin\n"), "");
        row("line ends", "\n" + much("\r\n") + "Text");
        row("HTML that calls itself plain text, beyond what is read of HTML",
            first + "--b\n\n<html>" + much("<a></a>") + much("<a></a>") + much("<a></a>") + "\n--b\n\n<p>More</p>");
        row("flowed", "Content-Type: text/plain; format=flowed\n\nText" + much(" \n"));
    }

    void messages()
    {
        QFETCH(const QByteArray, source);
        QTEST(QString::fromStdString(textOfMessage(source.toStdString(), 4 * 1024 * 1024).text), "text");
    }

    void bodies()
    {
        for (const QByteArray& body : {numbered("--b", "\n\n"), much("--b\nContent-Type: text/plain\n"), much("=\n=3D"),
                                       much("AAAA\n"), much("<div>\n"), "--b\n" + nested(20'000, "\nText\n"),
                                       "--b\n" + much("Content-Type: message/rfc822\n\n")}) {
            const MessageText shown = textOfBody(body.toStdString(), limit);
            QVERIFY(shown.text.size() <= limit);
        }
    }

    void html_data()
    {
        QTest::addColumn<QByteArray>("html");
        const auto row = [](const char* name, const QByteArray& html) { QTest::newRow(name) << html; };
        row("elements that are open", much("<b></i>"));
        row("blocks in an item", "<li>" + much("<div>"));
        row("cells and rows", much("<table><td><tr>"));
        row("quotations", much("<blockquote>x<br>"));
        row("paragraphs in paragraphs", much("<p><b>"));
        row("comments that do not end", much("<!--"));
        row("declarations that do not end", much("<!") + much("<?"));
        row("tags that do not end", much("<img "));
        row("signs", much("<") + much("</") + much("&"));
        row("scripts and styles that do not end", much("<style><script></styl></scrip>"));
        row("different attributes", "<img " + numbered("a", "=b ") + ">");
        row("marks that do not end", much("<p a='>") + much("<p a=\">"));
        row("one long name", "<" + much("a") + ">");
        row("different names", numbered("<n", ">"));
        row("one long value", "<p style='" + much("a:b;") + "'>");
        row("references", much("&amp;") + much("&#x;"));
        row("zeros", QByteArray(1'000'000, '\0'));
    }

    void html()
    {
        QFETCH(const QByteArray, html);
        const std::string text = textOfHtml((html + "<!-- --><p>Text</p>").toStdString());
        QVERIFY(text.size() <= 4 * static_cast<std::size_t>(html.size()));
    }

    void fields()
    {
        QCOMPARE(HeaderFields::parse(much("a:\n").toStdString(), 1000).fields().size(), std::size_t{333});
        for (const QByteArray& value : {much("=?"), much("=?utf-8?Q?x"), much("=?utf-8?Q?a?= =?latin1?Q?b?= "),
                                        much("=?utf-8?B?=?="), much("a")}) {
            QVERIFY(decodeHeaderText(value.toStdString()).size() <= static_cast<std::size_t>(value.size()));
        }
        // Each change loads a converter.
        QVERIFY(
            decodeHeaderText(much("=?euc-kr?Q?a?= =?big5?Q?b?= =?gb18030?Q?c?= ").toStdString()).find("=?big5?Q?b?=") !=
            std::string::npos);
        for (const QByteArray& value : {much("a:"), much("("), much("\"a\":\";\""), much("a <"), much("a@b.c,"),
                                        much("a."), much("["), much("a ")}) {
            QVERIFY(parseMailboxes("me@x.org, " + value.toStdString()).size() < 20'000);
        }
        QCOMPARE(parseMailboxes("Team: me@x.org; " + much("a:").toStdString()).front().address, "me@x.org");
        QVERIFY(!parseDate(much("a ").toStdString()).isValid());
    }
};

QUILLMATE_TEST(HostileMailTest, QCoreApplication)
#include "HostileMailTest.moc"
