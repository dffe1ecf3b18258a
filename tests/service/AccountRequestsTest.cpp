#include "platform/foundation/DispatchQueue.h"
#include "service/HandleApiRequests.h"
#include "state/IncommingUpdatesManager.h"
#include "support/LogCapture.h"
#include "support/TestEnvironment.h"
#include "support/TestServer.h"

#include <QSignalSpy>
#include <QTest>
#include <QThread>

using namespace quillmate;

namespace
{

const std::string meURL = "https://quillmate.example/api/v1/me";
const std::string versionURL = "https://quillmate.example/api/v1/apple-version";

TestReply cut()
{
    return {200, R"({"email":"a@b.example","name":"A"})", {}, TestReply::Manner::CutInBody};
}

} // namespace

class AccountRequestsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { TestEnvironment::connectTo(m_server); }
    void init();
    void userDetails_data();
    void userDetails();
    void userDetailsRequest();
    void userDetailsWithoutAServer();
    void version_data();
    void version();
    void versionRequest_data();
    void versionRequest();

private:
    TestEnvironment m_environment;
    TestServer m_server;
};

Q_DECLARE_METATYPE(quillmate::TestReply)

void AccountRequestsTest::init()
{
    m_server.reset();
    UserDetailsManager::shared().setEmail("before@b.example");
    UserDetailsManager::shared().name.set("Before");
    IncommingUpdatesManager::shared().newVersion.set("before");
    IncommingUpdatesManager::shared().updateUrl.set("before");
    IncommingUpdatesManager::shared().setIncommingUpdatesAvailable(true);
}

void AccountRequestsTest::userDetails_data()
{
    QTest::addColumn<TestReply>("reply");
    QTest::addColumn<QString>("line"); // the beginning of the line that follows the two about the request
    QTest::addColumn<bool>("stored");

    const std::string both = R"({"name":"A","email":"a@b.example","more":[1]})";
    const auto parseError = QStringLiteral("Error parsing response data from user details: ");
    const auto missing = QStringLiteral("Email or name not found in response");
    const auto noObject = QStringLiteral("Server error. Please try again.");
    QTest::newRow("both") << TestReply{200, both} << QString() << true;
    QTest::newRow("both with a refusing status") << TestReply{401, both} << QString() << true;
    QTest::newRow("both empty") << TestReply{200, R"({"name":"","email":""})"} << QString() << true;
    QTest::newRow("name null") << TestReply{200, R"({"name":null,"email":"a@b.example"})"} << missing << false;
    QTest::newRow("email a number") << TestReply{200, R"({"name":"A","email":1})"} << missing << false;
    QTest::newRow("refused token") << TestReply{401, R"({"error":"no"})"} << missing << false;
    QTest::newRow("a list") << TestReply{200, "[1]"} << noObject << false;
    QTest::newRow("a bare text") << TestReply{200, R"("a")"} << parseError << false;
    QTest::newRow("no JSON") << TestReply{502, "<html>"} << parseError << false;
    QTest::newRow("nothing") << TestReply{204, ""} << parseError << false;
    QTest::newRow("not UTF-8") << TestReply{200, "{\"name\":\"\xff\"}"} << parseError << false;
    QTest::newRow("nested without end") << TestReply{200, std::string(200'000, '[')} << parseError << false;
    QTest::newRow("cut") << cut() << QStringLiteral("Error: URLError.networkConnectionLost: ") << false;
    QTest::newRow("garbage") << TestReply{200, "what?\n\n", {}, TestReply::Manner::Garbage}
                             << QStringLiteral("Error: URLError.") << false;
    QTest::newRow("closed") << TestReply{200, "", {}, TestReply::Manner::CloseAtOnce}
                            << QStringLiteral("Error: URLError.networkConnectionLost: ") << false;
}

void AccountRequestsTest::userDetails()
{
    QFETCH(const TestReply, reply);
    QFETCH(const QString, line);
    QFETCH(const bool, stored);
    m_server.reply("GET /api/v1/me", reply);
    LogCapture log;
    int completions = 0;
    QSignalSpy changes(&UserDetailsManager::shared(), &UserDetailsManager::emailChanged);
    HandleApiRequests::fetchUserDetails(meURL, "token", [&](UserDetailsManager& manager) {
        QVERIFY(QThread::currentThread() == thread());
        QCOMPARE(&manager, &UserDetailsManager::shared());
        ++completions;
    });
    // The reply may be there before this thread goes on.
    QCOMPARE(log.lines().mid(0, 2), (QStringList{"URL: https://quillmate.example/api/v1/me", "ACCESS TOKEN: token"}));
    if (stored) {
        QTRY_COMPARE(completions, 1);
        QCOMPARE(log.lines().size(), 2);
        QCOMPARE(changes.count(), 1);
        QVERIFY(UserDetailsManager::shared().email() != "before@b.example");
        QVERIFY(UserDetailsManager::shared().name.get() != "Before");
    } else {
        QTRY_COMPARE(log.lines().size(), 3);
        QVERIFY2(log.lines().last().startsWith(line), qPrintable(log.lines().last()));
        QCOMPARE(completions, 0);
        QCOMPARE(UserDetailsManager::shared().email(), std::string("before@b.example"));
        QCOMPARE(UserDetailsManager::shared().name.get(), std::optional<std::string>("Before"));
    }
}

void AccountRequestsTest::userDetailsRequest()
{
    m_server.reply("GET /api/v1/me", R"({"email":"a@b.example","name":"A"})");
    int completions = 0;
    HandleApiRequests::fetchUserDetails(meURL, "", [&](UserDetailsManager&) { ++completions; });
    QTRY_COMPARE(completions, 1);
    const auto request = m_server.requests().front();
    QCOMPARE(request.headers.at("authorization"), std::string("Bearer "));
    QVERIFY(!request.headers.contains("content-type"));
    QCOMPARE(request.headers.at("host"), std::string("quillmate.example"));

    const LogCapture log;
    for (const char* url : {"", "/me", "quillmate.example/me", "https://quill mate.example/me"}) {
        HandleApiRequests::fetchUserDetails(url, "token", [&](UserDetailsManager&) { ++completions; });
    }
    QCOMPARE(log.lines(), QStringList(4, QStringLiteral("Invalid URL")));
    QCOMPARE(m_server.requests().size(), std::size_t(1));
}

void AccountRequestsTest::userDetailsWithoutAServer()
{
    // No server stands behind this host and nothing is looked up on the network: the name is reserved for that (RFC
    // 6761).
    const LogCapture log;
    HandleApiRequests::fetchUserDetails("https://nowhere.invalid/me", "token",
                                        [](UserDetailsManager&) { QFAIL("told"); });
    QTRY_COMPARE_WITH_TIMEOUT(log.lines().size(), 3, 30000);
    QVERIFY(log.lines().last().startsWith(QLatin1String("Error: URLError.")));
}

void AccountRequestsTest::version_data()
{
    QTest::addColumn<TestReply>("reply");
    QTest::addColumn<QStringList>("lines");  // beginnings
    QTest::addColumn<QString>("newVersion"); // "-" for absent
    QTest::addColumn<QString>("updateUrl");
    QTest::addColumn<bool>("available");

    const auto rendering = QStringLiteral("JSON response is: {");
    const auto noVersion = QStringLiteral("New app version is null in response");
    const auto noLink = QStringLiteral("New download URL is null in response");
    const auto version = QStringLiteral("The new available version is: 2.0");
    const QString before = QStringLiteral("before");
    const QString absent = QStringLiteral("-");
    QTest::newRow("both") << TestReply{200, R"({"current_version":"2.0","download_url":"u"})"}
                          << QStringList{rendering, version} << "2.0"
                          << "u" << true;
    QTest::newRow("both with a status of failure")
        << TestReply{500, R"({"current_version":"2.0","download_url":"u"})"} << QStringList{rendering, version} << "2.0"
        << "u" << true;
    QTest::newRow("only the link") << TestReply{200, R"({"download_url":"u"})"} << QStringList{rendering, noVersion}
                                   << absent << "u" << true;
    QTest::newRow("only the version") << TestReply{200, R"({"current_version":"2.0"})"}
                                      << QStringList{rendering, noLink, version} << "2.0" << absent << false;
    QTest::newRow("the link a number") << TestReply{200, R"({"current_version":"2.0","download_url":1})"}
                                       << QStringList{rendering, noLink, version} << "2.0" << absent << false;
    QTest::newRow("neither") << TestReply{200, "{}"} << QStringList{rendering, noVersion, noLink} << absent << absent
                             << false;
    QTest::newRow("no object") << TestReply{200, "[]"} << QStringList{"Server error. Please try again."} << before
                               << before << false;
    QTest::newRow("a bare text") << TestReply{200, R"("x")"} << QStringList{"Error parsing response data from server: "}
                                 << before << before << true;
    QTest::newRow("cut") << cut() << QStringList{"Error: URLError.networkConnectionLost"} << before << before << true;
}

void AccountRequestsTest::version()
{
    QFETCH(const TestReply, reply);
    QFETCH(const QStringList, lines);
    QFETCH(const QString, newVersion);
    QFETCH(const QString, updateUrl);
    QFETCH(const bool, available);
    m_server.reply("GET /api/v1/apple-version?currentVersion=1.0.0", reply);
    LogCapture log;
    HandleApiRequests::fetchLatestVersion(versionURL, "1.0.0");
    QCOMPARE(log.lines().front(),
             "Sending request to URL: " + QString::fromStdString(versionURL) + "?currentVersion=1.0.0");
    QTRY_COMPARE(log.lines().size(), lines.size() + 1);
    // What the handler queued for the main thread has run once this has.
    bool drained = false;
    DispatchQueue::main().async([&] { drained = true; });
    QTRY_VERIFY(drained);
    for (qsizetype i = 0; i < lines.size(); ++i) {
        QVERIFY2(log.lines().at(i + 1).startsWith(lines.at(i)), qPrintable(log.lines().at(i + 1)));
    }
    const IncommingUpdatesManager& manager = IncommingUpdatesManager::shared();
    QCOMPARE(QString::fromStdString(manager.newVersion.get().value_or("-")), newVersion);
    QCOMPARE(QString::fromStdString(manager.updateUrl.get().value_or("-")), updateUrl);
    QCOMPARE(manager.incommingUpdatesAvailable(), available);
}

void AccountRequestsTest::versionRequest_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("target"); // empty: nothing is sent
    QTest::addColumn<QString>("line");
    const QString url = QString::fromStdString(versionURL);
    QTest::newRow("plain") << url << "1.0.0"
                           << "/api/v1/apple-version?currentVersion=1.0.0"
                           << "";
    QTest::newRow("blank and ampersand") << url << "1 0&x=y"
                                         << "/api/v1/apple-version?currentVersion=1%200%26x%3Dy"
                                         << "";
    QTest::newRow("other scripts") << url << "é+"
                                   << "/api/v1/apple-version?currentVersion=%C3%A9%2B"
                                   << "";
    QTest::newRow("an earlier query goes") << url + "?a=b&c"
                                           << "1"
                                           << "/api/v1/apple-version?currentVersion=1"
                                           << "";
    QTest::newRow("no URL") << "https://a b"
                            << "1"
                            << ""
                            << "Invalid URL";
    QTest::newRow("nowhere to send it") << "apple-version"
                                        << "1"
                                        << ""
                                        << "Failed to construct URL with query parameter";
}

void AccountRequestsTest::versionRequest()
{
    QFETCH(const QString, url);
    QFETCH(const QString, version);
    QFETCH(const QString, target);
    QFETCH(const QString, line);
    const LogCapture log;
    HandleApiRequests::fetchLatestVersion(url.toStdString(), version.toStdString());
    if (target.isEmpty()) {
        QCOMPARE(log.lines(), QStringList{line});
        return;
    }
    QTRY_COMPARE(m_server.requests().size(), std::size_t(1));
    QCOMPARE(m_server.lines().front(), "GET " + target.toStdString());
    QVERIFY(!m_server.requests().front().headers.contains("authorization"));
    QTRY_VERIFY(log.lines().size() > 1); // the reply has been read
}

QTEST_GUILESS_MAIN(AccountRequestsTest)
#include "AccountRequestsTest.moc"
