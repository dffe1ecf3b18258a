#include "platform/foundation/DispatchQueue.h"
#include "service/HandleApiRequests.h"
#include "state/APIManager.h"
#include "state/SummarizeManager.h"
#include "support/LogCapture.h"
#include "support/TestEnvironment.h"
#include "support/TestServer.h"

#include <QTest>
#include <QThread>

#include <atomic>
#include <cmath>

using namespace quillmate;

class FeatureRequestsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void summary_data();
    void summary();
    void summaryThatCannotBeEncoded();
    void summaryWithoutUserDetails();
    void summariesSideBySide();
    void generate_data();
    void generate();

private:
    TestEnvironment m_environment;
    TestServer m_server;
};

Q_DECLARE_METATYPE(std::vector<quillmate::TestReply>)
Q_DECLARE_METATYPE(quillmate::TestReply)

namespace
{

const std::string bodyOnTheWire = R"({"content":"content \"1\"","email":"a@b.example",)"
                                  R"("plugin_source":"plugin_apple","plugin_version":"v1.0.0"})";
const char* const me = R"({"email":"a@b.example","name":"A"})";

/// What came to a summary's completion.
struct Outcome {
    std::atomic<int> count = 0;
    std::optional<SummarizedResponse> record;
    bool onMainThread = false;

    HandleApiRequests::SummaryCompletion completion()
    {
        return [this](std::optional<SummarizedResponse> received) {
            record = std::move(received);
            onMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
            ++count;
        };
    }
};

URL summarizeURL()
{
    return URL::parseAbsolute(currentApiURL() + "/summarize").value();
}

} // namespace

void FeatureRequestsTest::initTestCase()
{
    TestEnvironment::connectTo(m_server);
    const LogCapture log;
    QCOMPARE(currentApiURL(), std::string("https://quillmate.example/api/v1"));
    QCOMPARE(log.lines(), (QStringList{"Error: Invalid or missing API endpoint in UserDefaults. Falling back to live.",
                                       "CURRENT API URL IN API MANAGER https://quillmate.example/api/v1"}));
}

void FeatureRequestsTest::init()
{
    m_server.reset();
    m_server.reply("GET /api/v1/me", me);
    SummarizeManager::shared().requestFailed = false;
}

void FeatureRequestsTest::summary_data()
{
    QTest::addColumn<std::vector<TestReply>>("replies");
    QTest::addColumn<QStringList>("lines"); // beginnings, after those of the user's details
    QTest::addColumn<QString>("response");  // "-" for none
    QTest::addColumn<bool>("failed");

    const auto retry = [](int attempt) { return QStringLiteral("Retrying request, attempt %1...").arg(attempt); };
    const auto gaveUp = QStringLiteral("Max retry attempts reached. Request failed.");
    const auto noKey = QStringLiteral("The 'response' key does not exist or is not a string.");
    const auto error500 = QStringLiteral("Server error: 500");
    const auto lost = QStringLiteral("Error sending request: URLError.networkConnectionLost: ");
    const TestReply good{200, R"({"response":"Short."})"};
    const auto rendered = QStringLiteral(R"(Response from server: {"response":"Short."})");

    QTest::newRow("at once") << std::vector{good} << QStringList{rendered} << "Short." << false;
    QTest::newRow("any success counts") << std::vector{TestReply{299, good.body}} << QStringList{rendered} << "Short."
                                        << false;
    QTest::newRow("empty text") << std::vector{TestReply{200, R"({"response":""})"}}
                                << QStringList{"Response from server: {"} << "" << false;
    QTest::newRow("500 and then well") << std::vector{TestReply{500}, good} << QStringList{error500, retry(1), rendered}
                                       << "Short." << false;
    QTest::newRow("500 for good") << std::vector{TestReply{500}} << QStringList{error500, retry(1), error500, retry(2),
                                                                                error500, retry(3), error500, gaveUp}
                                  << "-" << true;
    QTest::newRow("a redirect without a place is a status")
        << std::vector{TestReply{304}, good} << QStringList{"Server error: 304", retry(1), rendered} << "Short."
        << false;
    QTest::newRow("cut, no JSON, empty, well")
        << std::vector{TestReply{200, "half of it", {}, TestReply::Manner::CutInBody}, TestReply{200, "no JSON"},
                       TestReply{204, ""}, good}
        << QStringList{lost, retry(1), retry(2), retry(3), rendered} << "Short." << false;
    QTest::newRow("no JSON for good") << std::vector{TestReply{200, "no JSON"}}
                                      << QStringList{retry(1), retry(2), retry(3), gaveUp} << "-" << true;
    QTest::newRow("empty object") << std::vector{TestReply{200, "{}"}} << QStringList{"Response from server: {}", noKey}
                                  << "-" << false;
    QTest::newRow("a bare text") << std::vector{TestReply{200, R"("text")"}}
                                 << QStringList{"Response from server: {}", noKey} << "-" << false;
    QTest::newRow("a number for a text") << std::vector{TestReply{200, R"({"response":42})"}}
                                         << QStringList{R"(Response from server: {"response":42})", noKey} << "-"
                                         << false;
    QTest::newRow("a large one") << std::vector{TestReply{200,
                                                          R"({"response":")" + std::string(4'000'000, 'x') + "\"}"}}
                                 << QStringList{"Response from server: {"} << QString(4'000'000, QLatin1Char('x'))
                                 << false;
}

void FeatureRequestsTest::summary()
{
    QFETCH(const std::vector<TestReply>, replies);
    QFETCH(const QStringList, lines);
    QFETCH(const QString, response);
    QFETCH(const bool, failed);
    const ManualTime time;
    for (const TestReply& reply : replies) {
        m_server.reply("POST /api/v1/summarize", reply);
    }
    LogCapture log;
    Outcome outcome;
    HandleApiRequests::sendSummarizeRequest(summarizeURL(), "token", {"content \"1\"", "a@b.example"}, "m1",
                                            outcome.completion());
    QCOMPARE(log.take().size(), 2);

    // Each retry waits for exactly 2.0 seconds of the main queue.
    const auto retries = static_cast<int>(lines.filter(QStringLiteral("Retrying request")).size());
    for (int attempt = 1; attempt <= retries; ++attempt) {
        QTRY_COMPARE(ManualTime::pendingDelays().size(), std::size_t(1));
        QVERIFY(std::abs(ManualTime::pendingDelays().front() - 2.0) < 1e-6);
        ManualTime::advance(1.999);
        QCOMPARE(ManualTime::pendingDelays().size(), std::size_t(1));
        ManualTime::advance(0.001);
    }
    QTRY_COMPARE(outcome.count.load(), 1);
    QCOMPARE(outcome.onMainThread, false);
    QCOMPARE(ManualTime::pendingDelays().size(), std::size_t(0));
    const QStringList printed = log.lines();
    QCOMPARE(printed.size(), lines.size());
    for (qsizetype i = 0; i < lines.size(); ++i) {
        QVERIFY2(printed.at(i).startsWith(lines.at(i)), qPrintable(printed.at(i).left(200)));
    }
    QCOMPARE(SummarizeManager::shared().requestFailed.load(), failed);
    if (response == QLatin1String("-")) {
        QVERIFY(!outcome.record);
    } else {
        QCOMPARE(*outcome.record, (SummarizedResponse{"m1", response.toStdString()}));
    }

    const auto requests = m_server.requests();
    QCOMPARE(requests.size(), std::size_t(retries + 2));
    for (std::size_t i = 1; i < requests.size(); ++i) {
        QCOMPARE(requests[i].body, bodyOnTheWire);
        QCOMPARE(requests[i].headers.at("content-type"), std::string("application/json"));
        QCOMPARE(requests[i].headers.at("accept"), std::string("application/json"));
        QCOMPARE(requests[i].headers.at("authorization"), std::string("Bearer token"));
    }
}

void FeatureRequestsTest::summaryThatCannotBeEncoded()
{
    const ManualTime time;
    LogCapture log;
    Outcome outcome;
    HandleApiRequests::sendSummarizeRequest(summarizeURL(), "token", {"caf\xe9", "e"}, "m1", outcome.completion());
    for (int attempt = 1; attempt <= 3; ++attempt) {
        QTRY_COMPARE(ManualTime::pendingDelays().size(), std::size_t(1));
        ManualTime::advance(2.0);
    }
    QCOMPARE(outcome.count.load(), 1);
    QVERIFY(outcome.onMainThread);
    QVERIFY(!outcome.record);
    QVERIFY(SummarizeManager::shared().requestFailed);
    const QStringList lines = log.take().mid(2);
    QCOMPARE(lines.size(), 8);
    for (int i = 0; i < 8; i += 2) {
        QVERIFY(lines.at(i).startsWith(QLatin1String("Failed to encode JSON: ")));
    }
    QCOMPARE(lines.at(1), QStringLiteral("Retrying request, attempt 1..."));
    QCOMPARE(lines.last(), QStringLiteral("Max retry attempts reached. Request failed."));
    QCOMPARE(m_server.lines(), std::vector<std::string>{"GET /api/v1/me"});
}

void FeatureRequestsTest::summaryWithoutUserDetails()
{
    m_server.reset();
    m_server.reply("GET /api/v1/me", R"({"email":"a@b.example"})");
    LogCapture log;
    Outcome outcome;
    HandleApiRequests::sendSummarizeRequest(summarizeURL(), "token", {"c", "e"}, "m1", outcome.completion());
    QTRY_COMPARE(log.lines().size(), 3);
    QCOMPARE(log.take().last(), QStringLiteral("Email or name not found in response"));
    // Had it queued anything, that would run before this.
    bool drained = false;
    DispatchQueue::main().async([&] { drained = true; });
    QTRY_VERIFY(drained);
    QCOMPARE(m_server.lines(), std::vector<std::string>{"GET /api/v1/me"});
    QCOMPARE(outcome.count.load(), 0);
    QVERIFY(!SummarizeManager::shared().requestFailed);
}

void FeatureRequestsTest::summariesSideBySide()
{
    const ManualTime time;
    const LogCapture log;
    m_server.reply("POST /api/v1/summarize", TestReply{500});
    m_server.reply("POST /api/v1/summarize", TestReply{500});
    m_server.reply("POST /api/v1/summarize", R"({"response":"Short."})");
    Outcome first;
    Outcome second;
    HandleApiRequests::sendSummarizeRequest(summarizeURL(), "token", {"c1", "e"}, "m1", first.completion());
    HandleApiRequests::sendSummarizeRequest(summarizeURL(), "token", {"c2", "e"}, "m2", second.completion());
    QTRY_COMPARE(ManualTime::pendingDelays().size(), std::size_t(2));
    ManualTime::advance(2.0);
    QTRY_COMPARE(first.count.load() + second.count.load(), 2);
    QCOMPARE(first.record->messageId, std::string("m1"));
    QCOMPARE(second.record->messageId, std::string("m2"));
    // Each has its own count of attempts.
    QCOMPARE(log.lines().filter(QStringLiteral("attempt 1...")).size(), 2);
    QCOMPARE(log.lines().filter(QStringLiteral("attempt 2...")).size(), 0);
}

void FeatureRequestsTest::generate_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<TestReply>("reply");
    QTest::addColumn<QString>("response"); // "-" for none
    QTest::addColumn<QString>("error");    // its beginning
    const QByteArray content("c");
    const QString none = QStringLiteral("-");
    QTest::newRow("well") << content << TestReply{201, R"({"response":"Yes."})"} << "Yes."
                          << "";
    QTest::newRow("404") << content << TestReply{404} << none << "Server error: 404";
    QTest::newRow("no JSON") << content << TestReply{200, "x"} << none << "Server error! Please try again later.";
    QTest::newRow("nothing") << content << TestReply{204} << none << "Server error! Please try again later.";
    QTest::newRow("no key") << content << TestReply{200, "[]"} << none
                            << "The 'response' key does not exist or is not a string.";
    QTest::newRow("cut") << content << TestReply{200, "abcdef", {}, TestReply::Manner::CutInBody} << none
                         << "Error sending request: The connection to quillmate.example was lost.";
    QTest::newRow("no text") << QByteArray("caf\xe9") << TestReply{200} << none << "Failed to encode JSON: ";
}

void FeatureRequestsTest::generate()
{
    QFETCH(const QByteArray, content);
    QFETCH(const TestReply, reply);
    QFETCH(const QString, response);
    QFETCH(const QString, error);
    m_server.reply("POST /api/v1/response", reply);
    const LogCapture log;
    std::atomic<int> completions = 0;
    std::optional<GeneratedResponse> record;
    std::optional<std::string> text;
    HandleApiRequests::sendGenerateRequest(URL::parseAbsolute(currentApiURL() + "/response").value(), "token",
                                           {"m1", content.toStdString(), "e"}, "m1",
                                           [&](auto received, auto errorText) {
                                               record = received;
                                               text = errorText;
                                               ++completions;
                                           });
    QTRY_COMPARE(completions.load(), 1);
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(record.has_value(), !text.has_value());
    if (record) {
        QCOMPARE(*record, (GeneratedResponse{"m1", response.toStdString()}));
    } else {
        QVERIFY2(QString::fromStdString(*text).startsWith(error), text->c_str());
    }
    QVERIFY(m_server.requests().size() <= 1);
}

QTEST_GUILESS_MAIN(FeatureRequestsTest)
#include "FeatureRequestsTest.moc"
