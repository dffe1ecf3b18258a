#include "server/http/HttpServer.h"
#include "server/HttpExchange.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

#include <atomic>
#include <filesystem>
#include <vector>

using namespace quillmate::server;

namespace
{

constexpr std::size_t bodyLimit = 600'000;

/// Takes bodies and says how long they were; "/slow" answers when it is let go, "/small" takes no more than 10 bytes.
class Handler : public RequestHandler
{
public:
    [[nodiscard]] Admission admit(const HttpRequest& head) const override
    {
        if (head.path == "/none") {
            return {errorResponse(404, "none")};
        }
        return {std::nullopt, head.path == "/small" ? 10 : bodyLimit, head.path == "/slow"};
    }
    [[nodiscard]] HttpResponse refusal(const HttpRequest&, const HttpResponse& failure) const override
    {
        return failure;
    }
    HttpResponse handle(const HttpRequest& request) override
    {
        if (request.path == "/slow") {
            ++begun;
            released.wait(false);
        }
        return jsonResponse(200, request.method + request.path + '?' + request.query + '[' +
                                     std::to_string(request.body.size()) + ']');
    }

    std::atomic<int> begun = 0;
    std::atomic<bool> released = false;
};

/// A server on a port of its own, without TLS.
struct Serving {
    explicit Serving(const HttpLimits& limits = {})
        : server(handler, limits)
        , port(server.listenForLoginPages().value())
    {
        if (!server.start()) {
            qFatal("the server does not start");
        }
    }

    ~Serving() { release(); }
    void release()
    {
        handler.released = true;
        handler.released.notify_all();
    }

    Handler handler;
    HttpServer server;
    quint16 port;
};

QByteArray post(const QByteArray& path, qsizetype length)
{
    return "POST " + path + " HTTP/1.1\r\nHost: h\r\nContent-Length: " + QByteArray::number(length) + "\r\n\r\n";
}

} // namespace

/// What the server makes of bytes, and what it takes on.
class HttpServerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requestsAreFramedAlikeHoweverTheyArrive()
    {
        const QByteArray get = "GET /a?b=%41+c HTTP/1.1\r\nHost: h\r\n";
        const QByteArray answered = "200 GET/a?b=%41+c[0]";
        const auto chunked = [](const QByteArray& path) {
            return "POST " + path + " HTTP/1.1\r\nHost: h\r\nTransfer-Encoding: chunked\r\n";
        };
        const std::vector<std::pair<QByteArray, QByteArray>> rows = {
            {get + "\r\n", answered},
            {"HEAD /a HTTP/1.1\r\nHost: h\r\n\r\n" + get + "\r\n", "200 9|" + answered},
            {"GET /%61 HTTP/1.1\r\nHost: h\r\n\r\n", "200 GET/%61?[0]"},
            {get + "Connection: Close\r\n\r\n", answered + " close"},
            {post("/p", 1) + "a" + post("/p", 2) + "bc", "200 POST/p?[1]|200 POST/p?[2]"},
            {chunked("/p") + "\r\n2\r\nab\r\n3;x=y\r\ncde\r\n0\r\nT: v\r\n\r\n" + get + "\r\n",
             "200 POST/p?[5]|" + answered},
            {post("/none", 3) + "abc" + get + "\r\n", "404|" + answered},
            {post("/small", 10) + "0123456789", "200 POST/small?[10]"},
            {post("/small", 11) + "0123456789a" + get + "\r\n", "413|" + answered},
            {post("/small", 900'000), "413 close"},
            {post("/small", 1).replace(": 1", ": 99999999999999999999"), "413 close"},
            {chunked("/small") + "\r\n8\r\n01234567\r\n3\r\nabc\r\n0\r\n\r\n", "413"},
            {chunked("/none") + "\r\n1\r\n", "404 close"},
            {post("/none", 3).chopped(2) + "Expect: 100-continue\r\n\r\n", "404 close"},
            {post("/p", 1).chopped(2) + "Content-Length: 2\r\n\r\nab", "400 close"},
            {post("/p", 1).replace(": 1", ": 1, 1") + "a", "400 close"},
            {chunked("/p") + "Content-Length: 3\r\n\r\n0\r\n\r\n", "400 close"},
            {chunked("/p").replace("chunked", "gzip, chunked") + "\r\n", "501 close"},
            {chunked("/p") + "Transfer-Encoding: chunked\r\n\r\n", "501 close"},
            {get + "X : y\r\n\r\n", "400 close"},
            {get + "X: a\x01\r\n\r\n", "400 close"},
            {"GET / HTTP/1.0\r\n\r\n", "400 close"},
            {get + "Host: a\r\n\r\n", "400 close"},
            {QByteArray(get).replace("/a", QByteArray("/a\0z", 4)) + "\r\n", "400 close"},
            {"GET http://h/ HTTP/1.1\r\nHost: h\r\n\r\n", "400 close"},
            {post("/p", 1).chopped(2) + "Expect: more\r\n\r\n", "417 close"},
            {get + "X: " + QByteArray(70'000, 'x'), "431 close"}};
        const Serving serving;
        for (const auto& [bytes, expected] : rows) {
            for (const qsizetype piece : {qsizetype(100'000), qsizetype(bytes.size() < 1'000 ? 7 : 30'000)}) {
                HttpExchange exchange = HttpExchange::plain(serving.port);
                for (qsizetype start = 0; start < bytes.size(); start += piece) {
                    exchange.send(bytes.mid(start, piece));
                }
                QByteArrayList outcome;
                while (outcome.size() <= expected.count('|')) {
                    const bool toHead = outcome.isEmpty() && bytes.startsWith("HEAD");
                    const Reply reply = exchange.receive(toHead);
                    const bool isLast = reply.header("Connection") == "close";
                    const QByteArray told = toHead ? reply.header("Content-Length") : reply.body;
                    outcome += QByteArray::number(reply.status) + (reply.status == 200 ? ' ' + told : QByteArray()) +
                               (isLast ? " close" : "");
                    QVERIFY(!isLast || exchange.waitForEnd());
                }
                QVERIFY2(outcome.join('|') == expected, bytes.left(200) + outcome.join('|'));
            }
        }
    }

    void descriptorsOfEndedConnectionsAreBounded()
    {
        const auto openFiles = [] {
            return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
        };
        const Serving serving;
        const auto before = openFiles();
        // Each is refused while it could still be sending, and stays.
        std::vector<HttpExchange> refused;
        while (refused.size() < 2 * HttpConnections::mostKept) {
            refused.push_back(HttpExchange::plain(serving.port));
            QCOMPARE(refused.back().request(post("/small", 900'000).chopped(2)).status, 413);
        }
        // Some may be about to be closed.
        constexpr std::size_t few = HttpConnections::mostKept / 2;
        QVERIFY(openFiles() <= before + refused.size() + HttpConnections::mostKept + few);
    }

    void allBodiesTogetherAreBounded()
    {
        HttpLimits limits;
        limits.bodyBytes = 1'000;
        Serving serving(limits);
        HttpExchange first = HttpExchange::plain(serving.port);
        first.send(post("/slow", 700) + QByteArray(700, 'a'));
        QTRY_COMPARE_WITH_TIMEOUT(serving.handler.begun, 1, 30'000); // It is counted until it is answered.
        const auto second = [&] {
            return HttpExchange::plain(serving.port).request(post("/p", 600) + QByteArray(600, 'b')).status;
        };
        QCOMPARE(second(), 503);
        serving.release();
        QCOMPARE(first.receive().body, "POST/slow?[700]");
        QCOMPARE(second(), 200);
    }

    void whatHasWaitedTooLongIsRefusedInstead()
    {
        HttpLimits limits;
        limits.longestWait = std::chrono::milliseconds(0);
        Serving serving(limits);
        const Reply reply = HttpExchange::plain(serving.port).request(post("/slow", 1) + "a");
        QCOMPARE(reply.status, 503);
        QCOMPARE(reply.header("Retry-After"), "30");
        QCOMPARE(serving.handler.begun, 0);
    }

    void aSlowHeadEndsItsConnectionAndASlowAnswerDoesNot()
    {
        HttpLimits limits;
        limits.requestTime = std::chrono::milliseconds(50);
        Serving serving(limits);
        HttpExchange answered = HttpExchange::plain(serving.port);
        answered.send(post("/slow", 1) + "a");
        QTRY_COMPARE_WITH_TIMEOUT(serving.handler.begun, 1, 30'000);
        HttpExchange slow = HttpExchange::plain(serving.port);
        slow.send("GET / HTTP/1.1\r\nHost");
        QTRY_VERIFY_WITH_TIMEOUT(slow.hasEnded(), 30'000);
        serving.release();
        QCOMPARE(answered.receive().status, 200);
    }

    void theEndWaitsForAnswersAndNotForEver()
    {
        HttpLimits limits;
        limits.shutDownTime = std::chrono::milliseconds(0);
        Serving serving(limits);
        HttpExchange running = HttpExchange::plain(serving.port);
        HttpExchange idle = HttpExchange::plain(serving.port);
        running.send(post("/slow", 1) + "a");
        QTRY_COMPARE_WITH_TIMEOUT(serving.handler.begun, 1, 30'000);
        QVERIFY(!serving.server.shutDown());
        QVERIFY(HttpExchange::plain(serving.port).waitForEnd());
        // What is asked now on a connection that was open is not begun: the library could not be stopped with it.
        QCOMPARE(idle.request(post("/slow", 1) + "a").status, 503);
        QCOMPARE(serving.handler.begun, 1);
        serving.release();
        const Reply reply = running.receive();
        QCOMPARE(reply.status, 200);
        QCOMPARE(reply.header("Connection"), "close");
        QTRY_VERIFY_WITH_TIMEOUT(serving.server.shutDown(), 30'000);
        QVERIFY(idle.waitForEnd());
    }
};

QUILLMATE_TEST(HttpServerTest, QCoreApplication)
#include "HttpServerTest.moc"
