#include "base/JSON.h"
#include "service/ApiError.h"
#include "service/ServiceRequests.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

using namespace quillmate;

/// The requests as they go out.
class RequestBuildersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requests();
    void addresses();
    void textsAreEscaped();
    void bytesThatAreNoText();
    void errorNames();
};

namespace
{

const URL url = URL::parseAbsolute("https://a.example/x").value();

/// All of a request; the text that stands in its place when there is none.
QString shown(const BuiltRequest& built)
{
    if (!built) {
        return QString::fromStdString(built.error());
    }
    const URLRequest& request = built.value();
    std::string text = request.method + " " + request.url.absoluteString() + "\n";
    for (const auto& [name, value] : request.headers) {
        text += name + ": " + value + "\n";
    }
    return QString::fromStdString(text + (request.body ? *request.body : "no body"));
}

QString post(const char* accept, const char* token, const char* body)
{
    return QStringLiteral("POST https://a.example/x\nContent-Type: application/json\n%1Authorization: Bearer %2\n%3")
        .arg(accept, token,
             QString(body).replace("PLUGIN", R"("plugin_source":"plugin_apple","plugin_version":"v1.0.0")"));
}

} // namespace

void RequestBuildersTest::requests()
{
    const auto* const accept = "Accept: application/json\n";
    QCOMPARE(shown(buildRequest(url, "t", SummarizeRequestBody{"c", "e"})),
             post(accept, "t", R"({"content":"c","email":"e",PLUGIN})"));
    QCOMPARE(shown(buildRequest(url, " t ", GenerateResponseBody{"m", "c", "e"})),
             post(accept, " t ", R"({"messageId":"m","content":"c","email":"e",PLUGIN})"));
    QCOMPARE(shown(buildRequest(url, "", TrainingDataBody{"e", "q", "a"})),
             post("", "", R"({"email":"e","question":"q","answer":"a",PLUGIN})"));
    QCOMPARE(shown(buildRequest(url, "t", ChatStartBody{"e", "c"})),
             post("", "t", R"({"email":"e",PLUGIN,"email_content":"c"})"));
    QCOMPARE(shown(buildRequest(url, "t", ChatBody{"a", "t", "e", "c"})),
             post("", "t", R"({"assistantId":"a","threadId":"t","email":"e","content":"c",PLUGIN})"));
    QCOMPARE(shown(buildUserDetailsRequest("https://a.example/me", "")),
             QStringLiteral("GET https://a.example/me\nAuthorization: Bearer \nno body"));
    QCOMPARE(shown(buildSessionRequest("https://a.example/s/")), QStringLiteral("GET https://a.example/s/\nno body"));
    QCOMPARE(buildRequest(url, "t", ChatStartBody{}).value().timeoutInterval, 60.0);
    QCOMPARE(buildSessionRequest("https://a.example/s/").value().timeoutInterval, 60.0);
}

void RequestBuildersTest::addresses()
{
    const auto invalid = QStringLiteral("Invalid URL");
    for (const char* address : {"", "/me", "a.example/me", "https://a b/me"}) {
        QCOMPARE(shown(buildUserDetailsRequest(address, "t")), invalid);
        QCOMPARE(shown(buildSessionRequest(address)), invalid);
    }
    const auto asks = [](const char* item) {
        return QStringLiteral("GET https://a.example/v?currentVersion=%1\nno body").arg(item);
    };
    QCOMPARE(shown(buildVersionRequest("https://a.example/v", "1.0.0")), asks("1.0.0"));
    QCOMPARE(shown(buildVersionRequest("https://a.example/v", "1 0&x=y")), asks("1%200%26x%3Dy"));
    QCOMPARE(shown(buildVersionRequest("https://a.example/v", "é+")), asks("%C3%A9%2B"));
    QCOMPARE(shown(buildVersionRequest("https://a.example/v?a=b&c", "1")), asks("1")); // An earlier query goes.
    QCOMPARE(shown(buildVersionRequest("https://a b", "1")), invalid);
    QCOMPARE(shown(buildVersionRequest("apple-version", "1")),
             QStringLiteral("Failed to construct URL with query parameter"));
}

void RequestBuildersTest::textsAreEscaped()
{
    for (const std::string& text :
         {std::string(), std::string(R"(say "no" to C:\new)"), std::string("one\r\ntwo\tthree\b\f\x01\x1f\x7f"),
          std::string("a\0b", 3), std::string("привет こんにちは مرحبا 🪶\u2028")}) {
        const auto built = buildRequest(url, "t", SummarizeRequestBody{text, "e"});
        QVERIFY(built);
        for (const char c : *built.value().body) {
            QVERIFY(static_cast<unsigned char>(c) >= 0x20); // RFC 8259: no raw control characters
        }
        const auto read = JSONSerialization::jsonObject(*built.value().body, JSONSerialization::Fragments::Refused);
        QVERIFY(read);
        QCOMPARE(*read.value().stringMember("content"), text);
    }
}

void RequestBuildersTest::bytesThatAreNoText()
{
    const std::string bytes = "caf\xe9\n\x1b";
    for (const BuiltRequest& built :
         {buildRequest(url, "t", SummarizeRequestBody{bytes, "e"}), buildRequest(url, "t", ChatBody{"", "", "", bytes}),
          buildRequest(url, "t", GenerateResponseBody{"m", bytes, "e"})}) {
        QVERIFY(!built);
        QVERIFY2(built.error().starts_with("Failed to encode JSON: ") && built.error().size() > 25,
                 built.error().c_str());
    }
    // A diagnostic shows what it can of them.
    const TrainingDataBody body{"e", bytes, "a"};
    const auto built = buildRequest(url, "t", body);
    QVERIFY(!built);
    QCOMPARE(
        QString::fromStdString(describe(built, body.members())),
        QStringLiteral(
            R"({"email":"e","question":"caf???","answer":"a","plugin_source":"plugin_apple","plugin_version":"v1.0.0"})"));
}

void RequestBuildersTest::errorNames()
{
    QCOMPARE(ApiError::serverError(401).description(), std::string("serverError(401)"));
    QCOMPARE(ApiError::networkError({URLError::Kind::TimedOut, "Late."}).description(),
             std::string("networkError(URLError.timedOut: Late.)"));
    QCOMPARE(ApiError::invalidResponse().description(), std::string("invalidResponse"));
    QCOMPARE(ApiError::invalidData().description(), std::string("invalidData"));
}

QUILLMATE_TEST(RequestBuildersTest, QCoreApplication)
#include "RequestBuildersTest.moc"
