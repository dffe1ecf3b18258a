#include "hosts/preview/mail/ContentRules.h"

#include <QTest>

using namespace quillmate;

/// How a list of content rules is read and applied.
class ContentRulesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void applied_data();
    void applied();
    void refused_data();
    void refused();
};

namespace
{

QByteArray rule(const QByteArray& trigger, const QByteArray& action = "block")
{
    return R"({"trigger":{)" + trigger + R"(},"action":{"type":")" + action + "\"}}";
}

} // namespace

void ContentRulesTest::applied_data()
{
    QTest::addColumn<QByteArray>("rules");
    QTest::addColumn<QString>("address");
    QTest::addColumn<bool>("blocked");
    const auto row = [](const char* name, const QByteArray& rules, const char* address, bool blocked) {
        QTest::newRow(name) << "[" + rules + "]" << QString::fromLatin1(address) << blocked;
    };
    const QByteArray pixel = R"("url-filter":"/Pixel\\.gif")";
    const QByteArray everything = R"("url-filter":".*")";
    row("no rules", "", "https://a.example/pixel.gif", false);
    row("matches", rule(pixel), "https://a.example/Pixel.gif?u=1", true);
    row("any case by default", rule(pixel), "https://a.example/PIXEL.GIF", true);
    row("any case said", rule(pixel + R"(,"url-filter-is-case-sensitive":false)"), "https://a.example/pixel.gif", true);
    row("own case, same", rule(pixel + R"(,"url-filter-is-case-sensitive":true)"), "https://a.example/Pixel.gif", true);
    row("own case, other", rule(pixel + R"(,"url-filter-is-case-sensitive":true)"), "https://a.example/pixel.gif",
        false);
    row("a point is a point", rule(pixel), "https://a.example/Pixel-gif", false);
    row("for images", rule(everything + R"(,"resource-type":["script","image"])"), "https://a.example/", true);
    row("for others", rule(everything + R"(,"resource-type":["script","style-sheet"])"), "https://a.example/", false);
    row("for nothing", rule(everything + R"(,"resource-type":[])"), "https://a.example/", false);
    row("for strangers", rule(everything + R"(,"load-type":["third-party"])"), "https://a.example/", true);
    row("for the page's own", rule(everything + R"(,"load-type":["first-party"])"), "https://a.example/", false);
    row("on one site", rule(everything + R"(,"if-domain":["a.example"])"), "https://a.example/", false);
    row("but on one site", rule(everything + R"(,"unless-domain":["a.example"])"), "https://a.example/", true);
    row("cookies", rule(everything, "block-cookies"), "https://a.example/", false);
    row("hides an element", rule(everything, "css-display-none"), "https://a.example/", false);
    const QByteArray lifted = rule(everything) + "," + rule(pixel, "ignore-previous-rules");
    row("lifted", lifted, "https://a.example/pixel.gif", false);
    row("not lifted", lifted, "https://a.example/other.gif", true);
    row("lifted and blocked again", lifted + "," + rule(R"("url-filter":"\\?u=")"), "https://a.example/pixel.gif?u=1",
        true);
    row("lifted for scripts only",
        rule(everything) + "," + rule(pixel + R"(,"resource-type":["script"])", "ignore-previous-rules"),
        "https://a.example/pixel.gif", true);
}

void ContentRulesTest::applied()
{
    QFETCH(const QByteArray, rules);
    QFETCH(const QString, address);
    const auto parsed = ContentRules::parse(rules.toStdString());
    QVERIFY2(parsed, parsed ? "" : parsed.error().c_str());
    QTEST(parsed.value().blocksImage(address), "blocked");
}

void ContentRulesTest::refused_data()
{
    QTest::addColumn<QByteArray>("rules");
    QTest::addColumn<QByteArray>("named");
    QTest::addColumn<QByteArray>("problem");
    const QByteArray good = rule(R"("url-filter":"a")");
    const auto second = [&good](const char* name, const QByteArray& wrong, const char* named) {
        QTest::newRow(name) << "[" + good + "," + wrong + "]" << QByteArray("rule 2 of the content rules")
                            << QByteArray(named);
    };
    QTest::newRow("no JSON") << QByteArray("rules") << QByteArray("no JSON array") << QByteArray();
    QTest::newRow("cut") << QByteArray("[") + good << QByteArray("no JSON array") << QByteArray();
    QTest::newRow("an object") << good << QByteArray("no JSON array") << QByteArray();
    second("a text", "\"block\"", "url-filter");
    second("no trigger", R"({"action":{"type":"block"}})", "url-filter");
    second("no filter", rule(R"("resource-type":["image"])"), "url-filter");
    second("an empty filter", rule(R"("url-filter":"")"), "url-filter");
    second("a filter that is a number", rule(R"("url-filter":1)"), "url-filter");
    second("a filter that is no expression", rule(R"("url-filter":"(a")"), "regular expression");
    second("one type, not a list", rule(R"("url-filter":"a","resource-type":"image")"), "resource-type");
    second("a list of numbers", rule(R"("url-filter":"a","load-type":[1])"), "load-type");
    second("a case that is a text", rule(R"("url-filter":"a","url-filter-is-case-sensitive":"no")"),
           "url-filter-is-case-sensitive");
    second("no action", R"({"trigger":{"url-filter":"a"}})", "action");
    second("an unknown action", rule(R"("url-filter":"a")", "explode"), "action");
}

void ContentRulesTest::refused()
{
    QFETCH(const QByteArray, rules);
    QFETCH(const QByteArray, named);
    QFETCH(const QByteArray, problem);
    const auto parsed = ContentRules::parse(rules.toStdString());
    QVERIFY(!parsed);
    const auto sentence = QByteArray::fromStdString(parsed.error());
    QVERIFY2(sentence.contains(named) && sentence.contains(problem), sentence.constData());
}

QTEST_GUILESS_MAIN(ContentRulesTest)
#include "ContentRulesTest.moc"
