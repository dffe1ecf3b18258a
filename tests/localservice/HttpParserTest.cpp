#include "localservice/HttpParser.h"

#include <QTest>

using namespace quillmate::localservice;

namespace
{

constexpr std::size_t bodyLimit = 10;

/// What a parser makes of bytes that come in pieces of this size: the requests' bodies in "[…]", or the failure's
/// status.
std::string outcome(const std::string& bytes, std::size_t piece)
{
    HttpParser parser;
    std::string result;
    for (std::size_t start = 0; start < bytes.size(); start += piece) {
        parser.append(std::string_view(bytes).substr(start, piece));
        HttpParser::Event event = HttpParser::Event::NeedMore;
        while ((event = parser.advance()) != HttpParser::Event::NeedMore) {
            if (event == HttpParser::Event::Failed) {
                return result + std::to_string(parser.failure().status);
            }
            if (event == HttpParser::Event::HeadReady) {
                parser.setBodyLimit(bodyLimit);
            } else {
                const bool keep = parser.keepAlive();
                const HttpRequest request = parser.takeRequest();
                result += request.method + request.path + '[' + request.body + (keep ? "]" : "]close");
            }
        }
    }
    return result + (parser.midRequest() ? "…" : "");
}

} // namespace

class HttpParserTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requestsAreFramedAlikeHoweverTheyArrive_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("expected");
        const auto row = [](const char* name, const QByteArray& bytes, const QByteArray& expected) {
            QTest::newRow(name) << bytes << expected;
        };
        const QByteArray post = "POST /p HTTP/1.1\r\nHost: h\r\n";
        row("get", "GET /a?b=c HTTP/1.1\r\nHost: h\r\n\r\n", "GET/a[]");
        row("head is get", "HEAD /a HTTP/1.1\r\nHost: h\r\n\r\n", "GET/a[]");
        row("empty lines before", "\r\n\r\nGET /a HTTP/1.1\r\nHost: h\r\n\r\n", "GET/a[]");
        row("length", post + "Content-Length: 3\r\n\r\nabc", "POST/p[abc]");
        row("largest body", post + "Content-Length: 10\r\n\r\n0123456789", "POST/p[0123456789]");
        row("pipelined", post + "Content-Length: 1\r\n\r\na" + post + "Content-Length: 1\r\n\r\nb",
            "POST/p[a]POST/p[b]");
        row("chunks", post + "Transfer-Encoding: chunked\r\n\r\n2\r\nab\r\n3;x=y\r\ncde\r\n0\r\nT: v\r\n\r\n",
            "POST/p[abcde]");
        row("chunks, then more",
            post + "Transfer-Encoding: Chunked\r\n\r\n1\r\na\r\n0\r\n\r\nGET / HTTP/1.1\r\nHost: h\r\n\r\n",
            "POST/p[a]GET/[]");
        row("old version", "GET / HTTP/1.0\r\nHost: h\r\n\r\n", "GET/[]close");
        row("close", "GET / HTTP/1.1\r\nHost: h\r\nConnection: Close\r\n\r\n", "GET/[]close");
        row("same length twice", post + "Content-Length: 1\r\nContent-Length: 1\r\n\r\na", "POST/p[a]");
        row("cut head", "GET / HTTP/1.1\r\nHost", "…");
        row("cut body", post + "Content-Length: 3\r\n\r\nab", "…");
        row("body too large", post + "Content-Length: 11\r\n\r\n", "413");
        row("chunks too large", post + "Transfer-Encoding: chunked\r\n\r\n8\r\n01234567\r\n3\r\nabc\r\n", "413");
        row("chunk size overflow", post + "Transfer-Encoding: chunked\r\n\r\nFFFFFFFFFFFFFFFFF\r\n", "400");
        row("length overflow", post + "Content-Length: 99999999999999999999\r\n\r\n", "400");
        row("negative length", post + "Content-Length: -1\r\n\r\n", "400");
        row("lengths that differ", post + "Content-Length: 1\r\nContent-Length: 2\r\n\r\nab", "400");
        row("list of lengths", post + "Content-Length: 1, 1\r\n\r\na", "400");
        row("length and chunks", post + "Content-Length: 3\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n", "400");
        row("other coding", post + "Transfer-Encoding: gzip, chunked\r\n\r\n", "501");
        row("coding twice", post + "Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n\r\n", "501");
        row("chunk longer than told", post + "Transfer-Encoding: chunked\r\n\r\n1\r\nabc\r\n", "400");
        row("blank before colon", "GET / HTTP/1.1\r\nHost : h\r\n\r\n", "400");
        row("folded header", "GET / HTTP/1.1\r\nHost: h\r\nX: a\r\n b\r\n\r\n", "400");
        row("control character", "GET / HTTP/1.1\r\nHost: h\r\nX: a\x01\r\n\r\n", "400");
        row("bare line feed", "GET / HTTP/1.1\r\nHost: h\nX: y\r\n\r\n", "400");
        row("no host", "GET / HTTP/1.1\r\n\r\n", "400");
        row("two hosts", "GET / HTTP/1.1\r\nHost: a\r\nHost: b\r\n\r\n", "400");
        row("absolute target", "GET http://h/ HTTP/1.1\r\nHost: h\r\n\r\n", "400");
        row("other version", "GET / HTTP/2.0\r\nHost: h\r\n\r\n", "505");
        row("unknown expectation", post + "Expect: more\r\n\r\n", "417");
        row("endless header", "GET / HTTP/1.1\r\nX: " + QByteArray(70'000, 'x'), "431");
        row("endless chunk line", post + "Transfer-Encoding: chunked\r\n\r\n1;" + QByteArray(2'000, 'x'), "400");
    }

    void requestsAreFramedAlikeHoweverTheyArrive()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QByteArray, expected);
        const std::string text = bytes.toStdString();
        QCOMPARE(QByteArray::fromStdString(outcome(text, text.size())), expected);
        QCOMPARE(QByteArray::fromStdString(outcome(text, 7)), expected);
        if (text.size() < 1'000) {
            QCOMPARE(QByteArray::fromStdString(outcome(text, 1)), expected);
        }
    }
};

QTEST_GUILESS_MAIN(HttpParserTest)
#include "HttpParserTest.moc"
