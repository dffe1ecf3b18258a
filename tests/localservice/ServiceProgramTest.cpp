#include "localservice/ServiceProcess.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

using namespace quillmate::localservice;

namespace
{

QByteArray body(const QJsonObject& fields)
{
    QJsonObject whole = {{QStringLiteral("email"), QStringLiteral("someone.else@example.org")},
                         {QStringLiteral("plugin_source"), QStringLiteral("plugin_apple")},
                         {QStringLiteral("plugin_version"), QStringLiteral("v1.0.0")}};
    for (auto field = fields.begin(); field != fields.end(); ++field) {
        whole[field.key()] = field.value();
    }
    return QJsonDocument(whole).toJson(QJsonDocument::Compact);
}

QByteArray chatBody(const QString& thread, const QString& content)
{
    return body({{QStringLiteral("assistantId"), QStringLiteral("builtin")},
                 {QStringLiteral("threadId"), thread},
                 {QStringLiteral("content"), content}});
}

const QString message =
    QStringLiteral("Dear Anna,\n\nthe delivery of the pumps moves to Thursday. The invoice follows by post. "
                   "Could you confirm the address of the warehouse? The driver needs a contact on site.\n\n"
                   "Kind regards\nTom\n");

} // namespace

/// Every path of the running program, and how it ends.
class ServiceProgramTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_data = m_folder.filePath(QStringLiteral("service"));
        m_service = std::make_unique<ServiceProcess>(
            m_data, QStringList{QStringLiteral("--update-version"), QStringLiteral("1.10.0"),
                                QStringLiteral("--update-url"), QStringLiteral("https://example.org/get")});
        QVERIFY2(m_service->start(), m_service->standardError().constData());
        m_token = m_service->signIn("Anna", "anna@example.org");
        m_otherToken = m_service->signIn("Ben", "ben@example.org");
        QVERIFY(!m_token.isEmpty() && !m_otherToken.isEmpty());
    }

    void failuresAreJsonObjects_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("allow");
        const QByteArray bearer = "Authorization: Bearer " + m_token + "\r\n";
        const QByteArray json = "Content-Type: application/json\r\n";
        const QByteArray whole = body({{QStringLiteral("content"), message}});
        const auto row = [](const char* name, const QByteArray& request, const QByteArray& content, int status,
                            const QByteArray& allow = {}) {
            QTest::newRow(name) << request << content << status << allow;
        };
        row("unknown path", "GET /api/v1/nothing HTTP/1.1\r\n" + bearer, {}, 404);
        row("root", "GET / HTTP/1.1\r\n", {}, 404);
        row("path beside the API", "GET /api/v1/me/ HTTP/1.1\r\n" + bearer, {}, 404);
        row("post to an unknown path", "POST /x HTTP/1.1\r\n", whole, 404);
        row("unknown session", "GET /plugin-auth/session-request/AAAA HTTP/1.1\r\n", {}, 404);
        row("get a post path", "GET /api/v1/summarize HTTP/1.1\r\n" + bearer, {}, 405, "POST");
        row("head of a post path", "HEAD /api/v1/chat/send HTTP/1.1\r\n" + bearer, {}, 405, "POST");
        row("post a get path", "POST /api/v1/me HTTP/1.1\r\n" + bearer, whole, 405, "GET, HEAD");
        row("a piece of a method", "GE /api/v1/me HTTP/1.1\r\n" + bearer, {}, 405, "GET, HEAD");
        row("delete", "DELETE /plugin-auth/session-request/ HTTP/1.1\r\n", {}, 405, "GET, HEAD");
        row("no token", "GET /api/v1/me HTTP/1.1\r\n", {}, 401);
        row("empty token", "GET /api/v1/me HTTP/1.1\r\nAuthorization: Bearer \r\n", {}, 401);
        row("wrong token", "POST /api/v1/summarize HTTP/1.1\r\nAuthorization: Bearer " + m_token + "x\r\n", whole, 401);
        row("other scheme", "GET /api/v1/me HTTP/1.1\r\nAuthorization: Basic " + m_token + "\r\n", {}, 401);
        row("wrong token before wrong body", "POST /api/v1/response HTTP/1.1\r\n", "{", 401);
        row("no body", "POST /api/v1/summarize HTTP/1.1\r\n" + bearer, {}, 400);
        row("cut JSON", "POST /api/v1/summarize HTTP/1.1\r\n" + bearer + json, whole.chopped(1), 400);
        row("array", "POST /api/v1/summarize HTTP/1.1\r\n" + bearer + json, "[" + whole + "]", 400);
        row("string", "POST /api/v1/summarize HTTP/1.1\r\n" + bearer + json, "\"content\"", 400);
        row("bytes that are not UTF-8", "POST /api/v1/summarize HTTP/1.1\r\n" + bearer, "{\"content\":\"\xFF\"}", 400);
        row("deep nesting", "POST /api/v1/summarize HTTP/1.1\r\n" + bearer, QByteArray(200'000, '['), 400);
        row("missing key", "POST /api/v1/summarize HTTP/1.1\r\n" + bearer, body({}), 400);
        row("number for a text", "POST /api/v1/summarize HTTP/1.1\r\n" + bearer,
            body({{QStringLiteral("content"), 42}}), 400);
        row("text, then null", "POST /api/v1/summarize HTTP/1.1\r\n" + bearer, whole.chopped(1) + ",\"content\":null}",
            400);
        row("nested key", "POST /api/v1/summarize HTTP/1.1\r\n" + bearer,
            body({{QStringLiteral("x"), QJsonObject{{QStringLiteral("content"), message}}}}), 400);
        row("reply without message id", "POST /api/v1/response HTTP/1.1\r\n" + bearer, whole, 400);
        row("training without answer", "POST /api/v1/create-training-data HTTP/1.1\r\n" + bearer,
            body({{QStringLiteral("question"), message}}), 400);
        row("unknown thread", "POST /api/v1/chat/send HTTP/1.1\r\n" + bearer,
            chatBody(QStringLiteral("thread-x"), QStringLiteral("When?")), 404);
        row("no HTTP", "hello there\r\n", {}, 400);
    }

    void failuresAreJsonObjects()
    {
        QFETCH(QByteArray, request);
        QFETCH(QByteArray, content);
        QFETCH(int, status);
        QFETCH(QByteArray, allow);
        const Reply reply = m_service->connect().request(request + "Host: " QUILLMATE_LIVE_HOST "\r\n", content);
        QCOMPARE(reply.status, status);
        QCOMPARE(reply.header("Allow"), allow);
        QCOMPARE(reply.header("Content-Type"), "application/json");
        if (!request.startsWith("HEAD")) {
            QVERIFY2(reply.json()[QStringLiteral("error")].isString(), reply.body.constData());
            QVERIFY(!reply.json().contains(QStringLiteral("id")));
        }
    }

    void aBodyOverTheLimitIsRefusedUnread_data()
    {
        QTest::addColumn<QByteArray>("framing");
        QTest::newRow("told length") << QByteArray("Content-Length: 67108865\r\n");
        QTest::newRow("told length and expectation")
            << QByteArray("Content-Length: 67108865\r\nExpect: 100-continue\r\n");
        QTest::newRow("length beyond any number type") << QByteArray("Content-Length: 18446744073709551615\r\n");
        QTest::newRow("one chunk") << QByteArray("Transfer-Encoding: chunked\r\n");
    }

    void aBodyOverTheLimitIsRefusedUnread()
    {
        QFETCH(QByteArray, framing);
        HttpExchange exchange = m_service->connect();
        QByteArray bytes = "POST /api/v1/summarize HTTP/1.1\r\nHost: " QUILLMATE_LIVE_HOST
                           "\r\nAuthorization: Bearer " +
                           m_token + "\r\n" + framing + "\r\n";
        bytes += framing.startsWith("Transfer") ? "4000001\r\n{" : "{\"content\":\"";
        exchange.send(bytes);
        const Reply reply = exchange.receive();
        QCOMPARE(reply.status, 413);
        QCOMPARE(reply.header("Connection"), "close");
        QVERIFY(reply.json()[QStringLiteral("error")].isString());
    }

    void aLargeBodyIsWaitedForAndAnswered()
    {
        HttpExchange exchange = m_service->connect();
        const QByteArray large = body({{QStringLiteral("content"), QString(message + QString(30'000'000, u'x'))}});
        exchange.send("POST /api/v1/summarize HTTP/1.1\r\nHost: " QUILLMATE_LIVE_HOST "\r\nAuthorization: Bearer " +
                      m_token + "\r\nExpect: 100-continue\r\nContent-Length: " + QByteArray::number(large.size()) +
                      "\r\n\r\n");
        QCOMPARE(exchange.receive().status, 100);
        exchange.send(large);
        const Reply reply = exchange.receive();
        QCOMPARE(reply.status, 200);
        QVERIFY(reply.json()[QStringLiteral("response")].toString().contains(QStringLiteral("moves to Thursday")));
    }

    void aConnectionCarriesSeveralRequests()
    {
        HttpExchange exchange = m_service->connect();
        const QByteArray me =
            "GET /api/v1/me HTTP/1.1\r\nHost: " QUILLMATE_LIVE_HOST "\r\nAuthorization: Bearer " + m_token + "\r\n";
        const QByteArray chunked = "POST /api/v1/summarize HTTP/1.1\r\nHost: " QUILLMATE_LIVE_HOST
                                   "\r\nAuthorization: Bearer " +
                                   m_token + "\r\nTransfer-Encoding: chunked\r\n\r\n";
        QCOMPARE(exchange.request(me).status, 200);
        const QByteArray content = body({{QStringLiteral("content"), message}});
        exchange.send(chunked + QByteArray::number(content.size(), 16) + "\r\n" + content + "\r\n0\r\n\r\n" + me +
                      "\r\n");
        QVERIFY(!exchange.receive().json()[QStringLiteral("response")].toString().isEmpty());
        QCOMPARE(exchange.receive().json()[QStringLiteral("name")].toString(), QStringLiteral("Anna"));
        QCOMPARE(exchange.request("POST /nothing HTTP/1.1\r\nHost: x\r\n", "ignored").status, 404);
        QCOMPARE(exchange.request(me + "Connection: close\r\n").status, 200);
        QVERIFY(exchange.waitForEnd());
    }

    void headHasNoBody()
    {
        HttpExchange exchange = m_service->connect();
        exchange.send("HEAD /apple-version HTTP/1.1\r\nHost: x\r\n\r\n"
                      "GET /nothing HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
        const QByteArray all = exchange.receiveAll();
        // The length is told, nothing comes, and the next reply begins at once.
        QCOMPARE(all.count("HTTP/1.1 "), 2);
        QVERIFY2(all.contains("\r\n\r\nHTTP/1.1 404"), all.constData());
        QVERIFY(!all.left(all.indexOf("HTTP/1.1 404")).contains("Content-Length: 0\r\n"));
    }

    void theTextsComeFromTheMessage()
    {
        const QByteArray content =
            body({{QStringLiteral("content"), message}, {QStringLiteral("messageId"), QString()}});
        const QString summary =
            m_service->post("/api/v1/summarize", content, m_token).json()[QStringLiteral("response")].toString();
        QVERIFY(summary.contains(QStringLiteral("delivery of the pumps")) &&
                !summary.contains(QStringLiteral("Kind regards")));
        const QString reply =
            m_service->post("/api/v1/response", content, m_token).json()[QStringLiteral("response")].toString();
        QVERIFY(reply.startsWith(QStringLiteral("Hello Tom,\n")) && reply.endsWith(QStringLiteral(",\nAnna")));
        QVERIFY(reply.contains(QStringLiteral("Could you confirm the address of the warehouse?")));
        const QByteArray training =
            body({{QStringLiteral("question"), message}, {QStringLiteral("answer"), QStringLiteral("Yes.")}});
        QVERIFY(m_service->post("/api/v1/create-training-data", training, m_token)
                    .json()[QStringLiteral("success")]
                    .isString());
    }

    void theVersionCheckOffersWhatIsNewer_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<bool>("offered");
        QTest::newRow("older") << QByteArray("/api/v1/apple-version?currentVersion=1.9.9") << true;
        QTest::newRow("older, at the origin") << QByteArray("/apple-version?currentVersion=1.0") << true;
        QTest::newRow("same") << QByteArray("/apple-version?currentVersion=1.10.0") << false;
        QTest::newRow("newer") << QByteArray("/apple-version?currentVersion=2") << false;
        QTest::newRow("pre-release of the same") << QByteArray("/apple-version?currentVersion=1.10.0-rc.1") << true;
        QTest::newRow("pre-release of a newer one") << QByteArray("/apple-version?currentVersion=1.11.0-rc.1") << false;
        QTest::newRow("escaped") << QByteArray("/apple-version?x=1&currentVersion=1%2E11") << false;
    }

    void theVersionCheckOffersWhatIsNewer()
    {
        QFETCH(QByteArray, path);
        QFETCH(bool, offered);
        const Reply reply = m_service->connect().request("GET " + path + " HTTP/1.1\r\nHost: x\r\n");
        QCOMPARE(reply.status, 200);
        QCOMPARE(reply.json()[QStringLiteral("current_version")].toString(),
                 offered ? QStringLiteral("1.10.0") : QString());
        QCOMPARE(reply.json()[QStringLiteral("download_url")].isString(), offered);
    }

    void aRestartKeepsUsersTokensAndThreads()
    {
        const QByteArray start = body({{QStringLiteral("email_content"), message}});
        const QJsonObject begun =
            m_service->post("/api/v1/chat/start", start, m_token).json()[QStringLiteral("response")].toObject();
        const QString thread = begun[QStringLiteral("threadId")].toString();
        QVERIFY(!thread.isEmpty() && begun[QStringLiteral("assistantId")].isString());
        const auto answer = [&](const char* question, const QByteArray& token) {
            return m_service->post("/api/v1/chat/send", chatBody(thread, QString::fromUtf8(question)), token);
        };
        const QString first = answer("What follows by post?", m_token).json()[QStringLiteral("response")].toString();
        QVERIFY2(first.contains(QStringLiteral("The invoice follows by post.")), qPrintable(first));
        QCOMPARE(answer("And?", m_otherToken).status, 404);

        QCOMPARE(m_service->stop(), 0);
        m_service = std::make_unique<ServiceProcess>(m_data);
        const QSslCertificate root = m_service->root();
        QVERIFY(m_service->start());
        QCOMPARE(m_service->root(), root);
        QCOMPARE(m_service->get("/api/v1/me", m_token).json()[QStringLiteral("name")].toString(),
                 QStringLiteral("Anna"));
        // It still knows what was asked, and what it said.
        const QString second = answer("And what else?", m_token).json()[QStringLiteral("response")].toString();
        QVERIFY2(second.contains(QStringLiteral("no more on this")) && second.contains(QStringLiteral("invoice")),
                 qPrintable(second));
        QCOMPARE(answer("And?", m_otherToken).status, 404);
    }

    void aChatWithoutAMessageSaysSo()
    {
        const QByteArray start = body({{QStringLiteral("email_content"), QStringLiteral("Compose session")}});
        const QJsonObject begun =
            m_service->post("/api/v1/chat/start", start, m_token).json()[QStringLiteral("response")].toObject();
        const QByteArray question =
            chatBody(begun[QStringLiteral("threadId")].toString(), QStringLiteral("What is this session about?"));
        const QJsonObject answer = m_service->post("/api/v1/chat/send", question, m_token).json();
        QVERIFY(answer[QStringLiteral("response")].toString().startsWith(QStringLiteral("There is no message")));
    }

    void theDataFolderIsPrivateAndHoldsNoTokenInClear()
    {
        const auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
        QCOMPARE(QFileInfo(m_data).permissions(), ownerOnly | QFile::ExeOwner | QFile::ExeUser);
        const QStringList files = QDir(m_data).entryList(QDir::Files);
        QVERIFY(files.contains(QStringLiteral("service.db")) && files.contains(QStringLiteral("ca-key.pem")));
        for (const QString& name : files) {
            QFile file(m_data + u'/' + name);
            QVERIFY(file.open(QIODevice::ReadOnly));
            QVERIFY2(!file.readAll().contains(m_token), qPrintable(name));
            if (name.startsWith(QStringLiteral("service.db")) || name.endsWith(QStringLiteral("key.pem"))) {
                QCOMPARE(file.permissions(), ownerOnly);
            }
        }
    }

    void theEndComesInOrderWithClientsConnected()
    {
        HttpExchange idle = m_service->connect();
        HttpExchange busy = m_service->connect();
        QVERIFY(idle.isConnected() && busy.isConnected());
        busy.send("GET /api/v1/me HTTP/1.1\r\nHost: x\r\nAuthorization: Bearer " + m_token + "\r\n");
        QCOMPARE(m_service->stop(), 0);
        QVERIFY(!QFileInfo::exists(m_data + QStringLiteral("/service.db-wal"))); // the database was closed
    }

private:
    QTemporaryDir m_folder;
    QString m_data;
    QByteArray m_token;
    QByteArray m_otherToken;
    std::unique_ptr<ServiceProcess> m_service;
};

QTEST_GUILESS_MAIN(ServiceProgramTest)
#include "ServiceProgramTest.moc"
