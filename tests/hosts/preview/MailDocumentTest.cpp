#include "hosts/preview/mail/MailDocument.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

using namespace quillmate;

/// What the preview's windows and the extension get of a message.
class MailDocumentTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void summary()
    {
        const MessageSummary summary =
            summarizeMessage("From: =?utf-8?Q?Ren=C3=A9?= <r@example.com>\n"
                             "Subject: =?utf-8?Q?two=0Alines?=\n"
                             "Date: Tue, 4 Mar 2025 09:15:37 +0530\n\n\n  Hello\n\n\tthere,  you\n");
        const auto date = QDateTime::fromString(u"2025-03-04T09:15:37+05:30"_qs, Qt::ISODate);
        QCOMPARE(summary, (MessageSummary{{"René", "r@example.com"}, "two lines", "Hello there, you", date}));
        QCOMPARE(summary.date.offsetFromUtc(), 19800);
    }

    void missingFields()
    {
        const MailDocument document = readDocument("Subject: nothing else\n\nText\n");
        QCOMPARE(document.message->fromAddress.addressString, std::nullopt);
        QVERIFY(!document.message->headers->contains("message-id"));
        QVERIFY(!document.summary.date.isValid());
        QVERIFY(document.replyTo.empty());
    }

    void extensionsHeaders()
    {
        const MailDocument document = readDocument(
            "Message-ID: <=?utf-8?Q?a?=@b>\nSubject: =?utf-8?Q?=C3=A9?=\nReceived: 1\nReceived: 2\n\nText\n");
        const MEMessage::Headers expected{
            {"message-id", {"<=?utf-8?Q?a?=@b>"}}, {"subject", {"\xC3\xA9"}}, {"received", {"1", "2"}}};
        QVERIFY(document.message->headers == expected);
    }

    void remoteImages()
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
        const auto rules =
            ContentRules::parse("[{\"trigger\":{\"url-filter\":\"/pixel\"},\"action\":{\"type\":\"block\"}}]");
        for (const auto& [parts, images] : rows) {
            const std::string source = "From: a@example.com\nMIME-Version: 1.0\n" + parts;
            QVERIFY2(readDocument(source, rules.value()).remoteImages == images, source.c_str());
        }
    }
};

QUILLMATE_TEST(MailDocumentTest, QCoreApplication)
#include "MailDocumentTest.moc"
