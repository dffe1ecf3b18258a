#include "hosts/preview/mail/DisplayText.h"
#include "hosts/preview/mail/HtmlText.h"

#include <QTest>

using namespace quillmate;

namespace
{

constexpr std::size_t limit = 4096;

std::string message(const std::string& type, const std::string& encoding, const std::string& body)
{
    return "From: a@example.com\nMIME-Version: 1.0\nContent-Type: " + type +
           "\nContent-Transfer-Encoding: " + encoding + "\n\n" + body;
}

std::string multipart(const std::string& kind, const std::string& parts)
{
    return "From: a@example.com\nMIME-Version: 1.0\nContent-Type: multipart/" + kind + "; boundary=\"b\"\n\n" + parts +
           "--b--\n";
}

} // namespace

class DisplayTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void chosenText_data()
    {
        QTest::addColumn<QByteArray>("source");
        QTest::addColumn<QString>("text");

        const auto row = [](const char* label, const std::string& source, const char* text) {
            QTest::newRow(label) << QByteArray::fromStdString(source) << QString::fromUtf8(text);
        };
        const std::string plain = "--b\nContent-Type: text/plain\n\nthe plain\n";
        const std::string html = "--b\nContent-Type: text/html\n\n<p>the <b>html</b></p>\n";
        const std::string attachment =
            "--b\nContent-Type: text/plain\nContent-Disposition: attachment; filename=a.txt\n\nattached\n";
        row("no MIME at all", "From: a@example.com\n\nHello\n\nYou\n", "Hello\n\nYou");
        row("no body", "From: a@example.com\n\n", "");
        row("header only", "From: a@example.com\n", "");
        row("quoted-printable", message("text/plain; charset=utf-8", "quoted-printable", "Caf=C3=A9 a=\n b\n"),
            "Café a b");
        row("base64", message("text/plain; charset=utf-8", "base64", "Q2Fmw6kKYmFy\n"), "Café\nbar");
        row("latin-1", message("text/plain; charset=iso-8859-1", "8bit", "Caf\xE9\n"), "Café");
        row("ISO-2022-JP", message("text/plain; charset=iso-2022-jp", "7bit", "\x1b$BF|K\\\x1b(B\n"), "日本");
        row("unknown charset, valid UTF-8", message("text/plain; charset=x-none", "8bit", "Caf\xC3\xA9\n"), "Café");
        row("no charset, not UTF-8", message("text/plain", "8bit", "Caf\xE9\n"), "Café");
        row("said UTF-8, is not", message("text/plain; charset=utf-8", "8bit", "a\xE9z\n"), "a\uFFFDz");
        row("first line indented", message("text/plain", "7bit", "\n\n  x\ny \n\n"), "  x\ny");
        row("alternative prefers plain", multipart("alternative", html + plain), "the plain");
        row("html alone", multipart("alternative", html), "the html");
        row("attachment passed over", multipart("mixed", attachment + plain), "the plain");
        row("attachment only", multipart("mixed", attachment), "");
        row("broken multipart", "From: a@example.com\nContent-Type: multipart/mixed; boundary=b\n\n" + plain,
            "the plain");
        row("picture alone", message("image/png", "base64", "iVBORw0KGgo="), "");
    }

    void chosenText()
    {
        QFETCH(QByteArray, source);
        const DisplayText shown = displayTextOf(source.toStdString(), limit);
        QTEST(QString::fromStdString(shown.text), "text");
        QVERIFY(!shown.truncated);
    }

    void cutAtTheLimit()
    {
        std::string body;
        for (int i = 0; i < 3000; ++i) {
            body += "\xC3\xA9"; // an "é", so that a cut at an odd place would split one
        }
        const DisplayText shown = displayTextOf(message("text/plain; charset=utf-8", "8bit", body), 1001);
        QCOMPARE(shown.text.size(), std::size_t{1000});
        QVERIFY(shown.truncated);
    }

    void deepNestingEnds()
    {
        std::string source = "From: a@example.com\n";
        for (int i = 0; i < 5000; ++i) {
            const std::string boundary = "b" + std::to_string(i);
            source.append("Content-Type: multipart/mixed; boundary=").append(boundary);
            source.append("\n\n--").append(boundary).append("\n");
        }
        QCOMPARE(QString::fromStdString(displayTextOf(source, limit).text), QString());
    }

    void html_data()
    {
        QTest::addColumn<QString>("html");
        QTest::addColumn<QString>("text");

        QTest::newRow("paragraphs") << "<p>One</p>\n<p>Two</p>"
                                    << "One\n\nTwo";
        QTest::newRow("breaks") << "a<br>b<br/><br>c"
                                << "a\nb\n\nc";
        QTest::newRow("divs") << "<div>a</div><div>b</div>"
                              << "a\nb";
        QTest::newRow("white space collapses") << "  a \n\t b  "
                                               << "a b";
        QTest::newRow("inline tags join") << "a<b>b</b>c"
                                          << "abc";
        QTest::newRow("list") << "<ul><li>a</li><li>b</li></ul>"
                              << "- a\n- b";
        QTest::newRow("table row") << "<tr><td>a</td><td>b</td></tr><tr><td>c</td></tr>"
                                   << "a b\nc";
        QTest::newRow("hidden parts")
            << "<head><title>t</title></head><style>p{}</style><SCRIPT>1<2</SCRIPT>x<!-- > -->y"
            << "xy";
        QTest::newRow("hidden, never closed") << "x<style>y"
                                              << "x";
        QTest::newRow("head never closed") << "<html><head><meta><title>t</title><style>p{}</style><body><p>x</p>"
                                           << "x";
        QTest::newRow("neither head closed nor body opened") << "<HEAD><title>t</title><p>x"
                                                             << "x";
        QTest::newRow("title never closed") << "<head><title>t</head><BODY>x<title>y</body>z"
                                            << "x";
        QTest::newRow("hidden by style, never closed") << "<p style=\"display:none\">x<p>y"
                                                       << "x\n\ny";
        QTest::newRow("references") << "a &amp; b &lt;c&gt; &#233;&#xe9; &euro; &rdquo;"
                                    << "a & b <c> éé € ”";
        QTest::newRow("no-break space") << "7&nbsp;km"
                                        << "7 km";
        QTest::newRow("not a reference") << "a & b &nosuch; &#xD800;c"
                                         << "a & b &nosuch; c";
        QTest::newRow("less-than sign") << "a < b"
                                        << "a < b";
        QTest::newRow("tag never closed") << "a<b"
                                          << "a";
        QTest::newRow("quotation") << "a<blockquote>b<br>c<blockquote>d</blockquote></blockquote>e"
                                   << "a\n>\n> b\n> c\n>>\n>> d\n\ne";
        QTest::newRow("preformatted") << "<pre>a\n  b</pre>c"
                                      << "a\n  b\n\nc";
        QTest::newRow("attributes with text") << "<a href=\"https://example.com\" title=\"x\">link</a>"
                                              << "link";
    }

    void html()
    {
        QFETCH(QString, html);
        QTEST(QString::fromStdString(textOfHtml(html.toStdString())), "text");
    }
};

QTEST_GUILESS_MAIN(DisplayTextTest)
#include "DisplayTextTest.moc"
