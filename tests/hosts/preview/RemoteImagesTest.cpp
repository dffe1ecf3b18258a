#include "hosts/preview/mail/RemoteImages.h"
#include "support/TestProgram.h"

#include <QCoreApplication>
#include <QRegularExpression>

using namespace quillmate;

namespace
{

/// Rules that block one address and nothing else, so that a count tells whether just that one was found.
ContentRules rulesFor(const QString& address)
{
    const QString filter = QRegularExpression::escape(address).replace(u"\\"_qs, u"\\\\"_qs);
    auto rules =
        ContentRules::parse(QStringLiteral("[{\"trigger\":{\"url-filter\":\"^%1$\"},\"action\":{\"type\":\"block\"}}]")
                                .arg(filter)
                                .toStdString());
    return std::move(rules).value();
}

} // namespace

/// What is found of a message's remote images, and what is said of them.
class RemoteImagesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
};

QUILLMATE_TEST(RemoteImagesTest, QCoreApplication)
#include "RemoteImagesTest.moc"
