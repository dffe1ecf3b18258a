#include "extension/MailExtension.h"
#include "hosts/preview/mail/ContentRules.h"
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

/// What the engines of content blockers take of a url-filter: plain characters, ".", sets, groups, "?", "+", "*" and
/// the two anchors, and nothing else.
const QString plainFilter = QStringLiteral("^\\^https[?]://"
                                           "(?:(?:[^\\\\|{}()\\[\\]?+*^$ ]|\\\\[!-/:-@\\[-`{-~]|"
                                           "\\[[^\\[\\]\\\\]+\\]|\\)|\\()[?+*]?)*\\$?$");

} // namespace

/// The rules that the extension carries.
class ShippedRulesTest : public QObject
{
    Q_OBJECT

private:
    QByteArray m_json;
    ContentRules m_rules;

private Q_SLOTS:
    void initTestCase()
    {
        m_json = QByteArray::fromStdString(MailExtension().handlerForContentBlocker()->contentRulesJSON());
        auto parsed = ContentRules::parse(m_json.toStdString());
        QVERIFY2(parsed, parsed ? "" : parsed.error().c_str());
        m_rules = std::move(parsed).value();
    }

    void form()
    {
        const QJsonArray list = QJsonDocument::fromJson(m_json).array();
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

    /// One of each kind of filter: host alone, any host and a path, host and a path, a query; and what stands next to
    /// it.
    void addresses()
    {
        for (const char* tracker :
             {"https://garden.us12.list-manage.com/track/open.php?u=3011",
              "https://links.shop.example/wf/open?upn=u001.A", "http://email.mg.club.example/o/eJwNyEEOgCAMBMDX",
              "https://ab12cd.r.eu-west-1.awstrack.me/I0/0102018f3b2a-9e8f/x=401", "https://pstmrk.it/open?m=v3_1.AA",
              "https://track.hubspot.com/__ptq.gif?a=1&k=14", "https://t.news.shop.example/r/?id=h1f69f0f9,87536dde,1",
              "https://k3x9q2.emltrk.com/k3x9q2?d=a", "HTTPS://GARDEN.US12.LIST-MANAGE.COM/TRACK/OPEN.PHP?U=1"}) {
            QVERIFY2(m_rules.blocksImage(QString::fromLatin1(tracker)), tracker);
        }
        for (const char* picture :
             {"https://mcusercontent.com/0a1b/images/header.png", "https://cdn.shop.example/wf/openings.png",
              "https://shop.example/track/open.php", "https://email.shop.example/o/photo.jpg",
              "https://www.awstrack.me/logo.png", "https://notpstmrk.it/open/x.png",
              "https://track.hubspot.com/logo.png", "https://shop.example/trk?t=summer",
              "https://shop.example/r/?id=house.png", "https://shop.example/?next=https://t.yesware.com/",
              "https://shop.example/proxy/https://r.superhuman.com/a.gif", "https://a.example/"}) {
            QVERIFY2(!m_rules.blocksImage(QString::fromLatin1(picture)), picture);
        }
    }
};

QUILLMATE_TEST(ShippedRulesTest, QCoreApplication)
#include "ShippedRulesTest.moc"
