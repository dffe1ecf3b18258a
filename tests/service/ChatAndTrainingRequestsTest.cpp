#include "platform/foundation/URLSession.h"
#include "service/HandleApiRequests.h"
#include "support/LogCapture.h"
#include "support/TestEnvironment.h"
#include "support/TestServer.h"

#include <QTest>
#include <QThread>

#include <algorithm>
#include <mutex>
#include <optional>

using namespace quillmate;

class ChatAndTrainingRequestsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { m_server.reset(); }
    void replies_data();
    void replies();
    void bodiesThatCannotBeEncoded();
    void answersInTheOtherOrder();

private:
    TestEnvironment m_environment;
    TestServer m_server;
    std::optional<TestServer> m_otherServer{std::in_place};
};

Q_DECLARE_METATYPE(quillmate::TestReply)

namespace
{

/// What came to completions, in order: the texts of a success or the failure, and "(main)" where it was told there.
class Outcomes
{
public:
    void note(const std::string& text)
    {
        const bool onMain = QThread::currentThread() == QCoreApplication::instance()->thread();
        const std::lock_guard lock(m_mutex);
        m_texts.append(QString::fromStdString(text) + (onMain ? "(main)" : ""));
    }
    template<typename Value>
    void note(const Result<Value, ApiError>& result)
    {
        note(result ? text(result.value()) : result.error().description());
    }
    [[nodiscard]] QStringList texts() const
    {
        const std::lock_guard lock(m_mutex);
        return m_texts;
    }

private:
    static std::string text(const std::string& answer) { return answer; }
    static std::string text(const ChatStartResponse& chat) { return chat.assistantId + " " + chat.threadId; }

    mutable std::mutex m_mutex;
    QStringList m_texts;
};

/// One of the three requests, with a text of the caller's in its body.
struct Operation {
    const char* path;
    QStringList before; // the lines before it is sent, their beginnings
    const char* missing;
    QByteArray wire; // %1 for the text
    void (*send)(const URL& url, const std::string& text, Outcomes& outcomes);
};

#define PLUGIN R"("plugin_source":"plugin_apple","plugin_version":"v1.0.0")"
const std::array operations{
    Operation{"/api/v1/create-training-data",
              {"TRAINIG DATA BODY "},
              "The 'sucess' key does not exist or is not a string.",
              R"({"email":"e","question":"%1","answer":"a",)" PLUGIN "}",
              [](const URL& url, const std::string& text, Outcomes& outcomes) {
                  HandleApiRequests::sendTrainingData(url, " t ", {"e", text, "a"},
                                                      [&](const std::string& success) { outcomes.note(success); });
              }},
    Operation{"/api/v1/chat/start",
              {"Start chat url: https://quillmate.example/api/v1/chat/start",
               "Start chat access_token: ", "Start chat body: "},
              "The 'assistantId' or 'threadId' key does not exist or is not a string within the 'response' object.",
              R"({"email":"e",)" PLUGIN R"(,"email_content":"%1"})",
              [](const URL& url, const std::string& text, Outcomes& outcomes) {
                  ChatStartBody body;
                  body.email = "e";
                  body.emailContent = text;
                  HandleApiRequests::sendChatStart(url, "", body, [&](const auto& result) { outcomes.note(result); });
              }},
    Operation{"/api/v1/chat/send",
              {},
              "The 'response' key does not exist or is not a string.",
              R"({"assistantId":"a1","threadId":"t1","email":"e","content":"%1",)" PLUGIN "}",
              [](const URL& url, const std::string& text, Outcomes& outcomes) {
                  HandleApiRequests::sendChatMessage(url, "token", {"a1", "t1", "e", text},
                                                     [&](const auto& result) { outcomes.note(result); });
              }}};
const std::array<std::string, 3> authorizations{"Bearer  t ", "Bearer ", "Bearer token"};
constexpr int training = 0;
constexpr int chatStart = 1;
constexpr int chatSend = 2;

void send(int operation, const std::string& text, Outcomes& outcomes, const std::string& host = "quillmate.example")
{
    const Operation& sent = operations.at(operation);
    sent.send(URL::parseAbsolute("https://" + host + sent.path).value(), text, outcomes);
}

bool beginWith(const QStringList& lines, const QStringList& beginnings)
{
    return std::equal(lines.begin(), lines.end(), beginnings.begin(), beginnings.end(),
                      [](const QString& line, const QString& beginning) { return line.startsWith(beginning); });
}

} // namespace

void ChatAndTrainingRequestsTest::initTestCase()
{
    NetworkEnvironment environment;
    environment.connectTo = {{"quillmate.example", {"127.0.0.1", m_server.port()}},
                             {"other.example", {"127.0.0.1", m_otherServer->port()}}};
    environment.rootCertificateFiles = {TestEnvironment::certificateFile(QStringLiteral("ca.pem")).toStdString()};
    URLSession::configure(std::move(environment));
}

void ChatAndTrainingRequestsTest::replies_data()
{
    QTest::addColumn<int>("operation");
    QTest::addColumn<TestReply>("reply");
    QTest::addColumn<QString>("line");    // about the reply, its beginning; empty for none
    QTest::addColumn<QString>("outcome"); // its beginning; "-" for no completion

    using Manner = TestReply::Manner;
    const auto row = [](int operation, const char* name, const TestReply& reply, const QString& line,
                        const char* outcome) {
        // Of training nobody hears but success.
        const bool told = operation != training || line.isEmpty();
        QTest::addRow("%s %s", operations.at(operation).path, name)
            << operation << reply << line << (told ? QString::fromUtf8(outcome) : QStringLiteral("-"));
    };
    for (int i = training; i <= chatSend; ++i) {
        const QString sending = i == training ? "Error sending request: " : "Error sending chat request: ";
        row(i, "cut", {200, R"({"success":"s"})", {}, Manner::CutInBody},
            sending + "URLError.networkConnectionLost: ", "networkError(URLError.networkConnectionLost: ");
        row(i, "closed", {200, "", {}, Manner::CloseAtOnce},
            sending + "URLError.networkConnectionLost: ", "networkError(URLError.networkConnectionLost: ");
        row(i, "garbage", {200, "what?\n\n", {}, Manner::Garbage}, sending + "URLError.", "networkError(URLError.");
        for (const int status : {300, 304, 401, 404, 500}) {
            const QByteArray number = QByteArray::number(status);
            row(i, number, {status, R"({"success":"s","response":"r"})"}, "Server error: " + number,
                QByteArray("serverError(" + number + ")"));
        }
        row(i, "204", {204, ""}, "Server error. Please try again.", "invalidData");
        for (const char* body : {"", "<html>", "{\"success\":\"\xff\"}", "{\"response\":\"r\""}) {
            row(i, body, {200, body}, "Server error. Please try again.", "invalidData");
        }
        for (const char* body : {"[]", R"(["success","response"])", R"("success")", "42", "null", "true"}) {
            row(i, body, {200, body},
                i == training ? operations[training].missing : "Failed to cast JSON response to dictionary.",
                "invalidData");
        }
        for (const char* body : {"{}", R"({"success":true,"response":42})", R"({"success":null,"response":null})",
                                 R"({"success":["s"],"response":["r"]})", R"({"Success":"s","Response":"r"})",
                                 R"({"success":{"success":"s"},"response":{"response":"r"}})"}) {
            row(i, body, {200, body}, operations.at(i).missing, "invalidData");
        }
    }
    for (const char* body : {R"({"assistantId":"a","threadId":"t"})", R"({"response":{"assistantId":"a"}})",
                             R"({"response":{"assistantId":1,"threadId":"t"}})", R"({"response":"a"})",
                             R"({"response":{"assistantId":"a","threadId":null}})",
                             R"({"response":[{"assistantId":"a","threadId":"t"}]})"}) {
        row(chatStart, body, {200, body}, operations[chatStart].missing, "invalidData");
    }
    row(chatStart, "well", {299, R"({"x":1,"response":{"threadId":"t","x":[],"assistantId":"a"}})"}, "", "a t");
    row(chatStart, "well, with empty ids", {200, R"({"response":{"assistantId":"","threadId":""}})"}, "", " ");
    row(chatSend, "well", {201, R"({"more":[1],"response":"Yes.\né"})"}, "", "Yes.\né");
    row(training, "well", {200, R"({"success":"Thanks.","more":{}})"}, "", "Thanks.");
}

void ChatAndTrainingRequestsTest::replies()
{
    QFETCH(const int, operation);
    QFETCH(const TestReply, reply);
    QFETCH(const QString, line);
    QFETCH(const QString, outcome);
    m_server.reply(std::string("POST ") + operations.at(operation).path, reply);
    const LogCapture log;
    Outcomes outcomes;
    send(operation, "say \"no\"\n", outcomes);
    QStringList lines = operations.at(operation).before;
    if (!line.isEmpty()) {
        lines.append(line);
    }
    QTRY_COMPARE(log.lines().size(), lines.size());
    QVERIFY2(beginWith(log.lines(), lines), qPrintable(log.lines().join('\n')));
    if (outcome == QLatin1String("-")) {
        // What would come of it comes before the outcome of a later request.
        m_server.reply("POST /api/v1/chat/send", R"({"response":"later"})");
        send(chatSend, "", outcomes);
        QTRY_COMPARE(outcomes.texts(), QStringList{"later"});
    } else {
        QTRY_COMPARE(outcomes.texts().size(), 1);
        QVERIFY2(outcomes.texts().front().startsWith(outcome), qPrintable(outcomes.texts().front()));
        QVERIFY(!outcomes.texts().front().endsWith("(main)"));
    }
    const auto request = m_server.requests().front();
    QCOMPARE(request.body, QByteArray(operations.at(operation).wire).replace("%1", R"(say \"no\"\n)").toStdString());
    QCOMPARE(request.headers.at("content-type"), std::string("application/json"));
    QCOMPARE(request.headers.at("authorization"), authorizations.at(operation));
    QVERIFY(!request.headers.contains("accept"));
    // Never sent again, not even when a connection ends without a word.
    const auto same = m_server.lines();
    QCOMPARE(std::count(same.begin(), same.end(), same.front()), 1);
    for (const char* shown : {"email", "plugin_source", "plugin_apple", "plugin_version", "v1.0.0", "say"}) {
        QVERIFY2(operation == chatSend || log.lines().at(operations.at(operation).before.size() - 1).contains(shown),
                 shown);
    }
}

void ChatAndTrainingRequestsTest::bodiesThatCannotBeEncoded()
{
    m_server.reply("POST /api/v1/chat/send", R"({"response":"later"})");
    Outcomes outcomes;
    for (int operation = training; operation <= chatSend; ++operation) {
        const LogCapture log;
        send(operation, "caf\xe9\n\x1b", outcomes);
        // All of it before the call returned.
        QVERIFY2(beginWith(log.lines(), operations.at(operation).before + QStringList{"Failed to encode JSON: "}),
                 qPrintable(log.lines().join('\n')));
        QVERIFY(log.lines().back() != QLatin1String("Failed to encode JSON: "));
        QCOMPARE(outcomes.texts(), QStringList(operation, "invalidData(main)"));
    }
    send(chatSend, "", outcomes);
    QTRY_COMPARE(outcomes.texts(), (QStringList{"invalidData(main)", "invalidData(main)", "later"}));
    QCOMPARE(m_server.requests().size(), std::size_t(1));
}

void ChatAndTrainingRequestsTest::answersInTheOtherOrder()
{
    m_otherServer->reply("POST /api/v1/chat/send", TestReply{200, "", {}, TestReply::Manner::Silence});
    m_server.reply("POST /api/v1/chat/send", R"({"response":"second"})");
    const LogCapture log;
    Outcomes outcomes;
    send(chatSend, "first", outcomes, "other.example");
    QTRY_COMPARE(m_otherServer->requests().size(), std::size_t(1));
    send(chatSend, "second", outcomes);
    QTRY_COMPARE(outcomes.texts(), QStringList{"second"});
    m_otherServer.reset(); // which ends the first
    QTRY_COMPARE(outcomes.texts().size(), 2);
    QVERIFY2(outcomes.texts().back().startsWith("networkError(URLError."), qPrintable(outcomes.texts().back()));
    QCOMPARE(log.lines().size(), 1);
}

QTEST_GUILESS_MAIN(ChatAndTrainingRequestsTest)
#include "ChatAndTrainingRequestsTest.moc"
