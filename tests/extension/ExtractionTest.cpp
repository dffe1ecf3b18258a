#include "extension/ExtractBody.h"
#include "extension/RepliedMessageExtraction.h"
#include "platform/mailkit/MEComposeSession.h"
#include "state/APIManager.h"
#include "state/AuthManager.h"
#include "state/ReplyEmailManager.h"
#include "support/LogCapture.h"
#include "support/TestEnvironment.h"
#include "support/TestProgram.h"
#include "support/TestServer.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include <atomic>
#include <functional>
#include <thread>

using namespace quillmate;

using OptionalText = std::optional<std::string>;

class ExtractionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestEnvironment::connectTo(m_server); }
    void init();
    void body();
    void wholeMessage();
    void newMessage();
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
    return {fallbackLine,
            "CURRENT API URL IN API MANAGER " +
                QString::fromStdString(std::string(serviceEnvironments().back().apiURL)),
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

void ExtractionTest::body()
{
    const std::pair<QByteArray, std::optional<QByteArray>> rows[] = {
        {"A: b\n\nText\n", "Text"},
        {"A: b\n\nx\n\ny", "x\n\ny"}, // later blank lines stay
        {"A: b\n\n\nx", "x"},
        {"\n\nx", "x"},
        {"A: b\n\n", ""},
        {"A: b\n\n \t\r\n\v\f\u0085\u00a0\u2003\u200b\u2028\u202f\u205f\u3000", ""},
        {"A: b\n\n\u1680\u2000 x \u2029 y \u3000\u2029\r\n", "x \u2029 y"},
        {"A\n\n\u200c\u180e\ufeffx\u2060", "\u200c\u180e\ufeffx\u2060"}, // no white space
        {QByteArray("A\n\n\0x\0", 6), QByteArray("\0x\0", 3)},
        {"A: b\r\n\r\nText\r\n", std::nullopt},
        {"A: b\r\n\r\nText\n\nMore\r\n", "More"},
        {"A: b\nText\n", std::nullopt},
        {"", std::nullopt},
        {"A: b\n\ncaf\xe9", std::nullopt},
        {"A: caf\xe9\n\nx", std::nullopt},
        {"A\n\nx\xe3\x81", std::nullopt},     // ends early
        {"A\n\n\xc0\x8a", std::nullopt},      // overlong
        {"A\n\n\xed\xa0\x80", std::nullopt}}; // a surrogate
    for (const auto& [source, expected] : rows) {
        const std::string bytes = source.toStdString();
        const auto extracted = extractBody(bytes);
        QVERIFY2(extracted.has_value() == expected.has_value(), source);
        QCOMPARE(QByteArray::fromStdString(std::string(extracted.value_or(""))), expected.value_or(""));
    }
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

void ExtractionTest::missingPieces()
{
    struct Row {
        std::function<void(MEMessage&)> change;
        ReplyEmail expected;
        QStringList lines; // those about something missing
    };
    const auto& [address, subject, date, content, id] = ordinaryRecord;
    const std::optional<std::string> none;
    const std::string dateHeader = "x-ms-exchange-crosstenant-originalarrivaltime";
    const auto empty = QStringLiteral("Message content is empty.");
    const auto noDate = QStringLiteral("Date header not found");
    const auto idNotFound = QStringLiteral("Message id not found in header");
    const auto idEmpty = QStringLiteral("Session message id is empty.");
    const auto capitalId = [](MEMessage& m) {
        auto node = m.headers->extract("message-id");
        node.key() = "Message-ID";
        m.headers->insert(std::move(node));
    };
    const Row rows[] = {
        {[](MEMessage& m) { m.rawData.reset(); }, {address, subject, date, none, id}, {empty}},
        {[](MEMessage& m) { m.rawData = "A: b\n\n \n "; }, {address, subject, date, none, id}, {empty}},
        {[](MEMessage& m) { m.subject.clear(); }, {address, "", date, content, id}, {}},
        {[](MEMessage& m) { m.fromAddress.addressString.reset(); },
         {none, subject, date, content, id},
         {"No email address found in the original message.", "Email address is empty."}},
        {[](MEMessage& m) { m.fromAddress.addressString = ""; },
         {none, subject, date, content, id},
         {"Email address is empty."}},
        {[](MEMessage& m) { m.headers.reset(); },
         {address, subject, "earlier", content, none},
         {"No headers found in the original message.", idEmpty}},
        {[](MEMessage& m) { m.headers->clear(); },
         {address, subject, "earlier", content, none},
         {noDate, idNotFound, idEmpty}},
        {[&](MEMessage& m) { m.headers->erase(dateHeader); }, {address, subject, "earlier", content, id}, {noDate}},
        {[&](MEMessage& m) { m.headers->at(dateHeader).clear(); },
         {address, subject, "earlier", content, id},
         {noDate}},
        {[](MEMessage& m) { m.headers->at("message-id") = {""}; }, {address, subject, date, content, none}, {idEmpty}},
        {capitalId, {address, subject, date, content, none}, {idNotFound, idEmpty}}};
    for (const auto& [change, expected, lines] : rows) {
        // From the message before; each is to be replaced, or in the date's case kept when there is no new one.
        ReplyEmailManager::shared().update([](ReplyEmail& shared) {
            shared = {"old@a.example", "old", "earlier", "old", "<old>"};
        });
        MEMessage message = ordinaryMessage();
        change(message);
        const LogCapture log;
        extract(message);
        QCOMPARE(ReplyEmailManager::shared().record(), expected);
        QStringList missing = log.lines().filter(QRegularExpression("not found|is empty\\.|^No "));
        missing.removeAll(signedOutLine);
        QCOMPARE(missing, lines);
    }
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

QUILLMATE_TEST(ExtractionTest, QCoreApplication)
#include "ExtractionTest.moc"
