#include "server/ServiceProcess.h"
#include "server/UpdateOffer.h"
#include "support/TestProgram.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

using namespace quillmate::server;
using namespace Qt::StringLiterals;

namespace
{

QByteArray chatBody(const QString& thread, const QString& content)
{
    return bodyOf({{u"assistantId"_s, u"builtin"_s}, {u"threadId"_s, thread}, {u"content"_s, content}});
}

const QString message = u"Dear Anna,\n\nthe delivery of the pumps moves to Thursday. The invoice follows by post. "
                        "Could you confirm the address of the warehouse? The driver needs a contact on site.\n\n"
                        "Kind regards\nTom\n"_s;

} // namespace

/// Every path of the running program, and how it ends.
class ServiceProgramTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_data = m_folder.filePath(u"service"_s);
        m_service = std::make_unique<ServiceProcess>(
            m_data, QStringList{u"--update-version"_s, u"1.10.0"_s, u"--update-url"_s, u"https://example.org/get"_s});
        QVERIFY2(m_service->start(), m_service->standardError().constData());
        m_token = m_service->signIn("Anna", "anna@example.org");
        m_otherToken = m_service->signIn("Ben", "ben@example.org");
        QVERIFY(!m_token.isEmpty() && !m_otherToken.isEmpty());
    }

    void aClientSeesTheTokenOnceTheFormIsSent()
    {
        const BegunSession session = beginSession(*m_service);
        QVERIFY(session.id.size() >= 22);
        const QByteArray poll = "/plugin-auth/session-request/" + session.id;
        QJsonObject waiting = m_service->get(poll).json();
        QCOMPARE(waiting[u"id"_s].toString().toUtf8(), session.id);
        QVERIFY(waiting[u"access_token"_s].isNull());

        const Reply page = loginPage(session);
        QCOMPARE(page.status, 200);
        const QByteArray policy = page.header("Content-Security-Policy");
        QVERIFY(policy.contains("default-src 'none'") && policy.contains("form-action 'self'") &&
                policy.contains("frame-ancestors 'none'") && !policy.contains("unsafe"));
        QCOMPARE(page.header("Cache-Control"), "no-store");
        QCOMPARE(page.header("X-Content-Type-Options"), "nosniff");
        QVERIFY(!page.body.contains("<script"));

        const Reply sent = postForm(
            session, "name=Anna+B%C3%A9+%3Cb%3E&email=+Anne%40Example.org&form_token=" + formTokenOf(page.body),
            "Origin: http://" + session.loginHost + "\r\nSec-Fetch-Site: same-origin\r\n");
        QCOMPARE(sent.status, 303);
        QCOMPARE(sent.header("Location"), session.loginPath);
        QCOMPARE(m_service->get(session.loginPath).status, 200); // over TLS, too
        QVERIFY(loginPage(session).body.contains("You can close this page and go back to your mail."));

        const QByteArray token = m_service->get(poll).json()[u"access_token"_s].toString().toUtf8();
        QVERIFY(token.size() >= 22);
        // The address of the page, which a browser keeps and shows, gives nobody the token.
        const QByteArray pageName = session.loginPath.mid(session.loginPath.lastIndexOf('/') + 1);
        QCOMPARE(m_service->get("/plugin-auth/session-request/" + pageName).status, 404);
        // A client whose reply was lost asks again.
        QCOMPARE(m_service->get(poll).json()[u"access_token"_s].toString().toUtf8(), token);
        const QJsonObject me = m_service->get("/api/v1/me", token).json();
        QCOMPARE(me[u"email"_s].toString(), u"anne@example.org"_s);
        QCOMPARE(me[u"name"_s].toString(), u"Anna Bé <b>"_s);
    }

    void whatTheServerItselfRefusesIsAPageToo()
    {
        const BegunSession session = beginSession(*m_service);
        const Reply tooLong = postForm(session, "name=" + QByteArray(17 * 1024, 'x'));
        const Reply wrongMethod =
            HttpExchange::plain(session.loginPort).request("DELETE " + session.loginPath + " HTTP/1.1\r\nHost: x\r\n");
        QCOMPARE(tooLong.status, 413);
        QCOMPARE(wrongMethod.status, 405);
        QCOMPARE(wrongMethod.header("Allow"), "GET, HEAD, POST");
        for (const Reply& reply : {tooLong, wrongMethod}) {
            QVERIFY(reply.header("Content-Type").startsWith("text/html"));
            QVERIFY2(reply.body.contains("Not signed in"), reply.body.constData());
        }
    }

    void thePlainListenerServesNothingButSignInPages()
    {
        const BegunSession session = beginSession(*m_service);
        for (const QByteArray& path : {QByteArray("/api/v1/me"), QByteArray("/plugin-auth/session-request/"),
                                       QByteArray("/apple-version"), QByteArray("/")}) {
            const Reply reply = HttpExchange::plain(session.loginPort)
                                    .request("GET " + path + " HTTP/1.1\r\nHost: " + session.loginHost + "\r\n");
            QCOMPARE(reply.status, 404);
        }
        BegunSession unknown = session;
        unknown.loginPath += "x";
        QCOMPARE(loginPage(unknown).status, 404);
    }

    void failuresAreJsonObjects()
    {
        const QByteArray bearer = "Authorization: Bearer " + m_token + "\r\n";
        const QByteArray summarize = "POST /api/v1/summarize HTTP/1.1\r\n" + bearer;
        const QByteArray whole = bodyOf({{u"content"_s, message}});
        struct Row {
            QByteArray request;
            QByteArray content;
            int status;
            QByteArray allow = {};
        };
        for (const auto& [request, content, status, allow] :
             {Row{"GET /api/v1/me/ HTTP/1.1\r\n" + bearer, {}, 404},
              Row{"GET /plugin-auth/session-request/AAAA HTTP/1.1\r\n", {}, 404},
              Row{"GET /api/v1/summarize HTTP/1.1\r\n" + bearer, {}, 405, "POST"},
              Row{"HEAD /api/v1/chat/send HTTP/1.1\r\n" + bearer, {}, 405, "POST"},
              Row{"POST /api/v1/me HTTP/1.1\r\n" + bearer, whole, 405, "GET, HEAD"},
              Row{"GET /api/v1/me HTTP/1.1\r\n", {}, 401},
              Row{"POST /api/v1/summarize HTTP/1.1\r\nAuthorization: Bearer " + m_token + "x\r\n", whole, 401},
              Row{"GET /api/v1/me HTTP/1.1\r\nAuthorization: Basic " + m_token + "\r\n", {}, 401},
              Row{"POST /api/v1/response HTTP/1.1\r\n", "{", 401}, Row{summarize, whole.chopped(1), 400},
              Row{summarize, "[" + whole + "]", 400}, Row{summarize, bodyOf({}), 400},
              Row{summarize, bodyOf({{u"content"_s, 42}}), 400}, Row{summarize, bodyOf({{u"content"_s, u""_s}}), 422},
              Row{"POST /api/v1/response HTTP/1.1\r\n" + bearer, whole, 400},
              Row{"POST /api/v1/create-training-data HTTP/1.1\r\n" + bearer, bodyOf({{u"question"_s, message}}), 400},
              Row{"POST /api/v1/chat/send HTTP/1.1\r\n" + bearer, chatBody(u"thread-x"_s, u"When?"_s), 404}}) {
            const Reply reply = m_service->connect().request(request + "Host: " QUILLMATE_LIVE_HOST "\r\n", content);
            QVERIFY2(reply.status == status, request + reply.head);
            QCOMPARE(reply.header("Allow"), allow);
            QCOMPARE(reply.header("Content-Type"), "application/json");
            QVERIFY2(request.startsWith("HEAD") || reply.json()[u"error"_s].isString(), request);
            QVERIFY(!reply.json().contains(u"id"_s));
        }
    }

    void aBodyOverTheLimitIsRefusedUnread()
    {
        // Its beginning, and all of it.
        for (const qsizetype sent : {12, 67'108'865}) {
            HttpExchange exchange = m_service->connect();
            exchange.send("POST /api/v1/summarize HTTP/1.1\r\nHost: " QUILLMATE_LIVE_HOST "\r\nAuthorization: Bearer " +
                          m_token + "\r\nContent-Length: 67108865\r\n\r\n" + QByteArray(sent, 'x'));
            const Reply reply = exchange.receive();
            QCOMPARE(reply.status, 413);
            QCOMPARE(reply.header("Connection"), "close");
            QVERIFY(reply.json()[u"error"_s].isString());
        }
    }

    void aLargeBodyIsWaitedForAndAnswered()
    {
        HttpExchange exchange = m_service->connect();
        const QByteArray large = bodyOf({{u"content"_s, QString(message + QString(30'000'000, u'x'))}});
        exchange.send("POST /api/v1/summarize HTTP/1.1\r\nHost: " QUILLMATE_LIVE_HOST "\r\nAuthorization: Bearer " +
                      m_token + "\r\nExpect: 100-continue\r\nContent-Length: " + QByteArray::number(large.size()) +
                      "\r\n\r\n");
        QCOMPARE(exchange.receive().status, 100);
        exchange.send(large);
        const Reply reply = exchange.receive();
        QCOMPARE(reply.status, 200);
        QVERIFY(reply.json()[u"response"_s].toString().contains(u"moves to Thursday"_s));
    }

    void theTextsComeFromTheMessage()
    {
        const QByteArray content = bodyOf({{u"content"_s, message}, {u"messageId"_s, QString()}});
        const QString summary = response("/api/v1/summarize", content).toString();
        QVERIFY(summary.contains(u"delivery of the pumps"_s) && !summary.contains(u"Kind regards"_s));
        const QString reply = response("/api/v1/response", content).toString();
        QVERIFY(reply.startsWith(u"Hello Tom,\n"_s) && reply.endsWith(u",\nAnna"_s));
        QVERIFY(reply.contains(u"Could you confirm the address of the warehouse?"_s));
        const QByteArray training = bodyOf({{u"question"_s, message}, {u"answer"_s, u"Yes."_s}});
        QVERIFY(m_service->post("/api/v1/create-training-data", training, m_token).json()[u"success"_s].isString());
    }

    void theVersionCheckOffersWhatIsNewer()
    {
        for (const auto& [path, offered] :
             std::vector<std::pair<QByteArray, bool>>{{"/api/v1/apple-version?currentVersion=1.9.9", true},
                                                      {"/apple-version?currentVersion=1.0", true},
                                                      {"/apple-version?currentVersion=1.10.0", false},
                                                      {"/apple-version?x=1&currentVersion=1%2E11", false}}) {
            const Reply reply = m_service->get(path);
            QCOMPARE(reply.status, 200);
            QCOMPARE(reply.json()[u"current_version"_s].toString(), offered ? u"1.10.0"_s : QString());
            QCOMPARE(reply.json()[u"download_url"_s].isString(), offered);
        }
    }

    void versionsRise()
    {
        // Each over the one before; Semantic Versioning 2.0.0, 11.
        const std::vector<std::string> rising = {
            "",    "1.0.0-alpha", "1.0.0-alpha.1", "1.0.0-alpha.beta", "1.0.0-beta.2", "1.0.0-beta.11",
            "1.0", "1.1.0-alpha", "v1.2",          "1.2.0.1",          "1.9",          "1.10"};
        for (std::size_t index = 1; index < rising.size(); ++index) {
            QVERIFY2(isNewerVersion(rising[index], rising[index - 1]), rising[index].c_str());
            QVERIFY2(!isNewerVersion(rising[index - 1], rising[index]), rising[index].c_str());
        }
        for (const auto& [candidate, current] : std::vector<std::pair<const char*, const char*>>{
                 {"1.2", "1.2.0"}, {"1.02", "V1.2"}, {"0.0", ""}, {"1.0.0-rc.1", "1.0.0-rc.1+7"}, {"1+2", "1+1"}}) {
            QVERIFY2(!isNewerVersion(candidate, current) && !isNewerVersion(current, candidate), candidate);
        }
        QVERIFY(isNewerVersion("1.0", "nonsense"));
        QVERIFY(isVersion("1.2.0-rc.1+5"));
        for (const char* none : {"", "1..2", "1.2-", "v1.2", "1.2\n3"}) {
            QVERIFY2(!isVersion(none), none);
        }
    }

    void aRestartKeepsUsersTokensAndThreads()
    {
        const QByteArray start = bodyOf({{u"email_content"_s, message}});
        const QJsonObject begun = response("/api/v1/chat/start", start).toObject();
        const QString thread = begun[u"threadId"_s].toString();
        QVERIFY(!thread.isEmpty() && begun[u"assistantId"_s].isString());
        const auto answer = [&](const char* question, const QByteArray& token) {
            return m_service->post("/api/v1/chat/send", chatBody(thread, QString::fromUtf8(question)), token);
        };
        const QString first = answer("What follows by post?", m_token).json()[u"response"_s].toString();
        QVERIFY2(first.contains(u"The invoice follows by post."_s), qPrintable(first));

        QCOMPARE(m_service->stop(), 0);
        m_service = std::make_unique<ServiceProcess>(m_data);
        const QSslCertificate root = m_service->root();
        QVERIFY(m_service->start());
        QCOMPARE(m_service->root(), root);
        QCOMPARE(m_service->get("/api/v1/me", m_token).json()[u"name"_s].toString(), u"Anna"_s);
        // It still knows what was asked, and what it said.
        const QString second = answer("And what else?", m_token).json()[u"response"_s].toString();
        QVERIFY2(second.contains(u"no more on this"_s) && second.contains(u"invoice"_s), qPrintable(second));
        QCOMPARE(answer("And?", m_otherToken).status, 404);
    }

    void aChatWithoutAMessageSaysSo()
    {
        const QByteArray start = bodyOf({{u"email_content"_s, u"Compose session"_s}});
        const QJsonObject begun = response("/api/v1/chat/start", start).toObject();
        const QByteArray question = chatBody(begun[u"threadId"_s].toString(), u"What is this session about?"_s);
        const QJsonObject answer = m_service->post("/api/v1/chat/send", question, m_token).json();
        QVERIFY(answer[u"response"_s].toString().startsWith(u"There is no message"_s));
    }

    void theDataFolderIsPrivateAndHoldsNoTokenInClear()
    {
        const auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
        QCOMPARE(QFileInfo(m_data).permissions(), ownerOnly | QFile::ExeOwner | QFile::ExeUser);
        const QStringList files = QDir(m_data).entryList(QDir::Files);
        QVERIFY(files.contains(u"service.db"_s) && files.contains(u"ca-key.pem"_s));
        for (const QString& name : files) {
            QFile file(m_data + u'/' + name);
            QVERIFY(file.open(QIODevice::ReadOnly));
            QVERIFY2(!file.readAll().contains(m_token), qPrintable(name));
            if (name.startsWith(u"service.db"_s) || name.endsWith(u"key.pem"_s)) {
                QCOMPARE(file.permissions(), ownerOnly);
            }
        }
    }

    void theEndComesInOrderWithClientsConnected()
    {
        HttpExchange idle = m_service->connect();
        HttpExchange busy = m_service->connect();
        QVERIFY(!idle.hasEnded() && !busy.hasEnded());
        busy.send("GET /api/v1/me HTTP/1.1\r\nHost: x\r\nAuthorization: Bearer " + m_token + "\r\n");
        QCOMPARE(m_service->stop(), 0);
        QVERIFY(!QFileInfo::exists(m_data + u"/service.db-wal"_s)); // the database was closed
    }

private:
    [[nodiscard]] QJsonValue response(const QByteArray& path, const QByteArray& content) const
    {
        return m_service->post(path, content, m_token).json()[u"response"_s];
    }

    QTemporaryDir m_folder;
    QString m_data;
    QByteArray m_token;
    QByteArray m_otherToken;
    std::unique_ptr<ServiceProcess> m_service;
};

QUILLMATE_TEST(ServiceProgramTest, QCoreApplication)
#include "ServiceProgramTest.moc"
