#include "service/RequestBodies.h"
#include "service/ApiError.h"
#include "service/RequestBuilder.h"

#include <QTest>

using namespace quillmate;

class RequestBodiesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bodiesOnTheWire();
    void textsAreEscaped_data();
    void textsAreEscaped();
    void bytesThatAreNoTextFail();
    void headers();
    void errorNames();
};

namespace
{

const std::string plugin = R"("plugin_source":"plugin_apple","plugin_version":"v1.0.0")";
const std::string summarizeWire = R"({"content":"c","email":"e",)" + plugin + "}";
const std::string generateWire = R"({"messageId":"m","content":"c","email":"e",)" + plugin + "}";
const std::string trainingWire = R"({"email":"e","question":"q","answer":"a",)" + plugin + "}";
const std::string chatStartWire = R"({"email":"e",)" + plugin + R"(,"email_content":"c"})";
const std::string chatWire = R"({"assistantId":"a","threadId":"t","email":"e","content":"c",)" + plugin + "}";

} // namespace

void RequestBodiesTest::bodiesOnTheWire()
{
    QCOMPARE((SummarizeRequestBody{"c", "e"}.encode().value()), summarizeWire);
    QCOMPARE((GenerateResponseBody{"m", "c", "e"}.encode().value()), generateWire);
    QCOMPARE((TrainingDataBody{"e", "q", "a"}.encode().value()), trainingWire);
    ChatStartBody start;
    start.email = "e";
    start.emailContent = "c";
    QCOMPARE(start.encode().value(), chatStartWire);
    QCOMPARE((ChatBody{"a", "t", "e", "c"}.encode().value()), chatWire);
}

void RequestBodiesTest::textsAreEscaped_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("quotes and backslashes") << QByteArray(R"(say "no" to C:\new)");
    QTest::newRow("line breaks") << QByteArray("one\r\ntwo\tthree\b\f");
    QTest::newRow("control characters") << QByteArray("\x01\x1f\x7f");
    QTest::newRow("a NUL inside") << QByteArray("a\0b", 3);
    QTest::newRow("other scripts") << QByteArray("привет こんにちは مرحبا 🪶");
    QTest::newRow("line separators") << QByteArray("\u2028\u2029");
    QTest::newRow("long") << QByteArray(100'000, '"');
}

void RequestBodiesTest::textsAreEscaped()
{
    QFETCH(const QByteArray, text);
    const auto encoded = SummarizeRequestBody{text.toStdString(), "e"}.encode();
    QVERIFY(encoded);
    for (const char c : encoded.value()) {
        QVERIFY(static_cast<unsigned char>(c) >= 0x20); // RFC 8259: no raw control characters
    }
    const auto read = JSONSerialization::jsonObject(encoded.value(), JSONSerialization::Fragments::Refused);
    QVERIFY(read);
    QCOMPARE(*read.value().stringMember("content"), text.toStdString());
}

void RequestBodiesTest::bytesThatAreNoTextFail()
{
    const auto encoded = SummarizeRequestBody{"caf\xe9", "e"}.encode();
    QVERIFY(!encoded);
    QVERIFY(!encoded.error().description.empty());
}

void RequestBodiesTest::headers()
{
    using Headers = std::vector<std::pair<std::string, std::string>>;
    const URL url = URL::parseAbsolute("https://quillmate.example/api").value();
    QCOMPARE(makeGetRequest(url).headers, Headers());
    QCOMPARE(makeGetRequest(url, "t").headers, (Headers{{"Authorization", "Bearer t"}}));
    QCOMPARE(makePostRequest(url, "", AcceptHeader::Omitted).headers,
             (Headers{{"Content-Type", "application/json"}, {"Authorization", "Bearer "}}));
    QCOMPARE(makePostRequest(url, " t ", AcceptHeader::Sent).headers, (Headers{{"Content-Type", "application/json"},
                                                                               {"Accept", "application/json"},
                                                                               {"Authorization", "Bearer  t "}}));
    QCOMPARE(makePostRequest(url, "t", AcceptHeader::Sent).timeoutInterval, 60.0);
}

void RequestBodiesTest::errorNames()
{
    QCOMPARE(ApiError::serverError(401).description(), std::string("serverError(401)"));
    QCOMPARE(ApiError::networkError({URLError::Kind::TimedOut, "Late."}).description(),
             std::string("networkError(URLError.timedOut: Late.)"));
    QCOMPARE(ApiError::invalidResponse().description(), std::string("invalidResponse"));
    QCOMPARE(ApiError::invalidData().description(), std::string("invalidData"));
}

QTEST_GUILESS_MAIN(RequestBodiesTest)
#include "RequestBodiesTest.moc"
