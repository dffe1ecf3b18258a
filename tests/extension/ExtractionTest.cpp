#include "extension/ExtractBody.h"
#include "extension/RepliedMessageExtraction.h"
#include "platform/mailkit/MEComposeSession.h"
#include "state/AuthManager.h"
#include "state/ReplyEmailManager.h"
#include "support/LogCapture.h"
#include "support/TestEnvironment.h"
#include "support/TestServer.h"

#include <QTest>

#include <atomic>
#include <thread>

using namespace quillmate;

using OptionalText = std::optional<std::string>;

class ExtractionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestEnvironment::connectTo(m_server); }
    void init();
    void body_data();
    void body();
    void wholeMessage();
    void newMessage();
    void missingPieces_data();
    void missingPieces();
    void signedIn();
    void recordIsNeverMixed();

private:
    TestEnvironment m_environment;
    TestServer m_server;
};

namespace
{

const QString fallbackLine =
    QStringLiteral("Error: Invalid or missing API endpoint in UserDefaults. Falling back to live.");
const QString signedOutLine = QStringLiteral("Acess token is empty. User need to be logged in.");

/// What every extraction ends with when no environment is chosen: the URL is read twice.
QStringList refreshLines()
{
    return {fallbackLine, QStringLiteral("CURRENT API URL IN API MANAGER https://quillmate.example/api/v1"),
            fallbackLine};
}

MEMessage ordinaryMessage()
{
    MEMessage message;
    message.rawData = "From: ana@a.example\nSubject: Plans\n\n  Dear all,\n\nsee you.\n\n";
    message.subject = "Plans";
    message.fromAddress.addressString = "ana@a.example";
    message.headers = MEMessage::Headers{{"message-id", {"<m1@a.example>", "<second>"}},
                                         {"x-ms-exchange-crosstenant-originalarrivaltime", {"Mon, 1 Jun"}}};
    return message;
}

void extract(std::optional<MEMessage> message)
{
    std::shared_ptr<const MEMessage> shared;
    if (message) {
        shared = std::make_shared<const MEMessage>(std::move(*message));
    }
    extractRepliedMessage(MEComposeSession("s", MEComposeContext(shared)));
}

const ReplyEmail ordinaryRecord{"ana@a.example", "Plans", "Mon, 1 Jun", "Dear all,\n\nsee you.", "<m1@a.example>"};

} // namespace

void ExtractionTest::init()
{
    m_server.reset();
    AuthManager::shared().accessToken.set(std::nullopt);
    ReplyEmailManager::shared().update([](ReplyEmail& record) { record = {}; });
}

void ExtractionTest::body_data()
{
    QTest::addColumn<QByteArray>("source");
    QTest::addColumn<bool>("found");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("ordinary") << QByteArray("A: b\n\nText\n") << true << QByteArray("Text");
    QTest::newRow("later blank lines stay") << QByteArray("A: b\n\nx\n\ny") << true << QByteArray("x\n\ny");
    QTest::newRow("three feeds") << QByteArray("A: b\n\n\nx") << true << QByteArray("x");
    QTest::newRow("no header") << QByteArray("\n\nx") << true << QByteArray("x");
    QTest::newRow("nothing behind") << QByteArray("A: b\n\n") << true << QByteArray("");
    QTest::newRow("white space alone") << QByteArray(
                                              "A: b\n\n \t\r\n\v\f\u0085\u00a0\u2003\u200b\u2028\u202f\u205f\u3000")
                                       << true << QByteArray("");
    QTest::newRow("white space of every kind at the ends")
        << QByteArray("A: b\n\n\u1680\u2000 x \u2029 y \u3000\u2029\r\n") << true << QByteArray("x \u2029 y");
    QTest::newRow("no white space") << QByteArray("A\n\n\u200c\u180e\ufeffx\u2060") << true
                                    << QByteArray("\u200c\u180e\ufeffx\u2060");
    QTest::newRow("a NUL is text") << QByteArray("A\n\n\0x\0", 6) << true << QByteArray("\0x\0", 3);
    QTest::newRow("carriage returns") << QByteArray("A: b\r\n\r\nText\r\n") << false << QByteArray();
    QTest::newRow("carriage returns, a bare pair later")
        << QByteArray("A: b\r\n\r\nText\n\nMore\r\n") << true << QByteArray("More");
    QTest::newRow("no pair") << QByteArray("A: b\nText\n") << false << QByteArray();
    QTest::newRow("empty") << QByteArray("") << false << QByteArray();
    QTest::newRow("Latin-1 in the body") << QByteArray("A: b\n\ncaf\xe9") << false << QByteArray();
    QTest::newRow("Latin-1 in the header") << QByteArray("A: caf\xe9\n\nx") << false << QByteArray();
    QTest::newRow("a sequence that ends early") << QByteArray("A\n\nx\xe3\x81") << false << QByteArray();
    QTest::newRow("overlong") << QByteArray("A\n\n\xc0\x8a") << false << QByteArray();
    QTest::newRow("a surrogate") << QByteArray("A\n\n\xed\xa0\x80") << false << QByteArray();
}

void ExtractionTest::body()
{
    QFETCH(const QByteArray, source);
    QFETCH(const bool, found);
    QFETCH(const QByteArray, body);
    const std::string bytes = source.toStdString();
    const auto extracted = extractBody(bytes);
    QCOMPARE(extracted.has_value(), found);
    QCOMPARE(QByteArray::fromStdString(std::string(extracted.value_or(""))), body);
}

void ExtractionTest::wholeMessage()
{
    const LogCapture log;
    extract(ordinaryMessage());
    QCOMPARE(ReplyEmailManager::shared().record(), ordinaryRecord);
    QCOMPARE(log.lines(), (QStringList{"SESSSION FROM CONTENT EMAIL Dear all,", "", "see you.",
                                       "getting email address from apple ana@a.example", signedOutLine} +
                           refreshLines()));
}

void ExtractionTest::newMessage()
{
    ReplyEmailManager::shared().update([](ReplyEmail& record) { record = ordinaryRecord; });
    const LogCapture log;
    extract(std::nullopt);
    QCOMPARE(log.lines(), (QStringList{"No subject found in the original message.",
                                       "No email address found in the original message.",
                                       "No headers found in the original message.", "Email address is empty.",
                                       "Message content is empty.", "Session message id is empty.", signedOutLine} +
                           refreshLines()));
    // What the message before had there stays.
    QCOMPARE(ReplyEmailManager::shared().record(),
             (ReplyEmail{std::nullopt, "Plans", "Mon, 1 Jun", std::nullopt, std::nullopt}));
}

Q_DECLARE_METATYPE(quillmate::MEMessage)
Q_DECLARE_METATYPE(quillmate::ReplyEmail)

void ExtractionTest::missingPieces_data()
{
    QTest::addColumn<MEMessage>("message");
    QTest::addColumn<ReplyEmail>("record");
    QTest::addColumn<QStringList>("lines"); // those about something missing
    const auto row = [](const char* name, auto change, auto expected, const QStringList& lines) {
        MEMessage message = ordinaryMessage();
        change(message);
        ReplyEmail record = ordinaryRecord;
        expected(record);
        QTest::newRow(name) << message << record << lines;
    };
    const auto noContent = [](ReplyEmail& record) { record.content.reset(); };
    const auto noId = [](ReplyEmail& record) { record.messageId.reset(); };
    const auto earlierDate = [](ReplyEmail& record) { record.date = "earlier"; };
    const auto empty = QStringLiteral("Message content is empty.");
    const auto noDate = QStringLiteral("Date header not found");
    const auto idNotFound = QStringLiteral("Message id not found in header");
    const auto idEmpty = QStringLiteral("Session message id is empty.");

    row("no source", [](MEMessage& m) { m.rawData.reset(); }, noContent, {empty});
    row("carriage returns", [](MEMessage& m) { m.rawData = "A: b\r\n\r\nText"; }, noContent, {empty});
    row("a body of white space", [](MEMessage& m) { m.rawData = "A: b\n\n \n "; }, noContent, {empty});
    row("not UTF-8", [](MEMessage& m) { m.rawData = "A: b\n\ncaf\xe9"; }, noContent, {empty});
    row(
        "empty subject", [](MEMessage& m) { m.subject.clear(); }, [](ReplyEmail& r) { r.subject = ""; }, {});
    row(
        "no address", [](MEMessage& m) { m.fromAddress.addressString.reset(); }, [](ReplyEmail& r) { r.email.reset(); },
        {"No email address found in the original message.", "Email address is empty."});
    row(
        "empty address", [](MEMessage& m) { m.fromAddress.addressString = ""; }, [](ReplyEmail& r) { r.email.reset(); },
        {"Email address is empty."});
    row(
        "no headers", [](MEMessage& m) { m.headers.reset(); },
        [&](ReplyEmail& r) {
            noId(r);
            earlierDate(r);
        },
        {"No headers found in the original message.", idEmpty});
    row(
        "empty headers", [](MEMessage& m) { m.headers->clear(); },
        [&](ReplyEmail& r) {
            noId(r);
            earlierDate(r);
        },
        {noDate, idNotFound, idEmpty});
    row("no date", [](MEMessage& m) { m.headers->erase("x-ms-exchange-crosstenant-originalarrivaltime"); }, earlierDate,
        {noDate});
    row("an empty list of dates",
        [](MEMessage& m) { m.headers->at("x-ms-exchange-crosstenant-originalarrivaltime").clear(); }, earlierDate,
        {noDate});
    row("an empty id", [](MEMessage& m) { m.headers->at("message-id") = {""}; }, noId, {idEmpty});
    row("id in capitals only",
        [](MEMessage& m) {
            auto node = m.headers->extract("message-id");
            node.key() = "Message-ID";
            m.headers->insert(std::move(node));
        },
        noId, {idNotFound, idEmpty});
}

void ExtractionTest::missingPieces()
{
    QFETCH(const MEMessage, message);
    QFETCH(const ReplyEmail, record);
    QFETCH(const QStringList, lines);
    // From the message before; each is to be replaced, or in the date's case kept when there is no new one.
    ReplyEmailManager::shared().update([](ReplyEmail& shared) {
        shared = {"old@a.example", "old", "earlier", "old", "<old>"};
    });
    const LogCapture log;
    extract(message);
    QCOMPARE(ReplyEmailManager::shared().record(), record);
    QStringList missing;
    for (const QString& line : log.lines()) {
        if (line.contains(QLatin1String("not found")) || line.contains(QLatin1String("is empty.")) ||
            line.startsWith(QLatin1String("No "))) {
            missing.append(line);
        }
    }
    missing.removeAll(signedOutLine);
    QCOMPARE(missing, lines);
}

void ExtractionTest::signedIn()
{
    const LogCapture log;
    AuthManager::shared().accessToken.set("");
    extract(std::nullopt);
    QVERIFY(!log.lines().contains(signedOutLine));
    QCOMPARE(log.lines().last(), fallbackLine);

    m_server.reply("GET /api/v1/me", R"({"email":"a@b.example","name":"A"})");
    AuthManager::shared().accessToken.set("token");
    extract(ordinaryMessage());
    QTRY_COMPARE(m_server.lines(), std::vector<std::string>{"GET /api/v1/me"});
    QCOMPARE(log.lines().filter(QStringLiteral("ACCESS TOKEN:")), QStringList{"ACCESS TOKEN: token"});
}

void ExtractionTest::recordIsNeverMixed()
{
    // One thread takes in two messages in turn while this one reads: content and id always belong together.
    const LogCapture log;
    std::atomic<bool> stop = false;
    std::thread host([&] {
        for (int i = 0; i < 400; ++i) {
            MEMessage message = ordinaryMessage();
            const std::string name = i % 2 == 0 ? "even" : "odd";
            message.rawData = "A: b\n\n" + name;
            message.headers->at("message-id") = {name};
            extract(message);
        }
        stop = true;
    });
    int mixed = 0;
    while (!stop) {
        const ReplyEmail record = ReplyEmailManager::shared().record();
        mixed += record.content == record.messageId ? 0 : 1;
    }
    host.join();
    QCOMPARE(mixed, 0);
}

QTEST_GUILESS_MAIN(ExtractionTest)
#include "ExtractionTest.moc"
