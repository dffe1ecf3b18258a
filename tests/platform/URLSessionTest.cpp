#include "platform/foundation/net/URLSession.h"
#include "platform/foundation/net/URLCache.h"
#include "support/ProgramRun.h"
#include "support/TestEnvironment.h"
#include "support/TestProgram.h"
#include "support/TestServer.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QThread>

#include <atomic>

using namespace quillmate;

namespace
{

// Hosts that the certificates name.
const std::string host = serviceHosts().front().toLower().toStdString();
const std::string strangeHost = serviceHosts().at(1).toLower().toStdString();
const std::string origin = "https://" + host;

} // namespace

class URLSessionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        NetworkEnvironment environment;
        for (const std::string& name : {host, std::string("other.example"), std::string("unnamed.example")}) {
            environment.connectTo[name] = {"127.0.0.1", m_server.port()};
        }
        environment.connectTo[strangeHost] = {"127.0.0.1", m_stranger.port()};
        environment.connectTo["refused.example"] = {"127.0.0.1", 1};
        environment.rootCertificateFiles = {TestEnvironment::certificateFile(QStringLiteral("ca.pem")).toStdString()};
        URLSession::configure(std::move(environment));
    }

    void init() { m_server.reset(); }
    void exchanges()
    {
        const std::pair<int, std::string> rows[] = {
            {200, "hello"},
            {200, ""},
            {204, ""},
            {300, "x"},
            {304, ""},
            {401, "{\"error\":1}"},
            {404, "x"},
            {407, "x"},
            {503, "{\"error\":1}"},
            {599, "x"},
            {200, QByteArray("\x00\xff\r\n", 4).repeated(1'000'000).toStdString()},
        };
        for (const auto& [status, body] : rows) {
            m_server.reset();
            m_server.reply("GET /x", TestReply{status, body});
            const auto exchange = get(origin + "/x");
            QVERIFY2(!exchange.error, exchange.error ? exchange.error->description().c_str() : "");
            QCOMPARE(exchange.response->statusCode, status);
            QVERIFY(exchange.data == body);
            QVERIFY(exchange.thread != thread());
        }
    }

    void requestOnTheWire()
    {
        m_server.reply("POST /x?y=1", "{}");
        const auto body = std::make_shared<const std::string>(std::string(3'000'000, 'b'));
        run({URL::parseAbsolute(origin + ":9443/x?y=1#part").value(),
             "POST",
             {{"Content-Type", "application/json"}, {"Authorization", "Bearer "}},
             body});
        const auto request = m_server.requests().front();
        QCOMPARE(request.headers.at("host"), host + ":9443");
        QCOMPARE(request.headers.at("authorization"), std::string("Bearer "));
        QCOMPARE(request.headers.at("content-type"), std::string("application/json"));
        QVERIFY(request.headers.at("user-agent").starts_with("Quillmate/"));
        QVERIFY(!request.headers.contains("cookie"));
        QVERIFY(request.body == *body);
    }

    void brokenHeaders()
    {
        const auto exchange = get(origin + "/x", "a\r\nX-Evil: 1");
        QCOMPARE(exchange.error->kind, URLError::Kind::BadRequest);
        QVERIFY(m_server.requests().empty());
    }

    void failures()
    {
        using Manner = TestReply::Manner;
        using Kind = URLError::Kind;
        const struct {
            std::string host;
            Manner manner;
            Kind kind;
        } rows[] = {
            {"refused.example", Manner::Ordinary, Kind::CannotConnectToHost},
            {"nowhere.invalid", Manner::Ordinary, Kind::CannotFindHost},
            {host, Manner::CutInBody, Kind::NetworkConnectionLost},
            {host, Manner::CloseAtOnce, Kind::NetworkConnectionLost},
            {host, Manner::Silence, Kind::TimedOut},
            {strangeHost, Manner::Ordinary, Kind::SecureConnectionFailed},
            {"unnamed.example", Manner::Ordinary, Kind::SecureConnectionFailed}, // A name that the certificate lacks.
        };
        for (const auto& row : rows) {
            m_server.reset();
            m_server.reply("GET /x", TestReply{200, "half and half", {}, row.manner});
            URLRequest request{URL::parseAbsolute("https://" + row.host + "/x").value()};
            QCOMPARE(request.timeoutInterval, 60.0);
            request.timeoutInterval = row.manner == Manner::Silence ? 0.3 : request.timeoutInterval;
            const auto exchange = run(std::move(request));
            QVERIFY2(exchange.error, row.host.c_str());
            QCOMPARE(std::string(URLError::name(exchange.error->kind)), std::string(URLError::name(row.kind)));
            QVERIFY(!exchange.data && !exchange.response);
            QVERIFY(exchange.error->localizedDescription.find(row.host) != std::string::npos);
            QVERIFY(exchange.error->description().find('\n') == std::string::npos);
        }
    }

    void redirects()
    {
        const struct {
            std::string method;
            int status;
            std::string location;
            std::string arrives; // "METHOD host", or the error or status that is told
            bool token;
        } rows[] = {
            {"GET", 302, "/y", "GET " + host, true},
            {"GET", 302, "https://other.example/y", "GET other.example", false},
            {"GET", 307, origin + ":9/y", "GET " + host + ":9", false},
            {"POST", 301, "/y", "GET " + host, true},
            {"POST", 303, "/y", "GET " + host, true},
            {"POST", 308, "/y", "POST " + host, true},
            {"GET", 302, "http://" + host + "/y", "insecureRedirect", false},
            {"GET", 302, "file:///y", "insecureRedirect", false},
            {"GET", 302, "/a b", "302", false},
        };
        for (const auto& row : rows) {
            m_server.reset();
            m_server.reply(row.method + " /x", {row.status, "elsewhere", {{"Location", row.location}}});
            m_server.reply("GET /y", "there");
            m_server.reply("POST /y", "there");
            const auto exchange = run({URL::parseAbsolute(origin + "/x").value(),
                                       row.method,
                                       {{"Content-Type", "text/plain"}, {"Authorization", "Bearer t"}},
                                       row.method == "POST" ? std::make_shared<const std::string>("body") : nullptr});
            const auto last = m_server.requests().back();
            if (m_server.requests().size() == 1) {
                QCOMPARE(exchange.error ? std::string(URLError::name(exchange.error->kind))
                                        : std::to_string(exchange.response->statusCode),
                         row.arrives);
                continue;
            }
            QCOMPARE(exchange.data, std::optional<std::string>("there"));
            QCOMPARE(last.method + " " + last.headers.at("host"), row.arrives);
            QCOMPARE(last.headers.contains("authorization"), row.token);
            QCOMPARE(last.body, std::string(last.method == "POST" ? "body" : ""));
            QCOMPARE(exchange.response->url, row.location.starts_with('/') ? origin + row.location : row.location);
        }
    }

    void redirectLoop()
    {
        m_server.reply("GET /x", {302, "", {{"Location", "/x"}}});
        QCOMPARE(get(origin + "/x").error->kind, URLError::Kind::TooManyRedirects);
        QCOMPARE(m_server.requests().size(), std::size_t(21));
    }

    void connectionsAreUsedAgain()
    {
        m_server.reply("GET /x", "1");
        get(origin + "/x", "t");
        const int before = m_server.connections();
        for (int i = 0; i < 5; ++i) {
            get(origin + "/x", "t");
        }
        QCOMPARE(m_server.connections(), before);
    }

    void cache()
    {
        const TestReply kept{200, "first", {{"Cache-Control", "max-age=3600"}}};
        m_server.reply("GET /kept", kept);
        m_server.reply("GET /kept", TestReply{200, "second", {{"Cache-Control", "max-age=3600"}}});
        m_server.reply("GET /fresh", TestReply{200, "first", {{"Cache-Control", "no-store"}}});
        m_server.reply("GET /fresh", "second");
        m_server.reply("GET /unsaid", "first");
        m_server.reply("GET /unsaid", TestReply{503, "down"});
        QCOMPARE(get(origin + "/kept").data, std::optional<std::string>("first"));
        QCOMPARE(get(origin + "/kept").data, std::optional<std::string>("first"));
        QCOMPARE(get(origin + "/fresh").data, std::optional<std::string>("first"));
        QCOMPARE(get(origin + "/fresh").data, std::optional<std::string>("second"));
        // A reply that does not say how long it holds does not stand in for a failure.
        QCOMPARE(get(origin + "/unsaid").response->statusCode, 200);
        QCOMPARE(get(origin + "/unsaid").response->statusCode, 503);
        // The two hosts are one address here.
        QCOMPARE(get("https://other.example/kept").data, std::optional<std::string>("second"));

        QCOMPARE(QFileInfo(TestEnvironment::cacheFolder()).permissions() & QFile::Permissions(0x0077),
                 QFile::Permissions());
        m_server.reset();
        m_server.reply("GET /kept", "after");
        URLCache::shared().removeAllCachedResponses();
        QCOMPARE(get(origin + "/kept").data, std::optional<std::string>("after"));
    }

    void cacheBelongsToOneToken()
    {
        const auto reply = [](const char* body) { return TestReply{200, body, {{"Cache-Control", "max-age=3600"}}}; };
        m_server.reply("GET /mine", reply("ana's"));
        m_server.reply("GET /mine", reply("ben's"));
        m_server.reply("GET /mine", reply("nobody's"));
        QCOMPARE(get(origin + "/mine", "ana").data, std::optional<std::string>("ana's"));
        QCOMPARE(get(origin + "/mine", "ben").data, std::optional<std::string>("ben's"));
        QCOMPARE(get(origin + "/mine").data, std::optional<std::string>("nobody's"));
        QCOMPARE(get(origin + "/mine", "ana").data, std::optional<std::string>("ana's"));
        QCOMPARE(m_server.requests().size(), std::size_t(3));
    }

private:
    struct Exchange {
        std::optional<std::string> data;
        std::optional<HTTPURLResponse> response;
        std::optional<URLError> error;
        QThread* thread = nullptr;
    };
    static Exchange run(URLRequest request)
    {
        Exchange exchange;
        std::atomic<int> completions = 0;
        {
            const auto task =
                URLSession::shared().dataTask(std::move(request), [&](auto data, auto response, auto error) {
                    exchange = {std::move(data), std::move(response), std::move(error), QThread::currentThread()};
                    ++completions;
                });
            task->resume();
            task->resume();
        }
        [&] { QTRY_COMPARE_WITH_TIMEOUT(completions.load(), 1, 30'000); }();
        return exchange;
    }

    static Exchange get(const std::string& url, const std::string& token = {})
    {
        URLRequest request{URL::parseAbsolute(url).value()};
        if (!token.empty()) {
            request.headers.emplace_back("Authorization", "Bearer " + token);
        }
        return run(std::move(request));
    }

    TestEnvironment m_environment;
    TestServer m_server;
    TestServer m_stranger{TestServer::Security::Stranger};
};

QUILLMATE_TEST(URLSessionTest, QCoreApplication)
#include "URLSessionTest.moc"
