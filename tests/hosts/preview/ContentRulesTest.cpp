#include "hosts/preview/mail/ContentRules.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

using namespace quillmate;

namespace
{

std::string rule(const std::string& trigger, const std::string& action = "block")
{
    return R"({"trigger":{)" + trigger + R"(},"action":{"type":")" + action + "\"}}";
}

} // namespace

/// How a list of content rules is read and applied.
class ContentRulesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void applied()
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

    void refused()
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
};

QUILLMATE_TEST(ContentRulesTest, QCoreApplication)
#include "ContentRulesTest.moc"
