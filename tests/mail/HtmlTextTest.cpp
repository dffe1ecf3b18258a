#include "mail/HtmlText.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

using namespace quillmate;

/// The words that a person reads of HTML, and how they stand.
class HtmlTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void read_data()
    {
        QTest::addColumn<QString>("html");
        QTest::addColumn<QString>("text");
        const auto row = [](const char* name, const char* html, const char* text) {
            QTest::newRow(name) << QString::fromUtf8(html) << QString::fromUtf8(text);
        };
        row("paragraphs and blanks", "<p>  One \n\t a<b>b</b>c</p>\n<p>Two</p>", "One abc\n\nTwo");
        row("breaks", "a<br>b<br/><br>c<div>d</div><div>e</div>", "a\nb\n\nc\nd\ne");
        row("lists", "One<ul><li>a<li><p>b</p><ul><li>c</ul></ul><li></li>d", "One\n\n- a\n\n- b\n\n- c\n\nd");
        row("table", "<table><tr><td>a</td><td>b</td></tr><tr><td>c</td></tr></table>d", "a b\nc\n\nd");
        row("preformatted", "<pre>a\n  b</pre>c", "a\n  b\n\nc");
        row("references", "7&nbsp;km &amp; &lt;c&gt; &#233;&#xe9; &euro; &rdquo; &#150; &nosuch; &#xD800;c & d",
            "7 km & <c> éé € ” – &nosuch; c & d");
        row("references as other programs write them", "don&#146;t &check; &copy 2020 &Auml&lt;&#8364 &amp",
            "don’t ✓ © 2020 Ä<€ &");
        row("no references", "?a=1&copy=2 R&Department &#x; &#99999999999; &",
            "?a=1&copy=2 R&Department &#x; &#99999999999; &");
        row("signs that are no tags", "a < b, I <3 you, <https://a.example/?b> </ 4 &c>",
            "a < b, I <3 you, <https://a.example/?b> </ 4 &c>");
        row("attributes", "<a href=\"https://example.com\" title=\"a > b\">link</a> <p title='no end>text</p>",
            "link\n\ntext");
        row("cut in a tag", "<p>Whole</p><p>cut</p><a hre", "Whole\n\ncut");
        row("behind the end", "<html><body><p>Text</p></body></html>\n<p>List footer</p>", "Text\n\nList footer");
        row("a NUL in the text", "a&#0;b", "a b");
        row("quotations", "a<blockquote>b<br>c<blockquote>d</blockquote></blockquote>e", "a\n\n> b\n> c\n>\n>> d\n\ne");
        row("quotation of one mail program",
            "Mine<div class=\"gmail_quote\">On Monday:<blockquote class=\"gmail_quote\">b</blockquote></div>c",
            "Mine\n> On Monday:\n>\n> b\n\nc");

        row("head, scripts, styles, comments",
            "<html><head><title>T</title><style>p{}</style></head><body>x<SCRIPT>1<2</SCRIPT><!-- no > -->"
            "<![if !mso]>y<![endif]><svg><text>s</text></svg><select><option>o</select><template>t</template></body>",
            "xy");
        row("head without its end", "<html><head><meta><title>t</title><style>p{}</style><body><p>x</p>", "x");
        row("style without its end", "x<style>y", "x");
        row("hidden",
            "<p>One</p><div HIDDEN>a</div><div hidden=''>b</div><div style='color:red;Visibility : hidden'>c</div>"
            "<span style=display:none>d<span>e</span>f</span>"
            "<div style='max-height:0px;overflow:hidden'>g</div><i style='opacity:0'>h</i><p>two</p>",
            "One\n\ntwo");
        row("only looks hidden",
            "<i style='overflow:hidden !important'>One</i> <b title='Our hidden gems'>two</b> "
            "<i class=hidden title='display:none'>three</i> <i style='max-height:0.5em;overflow:hidden'>four</i> "
            "<a style='mso-hide:all'>five</a> <i style='opacity:0.9'>six</i>",
            "One two three four five six");
        row("letters without a size", "<td style='font-size:0px'>pre<div style='font-size:13px'>text</div>view</td>",
            "text");
        row("hidden elements without their ends",
            "<p style='display:none'>pre<p>text<table><tr><td style='display:none'>pre<td>cell<tr><td hidden>x<tr>"
            "<td>more</table><ul><li hidden>pre<li>item</ul>",
            "text\n\ncell\nmore\n\n- item");
        row("table in a hidden cell",
            "<table><tr><td hidden><table><tr><td>in<td>side</table>still</td><td>text</table>", "text");
        row("everything hidden", "<html><div style='display:none'>All <p>of it</p></div></html>", "All\n\nof it");
    }

    void read()
    {
        QFETCH(const QString, html);
        QTEST(QString::fromStdString(textOfHtml(html.toStdString())), "text");
    }

    void whatIsNestedTooDeepIsStillRead()
    {
        std::string html;
        for (int i = 0; i < 1000; ++i) {
            html += "<div>";
        }
        QCOMPARE(QString::fromStdString(textOfHtml(html + "deep<b>er</b></i><br>end")), "deeper\nend");
    }

    void endsSoonAfterTheLimit()
    {
        const std::string text = textOfHtml("<p>" + std::string(1000, 'a') + "</p><p>more</p><p>and more</p>", 1000);
        QVERIFY(text.size() >= 1000 && text.find("and more") == std::string::npos);
    }
};

QUILLMATE_TEST(HtmlTextTest, QCoreApplication)
#include "HtmlTextTest.moc"
