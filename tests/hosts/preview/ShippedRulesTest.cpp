#include "extension/MailExtension.h"
#include "hosts/preview/mail/ContentRules.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

using namespace quillmate;

namespace
{

/// What is wrong with a url-filter for the engines of content blockers, which take plain characters, ".", sets,
/// groups, "?", "+", "*" and the two anchors, and nothing else. Empty when nothing is.
QString problemOf(const QString& filter)
{
    int groups = 0;
    bool repeatable = false; // whether a quantifier may stand here
    for (qsizetype i = 0; i < filter.size(); ++i) {
        const QChar letter = filter[i];
        if (letter.unicode() < 0x21 || letter.unicode() > 0x7e) {
            return u"a character outside plain ASCII"_qs;
        }
        if (letter == u'^' || letter == u'$') {
            if (i != (letter == u'^' ? 0 : filter.size() - 1)) {
                return u"an anchor in the middle"_qs;
            }
        } else if (letter == u'|' || letter == u'{' || letter == u'}') {
            return u"alternatives or counts"_qs;
        } else if (letter == u'?' || letter == u'+' || letter == u'*') {
            if (!repeatable) {
                return u"a quantifier behind nothing"_qs;
            }
            repeatable = false; // So that none is possessive, lazy or doubled.
        } else if (letter == u'(') {
            ++groups;
            repeatable = false;
        } else if (letter == u')') {
            if (--groups < 0) {
                return u"a group that was not opened"_qs;
            }
            repeatable = true;
        } else if (letter == u'[') {
            const qsizetype end = filter.indexOf(u']', i + 1);
            const QString inside = filter.mid(i + 1, end - i - 1);
            if (end < 0 || inside.isEmpty() || inside.contains(u'[') || inside.contains(u'\\')) {
                return u"a set that is not plain"_qs;
            }
            i = end;
            repeatable = true;
        } else if (letter == u'\\') {
            if (++i == filter.size() || filter[i].isLetterOrNumber()) {
                return u"an escape that is more than the character itself"_qs;
            }
            repeatable = true;
        } else {
            repeatable = true;
        }
    }
    return groups == 0 ? QString() : u"a group without an end"_qs;
}

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
            QVERIFY2(problemOf(filter).isEmpty(), qPrintable(filter + ": " + problemOf(filter)));
            QVERIFY2(filter.startsWith(u"^https?://"), qPrintable(filter));
            QVERIFY2(!filters.contains(filter), qPrintable(filter));
            filters.insert(filter);
        }
    }

    void eachRuleHasItsTracker()
    {
        QStringList without;
        for (const auto& entry : QJsonDocument::fromJson(m_json).array()) {
            const QString filter = entry[u"trigger"][u"url-filter"].toString();
            const QRegularExpression expression(filter, QRegularExpression::CaseInsensitiveOption);
            const auto isMatched = [&](const char* address) {
                return expression.match(QLatin1String(address)).hasMatch();
            };
            if (std::none_of(std::begin(trackers), std::end(trackers), isMatched)) {
                without.append(filter);
            }
        }
        QCOMPARE(without, QStringList());
    }

    void trackersAreBlocked_data()
    {
        QTest::addColumn<QString>("address");
        for (const char* address : trackers) {
            QTest::newRow(address) << QString::fromLatin1(address);
        }
    }

    void trackersAreBlocked()
    {
        QFETCH(const QString, address);
        QVERIFY(m_rules.blocksImage(address));
    }

    void picturesAreNot_data()
    {
        QTest::addColumn<QString>("address");
        for (const char* address : pictures) {
            QTest::newRow(address) << QString::fromLatin1(address);
        }
    }

    void picturesAreNot()
    {
        QFETCH(const QString, address);
        QVERIFY(!m_rules.blocksImage(address));
    }

private:
    static constexpr const char* trackers[] = {
        "https://garden.us12.list-manage.com/track/open.php?u=0a1b&id=2c3d&e=4e5f",
        "http://mandrillapp.com/track/open.php?u=3011&id=9f00",
        "https://www.mandrillapp.com/track/open.php?u=3011&id=9f00",
        "https://u2201.ct.sendgrid.net/wf/open?upn=u001.AbC-2dEf",
        "https://links.shop.example/wf/open?upn=u001.AbC-2dEf",
        "https://links.shop.example/ss/o/u001.mhN8B4/4bs/KEuKj-x/ho.gif",
        "http://email.mg.club.example/o/eJwNyEEOgCAMBMDX",
        "https://ab12cd.r.eu-west-1.awstrack.me/I0/0102018f3b2a-9e8f-000000/xVz=401",
        "https://ea.pstmrk.it/open/v3_WHNB",
        "https://pstmrk.it/open?m=v3_1.AA",
        "https://go.sparkpostmail1.com/q/0Hkq~~/AAAA~/Rg",
        "http://x5lns.mjt.lu/oo/BAAABFeYYHM/1175b2fc/e.gif",
        "https://cige.r.bh.d.sendibt3.com/tr/op/MH4O4IV460",
        "https://r.news.shop.example/mk/op/sh/abcdef/ghijkl",
        "https://eotrx.substackcdn.com/open?token=eyJt",
        "https://open.convertkit-mail2.com/38umxn6293skho4z",
        "https://openrate.aweber.com/t/1hc?r=1",
        "https://r20.rs6.net/on.jsp?ca=1&m=2",
        "https://studio.cmail20.com/t/r-o-abcd-l/o.gif",
        "https://app.getresponse.com/open.html?x=a62b&m=1",
        "https://track.customer.io/e/o/ZGdT",
        "https://e.customeriomail.com/e/o/ZGdT",
        "https://links.shop.example/e/eo?_t=6015&_m=d672&_e=pcOD",
        "https://hs.shop.example/e3t/o/5/abc",
        "https://t.sidekickopen77.com/s3t/o/5/f18d",
        "https://track.hubspot.com/__ptq.gif?a=1&k=14",
        "https://info.shop.example/trk?t=1&mid=ODc5LUVQ",
        "https://click.news.shop.example/open.aspx?ffcb10=fec2&d=70170",
        "https://t.news.shop.example/r/?id=h1f69f0f9,87536dde,1",
        "https://images.shop.example/e/FooterImages/FooterImage1?elq=aa&siteid=3",
        "https://news.shop.example/pub/as?_ri_=X0Gzc2X",
        "https://via.intercom.io/o?h=0a1b",
        "https://k3x9q2.emltrk.com/k3x9q2?d=a",
        "https://pixel.monitor1.returnpath.net/pixel.gif?r=ab",
        "http://t.yesware.com/t/ab/cd/spacer.gif",
        "https://track.mixmax.com/api/track/v2/abc",
        "https://mailfoogae.appspot.com/t?sender=a&type=zerocontent",
        "https://mailtrack.io/trace/mail/0eab.png?u=123",
        "https://r.superhuman.com/abc.gif",
        "https://mailstat.us/tr/t/abc/1/m.gif",
        "https://tracking.cirrusinsight.com/0a1b/spacer.gif",
        "https://www.linkedin.com/emimp/ip_abc.gif",
        "https://www.facebook.com/email_open_log_pic.php?mid=1",
        "HTTPS://GARDEN.US12.LIST-MANAGE.COM/TRACK/OPEN.PHP?U=1",
    };
    static constexpr const char* pictures[] = {
        "https://mcusercontent.com/0a1b/images/header.png",
        "https://gallery.mailchimp.com/0a1b/images/header.png",
        "https://cdn.shop.example/open/door.jpg",
        "https://cdn.shop.example/wf/openings.png",
        "https://cdn.shop.example/ss/office.png",
        "https://shop.example/track/open.php",
        "https://email.shop.example/o/photo.jpg",
        "https://www.awstrack.me/logo.png",
        "https://pstmrk.it/logo.png",
        "https://pstmrk.it/openings.png",
        "https://notpstmrk.it/open/x.png",
        "https://x5lns.mjt.lu/img/5lns/b/1/2.png",
        "https://img.mailinblue.com/2010/images/logo.png",
        "https://eotrx.substackcdn.com/image/fetch/article.png",
        "https://convertkit.s3.amazonaws.com/landing/photo.jpg",
        "https://files.constantcontact.com/0a1b/logo.png",
        "https://i1.cmail20.com/ei/r/10/logo.png",
        "https://studio.cmail20.com/t/photo.gif",
        "https://track.hubspot.com/logo.png",
        "https://shop.example/trk?t=summer",
        "https://shop.example/r/?id=house.png",
        "https://images.shop.example/e/FooterLogo.png",
        "https://image.s7.exacttarget.com/lib/logo.png",
        "https://www.intercom.io/o/photo.png",
        "https://www.yesware.com/logo.png",
        "https://mailtrack.io/en/logo.svg",
        "https://superhuman.com/logo.png",
        "https://media.linkedin.com/dms/image/photo.jpg",
        "https://www.linkedin.com/company/logo.png",
        "https://www.facebook.com/images/email/logo.png",
        "https://shop.example/?next=https://t.yesware.com/",
        "https://shop.example/proxy/https://r.superhuman.com/a.gif",
        "https://en.wikipedia.org/static/images/icons/wikipedia.png",
        "https://a.example/",
    };
};

QTEST_GUILESS_MAIN(ShippedRulesTest)
#include "ShippedRulesTest.moc"
