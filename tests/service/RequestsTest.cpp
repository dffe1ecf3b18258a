#include "platform/foundation/schedule/DispatchQueue.h"
#include "service/HandleApiRequests.h"
#include "state/APIManager.h"
#include "state/IncommingUpdatesManager.h"
#include "support/LogCapture.h"
#include "support/TestEnvironment.h"
#include "support/TestProgram.h"
#include "support/TestServer.h"

#include <QCoreApplication>
#include <QThread>

#include <cmath>
#include <mutex>

using namespace quillmate;

/// The requests that nobody but the service's own side follows, against a server: who is told of what, where and when,
/// and what is tried again. The others are sent by the flows' tests.
class RequestsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void userDetails();
    void version();
    void summary_data();
    void summary();
    void summariesSideBySide();

private:
    TestEnvironment m_environment;
    TestServer m_server;
    LogCapture m_log;
};

Q_DECLARE_METATYPE(std::vector<quillmate::TestReply>)

namespace
{

/// What came to completions, in order, with "(main)" where it was told there.
class Outcomes
{
public:
    void note(const std::string& text)
    {
        const bool onMain = QThread::currentThread() == QCoreApplication::instance()->thread();
        const std::lock_guard lock(m_mutex);
        m_texts.append(QString::fromStdString(text) + (onMain ? "(main)" : ""));
    }
    [[nodiscard]] QStringList texts() const
    {
        const std::lock_guard lock(m_mutex);
        return m_texts;
    }

private:
    mutable std::mutex m_mutex;
    QStringList m_texts;
};

QString api(const std::string& path)
{
    return QString::fromStdString(currentApiURL() + path);
}

void askForSummary(const std::string& content, const char* messageId, Outcomes& outcomes)
{
    HandleApiRequests::sendSummarizeRequest(
        URL::parseAbsolute(currentApiURL() + "/summarize").value(), "token", content, messageId,
        [&](auto record) { outcomes.note(record ? record->messageId + ": " + record->response : "none"); });
}

bool beginWith(const QStringList& lines, const QStringList& beginnings)
{
    return std::equal(lines.begin(), lines.end(), beginnings.begin(), beginnings.end(),
                      [](const QString& line, const QString& beginning) { return line.startsWith(beginning); });
}

} // namespace

void RequestsTest::initTestCase()
{
    TestEnvironment::connectTo(m_server);
    std::ignore = currentApiURL();
    QCOMPARE(m_log.take(), (QStringList{"Error: Invalid or missing API endpoint in UserDefaults. Falling back to live.",
                                        "CURRENT API URL IN API MANAGER " + api("")}));
}

void RequestsTest::init()
{
    m_server.reset();
    m_server.reply("GET /api/v1/me", R"({"email":"a@b.example","name":"A"})");
    UserDetailsManager::shared().setEmail("before");
    m_log.take();
}

void RequestsTest::userDetails()
{
    m_server.reset();
    m_server.reply("GET /api/v1/me", R"({"email":"a@b.example"})");
    m_server.reply("GET /api/v1/me", TestReply{401, R"({"email":"a@b.example","name":"A"})"});
    Outcomes outcomes;
    for (const std::string& url : {std::string("/me"), currentApiURL() + "/me", currentApiURL() + "/me"}) {
        HandleApiRequests::fetchUserDetails(url, "token", [&](UserDetailsManager& manager) {
            outcomes.note(manager.email() + " " + manager.name.get().value_or("-"));
        });
        QTRY_VERIFY(url == "/me" || m_log.lines().size() > 3);
        QCOMPARE(UserDetailsManager::shared().email(), std::string("before"));
    }
    QTRY_COMPARE(outcomes.texts(), QStringList{"a@b.example A(main)"});
    const QStringList sent{"URL: " + api("/me"), "ACCESS TOKEN: token"};
    QCOMPARE(m_log.lines(),
             QStringList{"Invalid URL"} + sent + QStringList{"Email or name not found in response"} + sent);
}

void RequestsTest::version()
{
    const std::string path = "/apple-version?currentVersion=1.2";
    const QString announced = QStringLiteral("|The new available version is: 2.0");
    IncommingUpdatesManager& manager = IncommingUpdatesManager::shared();
    const std::pair<TestReply, QString> rows[] = {
        {{500, R"({"current_version":"2.0","download_url":"u"})"}, "2.0 u available" + announced},
        {{200, R"({"download_url":"u"})"}, "- u available"},
        {{200, R"({"current_version":"2.0"})"}, "2.0 -" + announced},
        {{200, "[]"}, "before before"},
        {{200, "x"}, "before before available"}};
    for (const auto& [reply, expected] : rows) {
        init();
        manager.newVersion.set("before");
        manager.updateUrl.set("before");
        manager.setIncommingUpdatesAvailable(true);
        m_server.reply("GET /api/v1" + path, reply);
        HandleApiRequests::fetchLatestVersion(currentApiURL() + "/apple-version", "1.2");
        QCOMPARE(m_log.lines().front(), "Sending request to URL: " + api(path));
        QTRY_VERIFY(m_log.lines().size() > 1);
        // What is asked later is told later.
        HandleApiRequests::fetchUserDetails(currentApiURL() + "/me", "", [](UserDetailsManager&) {});
        QTRY_COMPARE(UserDetailsManager::shared().email(), std::string("a@b.example"));
        const std::string seen = manager.newVersion.get().value_or("-") + " " + manager.updateUrl.get().value_or("-") +
                                 (manager.incommingUpdatesAvailable() ? " available" : "");
        QStringList lines = m_log.lines().filter("The new available version is: ");
        lines.prepend(QString::fromStdString(seen));
        QCOMPARE(lines.join('|'), expected);
    }
}

void RequestsTest::summary_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<std::vector<TestReply>>("replies");
    QTest::addColumn<QString>("lines"); // beginnings, after those of the user's details
    QTest::addColumn<QString>("outcome");
    const QByteArray content("c");
    const TestReply good{200, R"({"response":"Short."})"};
    const auto row = [](const char* name, const QByteArray& text, const std::vector<TestReply>& replies,
                        const QString& lines,
                        const char* outcome) { QTest::newRow(name) << text << replies << lines << outcome; };
    const auto fourTimes = [](const QString& line) {
        return QStringLiteral("%1|Retrying request, attempt 1...|%1|Retrying request, attempt 2...|%1|Retrying "
                              "request, attempt 3...|%1|Max retry attempts reached. Request failed.")
            .arg(line);
    };
    row("at once", content, {good}, "Response from server: {", "m1: Short.");
    row("500, cut, no JSON, well", content,
        {{500}, {200, "half of it", {}, TestReply::Manner::CutInBody}, {200, "no JSON"}, good},
        "Server error: 500|Retrying request, attempt 1...|Error sending request: URLError.networkConnectionLost: |"
        "Retrying request, attempt 2...|Retrying request, attempt 3...|Response from server: {",
        "m1: Short.");
    row("500 for good", content, {{500}}, fourTimes("Server error: 500"), "none");
    row("no text", content, {{200, "{}"}, good}, "Response from server: {}|The 'response' key ", "none");
    row("cannot be encoded", "caf\xe9", {good}, fourTimes("Failed to encode JSON: "), "none");
    row("without the user's details", content, {}, "Email or name not found in response", "none");
}

void RequestsTest::summary()
{
    QFETCH(const QByteArray, content);
    QFETCH(const std::vector<TestReply>, replies);
    QFETCH(const QString, lines);
    QFETCH(const QString, outcome);
    const ManualTime time;
    if (replies.empty()) {
        m_server.reset();
        m_server.reply("GET /api/v1/me", "{}");
    }
    for (const TestReply& reply : replies) {
        m_server.reply("POST /api/v1/summarize", reply);
    }
    Outcomes outcomes;
    {
        const auto held = m_server.hold(); // Its reply brings lines of its own.
        askForSummary(content.toStdString(), "m1", outcomes);
        QCOMPARE(m_log.take(), (QStringList{"URL: " + api("/me"), "ACCESS TOKEN: token"}));
    }
    // Each retry waits for exactly 2.0 seconds of the main queue.
    const auto retries = static_cast<std::size_t>(lines.count(QStringLiteral("Retrying request")));
    for (std::size_t attempt = 1; attempt <= retries; ++attempt) {
        QTRY_COMPARE(ManualTime::pendingDelays().size(), std::size_t(1));
        QVERIFY(std::abs(ManualTime::pendingDelays().front() - 2.0) < 1e-6);
        ManualTime::advance(2.0);
    }
    QTRY_COMPARE(m_log.lines().size(), lines.count('|') + 1);
    QTRY_COMPARE(outcomes.texts().size(), 1);
    MainSchedule::shared().drain();
    QVERIFY2(beginWith(m_log.lines(), lines.split('|')), qPrintable(m_log.lines().join('\n')));
    QCOMPARE(outcomes.texts().join(QString()), outcome);
    QVERIFY(ManualTime::pendingDelays().empty());
    const auto requests = m_server.requests();
    QCOMPARE(requests.size(), content == "c" && !replies.empty() ? retries + 2 : std::size_t(1));
    for (std::size_t i = 1; i < requests.size(); ++i) {
        QVERIFY(requests[i].body.starts_with(R"({"content":"c","email":"a@b.example")"));
        QCOMPARE(requests[i].headers.at("accept"), std::string("application/json"));
    }
}

void RequestsTest::summariesSideBySide()
{
    const ManualTime time;
    m_server.reply("POST /api/v1/summarize", TestReply{500});
    m_server.reply("POST /api/v1/summarize", TestReply{500});
    m_server.reply("POST /api/v1/summarize", R"({"response":"Short."})");
    Outcomes outcomes;
    askForSummary("c", "m1", outcomes);
    askForSummary("c", "m2", outcomes);
    QTRY_COMPARE(ManualTime::pendingDelays().size(), std::size_t(2));
    ManualTime::advance(2.0);
    QTRY_COMPARE(outcomes.texts().size(), 2);
    QVERIFY(outcomes.texts().contains("m1: Short.") && outcomes.texts().contains("m2: Short."));
    // Each has its own count of attempts.
    QCOMPARE(m_log.lines().filter(QStringLiteral("attempt 1...")).size(), 2);
    QCOMPARE(m_log.lines().filter(QStringLiteral("attempt 2...")).size(), 0);
}

QUILLMATE_TEST(RequestsTest, QCoreApplication)
#include "RequestsTest.moc"
