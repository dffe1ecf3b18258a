#include "extension/PanelFixture.h"
#include "platform/foundation/MainSchedule.h"
#include "platform/foundation/UserDefaults.h"
#include "state/AuthManager.h"

#include <QTest>

#include <cmath>

using namespace quillmate;

class SignInTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_fixture.reset(); }
    void wholeFlow();
    void sessionThatFails_data();
    void sessionThatFails();
    void pollThatGoesOn_data();
    void pollThatGoesOn();
    void pollThatEnds_data();
    void pollThatEnds();
    void pagesThatAreNotOpened_data();
    void pagesThatAreNotOpened();
    void closedPanelStopsPolling();
    void twoPanels();
    void anotherEnvironment();

private:
    void login();
    static void advanceToNextPoll();
    [[nodiscard]] QStringList linesAfterLogin();

    PanelFixture m_fixture;
};

namespace
{

const std::string create = "GET /plugin-auth/session-request/";
const std::string poll = "GET /plugin-auth/session-request/s1";
const std::string session = R"({"id":"s1","login_url":"https://quillmate.example/login/s1","access_token":null})";
const std::string waiting = R"({"id":"s1"})";
const std::string granted = R"({"id":"s1","access_token":"the token","refresh_token":"r","new":[]})";
const QString stillWaiting = QStringLiteral("Access token is null. Continuing request...");
const QString fallback =
    QStringLiteral("Error: Invalid or missing Base API endpoint in UserDefaults. Falling back to live.");

} // namespace

void SignInTest::login()
{
    m_fixture.show();
    m_fixture.log().take();
    m_fixture.click("loginButton");
}

/// The lines that come after those of the press itself, which are the same each time.
QStringList SignInTest::linesAfterLogin()
{
    return m_fixture.log().lines().mid(7);
}

void SignInTest::advanceToNextPoll()
{
    QTRY_COMPARE(ManualTime::pendingDelays().size(), std::size_t(2)); // the poll's, and the update check's
    QVERIFY(std::abs(ManualTime::pendingDelays().front() - 2.0) < 1e-6);
    ManualTime::advance(2.0);
}

void SignInTest::wholeFlow()
{
    const ManualTime time;
    m_fixture.server().reply(create, session);
    m_fixture.server().reply(poll, waiting);
    m_fixture.server().reply(poll, TestReply{503, session});
    m_fixture.server().reply(poll, TestReply{200, waiting, {}, TestReply::Manner::CutInBody});
    m_fixture.server().reply(poll, granted);
    login();
    advanceToNextPoll();
    QCOMPARE(m_fixture.opened(), std::vector<std::string>{"https://quillmate.example/login/s1"});
    advanceToNextPoll();
    advanceToNextPoll();
    QTRY_VERIFY(m_fixture.item("sessionModalView"));
    QVERIFY(!m_fixture.item("loginButton"));
    // The keyboard was on the button, and stays in the panel.
    const auto* focused = m_fixture.window().activeFocusItem();
    QVERIFY(focused && m_fixture.item("sessionModalView")->isAncestorOf(focused));
    QCOMPARE(AuthManager::shared().accessToken.get(), std::optional<std::string>("the token"));

    QStringList lines = m_fixture.log().take();
    QVERIFY(lines.at(12).startsWith(QLatin1String("Error making GET request: URLError.networkConnectionLost")));
    lines.removeAt(12);
    const QString origin = QStringLiteral("https://quillmate.example");
    QCOMPARE(lines.mid(0, 13),
             (QStringList{fallback, "CURRENT BASE API URL IN API MANAGER " + origin, fallback, "URL is: " + origin,
                          fallback, "CURRENT BASE API URL IN API MANAGER " + origin, fallback, fallback,
                          "BASE URL IN LOGIN FUNCTION IS: " + origin, fallback, stillWaiting, stillWaiting,
                          "Access token received: the token"}));
    const auto requests = m_fixture.server().requests();
    QVERIFY(!requests.front().headers.contains("authorization"));
    // The panel's first act asks for the version; no details are asked for here.
    QTRY_COMPARE(m_fixture.server().lines().back(), std::string("GET /api/v1/apple-version?currentVersion=1.0.0"));
}

void SignInTest::sessionThatFails_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("manner");
    QTest::addColumn<QString>("line"); // its beginning; empty for none
    const int ordinary = static_cast<int>(TestReply::Manner::Ordinary);
    const auto unreadable = QStringLiteral("Error parsing JSON response: ");
    QTest::newRow("no JSON") << QByteArray("<html>") << ordinary << unreadable;
    QTest::newRow("nothing") << QByteArray("") << ordinary << unreadable;
    QTest::newRow("a list") << QByteArray("[]") << ordinary << unreadable;
    QTest::newRow("no id") << QByteArray(R"({"login_url":"https://x.example"})") << ordinary << unreadable;
    QTest::newRow("an id that is a number")
        << QByteArray(R"({"id":1,"login_url":"https://x.example"})") << ordinary << unreadable;
    QTest::newRow("a page that is a number") << QByteArray(R"({"id":"s1","login_url":1})") << ordinary << unreadable;
    QTest::newRow("no page") << QByteArray(R"({"id":"s1"})") << ordinary << QString();
    QTest::newRow("page null") << QByteArray(R"({"id":"s1","login_url":null})") << ordinary << QString();
    QTest::newRow("cut") << QByteArray("abcdef") << static_cast<int>(TestReply::Manner::CutInBody)
                         << QStringLiteral("Error making GET request: URLError.networkConnectionLost: ");
}

void SignInTest::sessionThatFails()
{
    QFETCH(const QByteArray, body);
    QFETCH(const int, manner);
    QFETCH(const QString, line);
    const ManualTime time;
    m_fixture.server().reply(create, {200, body.toStdString(), {}, static_cast<TestReply::Manner>(manner)});
    m_fixture.server().reply(create, "<html>"); // for a second sign-in
    m_fixture.server().reply(poll, granted);
    login();
    if (line.isEmpty()) {
        // Nothing tells that it is over; a second sign-in that fails loudly comes after it.
        QTRY_COMPARE(m_fixture.server().requests().size(), std::size_t(1));
        m_fixture.click("loginButton");
        QTRY_VERIFY(m_fixture.log().lines().last().startsWith(QLatin1String("Error parsing JSON response: ")));
    } else {
        QTRY_COMPARE(linesAfterLogin().size(), 1);
        QVERIFY2(linesAfterLogin().front().startsWith(line), qPrintable(linesAfterLogin().front()));
    }
    for (const std::string& request : m_fixture.server().lines()) {
        QCOMPARE(request, create);
    }
    QVERIFY(m_fixture.opened().empty());
    QVERIFY(m_fixture.item("loginButton"));
}

void SignInTest::pollThatGoesOn_data()
{
    QTest::addColumn<TestReply>("reply");
    QTest::addColumn<QString>("line");
    QTest::newRow("waiting") << TestReply{200, waiting} << stillWaiting;
    QTest::newRow("token null") << TestReply{200, session} << stillWaiting;
    QTest::newRow("waiting with a status of failure") << TestReply{500, waiting} << stillWaiting;
    QTest::newRow("cut") << TestReply{200, granted, {}, TestReply::Manner::CutInBody}
                         << QStringLiteral("Error making GET request: URLError.");
}

Q_DECLARE_METATYPE(quillmate::TestReply)

void SignInTest::pollThatGoesOn()
{
    QFETCH(const TestReply, reply);
    QFETCH(const QString, line);
    const ManualTime time;
    m_fixture.server().reply(create, session);
    m_fixture.server().reply(poll, reply);
    login();
    for (std::size_t polls = 1; polls <= 5; ++polls) {
        advanceToNextPoll();
        QVERIFY(m_fixture.log().lines().last().startsWith(line));
    }
    QVERIFY(!AuthManager::shared().accessToken.get());
    QCOMPARE(m_fixture.opened().size(), std::size_t(1));
}

void SignInTest::pollThatEnds_data()
{
    QTest::addColumn<QByteArray>("sessionBody");
    QTest::addColumn<QByteArray>("pollBody");
    QTest::addColumn<QString>("line");
    const QByteArray ordinary = QByteArray::fromStdString(session);
    const auto unreadable = QStringLiteral("Error parsing access token JSON response: ");
    QTest::newRow("an error page") << ordinary << QByteArray("<html>") << unreadable;
    QTest::newRow("no id") << ordinary << QByteArray(R"({"access_token":"t"})") << unreadable;
    QTest::newRow("nothing") << ordinary << QByteArray("") << unreadable;
    QTest::newRow("an id that is no part of a URL")
        << QByteArray(R"({"id":"s 1","login_url":"https://quillmate.example/l"})") << QByteArray("{}") << "Invalid URL";
}

void SignInTest::pollThatEnds()
{
    QFETCH(const QByteArray, sessionBody);
    QFETCH(const QByteArray, pollBody);
    QFETCH(const QString, line);
    const ManualTime time;
    m_fixture.server().reply(create, sessionBody.toStdString());
    m_fixture.server().reply(poll, pollBody.toStdString());
    login();
    QTRY_VERIFY(m_fixture.log().lines().last().startsWith(line));
    QTRY_COMPARE(m_fixture.opened().size(), std::size_t(1));
    QCOMPARE(ManualTime::pendingDelays().size(), std::size_t(1)); // the update check alone
    QVERIFY(m_fixture.item("loginButton"));
}

void SignInTest::pagesThatAreNotOpened_data()
{
    QTest::addColumn<QByteArray>("page");
    QTest::newRow("a program") << QByteArray("file:///bin/sh");
    QTest::newRow("another scheme") << QByteArray("javascript:alert(1)");
    QTest::newRow("relative") << QByteArray("/login");
    QTest::newRow("no URL") << QByteArray("https://a b/");
    QTest::newRow("empty") << QByteArray("");
}

void SignInTest::pagesThatAreNotOpened()
{
    QFETCH(const QByteArray, page);
    const ManualTime time;
    m_fixture.server().reply(create, R"({"id":"s1","login_url":")" + page.toStdString() + "\"}");
    m_fixture.server().reply(poll, granted);
    login();
    // The sign-in itself goes on.
    QTRY_VERIFY(m_fixture.item("sessionModalView"));
    QVERIFY(m_fixture.opened().empty());
}

void SignInTest::closedPanelStopsPolling()
{
    const ManualTime time;
    m_fixture.server().reply(create, session);
    m_fixture.server().reply(poll, waiting);
    std::weak_ptr<ComposeSessionViewController> panel;
    {
        panel = m_fixture.show();
        m_fixture.click("loginButton");
    }
    QTRY_COMPARE(ManualTime::pendingDelays().size(), std::size_t(2));
    m_fixture.close();
    // The poll that waits keeps the panel; it is sent, and its reply finds nobody.
    QVERIFY(!panel.expired());
    {
        const auto held = m_fixture.server().hold(); // Until the step that sends it has let go of the panel.
        ManualTime::advance(2.0);
        QVERIFY(panel.expired());
    }
    QTRY_COMPARE(m_fixture.log().lines().filter(stillWaiting).size(), 2);
    QCOMPARE(ManualTime::pendingDelays().size(), std::size_t(0));
    ManualTime::advance(3600.0);
    QCOMPARE(m_fixture.server().requests().size(), std::size_t(3)); // the session, and two polls
}

void SignInTest::twoPanels()
{
    const ManualTime time;
    m_fixture.server().reply(create, session);
    m_fixture.server().reply(poll, granted);
    const auto other = ComposeSessionViewController::make();
    QQuickWindow otherWindow;
    other->view()->item()->setParentItem(otherWindow.contentItem());
    login();
    QTRY_VERIFY(m_fixture.item("sessionModalView"));
    QVERIFY(!other->isLoggedIn());
    QCOMPARE(other->children().size(), std::size_t(0)); // still the sign-in screen
    other->view()->item()->setParentItem(nullptr);
}

void SignInTest::anotherEnvironment()
{
    const ManualTime time;
    UserDefaults::standard().setString("selectedApiEndpoint", "staging");
    m_fixture.server().reply(create, session);
    m_fixture.server().reply(poll, granted);
    login();
    QTRY_VERIFY(m_fixture.item("sessionModalView"));
    QCOMPARE(m_fixture.server().requests().front().headers.at("host"), std::string("staging.quillmate.example"));
    QVERIFY(!m_fixture.log().lines().contains(fallback));
}

QTEST_MAIN(SignInTest)
#include "SignInTest.moc"
