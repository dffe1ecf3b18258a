#include "hosts/preview/mail/RemoteImages.h"
#include "hosts/preview/mail/MailDocument.h"

#include <QTest>

using namespace quillmate;

/// What is found of a message's remote images, and what is said of them.
class RemoteImagesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void addresses_data();
    void addresses();
    void counting_data();
    void counting();
    void hostileMarkup_data();
    void hostileMarkup();
    void notices_data();
    void notices();
    void messages_data();
    void messages();
};

namespace
{

ContentRules pixelRules()
{
    auto rules = ContentRules::parse("[{\"trigger\":{\"url-filter\":\"/pixel\"},\"action\":{\"type\":\"block\"}}]");
    return std::move(rules).value();
}

/// The piece again and again, a million bytes of it.
QByteArray much(const QByteArray& piece)
{
    return piece.repeated(1'000'000 / piece.size());
}

} // namespace

void RemoteImagesTest::addresses_data()
{
    QTest::addColumn<QByteArray>("html");
    QTest::addColumn<QStringList>("found");
    const auto row = [](const char* name, const char* html, const QStringList& found) {
        QTest::newRow(name) << QByteArray(html) << found;
    };
    const QString one = "https://a.example/1.png";
    const QString two = "http://b.example/2.png";
    row("none", "<p>Hello <a href=\"https://a.example/1.png\">there</a></p>", {});
    row("marks of all kinds", "<img src=\"https://a.example/1.png\"><IMG SRC = 'http://b.example/2.png' >", {one, two});
    row("no marks", "<img width=1 src=https://a.example/1.png alt>", {one});
    row("slash at the end", "<img src='https://a.example/1.png'/>", {one});
    row("slash in the tag", "<img/src='https://a.example/1.png'>", {one});
    row("larger-than in an attribute", "<img alt='a > b' src='https://a.example/1.png'>", {one});
    row("repeated", "<img src=https://a.example/1.png><img src=HTTPS://A.example/1.png#x>", {one});
    row("the first source counts", "<img src=https://a.example/1.png src=http://b.example/2.png>", {one});
    row("references", "<img src='https://a.example/?a=1&amp;b=2&#x26;c&d'>", {"https://a.example/?a=1&b=2&c&d"});
    row("line ends", "<img src=' https://a.exam\r\n\tple/1.png '>", {one});
    row("no scheme", "<img src='//a.example/1.png'>", {one});
    row("no path", "<img src='https://a.example'>", {"https://a.example/"});
    row("blanks and letters", "<img src='https://a.example/a b/\xc3\xbc'>", {"https://a.example/a%20b/%C3%BC"});
    row("not remote",
        "<img src='cid:1@a'><img src='data:image/gif;base64,R0lG'><img src='1.png'><img src='/1.png'>"
        "<img src='file:///etc/1.png'><img src=''><img src><img>",
        {});
    row("no host", "<img src='https://'><img src='https:///1.png'>", {});
    row("set of sources", "<img srcset='https://a.example/1.png 1x, http://b.example/2.png 2x'>", {one});
    row("set of sources beside one", "<img srcset='http://b.example/2.png' src='https://a.example/1.png'>", {one});
    row("picture as a button", "<input type=image src='https://a.example/1.png'>", {one});
    row("backgrounds", "<body background='https://a.example/1.png'><td background=http://b.example/2.png>", {one, two});
    row("styles", "<div style=\"background: url( 'https://a.example/1.png' ) , URL(http://b.example/2.png)\">",
        {one, two});
    row("style with references", "<div style='background:url(&quot;https://a.example/1.png&quot;)'>", {one});
    row("style cut short", "<div style='background:url(https://a.example/1.png'>", {one});
    row("other elements",
        "<script src='https://a.example/1.js'></script><iframe src='https://a.example/'>"
        "<imgx src='https://a.example/1.png'>",
        {});
    row("comments", "<!-- <img src='http://b.example/2.png'> --><img src='https://a.example/1.png'>", {one});
    row("comment without end", "<img src='https://a.example/1.png'><!-- <img src='http://b.example/2.png'>", {one});
    row("scripts and styles",
        "<style>a{} <img src='http://b.example/2.png'></STYLE><script>'<img src=\"x\">'</script>"
        "<img src='https://a.example/1.png'>",
        {one});
    row("style without end", "<style>a{}<img src='https://a.example/1.png'>", {one});
    row("end tags", "</img src='http://b.example/2.png'>", {});
    row("tag without end", "<img src='https://a.example/1.png'", {});
    row("mark without end", "<img src='https://a.example/1.png><p>", {});
}

void RemoteImagesTest::addresses()
{
    QFETCH(const QByteArray, html);
    QTEST(remoteImageAddresses(html.toStdString(), 10), "found");
}

void RemoteImagesTest::counting_data()
{
    QTest::addColumn<int>("images");
    QTest::addColumn<int>("pixels");
    QTest::addColumn<RemoteImages>("counted");
    QTest::newRow("none") << 0 << 0 << RemoteImages{};
    QTest::newRow("a few") << 3 << 1 << RemoteImages{4, 1, false};
    QTest::newRow("just as many") << 990 << 10 << RemoteImages{1000, 10, false};
    QTest::newRow("too many") << 1000 << 10 << RemoteImages{1000, 0, true};
}

void RemoteImagesTest::counting()
{
    QFETCH(const int, images);
    QFETCH(const int, pixels);
    std::string html;
    for (int i = 0; i < images + pixels; ++i) {
        html += "<img src='https://a.example/" + std::string(i < images ? "photo" : "pixel") + std::to_string(i) + "'>";
    }
    const RemoteImages counted = countRemoteImages(html + html, pixelRules());
    QTEST(counted, "counted");
}

void RemoteImagesTest::hostileMarkup_data()
{
    QTest::addColumn<QByteArray>("html");
    QTest::addColumn<std::size_t>("count");
    const auto row = [](const char* name, const QByteArray& html, std::size_t count) {
        QTest::newRow(name) << html << count;
    };
    const QByteArray image = "<img src='https://a.example/1.png'>";
    row("comments that do not end", much("<!--"), 0);
    row("tags that do not end", much("<img "), 0);
    row("smaller-than signs", much("<"), 0);
    row("styles that do not end", much("<style>") + image, 1);
    row("scripts that end in another", much("<script></style>") + image, 1);
    row("attributes", "<img " + much("a=b ") + "src='https://a.example/1.png'>" + image, 1);
    row("attributes without value", "<img " + much("a ") + ">" + image, 1);
    row("one long name", "<" + much("a") + ">" + image, 1);
    row("one long address", "<img src='https://a.example/" + much("a") + "'>", 1);
    row("references", "<img src='https://a.example/" + much("&amp;") + "'>", 1);
    row("references that are none", "<img src='https://a.example/" + much("&") + "'>", 1);
    row("brackets", "<p style='" + much("url(") + "'>" + image, 1);
    row("one image", much(image), 1);
    row("zeros", QByteArray(1'000'000, '\0') + image, 1);
}

void RemoteImagesTest::hostileMarkup()
{
    QFETCH(const QByteArray, html);
    QTEST(countRemoteImages(html.toStdString(), pixelRules()).count, "count");
}

void RemoteImagesTest::notices_data()
{
    QTest::addColumn<RemoteImages>("images");
    QTest::addColumn<QString>("notice");
    const auto row = [](const RemoteImages& images, const char* notice) {
        QTest::newRow(*notice ? notice : "nothing") << images << QString::fromLatin1(notice);
    };
    row({0, 0, false}, "");
    row({1, 0, false}, "1 remote image was not loaded.");
    row({1, 1, false}, "1 remote image was not loaded; it is a known tracker.");
    row({3, 0, false}, "3 remote images were not loaded.");
    row({3, 1, false}, "3 remote images were not loaded; 1 of them is a known tracker.");
    row({3, 2, false}, "3 remote images were not loaded; 2 of them are known trackers.");
    row({2, 2, false}, "2 remote images were not loaded; all of them are known trackers.");
    row({1000, 0, true}, "More than 1000 remote images were not loaded.");
    row({1000, 1, true}, "More than 1000 remote images were not loaded; at least 1 of them is a known tracker.");
    row({1000, 1000, true}, "More than 1000 remote images were not loaded; at least 1000 of them are known trackers.");
}

void RemoteImagesTest::notices()
{
    QFETCH(const RemoteImages, images);
    QTEST(QString::fromStdString(remoteImagesNotice(images)), "notice");
}

void RemoteImagesTest::messages_data()
{
    QTest::addColumn<QByteArray>("source");
    QTest::addColumn<RemoteImages>("images");
    const QByteArray head = "From: a@example.com\nMIME-Version: 1.0\n";
    const QByteArray picture = "<img src=3D'https://a.example/photo.png'>";
    const QByteArray html = "Content-Type: text/html\nContent-Transfer-Encoding: quoted-printable\n\n" + picture +
                            "<img src=3D'https://a.exa=\nmple/pixel.gif'>\n";
    const QByteArray plain = "Content-Type: text/plain\n\n<img src='https://a.example/photo.png'>\n";
    const auto both = [&head](const QByteArray& first, const QByteArray& second) {
        return head + "Content-Type: multipart/alternative; boundary=b\n\n--b\n" + first + "--b\n" + second + "--b--\n";
    };
    QTest::newRow("HTML alone") << head + html << RemoteImages{2, 1, false};
    QTest::newRow("beside plain text") << both(plain, html) << RemoteImages{2, 1, false};
    QTest::newRow("before plain text") << both(html, plain) << RemoteImages{2, 1, false};
    QTest::newRow("plain text alone") << head + plain << RemoteImages{};
    QTest::newRow("attached HTML") << both(plain, "Content-Disposition: attachment\n" + html) << RemoteImages{};
}

void RemoteImagesTest::messages()
{
    QFETCH(const QByteArray, source);
    const MailDocument document = readDocument(source.toStdString(), pixelRules());
    QTEST(document.remoteImages, "images");
}

QTEST_GUILESS_MAIN(RemoteImagesTest)
#include "RemoteImagesTest.moc"
