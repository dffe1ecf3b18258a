#include "mail/MessageText.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

using namespace quillmate;

namespace
{

constexpr std::size_t limit = std::size_t{64} * 1024;
const QByteArray plain = "Content-Type: text/plain; charset=utf-8\n\nThe plain text.\n";
const QByteArray html = "Content-Type: text/html; charset=utf-8\n\n<p>The <b>marked</b> text.</p>\n";
const QByteArray attached = "Content-Type: text/plain\nContent-Disposition: attachment; filename=a.txt\n\nATTACHED\n";

QByteArray parts(const QByteArray& boundary, const QList<QByteArray>& list)
{
    QByteArray text;
    for (const QByteArray& part : list) {
        text += "--" + boundary + "\n" + part + "\n";
    }
    return text + "--" + boundary + "--\nAn epilogue.\n";
}

QByteArray multipart(const QByteArray& kind, const QList<QByteArray>& list)
{
    return "Content-Type: multipart/" + kind + "; boundary=\"b\"\n\n" + parts("b", list);
}

QByteArray encoded(const QByteArray& type, const QByteArray& encoding, const QByteArray& body)
{
    return "Content-Type: " + type + "\nContent-Transfer-Encoding: " + encoding + "\n\n" + body;
}

void addRow(const char* name, const QByteArray& bytes, const char* text)
{
    QTest::newRow(name) << bytes << QString::fromUtf8(text);
}

} // namespace

/// From a message's bytes to the words that a person reads.
class MessageTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void message_data()
    {
        QTest::addColumn<QByteArray>("source");
        QTest::addColumn<QString>("text");
        const auto row = addRow;
        row("no MIME at all", "\nHello\n\nYou\n", "Hello\n\nYou");
        row("no body", "", "");
        row("first line indented", "\n\n\n  x\ny \n\n", "  x\ny");
        row("quoted-printable", encoded("text/plain; charset=utf-8", "Quoted-Printable", "Caf=C3=A9 a=\n b\n"),
            "Café a b");
        row("ISO-2022-JP", encoded("text/plain; charset=iso-2022-jp", "7bit", "\x1b$BF|K\\\x1b(B\n"), "日本");
        row("Shift_JIS", encoded("text/plain; charset=Shift_JIS", "base64", "gqCCooKk\n"), "あいう");
        row("unknown charset, UTF-8", encoded("text/plain; charset=x-none", "8bit", "Caf\xC3\xA9\n"), "Café");
        row("no charset, not UTF-8",
            encoded("text/plain", "8bit",
                    "\x93"
                    "Caf\xE9\x94\n"),
            "“Café”");
        row("said UTF-8, is not", encoded("text/plain; charset=utf-8", "8bit", "Caf\xE9\n"), "Café");
        row("said UTF-8, once broken",
            encoded("text/plain; charset=utf-8", "8bit",
                    "\xC3\xA9t\xE9, et bien d'autres mots encore, \xC3\xA9t\xC3\xA9"),
            "ét\uFFFD, et bien d'autres mots encore, été");
        row("flowed", "Content-Type: text/plain; format=flowed\n\nOne line that \ngoes on.\n-- \nTom",
            "One line that goes on.\n-- \nTom");
        row("flowed without its blanks", "Content-Type: text/plain; format=flowed; delsp=yes\n\nOne wo \nrd",
            "One word");
        row("binary", QByteArray("\n\x00\x01\x02\xFF\xFE\x03\x04\x05\x89PNG\x00\x00", 15), "");
        row("picture alone", encoded("image/png", "base64", "iVBORw0KGgo="), "");
        row("calendar alone", "Content-Type: text/calendar\n\nBEGIN", "BEGIN");

        row("alternative", multipart("alternative", {plain, html}), "The plain text.");
        row("alternative, wrong order", multipart("alternative", {html, plain}), "The plain text.");
        row("alternative with a calendar", multipart("alternative", {plain, html, "Content-Type: text/calendar\n\nX"}),
            "The plain text.");
        row("alternative without plain text", multipart("alternative", {html}), "The marked text.");
        row("nothing as plain text", multipart("alternative", {"Content-Type: text/plain\n\n \n", html}),
            "The marked text.");
        row("notice as plain text",
            multipart("alternative", {"\nYour program cannot show HTML.\n",
                                      "Content-Type: text/html\n\n<p>" + QByteArray(2000, 'a') + "</p>"}),
            QByteArray(2000, 'a').constData());
        row("notice beside pictures",
            multipart("alternative",
                      {"\nNo HTML?\n", "Content-Type: text/html\n\n<img src='" + QByteArray(900, 'a') + "'>"}),
            "No HTML?");
        row("plain text in several parts", multipart("mixed", {plain, attached, "\nAnd a footer.\n"}),
            "The plain text.\n\nAnd a footer.");
        row("HTML with a footer", multipart("mixed", {html, "\nA footer.\n"}), "The marked text.\n\nA footer.");
        row("attachment alone", multipart("mixed", {attached}), "");
        row("nested",
            multipart("mixed",
                      {"Content-Type: multipart/alternative; boundary=\"in:ner\"\n\n" + parts("in:ner", {plain, html}),
                       attached, "\nBelow."}),
            "The plain text.\n\nBelow.");
        row("inner end lost",
            multipart("mixed", {"Content-Type: multipart/mixed; boundary=c\n\n--c\n" + plain, "\nBelow."}),
            "The plain text.\n\nBelow.");
        row("forwarded alone",
            multipart("mixed", {"Content-Type: message/rfc822\nContent-Disposition: attachment\n\nFrom: a:a:a\n" +
                                multipart("alternative", {plain, html}).replace("\"b\"", "c").replace("--b", "--c")}),
            "The plain text.");
        row("forwarded beside a text",
            multipart("mixed", {plain, "Content-Type: message/rfc822\n\nSubject: x\n\nThe forwarded text."}),
            "The plain text.");
        row("forwarded notice beside pictures",
            multipart("mixed", {"Content-Type: message/rfc822\n\n" +
                                multipart("alternative", {"\nNo HTML?\n", "Content-Type: text/html\n\n<img src='" +
                                                                              QByteArray(900, 'a') + "'>"})
                                    .replace("\"b\"", "c")
                                    .replace("--b", "--c")}),
            "No HTML?");
        row("digest", multipart("digest", {"\nSubject: x\n\nOne.", "\nSubject: y\n\nTwo."}), "One.\n\nTwo.");
        row("no end of parts", "Content-Type: multipart/mixed; boundary=b\n\npreamble\n--b\n" + plain,
            "The plain text.");
        row("parts without a header", multipart("mixed", {"Bare: no,\nthis is.", "\nBare."}), "Bare.");
        row("no boundary named", "Content-Type: multipart/mixed\n\n" + parts("x", {plain}), "The plain text.");
        row("dashes are no boundary", multipart("mixed", {"\nAbove\n-----\n--c\nBelow\n"}), "Above\n-----\n--c\nBelow");
        row("HTML as plain text", "Content-Type: text/plain\n\n<html><body><p>Inside &amp; out</p></body></html>",
            "Inside & out");
    }

    void message()
    {
        QFETCH(const QByteArray, source);
        for (const QByteArray& mail :
             {"From: a@example.com\n" + source, QByteArray("From: a@example.com\n" + source).replace("\n", "\r\n")}) {
            const MessageText shown = textOfMessage(mail.toStdString(), limit);
            QTEST(QString::fromStdString(shown.text), "text");
            QVERIFY(!shown.truncated);
        }
    }

    void body_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("text");
        const auto row = addRow;
        row("plain with dashes", "Above\n-----\nBelow\n-----\nEnd", "Above\n-----\nBelow\n-----\nEnd");
        row("dashes before a text about content", "--x--\nContent-wise: all is well.\nBye.",
            "--x--\nContent-wise: all is well.\nBye.");
        row("preamble", "This is a multi-part message in MIME format.\n" + parts("=_b1", {plain, html}),
            "The plain text.");
        row("HTML with a footer", parts("b", {html, "\nA footer.\n"}), "The marked text.\n\nA footer.");
        row("no end of parts", "--b\n" + plain + "--b\nContent-Type: image/png\n\nxx", "The plain text.");
        row("part without headers", parts("b42", {"\nThe bare text."}), "The bare text.");
        row("quoted-printable", "Gr=C3=BC=C3=9Fe aus M=C3=BCnchen, eine lange=\n Zeile mit 2=3D2.",
            "Grüße aus München, eine lange Zeile mit 2=2.");
        row("quoted-printable Latin-1", "caf=E9 =E0 la carte=\n et plus", "café à la carte et plus");
        row("quoted-printable Windows", "=93Quoted=94 =96 300 =80", "“Quoted” – 300 €");
        row("quoted-printable in small letters", "caf=c3=a9", "café");
        row("soft breaks alone", "A line that is as long as lines of that kind are before they are br=\noken.",
            "A line that is as long as lines of that kind are before they are broken.");
        for (const char* left :
             {"See https://example.org/?id=2048 for more.", "See https://example.org/?q=E9&x=A0 for it.",
              "x=10; y=20; if (a=ff) b=AF; E=mc2", "Internationalization", "a1B2c3D4e5F6g7H8i9J0"}) {
            row(left, left, left);
        }
        row("a sum", "2 + 2 =\n4", "2 + 2 =\n4");
        row("address with parameters", "See https://example.org/?a=1&b=2 for more.",
            "See https://example.org/?a=1&b=2 for more.");
        row("base64", QByteArray("Ein Text mit Umlauten: äöü und noch viel mehr davon.").toBase64(),
            "Ein Text mit Umlauten: äöü und noch viel mehr davon.");
        row("base64 lines",
            "VGhlIGZpcnN0IGxpbmUgb2YgdGhpcyBsZXR0ZXIgZ29lcyBvbiBmb3IgYSBsb25nIHdoaWxlIHVu\ndGlsIGl0IGVuZHMu\n",
            "The first line of this letter goes on for a long while until it ends.");
        row("base64 Latin-1 with a list's footer",
            QByteArray("Gr\xfc\xdf"
                       "e aus M\xfcnchen, wie immer!")
                    .toBase64() +
                "\n____\nthe list\n",
            "Grüße aus München, wie immer!");
        row("base64 of a page", QByteArray("<p>Der <b>Preis</b></p><p>bleibt für München gleich.</p>").toBase64(),
            "Der Preis\n\nbleibt für München gleich.");
        row("one long word", "Donaudampfschifffahrt", "Donaudampfschifffahrt");
        row("ISO-2022-JP", "\x1B$B$3$s$K$A$O\x1B(B", "こんにちは");
        row("a whole source", "Received: from x\nSubject: s\n" + multipart("alternative", {html, plain}),
            "The plain text.");
        row("fields that somebody wrote", "From: Tom\nSubject: x\n\nThe news.", "From: Tom\nSubject: x\n\nThe news.");
        row("white space", " \n\t\n", "");
    }

    void body()
    {
        QFETCH(const QByteArray, body);
        QTEST(QString::fromStdString(textOfBody(body.toStdString(), limit).text), "text");
    }

    void cutAtTheLimit_data()
    {
        QTest::addColumn<QByteArray>("type");
        QTest::newRow("plain") << QByteArray("text/plain");
        QTest::newRow("HTML") << QByteArray("text/html");
    }

    void cutAtTheLimit()
    {
        QFETCH(const QByteArray, type);
        // Letters of two bytes, so that a cut at an odd place would split one.
        const QByteArray source = "Content-Type: " + type + "; charset=utf-8\n\n" + QByteArray("é").repeated(3000);
        const MessageText shown = textOfMessage(source.toStdString(), 1001);
        QCOMPARE(shown.text.size(), std::size_t{1000});
        QVERIFY(shown.truncated);
    }
};

QUILLMATE_TEST(MessageTextTest, QCoreApplication)
#include "MessageTextTest.moc"
