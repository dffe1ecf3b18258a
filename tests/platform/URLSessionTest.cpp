#include "platform/foundation/URLSession.h"
#include "platform/foundation/URLCache.h"
#include "support/LogCapture.h"
#include "support/TestEnvironment.h"
#include "support/TestServer.h"

#include <QFileInfo>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <atomic>

using namespace quillmate;

class URLSessionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { m_server.reset(); }
    void exchanges_data();
    void exchanges();
    void requestOnTheWire();
    void brokenHeaders();
    void failures_data();
    void failures();
    void silenceTimesOut();
    void redirects_data();
    void redirects();
    void redirectLoop();
    void connectionsAreUsedAgain();
    void cache();
    void cacheBelongsToOneToken();

private:
    struct Exchange {
        std::optional<std::string> data;
        std::optional<HTTPURLResponse> response;
        std::optional<URLError> error;
        QThread* thread = nullptr;
    };
    static Exchange run(URLRequest request);
    static Exchange get(const std::string& url, const std::string& token = {});

    TestEnvironment m_environment;
    TestServer m_server;
    TestServer m_stranger{TestServer::Security::Stranger};
};

Q_DECLARE_METATYPE(quillmate::TestReply)

void URLSessionTest::initTestCase()
{
    NetworkEnvironment environment;
    for (const char* host : {"quillmate.example", "other.example", "unnamed.example"}) {
        environment.connectTo[host] = {"127.0.0.1", m_server.port()};
    }
    environment.connectTo["staging.quillmate.example"] = {"127.0.0.1", m_stranger.port()};
    environment.connectTo["refused.example"] = {"127.0.0.1", 1};
    environment.rootCertificateFiles = {TestEnvironment::certificateFile(QStringLiteral("ca.pem")).toStdString()};
    URLSession::configure(std::move(environment));
}

URLSessionTest::Exchange URLSessionTest::run(URLRequest request)
{
    Exchange exchange;
    std::atomic<int> completions = 0;
    {
        const auto task = URLSession::shared().dataTask(std::move(request), [&](auto data, auto response, auto error) {
            exchange = {std::move(data), std::move(response), std::move(error), QThread::currentThread()};
            ++completions;
        });
        task->resume();
        task->resume();
    }
    [&] { QTRY_COMPARE_WITH_TIMEOUT(completions.load(), 1, 30'000); }();
    return exchange;
}

URLSessionTest::Exchange URLSessionTest::get(const std::string& url, const std::string& token)
{
    URLRequest request{URL::parseAbsolute(url).value()};
    if (!token.empty()) {
        request.headers.emplace_back("Authorization", "Bearer " + token);
    }
    return run(std::move(request));
}

void URLSessionTest::exchanges_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("200") << 200 << QByteArray("hello");
    QTest::newRow("200 empty") << 200 << QByteArray("");
    QTest::newRow("204") << 204 << QByteArray("");
    for (const int status : {300, 304, 400, 401, 403, 404, 407, 409, 413, 418, 429, 500, 502, 503, 599}) {
        QTest::newRow(QByteArray::number(status).constData())
            << status << QByteArray(status == 304 ? "" : "{\"error\":1}");
    }
    QTest::newRow("4 MB of any bytes") << 200 << QByteArray("\x00\xff\r\n", 4).repeated(1'000'000);
}

void URLSessionTest::exchanges()
{
    QFETCH(const int, status);
    QFETCH(const QByteArray, body);
    m_server.reply("GET /x", TestReply{status, body.toStdString()});
    const auto exchange = get("https://quillmate.example/x");
    QVERIFY2(!exchange.error, exchange.error ? exchange.error->description().c_str() : "");
    QCOMPARE(exchange.response->statusCode, status);
    QVERIFY(exchange.data == body.toStdString());
    QVERIFY(exchange.thread != thread());
}

void URLSessionTest::requestOnTheWire()
{
    m_server.reply("POST /x?y=1", "{}");
    const auto body = std::make_shared<const std::string>(std::string(3'000'000, 'b'));
    run({URL::parseAbsolute("https://quillmate.example:9443/x?y=1#part").value(),
         "POST",
         {{"Content-Type", "application/json"}, {"Authorization", "Bearer "}},
         body});
    const auto request = m_server.requests().front();
    QCOMPARE(request.headers.at("host"), std::string("quillmate.example:9443"));
    QCOMPARE(request.headers.at("authorization"), std::string("Bearer "));
    QCOMPARE(request.headers.at("content-type"), std::string("application/json"));
    QVERIFY(request.headers.at("user-agent").starts_with("Quillmate/"));
    QVERIFY(!request.headers.contains("cookie"));
    QVERIFY(request.body == *body);
}

void URLSessionTest::brokenHeaders()
{
    const auto exchange = get("https://quillmate.example/x", "a\r\nX-Evil: 1");
    QCOMPARE(exchange.error->kind, URLError::Kind::BadRequest);
    QVERIFY(m_server.requests().empty());
}

void URLSessionTest::failures_data()
{
    QTest::addColumn<QString>("host");
    QTest::addColumn<TestReply>("reply");
    QTest::addColumn<int>("kind");
    const auto row = [](const char* name, const char* host, TestReply::Manner manner, URLError::Kind kind) {
        QTest::newRow(name) << QString::fromLatin1(host) << TestReply{200, "half and half", {}, manner}
                            << static_cast<int>(kind);
    };
    using Manner = TestReply::Manner;
    using Kind = URLError::Kind;
    row("refused", "refused.example", Manner::Ordinary, Kind::CannotConnectToHost);
    row("nowhere", "nowhere.invalid", Manner::Ordinary, Kind::CannotFindHost);
    row("cut", "quillmate.example", Manner::CutInBody, Kind::NetworkConnectionLost);
    row("closed", "quillmate.example", Manner::CloseAtOnce, Kind::NetworkConnectionLost);
    row("a root that nobody knows", "staging.quillmate.example", Manner::Ordinary, Kind::SecureConnectionFailed);
    row("a name that the certificate lacks", "unnamed.example", Manner::Ordinary, Kind::SecureConnectionFailed);
}

void URLSessionTest::failures()
{
    QFETCH(const QString, host);
    QFETCH(const TestReply, reply);
    QFETCH(const int, kind);
    m_server.reply("GET /x", reply);
    const auto exchange = get("https://" + host.toStdString() + "/x");
    QVERIFY(exchange.error);
    QCOMPARE(QByteArray::fromStdString(std::string(URLError::name(exchange.error->kind))),
             QByteArray::fromStdString(std::string(URLError::name(static_cast<URLError::Kind>(kind)))));
    QVERIFY(!exchange.data && !exchange.response);
    QVERIFY(QString::fromStdString(exchange.error->localizedDescription).contains(host));
    QVERIFY(exchange.error->description().find('\n') == std::string::npos);
}

void URLSessionTest::silenceTimesOut()
{
    m_server.reply("GET /x", TestReply{200, "", {}, TestReply::Manner::Silence});
    URLRequest request{URL::parseAbsolute("https://quillmate.example/x").value()};
    QCOMPARE(request.timeoutInterval, 60.0);
    request.timeoutInterval = 0.3;
    const auto exchange = run(std::move(request));
    QVERIFY(exchange.error);
    QCOMPARE(exchange.error->kind, URLError::Kind::TimedOut);
}

void URLSessionTest::redirects_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("location");
    QTest::addColumn<QString>("arrives"); // "METHOD host", or the error
    QTest::addColumn<bool>("token");
    QTest::newRow("same host") << "GET" << 302 << "/y"
                               << "GET quillmate.example" << true;
    QTest::newRow("another host") << "GET" << 302 << "https://other.example/y"
                                  << "GET other.example" << false;
    QTest::newRow("another port") << "GET" << 307 << "https://quillmate.example:9/y"
                                  << "GET quillmate.example:9" << false;
    QTest::newRow("a POST after 301") << "POST" << 301 << "/y"
                                      << "GET quillmate.example" << true;
    QTest::newRow("a POST after 303") << "POST" << 303 << "/y"
                                      << "GET quillmate.example" << true;
    QTest::newRow("a POST after 308") << "POST" << 308 << "/y"
                                      << "POST quillmate.example" << true;
    QTest::newRow("down to http") << "GET" << 302 << "http://quillmate.example/y"
                                  << "insecureRedirect" << false;
    QTest::newRow("to a file") << "GET" << 302 << "file:///y"
                               << "insecureRedirect" << false;
    QTest::newRow("to no URL") << "GET" << 302 << "/a b"
                               << "302" << false;
}

void URLSessionTest::redirects()
{
    QFETCH(const QString, method);
    QFETCH(const int, status);
    QFETCH(const QString, location);
    QFETCH(const QString, arrives);
    QFETCH(const bool, token);
    m_server.reply(method.toStdString() + " /x", {status, "elsewhere", {{"Location", location.toStdString()}}});
    m_server.reply("GET /y", "there");
    m_server.reply("POST /y", "there");
    const bool post = method == QLatin1String("POST");
    const auto exchange = run({URL::parseAbsolute("https://quillmate.example/x").value(),
                               method.toStdString(),
                               {{"Content-Type", "text/plain"}, {"Authorization", "Bearer t"}},
                               post ? std::make_shared<const std::string>("body") : nullptr});
    if (exchange.error) {
        QCOMPARE(QString::fromStdString(std::string(URLError::name(exchange.error->kind))), arrives);
        QCOMPARE(m_server.requests().size(), std::size_t(1));
        return;
    }
    if (m_server.requests().size() == 1) {
        QCOMPARE(QString::number(exchange.response->statusCode), arrives);
        return;
    }
    QCOMPARE(exchange.data, std::optional<std::string>("there"));
    const auto last = m_server.requests().back();
    QCOMPARE(QString::fromStdString(last.method + " " + last.headers.at("host")), arrives);
    QCOMPARE(last.headers.contains("authorization"), token);
    QCOMPARE(last.body, last.method == "POST" ? std::string("body") : std::string());
    QCOMPARE(exchange.response->url, location.startsWith(QLatin1Char('/'))
                                         ? "https://quillmate.example" + location.toStdString()
                                         : location.toStdString());
}

void URLSessionTest::redirectLoop()
{
    m_server.reply("GET /x", {302, "", {{"Location", "/x"}}});
    QCOMPARE(get("https://quillmate.example/x").error->kind, URLError::Kind::TooManyRedirects);
    QCOMPARE(m_server.requests().size(), std::size_t(21));
}

void URLSessionTest::connectionsAreUsedAgain()
{
    m_server.reply("GET /x", "1");
    get("https://quillmate.example/x", "t");
    const int before = m_server.connections();
    for (int i = 0; i < 5; ++i) {
        get("https://quillmate.example/x", "t");
    }
    QCOMPARE(m_server.connections(), before);
}

void URLSessionTest::cache()
{
    const TestReply kept{200, "first", {{"Cache-Control", "max-age=3600"}}};
    m_server.reply("GET /kept", kept);
    m_server.reply("GET /kept", TestReply{200, "second", {{"Cache-Control", "max-age=3600"}}});
    m_server.reply("GET /fresh", TestReply{200, "first", {{"Cache-Control", "no-store"}}});
    m_server.reply("GET /fresh", "second");
    m_server.reply("GET /unsaid", "first");
    m_server.reply("GET /unsaid", TestReply{503, "down"});
    QCOMPARE(get("https://quillmate.example/kept").data, std::optional<std::string>("first"));
    QCOMPARE(get("https://quillmate.example/kept").data, std::optional<std::string>("first"));
    QCOMPARE(get("https://quillmate.example/fresh").data, std::optional<std::string>("first"));
    QCOMPARE(get("https://quillmate.example/fresh").data, std::optional<std::string>("second"));
    // A reply that does not say how long it holds does not stand in for a failure.
    QCOMPARE(get("https://quillmate.example/unsaid").response->statusCode, 200);
    QCOMPARE(get("https://quillmate.example/unsaid").response->statusCode, 503);
    // The two hosts are one address here.
    QCOMPARE(get("https://other.example/kept").data, std::optional<std::string>("second"));

    QCOMPARE(QFileInfo(TestEnvironment::cacheFolder()).permissions() & QFile::Permissions(0x0077),
             QFile::Permissions());
    m_server.reset();
    m_server.reply("GET /kept", "after");
    URLCache::shared().removeAllCachedResponses();
    QCOMPARE(get("https://quillmate.example/kept").data, std::optional<std::string>("after"));
}

void URLSessionTest::cacheBelongsToOneToken()
{
    const auto reply = [](const char* body) { return TestReply{200, body, {{"Cache-Control", "max-age=3600"}}}; };
    m_server.reply("GET /mine", reply("ana's"));
    m_server.reply("GET /mine", reply("ben's"));
    m_server.reply("GET /mine", reply("nobody's"));
    QCOMPARE(get("https://quillmate.example/mine", "ana").data, std::optional<std::string>("ana's"));
    QCOMPARE(get("https://quillmate.example/mine", "ben").data, std::optional<std::string>("ben's"));
    QCOMPARE(get("https://quillmate.example/mine").data, std::optional<std::string>("nobody's"));
    QCOMPARE(get("https://quillmate.example/mine", "ana").data, std::optional<std::string>("ana's"));
    QCOMPARE(m_server.requests().size(), std::size_t(3));
}

QTEST_GUILESS_MAIN(URLSessionTest)
#include "URLSessionTest.moc"
