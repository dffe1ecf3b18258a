#include "platform/foundation/net/URLSession.h"
#include "platform/foundation/net/URLCache.h"
#include "platform/foundation/net/URLSessionThread.h"
#include "support/ProgramRun.h"
#include "support/TestEnvironment.h"
#include "support/TestProgram.h"
#include "support/TestServer.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QThread>

#include <atomic>

#include <zlib.h>

using namespace quillmate;

namespace
{

// Hosts that the certificates name.
const std::string host = serviceHosts().front().toLower().toStdString();
const std::string strangeHost = serviceHosts().at(1).toLower().toStdString();
const std::string origin = "https://" + host;

std::atomic<int> milliseconds = 0; // What the session's clock shows.

std::string gzip(const std::string& content)
{
    z_stream stream{};
    std::string file(content.size() + 1'000, '\0');
    deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, MAX_WBITS + 16, MAX_MEM_LEVEL, Z_DEFAULT_STRATEGY);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
    stream.avail_in = static_cast<uInt>(content.size());
    stream.next_out = reinterpret_cast<Bytef*>(file.data());
    stream.avail_out = static_cast<uInt>(file.size());
    deflate(&stream, Z_FINISH);
    file.resize(file.size() - stream.avail_out);
    deflateEnd(&stream);
    return file;
}

} // namespace

class URLSessionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(QDir().mkpath(TestEnvironment::cacheFolder() + QStringLiteral("/of an earlier version")));
        useLimits(m_limits);
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
            {"POST", 302, "https://other.example/y", "GET other.example", false},
            {"POST", 307, "https://other.example/y", "foreignRedirect", false},
            {"POST", 308, origin + ":9/y", "foreignRedirect", false},
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

    void waitsUntilTheNetworkIsKnown()
    {
        m_server.reply("GET /x", TestReply{200, "x"});
        std::atomic<int> asked = 0;
        std::atomic<bool> isThere = false;
        useLimits(m_limits);
        const NetworkEnvironment known = environmentOfServers();
        URLSession::configureWhenNeeded([&] {
            ++asked;
            if (isThere) {
                URLSession::configure(known);
            } else {
                URLSession::refuse("Nobody is there.");
            }
        });
        const URLRequest request{URL::parseAbsolute(origin + "/x").value()};
        for (const Exchange& refused : runAll({request, request})) {
            QVERIFY(refused.error && refused.error->kind == URLError::Kind::CannotConnectToHost);
            QCOMPARE(refused.error->localizedDescription, std::string("Nobody is there."));
        }
        isThere = true;
        for (const Exchange& answered : runAll({request, request, request})) {
            QCOMPARE(outcome(answered), std::string("200 x"));
        }
        QCOMPARE(outcome(get(origin + "/x")), std::string("200 x"));
        QVERIFY(asked >= 2 && asked <= 3);

        // One that has gone for good is asked for no more, and what replaces it is found.
        NetworkEnvironment gone = known;
        gone.connectTo[host] = {"127.0.0.1", 1};
        URLSession::configure(gone);
        QVERIFY(get(origin + "/x").error);
        URLSession::configure(known);
        QCOMPARE(outcome(get(origin + "/x")), std::string("200 x"));
        useLimits(m_limits);
    }

    void speaksNoHttp2()
    {
        m_server.reply("GET /x", "1");
        QCOMPARE(outcome(get("https://127.0.0.1:" + std::to_string(m_server.port()) + "/x")), std::string("200 1"));
    }

    void requestsThatNeverLeftAreSentAgain()
    {
        const struct {
            int refusals;
            const char* outcome;
            int connections;
            std::size_t requests;
        } rows[] = {{0, "200 done", 1, 1}, {2, "200 done", 3, 1}, {3, "networkConnectionLost", 3, 0}};
        for (const auto& row : rows) {
            for (const bool posts : {false, true}) {
                useLimits(m_limits);
                m_server.reset();
                m_server.reply("GET /x", "done");
                m_server.reply("POST /x", "done");
                m_server.refuseConnections(row.refusals);
                const int before = m_server.connections();
                QCOMPARE(outcome(posts ? post(origin + "/x", "body") : get(origin + "/x")), std::string(row.outcome));
                QCOMPARE(m_server.connections() - before, row.connections);
                QCOMPARE(m_server.requests().size(), row.requests);
            }
        }
    }

    void whatLeftIsNeverSentAgain()
    {
        for (const std::string method : {"GET", "POST"}) {
            m_server.reset();
            m_server.reply(method + " /x", TestReply{.manner = TestReply::Manner::CloseAtOnce});
            QCOMPARE(outcome(method == "GET" ? get(origin + "/x") : post(origin + "/x", "body")),
                     std::string("networkConnectionLost"));
            QCOMPARE(m_server.requests().size(), std::size_t(1));
        }
    }

    void oneBrokenReplyCostsNoOther()
    {
        m_server.reply("GET /cut", TestReply{200, "half and half", {}, TestReply::Manner::CutInBody});
        std::vector<URLRequest> requests{URLRequest{URL::parseAbsolute(origin + "/cut").value()}};
        for (int i = 0; i < 12; ++i) {
            const std::string path = "/" + std::to_string(i);
            m_server.reply("GET " + path, path);
            requests.push_back(URLRequest{URL::parseAbsolute(origin + path).value()});
        }
        const auto exchanges = runAll(requests);
        QCOMPARE(outcome(exchanges.front()), std::string("networkConnectionLost"));
        for (std::size_t i = 1; i < exchanges.size(); ++i) {
            QCOMPARE(outcome(exchanges[i]), "200 /" + std::to_string(i - 1));
        }
    }

    void oddServers()
    {
        using Manner = TestReply::Manner;
        const std::string text(3'000, 't');
        const std::vector<std::pair<std::string, std::string>> longHead(90, {"X", text});
        const std::vector<std::pair<std::string, std::string>> manyHeaders(120, {"X", "1"});
        const auto coded = [](const char* coding, std::string body) {
            return TestReply{200, std::move(body), {{"Content-Encoding", coding}}};
        };
        std::string broken = gzip(text);
        broken[broken.size() / 2] ^= 1;
        const struct {
            TestReply reply;
            std::string outcome;
        } rows[] = {
            {{200, "told", {}, Manner::HintsFirst}, "badServerResponse"},
            {{200, "told", {}, Manner::NotifyEnd}, "200 told"},
            {{200, "told", {}, Manner::Drip}, "timedOut"},
            {{200, "told", longHead}, "dataTooLarge"},
            {{200, "told", manyHeaders}, "dataTooLarge"},
            {{200, "told", {longHead.begin(), longHead.begin() + 80}}, "200 told"},
            {coded("gzip", gzip(text)), "200 " + text},
            {coded("gzip", ""), "200 "},
            {coded("gzip", broken), "badServerResponse"},
            {coded("gzip", gzip(text).substr(0, 20)), "badServerResponse"},
            {coded("gzip", gzip(std::string(50'000'000, '\0'))), "badServerResponse"},
            {coded("br", text), "badServerResponse"},
        };
        auto limits = m_limits;
        limits.longestReply = std::chrono::seconds(2);
        useLimits(limits);
        for (const auto& row : rows) {
            m_server.reset();
            m_server.reply("POST /x", row.reply);
            m_server.reply("POST /y", "next");
            m_server.reply("GET /y", "next");
            QCOMPARE(QString::fromStdString(outcome(post(origin + "/x", "body"))), QString::fromStdString(row.outcome));
            QCOMPARE(outcome(post(origin + "/y", "body")), std::string("200 next"));
            QCOMPARE(outcome(get(origin + "/y")), std::string("200 next"));
            QCOMPARE(m_server.requests().size(), std::size_t(3));
        }
        useLimits(m_limits);
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

        URLCache::shared().removeAllCachedResponses();
        m_server.reset();
        m_server.reply("GET /kept", TestReply{200, "third", {{"Cache-Control", "max-age=3600"}}});
        m_server.reply("GET /kept", "fourth");
        QCOMPARE(get(origin + "/kept").data, std::optional<std::string>("third"));
        milliseconds += 3'599'999;
        QCOMPARE(get(origin + "/kept").data, std::optional<std::string>("third"));
        milliseconds += 1;
        QCOMPARE(get(origin + "/kept").data, std::optional<std::string>("fourth"));
    }

    void nothingIsKeptOnDisk()
    {
        m_server.reply("GET /plugin-auth/session-request/1",
                       TestReply{200, R"({"access_token":"secret"})", {{"Cache-Control", "max-age=3600"}}});
        QCOMPARE(get(origin + "/plugin-auth/session-request/1").response->statusCode, 200);
        QVERIFY(!QFileInfo::exists(TestEnvironment::cacheFolder()));
    }

    void whatIsUnderWayIsNotKept()
    {
        m_server.reply("GET /late", TestReply{200, "first", {{"Cache-Control", "max-age=3600"}}});
        m_server.reply("GET /late", "second");
        auto held = m_server.hold();
        std::atomic<bool> ended = false;
        URLSession::shared()
            .dataTask(URLRequest{URL::parseAbsolute(origin + "/late").value()}, [&](auto, auto, auto) { ended = true; })
            ->resume();
        URLCache::shared().removeAllCachedResponses();
        held.unlock();
        QTRY_VERIFY(ended);
        QCOMPARE(get(origin + "/late").data, std::optional<std::string>("second"));
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
    void useLimits(NetworkLimits limits)
    {
        URLSessionThread::stop();
        URLSession::configure(environmentOfServers(), std::move(limits));
    }

    NetworkEnvironment environmentOfServers() const
    {
        NetworkEnvironment environment;
        for (const std::string& name : {host, std::string("other.example"), std::string("unnamed.example")}) {
            environment.connectTo[name] = {"127.0.0.1", m_server.port()};
        }
        environment.connectTo[strangeHost] = {"127.0.0.1", m_stranger.port()};
        environment.connectTo["refused.example"] = {"127.0.0.1", 1};
        environment.rootCertificateFiles = {TestEnvironment::certificateFile(QStringLiteral("ca.pem")).toStdString()};
        return environment;
    }

    struct Exchange {
        std::optional<std::string> data;
        std::optional<HTTPURLResponse> response;
        std::optional<URLError> error;
        QThread* thread = nullptr;
    };
    static std::vector<Exchange> runAll(const std::vector<URLRequest>& requests)
    {
        std::vector<Exchange> exchanges(requests.size());
        std::atomic<std::size_t> completions = 0;
        for (std::size_t i = 0; i < requests.size(); ++i) {
            const auto task = URLSession::shared().dataTask(requests[i], [&, i](auto data, auto response, auto error) {
                exchanges[i] = {std::move(data), std::move(response), std::move(error), QThread::currentThread()};
                ++completions;
            });
            task->resume();
            task->resume();
        }
        [&] { QTRY_COMPARE_WITH_TIMEOUT(completions.load(), requests.size(), 30'000); }();
        return exchanges;
    }

    static Exchange run(const URLRequest& request) { return runAll({request}).front(); }

    static std::string outcome(const Exchange& exchange)
    {
        return exchange.error ? std::string(URLError::name(exchange.error->kind))
                              : std::to_string(exchange.response->statusCode) + ' ' + *exchange.data;
    }

    static Exchange post(const std::string& url, const std::string& body)
    {
        return run({URL::parseAbsolute(url).value(),
                    "POST",
                    {{"Content-Type", "text/plain"}},
                    std::make_shared<const std::string>(body)});
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
    const NetworkLimits m_limits{.now = [] { return std::chrono::milliseconds(milliseconds.load()); }};
    TestServer m_server;
    TestServer m_stranger{TestServer::Security::Stranger};
};

QUILLMATE_TEST(URLSessionTest, QCoreApplication)
#include "URLSessionTest.moc"
