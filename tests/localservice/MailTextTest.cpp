#include "localservice/engine/MailText.h"
#include "localservice/MailFixtures.h"
#include "localservice/engine/QuotedText.h"

#include <QTest>

using namespace quillmate::localservice;

namespace
{

const QByteArray htmlPart = "Content-Type: text/html; charset=utf-8\n\n<p>The <b>marked</b> text.</p>\n";

} // namespace

/// From a message's source to what its sender wrote.
class MailTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void mailIsDecoded_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("text");
        const auto row = [](const char* name, const QByteArray& body, const char* text) {
            QTest::newRow(name) << body << QString::fromUtf8(text);
        };
        row("plain", "Hello there.\nBye.", "Hello there.\nBye.");
        row("plain with dashes", "Above\n-----\nBelow\n-----\nEnd", "Above\n-----\nBelow\n-----\nEnd");
        row("alternative", multipart("=_b1", {plainPart, htmlPart}), "The plain text.");
        row("HTML first", multipart("b", {htmlPart, plainPart}), "The plain text.");
        row("preamble", "This is a multi-part message in MIME format.\n" + multipart("b", {plainPart}),
            "The plain text.");
        row("dashes before a text about content", "--x--\nContent-wise: all is well.\nBye.",
            "--x--\nContent-wise: all is well.\nBye.");
        row("no end of parts", "--b\n" + plainPart + "--b\nContent-Type: image/png\n\nxx", "The plain text.");
        row("HTML part only", multipart("b", {htmlPart}), "The marked text.");
        row("empty plain part", multipart("b", {"Content-Type: text/plain\n\n \n", htmlPart}), "The marked text.");
        row("placeholder plain part",
            multipart("b", {"Content-Type: text/plain\n\nYour program cannot show HTML.\n",
                            "Content-Type: text/html\n\n<p>" + QByteArray(2000, 'a') + "</p>"}),
            QByteArray(2000, 'a').constData());
        row("nested",
            multipart("outer", {"Content-Type: multipart/alternative; boundary=\"in:ner\"\n\n" +
                                    multipart("in:ner", {plainPart, htmlPart}),
                                "Content-Type: text/plain\nContent-Disposition: attachment\n\nATTACHED"}),
            "The plain text.");
        row("forwarded as a part",
            multipart("b",
                      {"Content-Type: message/rfc822\n\nSubject: x\nContent-Type: text/plain\n\nThe forwarded text."}),
            "The forwarded text.");
        row("part without headers", multipart("b42", {"\nThe bare text."}), "The bare text.");
        row("CRLF", multipart("b", {plainPart}).replace("\n", "\r\n"), "The plain text.");
        row("quoted-printable", "Gr=C3=BC=C3=9Fe aus M=C3=BCnchen, eine lange=\n Zeile mit 2=3D2.",
            "Grüße aus München, eine lange Zeile mit 2=2.");
        row("quoted-printable Latin-1", "caf=E9 =E0 la carte=\n et plus", "café à la carte et plus");
        row("address with parameters", "See https://example.org/?a=1&b=2 for more.",
            "See https://example.org/?a=1&b=2 for more.");
        row("base64", QByteArray("Ein Text mit Umlauten: äöü und noch viel mehr davon.").toBase64(),
            "Ein Text mit Umlauten: äöü und noch viel mehr davon.");
        row("base64 lines",
            "VGhlIGZpcnN0IGxpbmUgb2YgdGhpcyBsZXR0ZXIgZ29lcyBvbiBmb3IgYSBsb25nIHdoaWxlIHVu\ndGlsIGl0IGVuZHMu\n",
            "The first line of this letter goes on for a long while until it ends.");
        row("base64 HTML", QByteArray("<html><body><p>Inside &amp; out</p></body></html>").toBase64(), "Inside & out");
        row("one long word", "Donaudampfschifffahrt", "Donaudampfschifffahrt");
        row("base64 part in Shift_JIS",
            multipart("b",
                      {"Content-Type: text/plain; charset=Shift_JIS\nContent-Transfer-Encoding: base64\n\ngqCCooKk\n"}),
            "あいう");
        row("ISO-2022-JP without its header", "\x1B$B$3$s$K$A$O\x1B(B", "こんにちは");
        row("unknown charset", multipart("b", {"Content-Type: text/plain; charset=x-none\n\nStill read"}),
            "Still read");
        row("flowed", multipart("b", {"Content-Type: text/plain; format=flowed\n\nOne line that \ngoes on.\n-- \nTom"}),
            "One line that goes on.\n-- \nTom");
        row("HTML",
            "<html><head><title>T</title><style>p{}</style></head><body><p>One&nbsp;&ndash; two<br>three</p>"
            "<script>if (a < b) x();</script><div style='display: none'>hidden</div><ul><li>four</li></ul>&#8364;&#x41;"
            "<!-- no > --> 1 < 2</body></html>",
            "One – two\nthree\n\n- four\n\n€A 1 < 2");
        row("HTML without the head's end", "<html><head><title>Offer</title><body><p>Ten pens</p></body></html>",
            "Ten pens");
        row("HTML without the head's end and body", "<html><head><title>Offer</title><p>Ten pens</p></html>",
            "Ten pens");
        row("HTML that only looks hidden",
            "<div style=\"overflow:hidden !important\">One</div><p title=\"Our hidden gems\">two</p>"
            "<p data-x=\"hidden costs\">three</p><p class=hidden title='display:none'>four</p>",
            "One\n\ntwo\n\nthree\n\nfour");
        row("HTML that is hidden",
            "<p>One</p><div HIDDEN>a</div><div hidden=''>b</div><div style='color:red;Visibility : hidden'>c</div>"
            "<span style=display:none>d</span><p>two</p>",
            "One\n\ntwo");
        row("HTML hidden paragraph without its end", "<p style=\"display:none\">pre<p>text</p>", "text");
        row("HTML hidden cell without its end",
            "<table><tr><td style=\"display:none\">pre<td>text<tr><td hidden>x<tr><td>more</table>", "text\nmore");
        row("HTML hidden item without its end", "<p>List</p><ul><li hidden>pre<li>text</ul>", "List\n\n- text");
        row("HTML table in a hidden cell",
            "<table><tr><td hidden><table><tr><td>in<td>side</table>still</td><td>text</table>", "text");
        row("HTML drawing", "<p>One <svg width=\"1\" height=\"1\"/> two <svg><text>x</text></svg>three</p>",
            "One two three");
        row("HTML with everything hidden", "<html><div style='display:none'>All <p>of it</p></div></html>",
            "All\n\nof it");
        row("HTML quote", "<div>Mine.</div><blockquote type=cite><p>Theirs.</p></blockquote>", "Mine.\n\n> Theirs.");
        row("HTML cut in a tag", "<p>Whole</p><p>cut</p><a hre", "Whole\n\ncut");
        row("nothing", "", "");
        row("white space", " \n\t\n", "");
        row("image only",
            multipart("b", {"Content-Type: image/png\nContent-Transfer-Encoding: base64\n\niVBORw0KGgo="}), "");
        row("binary", QByteArray("\x00\x01\x02\xFF\xFE\x03\x04\x05\x89PNG\x00\x00", 14), "");
    }

    void mailIsDecoded()
    {
        QFETCH(QByteArray, body);
        QFETCH(QString, text);
        QCOMPARE(mailText(body.toStdString()).trimmed(), text);
    }

    void quotesAndSignaturesAreDropped_data()
    {
        QTest::addColumn<QString>("text");
        const auto row = [](const char* name, const char* text) { QTest::newRow(name) << QString::fromUtf8(text); };
        row("nothing to drop", "Mine: one.\nMine two.");
        row("quoted lines",
            "Mine: one.\n\nOn Mon, 3 Mar 2025 at 10:00, Tom <t@b.org> wrote:\n> Old.\n>> Older.\n\nMine two.");
        row("attribution on two lines",
            "Mine: one.\nMine two.\n\nOn Mon, 3 Mar 2025 at 10:00, Tom Smith\n<t@b.org> wrote:\n> Old.");
        row("bars as quote marks",
            "Mine: one.\n\nOn Mon, 3 Mar 2025 at 10:00, Tom <t@b.org> wrote:\n| Old.\n| | Older.\n\nMine two.");
        row("signature", "Mine: one.\nMine two.\n-- \nTom\nACME");
        row("phone", "Mine: one.\nMine two.\n\nSent from my iPhone");
        row("German", "Mine: one.\nMine two.\n\nAm 03.03.25 um 10:00 schrieb Tom <t@b.org>:\n> Alt.\n\nVon meinem "
                      "iPhone gesendet");
        row("French", "Mine: one.\nMine two.\n\nLe lun. 3 mars 2025 à 10:00, Tom <t@b.org> a écrit :\n> "
                      "Vieux.\n\nEnvoyé de mon iPhone");
        row("Spanish",
            "Mine: one.\nMine two.\n\nEl lun, 3 mar 2025 a las 10:00, Tom (<t@b.org>) escribió:\n\n> Viejo.");
        row("Japanese", "Mine: one.\nMine two.\n\n2025年3月3日(月) 10:00 Tom <t@b.org>:\n> 古い。\niPhoneから送信");
        row("Arabic", "Mine: one.\nMine two.\n\nفي الاثنين، 3 مارس 2025 كتب Tom:\n> قديم.");
        row("Outlook", "Mine: one.\nMine two.\n\n-----Original Message-----\nFrom: Tom\nOld.");
        row("German Outlook", "Mine: one.\nMine two.\n\nVon: Tom\nGesendet: Montag\nAn: Anna\nBetreff: Alt\n\nAlt.");
        row("Japanese Outlook",
            "Mine: one.\nMine two.\n\n差出人: Tom\n送信日時: 2025年3月3日\n宛先: Anna\n件名: 古い\n\n古い。");
        row("unmarked quote", "Mine: one.\nMine two.\n\nOn 3 Mar 2025, at 10:00, Tom <t@b.org> wrote:\n\nOld.");
        row("list footer", "Mine: one.\nMine two.\n_______________________________________________\nlist mailing list");
    }

    void quotesAndSignaturesAreDropped()
    {
        QFETCH(QString, text);
        QCOMPARE(ownText(text).simplified(), QStringLiteral("Mine: one. Mine two."));
    }

    void linesThatBeginWithABarAreNotAlwaysQuotes()
    {
        for (const char* text : {"Prices on 3.4.:\n| pens | 3 |\n| caps | 4 |\nBye.", "The set is\n|x < 3\nas said."}) {
            QCOMPARE(ownText(QString::fromUtf8(text)), QString::fromUtf8(text));
        }
    }

    void aBareForwardGivesTheForwardedText()
    {
        QCOMPARE(ownText(QStringLiteral(
                     "---------- Forwarded message ---------\nFrom: Tom\nDate: today\nSubject: x\nTo: A\n\nThe news.")),
                 QStringLiteral("The news."));
        QCOMPARE(ownText(QStringLiteral("> Only\n> quoted.")), QStringLiteral("Only\nquoted."));
    }
};

QTEST_GUILESS_MAIN(MailTextTest)
#include "MailTextTest.moc"
