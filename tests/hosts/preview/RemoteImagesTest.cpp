#include "extension/MailExtension.h"
#include "hosts/preview/mail/MailDocument.h"
#include "support/TestProgram.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>

using namespace quillmate;

namespace
{

std::string rule(const std::string& trigger, const std::string& action = "block")
{
    return R"({"trigger":{)" + trigger + R"(},"action":{"type":")" + action + "\"}}";
}

/// Rules that block one address and nothing else, so that a count tells whether just that one was found.
ContentRules rulesFor(const QString& address)
{
    const QString filter = QRegularExpression::escape(address).replace(u"\\"_qs, u"\\\\"_qs);
    return ContentRules::parse("[" + rule("\"url-filter\":\"^" + filter.toStdString() + "$\"") + "]").value();
}

std::string shippedRules()
{
    return MailExtension().handlerForContentBlocker()->contentRulesJSON();
}

/// What the engines of content blockers take of a url-filter: plain characters, ".", sets, groups, "?", "+", "*" and
/// the two anchors, and nothing else.
const QString plainFilter = QStringLiteral("^\\^https[?]://"
                                           "(?:(?:[^\\\\|{}()\\[\\]?+*^$ ]|\\\\[!-/:-@\\[-`{-~]|"
                                           "\\[[^\\[\\]\\\\]+\\]|\\)|\\()[?+*]?)*\\$?$");

} // namespace

/// What is found of a message's remote images, what content rules say of them, and what the reader is told.
class RemoteImagesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rulesApply()
    {
        const std::string pixel = R"("url-filter":"/Pixel\\.gif")";
        const std::string everything = R"("url-filter":".*")";
        const std::string lifted = rule(everything) + "," + rule(pixel, "ignore-previous-rules");
        const struct {
            std::string rules;
            const char* path;
            bool blocked;
        } rows[] = {
            {"", "pixel.gif", false},
            {rule(pixel), "PIXEL.GIF?u=1", true},
            {rule(pixel + R"(,"url-filter-is-case-sensitive":false)"), "pixel.gif", true},
            {rule(pixel + R"(,"url-filter-is-case-sensitive":true)"), "Pixel.gif", true},
            {rule(pixel + R"(,"url-filter-is-case-sensitive":true)"), "pixel.gif", false},
            {rule(pixel), "Pixel-gif", false},
            {rule(everything + R"(,"resource-type":["script","image"])"), "", true},
            {rule(everything + R"(,"resource-type":["script","style-sheet"])"), "", false},
            {rule(everything + R"(,"resource-type":[])"), "", false},
            {rule(everything + R"(,"load-type":["third-party"])"), "", true},
            {rule(everything + R"(,"load-type":["first-party"])"), "", false},
            {rule(everything + R"(,"if-domain":["a.example"])"), "", false},
            {rule(everything + R"(,"unless-domain":["a.example"])"), "", true},
            {rule(everything, "block-cookies"), "", false},
            {rule(everything, "css-display-none"), "", false},
            {lifted, "pixel.gif", false},
            {lifted, "other.gif", true},
            {lifted + "," + rule(R"("url-filter":"\\?u=")"), "pixel.gif?u=1", true},
            {rule(everything) + "," + rule(pixel + R"(,"resource-type":["script"])", "ignore-previous-rules"),
             "pixel.gif", true},
        };
        for (const auto& row : rows) {
            const auto parsed = ContentRules::parse("[" + row.rules + "]");
            QVERIFY2(parsed, row.rules.c_str());
            QVERIFY2(parsed.value().blocksImage(QStringLiteral("https://a.example/") + row.path) == row.blocked,
                     row.rules.c_str());
        }
    }

    void wrongRulesAreRefused()
    {
        const std::string good = rule(R"("url-filter":"a")");
        const std::string filter = R"("url-filter":"a",)";
        const std::pair<std::string, std::string> wrongRules[] = {
            {"\"block\"", "url-filter"},
            {R"({"action":{"type":"block"}})", "url-filter"},
            {rule(R"("url-filter":"")"), "url-filter"},
            {rule(R"("url-filter":1)"), "url-filter"},
            {rule("\"url-filter\":\"(a\""), "regular expression"},
            {rule(filter + R"("resource-type":"image")"), "resource-type"},
            {rule(filter + R"("load-type":[1])"), "load-type"},
            {rule(filter + R"("url-filter-is-case-sensitive":"no")"), "url-filter-is-case-sensitive"},
            {R"({"trigger":{"url-filter":"a"}})", "action"},
            {rule(R"("url-filter":"a")", "explode"), "action"},
        };
        for (const auto& [wrong, named] : wrongRules) {
            const auto parsed = ContentRules::parse("[" + good + "," + wrong + "]");
            QVERIFY2(!parsed, wrong.c_str());
            QVERIFY2(parsed.error().find("rule 2 of the content rules") != std::string::npos, wrong.c_str());
            QVERIFY2(parsed.error().find(named) != std::string::npos, parsed.error().c_str());
        }
        for (const std::string& noList : {"[" + good, good}) {
            const auto parsed = ContentRules::parse(noList);
            QVERIFY(!parsed && parsed.error().find("no JSON array") != std::string::npos);
        }
    }

    void shippedRulesAreForImagesAlone()
    {
        const QJsonArray list = QJsonDocument::fromJson(QByteArray::fromStdString(shippedRules())).array();
        QVERIFY(list.size() >= 25);
        QSet<QString> filters;
        for (const auto& entry : list) {
            const QJsonObject rule = entry.toObject();
            QCOMPARE(rule.keys(), QStringList({"action", "trigger"}));
            QCOMPARE(rule["action"].toObject(), (QJsonObject{{"type", "block"}}));
            const QJsonObject trigger = rule["trigger"].toObject();
            QCOMPARE(trigger.keys(), QStringList({"resource-type", "url-filter"}));
            QCOMPARE(trigger["resource-type"].toArray(), QJsonArray{"image"});
            const QString filter = trigger["url-filter"].toString();
            QVERIFY2(QRegularExpression(plainFilter).match(filter).hasMatch(), qPrintable(filter));
            QVERIFY2(!filters.contains(filter), qPrintable(filter));
            filters.insert(filter);
        }
    }

    void shippedRulesTellTrackersFromPictures()
    {
        const auto rules = ContentRules::parse(shippedRules());
        QVERIFY2(rules, rules ? "" : rules.error().c_str());
        QVERIFY(rules.value().blocksImage("https://garden.us12.list-manage.com/track/open.php?u=3011"));
        QVERIFY(!rules.value().blocksImage("https://mcusercontent.com/0a1b/images/header.png"));
    }

    void found()
    {
        const QString one = "https://a.example/1.png";
        const QString two = "http://b.example/2.png";
        const std::pair<std::string, QStringList> rows[] = {
            {"<img src=\"https://a.example/1.png\"><IMG SRC = 'http://b.example/2.png' >", {one, two}},
            {"<img/width=1 src=https://a.example/1.png alt='a > b'/>", {one}},
            {"<img src=https://a.example/1.png src=x><img src=HTTPS://A.example/1.png#x>", {one}},
            {"<img src='https://a.example/?a=1&amp;b=2&#x26;c&d'>", {"https://a.example/?a=1&b=2&c&d"}},
            {"<img src=' https://a.exam\r\n\tple/1.png '>", {one}},
            {"<img src='//a.example'>", {"https://a.example/"}},
            {"<img src='https://a.example/a b/\xc3\xbc'>", {"https://a.example/a%20b/%C3%BC"}},
            {"<img src='cid:1@a'><img src='data:image/gif;base64,R0lG'><img src='1.png'><img src='file:///etc/1.png'>"
             "<img src><img><img src='https:///1.png'><a href='https://a.example/1.png'><imgx src='https://a.example/'>"
             "<script src='https://a.example/1.js'></script></img src='https://a.example/1.png'>",
             {}},
            {"<img srcset='https://a.example/1.png 1x, http://b.example/2.png 2x'>", {one}},
            {"<img srcset='http://b.example/2.png' src='https://a.example/1.png'>", {one}},
            {"<input type=image src='https://a.example/1.png'>"
             "<td background=http://b.example/2.png>",
             {one, two}},
            {"<div style=\"background: url( 'https://a.example/1.png' ) , URL(http://b.example/2.png\">", {one, two}},
            {"<div style='background:url(&quot;https://a.example/1.png&quot;)'>", {one}},
            {"<!-- <img src='http://b.example/2.png'> --><style>a{} <img src='http://b.example/2.png'></STYLE>"
             "<script>'<img src=\"http://b.example/2.png\">'</script><img src='https://a.example/1.png'>"
             "<!-- <img src='http://b.example/2.png'>",
             {one}},
            {"<style>a{}<img src='https://a.example/1.png'>", {one}},
        };
        for (const auto& [markup, addresses] : rows) {
            const auto count = static_cast<std::size_t>(addresses.size());
            QVERIFY2(countRemoteImages(markup, {}).count == count, markup.c_str());
            for (const QString& address : addresses) {
                QVERIFY2(countRemoteImages(markup, rulesFor(address)).trackers == 1, markup.c_str());
            }
        }
    }

    void countingEnds()
    {
        std::string html;
        for (int i = 0; i < 1000; ++i) {
            html += "<img src='https://a.example/" + std::to_string(i) + "'>";
        }
        const ContentRules rules = rulesFor("https://a.example/999");
        QCOMPARE(countRemoteImages(html + html, rules), (RemoteImages{1000, 1, false}));
        QCOMPARE(countRemoteImages(html + "<img src='https://a.example/more'>", rules), (RemoteImages{1000, 1, true}));
    }

    void notices()
    {
        const std::pair<RemoteImages, const char*> rows[] = {
            {{0, 0, false}, ""},
            {{1, 0, false}, "1 remote image was not loaded."},
            {{1, 1, false}, "1 remote image was not loaded; it is a known tracker."},
            {{3, 1, false}, "3 remote images were not loaded; 1 of them is a known tracker."},
            {{3, 2, false}, "3 remote images were not loaded; 2 of them are known trackers."},
            {{2, 2, false}, "2 remote images were not loaded; all of them are known trackers."},
            {{1000, 0, true}, "More than 1000 remote images were not loaded."},
            {{1000, 1, true}, "More than 1000 remote images were not loaded; at least 1 of them is a known tracker."},
            {{1000, 1000, true},
             "More than 1000 remote images were not loaded; at least 1000 of them are known trackers."},
        };
        for (const auto& [images, notice] : rows) {
            QCOMPARE(QByteArray::fromStdString(remoteImagesNotice(images)), notice);
        }
    }

    void imagesOfAMessage()
    {
        const std::string html =
            "Content-Type: text/html\nContent-Transfer-Encoding: quoted-printable\n\n"
            "<img src=3D'https://a.example/photo.png'><img src=3D'https://a.exa=\nmple/pixel.gif'>\n";
        const std::string plain = "Content-Type: text/plain\n\n<img src='https://a.example/photo.png'>\n";
        const auto both = [](const std::string& first, const std::string& second) {
            return "Content-Type: multipart/alternative; boundary=b\n\n--b\n" + first + "--b\n" + second + "--b--\n";
        };
        const std::pair<std::string, RemoteImages> rows[] = {
            {html, {2, 1, false}},
            {both(plain, html), {2, 1, false}},
            {plain, {}},
            {both(plain, "Content-Disposition: attachment\n" + html), {}},
        };
        const auto rules = ContentRules::parse("[" + rule(R"("url-filter":"/pixel")") + "]");
        for (const auto& [parts, images] : rows) {
            const std::string source = "From: a@example.com\nMIME-Version: 1.0\n" + parts;
            QVERIFY2(readDocument(source, rules.value()).remoteImages == images, source.c_str());
        }
    }
};

QUILLMATE_TEST(RemoteImagesTest, QCoreApplication)
#include "RemoteImagesTest.moc"
