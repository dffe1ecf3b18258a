#include "localservice/ServiceProcess.h"

#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace quillmate::localservice;

/// Signing in from outside, as a browser and a client do it, and the ways in which a form can be wrong.
class SignInTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_service = std::make_unique<ServiceProcess>(m_folder.filePath(QStringLiteral("service")));
        QVERIFY2(m_service->start(), m_service->standardError().constData());
    }

    void cleanupTestCase() { QCOMPARE(m_service->stop(), 0); }

    void aClientSeesTheTokenOnceTheFormIsSent()
    {
        const BegunSession session = beginSession(*m_service);
        QVERIFY(session.id.size() >= 22);
        const QByteArray poll = "/plugin-auth/session-request/" + session.id;
        QJsonObject waiting = m_service->get(poll).json();
        QCOMPARE(waiting[QStringLiteral("id")].toString().toUtf8(), session.id);
        QVERIFY(waiting[QStringLiteral("access_token")].isNull());

        const Reply page = loginPage(session);
        QCOMPARE(page.status, 200);
        const QByteArray policy = page.header("Content-Security-Policy");
        QVERIFY(policy.contains("default-src 'none'") && policy.contains("form-action 'self'") &&
                policy.contains("frame-ancestors 'none'") && !policy.contains("unsafe"));
        QCOMPARE(page.header("Cache-Control"), "no-store");
        QCOMPARE(page.header("X-Content-Type-Options"), "nosniff");
        QVERIFY(!page.body.contains("<script"));

        const Reply sent = postForm(
            session, "name=Anna+B%C3%A9+%3Cb%3E&email=+Anna%40Example.org&form_token=" + formTokenOf(page.body),
            "Origin: http://" + session.loginHost + "\r\nSec-Fetch-Site: same-origin\r\n");
        QCOMPARE(sent.status, 303);
        QCOMPARE(sent.header("Location"), session.loginPath);
        QVERIFY(loginPage(session).body.contains("You can close this page and go back to your mail."));

        const QByteArray token = m_service->get(poll).json()[QStringLiteral("access_token")].toString().toUtf8();
        QVERIFY(token.size() >= 22);
        // A client whose reply was lost asks again.
        QCOMPARE(m_service->get(poll).json()[QStringLiteral("access_token")].toString().toUtf8(), token);
        const QJsonObject me = m_service->get("/api/v1/me", token).json();
        QCOMPARE(me[QStringLiteral("email")].toString(), QStringLiteral("anna@example.org"));
        QCOMPARE(me[QStringLiteral("name")].toString(), QStringLiteral("Anna Bé <b>"));
    }

    void theFormKeepsWhatWasTypedAndSaysWhatIsWrong_data()
    {
        QTest::addColumn<QByteArray>("fields");
        QTest::addColumn<QByteArray>("sentence");
        QTest::addColumn<QByteArray>("kept");
        QTest::newRow("no name") << QByteArray("name=+&email=a%40b.org") << QByteArray("Please type your name.")
                                 << QByteArray("value=\"a@b.org\"");
        QTest::newRow("no address") << QByteArray("name=Anna&email=") << QByteArray("Please type your e-mail address.")
                                    << QByteArray("value=\"Anna\"");
        QTest::newRow("no domain") << QByteArray("name=Anna&email=anna") << QByteArray("whole e-mail address")
                                   << QByteArray("value=\"anna\"");
        QTest::newRow("markup") << QByteArray("name=%22%3E%3Cscript%3Ealert(1)%3C/script%3E&email=x")
                                << QByteArray("whole e-mail address")
                                << QByteArray("value=\"&quot;&gt;&lt;script&gt;alert(1)&lt;/script&gt;\"");
        QTest::newRow("nothing at all") << QByteArray("x=y") << QByteArray("Please type your name.")
                                        << QByteArray("Please type your e-mail address.");
    }

    void theFormKeepsWhatWasTypedAndSaysWhatIsWrong()
    {
        QFETCH(QByteArray, fields);
        QFETCH(QByteArray, sentence);
        QFETCH(QByteArray, kept);
        const BegunSession session = beginSession(*m_service);
        const QByteArray formToken = formTokenOf(loginPage(session).body);
        const Reply reply = postForm(session, fields + "&form_token=" + formToken);
        QCOMPARE(reply.status, 422);
        QVERIFY2(reply.body.contains(sentence) && reply.body.contains(kept), reply.body.constData());
        QVERIFY(reply.body.contains("aria-invalid=\"true\"") && !reply.body.contains("<script"));
        // The form can still be sent.
        QCOMPARE(postForm(session, "name=Anna&email=a%40b.org&form_token=" + formTokenOf(reply.body)).status, 303);
    }

    void aForgedFormSignsNobodyIn_data()
    {
        QTest::addColumn<QByteArray>("headers");
        QTest::addColumn<QByteArray>("formToken");
        QTest::addColumn<int>("status");
        const QByteArray right;
        QTest::newRow("wrong form token") << QByteArray() << QByteArray("AAAA") << 403;
        QTest::newRow("empty form token") << QByteArray() << QByteArray("-") << 403;
        QTest::newRow("foreign origin") << QByteArray("Origin: https://evil.example\r\n") << right << 403;
        QTest::newRow("origin of another port") << QByteArray("Origin: http://127.0.0.1:1\r\n") << right << 403;
        QTest::newRow("opaque origin") << QByteArray("Origin: null\r\n") << right << 403;
        QTest::newRow("cross-site fetch") << QByteArray("Sec-Fetch-Site: cross-site\r\n") << right << 403;
        QTest::newRow("same-site fetch") << QByteArray("Sec-Fetch-Site: same-site\r\n") << right << 403;
        QTest::newRow("rebound name") << QByteArray("Host: evil.example\r\n") << right << 421;
        QTest::newRow("rebound name with its origin")
            << QByteArray("Host: evil.example:80\r\nOrigin: http://evil.example:80\r\n") << right << 421;
        QTest::newRow("other content type") << QByteArray("Content-Type: text/plain\r\n") << right << 415;
    }

    void aForgedFormSignsNobodyIn()
    {
        QFETCH(QByteArray, headers);
        QFETCH(QByteArray, formToken);
        QFETCH(int, status);
        const BegunSession session = beginSession(*m_service);
        if (formToken.isEmpty()) {
            formToken = formTokenOf(loginPage(session).body);
            QVERIFY(!formToken.isEmpty());
        } else if (formToken == "-") {
            formToken.clear();
        }
        const QByteArray form = "name=Eve&email=eve%40evil.example&form_token=" + formToken;
        const bool ownType = headers.startsWith("Content-Type");
        const Reply reply = ownType ? HttpExchange::plain(session.loginPort)
                                          .request("POST " + session.loginPath +
                                                       " HTTP/1.1\r\nHost: " + session.loginHost + "\r\n" + headers,
                                                   form)
                                    : postForm(session, form, headers);
        QCOMPARE(reply.status, status);
        const QJsonObject poll = m_service->get("/plugin-auth/session-request/" + session.id).json();
        QVERIFY(poll[QStringLiteral("access_token")].isNull());
    }

    void aReboundNameDoesNotEvenSeeTheForm()
    {
        const Reply reply = loginPage(beginSession(*m_service), "Host: evil.example\r\n");
        QCOMPARE(reply.status, 421);
        QVERIFY(formTokenOf(reply.body).isEmpty());
    }

    void aRepeatedFormMakesNoSecondToken()
    {
        const BegunSession session = beginSession(*m_service);
        const QByteArray form = "name=Anna&email=anna%40example.org&form_token=" + formTokenOf(loginPage(session).body);
        QCOMPARE(postForm(session, form).status, 303);
        const QByteArray poll = "/plugin-auth/session-request/" + session.id;
        const QJsonObject first = m_service->get(poll).json();
        QCOMPARE(postForm(session, form).status, 303);
        QCOMPARE(postForm(session, "name=Eve&email=eve%40example.org&form_token=").status, 303);
        QCOMPARE(m_service->get(poll).json(), first);
        const QByteArray token = first[QStringLiteral("access_token")].toString().toUtf8();
        QCOMPARE(m_service->get("/api/v1/me", token).json()[QStringLiteral("name")].toString(), QStringLiteral("Anna"));
    }

    void aFormTokenFitsItsOwnSessionOnly()
    {
        const BegunSession mine = beginSession(*m_service);
        const BegunSession other = beginSession(*m_service);
        const QByteArray form = "name=Eve&email=eve%40example.org&form_token=" + formTokenOf(loginPage(other).body);
        QCOMPARE(postForm(mine, form).status, 403);
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

    void theSamePageAndFormWorkOverTls()
    {
        const BegunSession session = beginSession(*m_service);
        const Reply page = m_service->get(session.loginPath);
        QCOMPARE(page.status, 200);
        const QByteArray head = "POST " + session.loginPath +
                                " HTTP/1.1\r\nHost: " QUILLMATE_LIVE_HOST
                                "\r\nContent-Type: application/x-www-form-urlencoded\r\nOrigin: ";
        const QByteArray form = "name=Anna&email=anna%40example.org&form_token=" + formTokenOf(page.body);
        QCOMPARE(m_service->connect().request(head + "http://" QUILLMATE_LIVE_HOST "\r\n", form).status, 403);
        QCOMPARE(m_service->connect().request(head + "https://" QUILLMATE_LIVE_HOST "\r\n", form).status, 303);
    }

    void anOrdinaryClientGoesThroughTheWholeSignIn()
    {
        QNetworkAccessManager network;
        QSslConfiguration trust = QSslConfiguration::defaultConfiguration();
        trust.setCaCertificates({m_service->root()});
        const QString origin = QStringLiteral("https://127.0.0.1:%1").arg(m_service->port());
        const auto fetch = [&](const QUrl& url, const QByteArray& form = {}) {
            QNetworkRequest request(url);
            request.setSslConfiguration(trust);
            request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/x-www-form-urlencoded"));
            const std::unique_ptr<QNetworkReply> reply(form.isEmpty() ? network.get(request)
                                                                      : network.post(request, form));
            QSignalSpy(reply.get(), &QNetworkReply::finished).wait(30'000);
            return reply->readAll();
        };
        const QString create = origin + QStringLiteral("/plugin-auth/session-request/");
        const QJsonObject begun = Reply{200, {}, fetch(QUrl(create))}.json();
        const QUrl login(begun[QStringLiteral("login_url")].toString());
        const QByteArray form = "name=Anna&email=anna%40example.org&form_token=" + formTokenOf(fetch(login));
        QVERIFY(fetch(login, form).contains("You are signed in."));
        const QByteArray poll = fetch(QUrl(create + begun[QStringLiteral("id")].toString()));
        const QJsonObject done = Reply{200, {}, poll}.json();
        QVERIFY(!done[QStringLiteral("access_token")].toString().isEmpty());
    }

private:
    QTemporaryDir m_folder;
    std::unique_ptr<ServiceProcess> m_service;
};

QTEST_GUILESS_MAIN(SignInTest)
#include "SignInTest.moc"
