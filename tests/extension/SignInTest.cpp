#include "extension/PanelFixture.h"
#include "features/CurrentMessage.h"
#include "platform/foundation/net/URLSession.h"
#include "platform/foundation/schedule/MainSchedule.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "state/APIManager.h"
#include "state/AuthManager.h"
#include "state/ServicePlace.h"
#include "state/UserDetailsManager.h"
#include "support/TestProgram.h"
#include "views/ViewTestApplication.h"

#include <QScopeGuard>

#include <algorithm>
#include <atomic>
#include <cmath>

using namespace quillmate;

class SignInTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_fixture.reset(); }
    void wholeFlow();
    void comesToNothing_data();
    void comesToNothing();
    void closedPanelStopsPolling();
    void closedPanelTakesNobodysPlace();
    void pressedAgain();
    void endsEarly_data();
    void endsEarly();
    void twoPanels();
    void serviceOfThisMachine();
    void anotherEnvironment();

private:
    void login();
    /// The next poll goes out in exactly that many seconds.
    static bool isPollWaiting(double seconds = 2.0)
    {
        const auto delays = ManualTime::pendingDelays();
        return std::any_of(delays.begin(), delays.end(),
                           [seconds](double delay) { return std::abs(delay - seconds) < 1e-6; });
    }
    static void advanceToNextPoll();
    /// A sign-in whose first poll has been answered, by the first of these.
    void beginPolling(const std::vector<std::string>& replies);

    PanelFixture m_fixture;
};

namespace
{

const std::string create = "GET /plugin-auth/session-request/";
const std::string poll = "GET /plugin-auth/session-request/s1";
const std::string session = R"({"id":"s1","login_url":"https://other.example/login/s1","access_token":null})";
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

void SignInTest::advanceToNextPoll()
{
    QTRY_VERIFY(isPollWaiting());
    ManualTime::advance(2.0);
}

void SignInTest::beginPolling(const std::vector<std::string>& replies)
{
    m_fixture.server().reply(create, session);
    for (const std::string& reply : replies) {
        m_fixture.server().reply(poll, reply);
    }
    login();
    QTRY_VERIFY(isPollWaiting());
}

void SignInTest::wholeFlow()
{
    const ManualTime time;
    m_fixture.server().reply(create, session);
    m_fixture.server().reply(poll, waiting);
    m_fixture.server().reply(poll, "");
    m_fixture.server().reply(poll, TestReply{503, session});
    m_fixture.server().reply(poll, TestReply{200, waiting, {}, TestReply::Manner::CutInBody});
    m_fixture.server().reply(poll, granted);
    login();
    advanceToNextPoll();
    QCOMPARE(m_fixture.opened(), std::vector<std::string>{"https://other.example/login/s1"});
    advanceToNextPoll();
    advanceToNextPoll();
    advanceToNextPoll();
    QTRY_VERIFY(m_fixture.item("sessionModalView"));
    QVERIFY(!m_fixture.item("loginButton"));
    // The keyboard was on the button, and is on the selected tab.
    const auto* focused = m_fixture.window().activeFocusItem();
    QVERIFY(focused);
    QCOMPARE(focused->property("text").toString(), QStringLiteral("Quick response"));
    QVERIFY(focused->property("visualFocus").toBool());
    QCOMPARE(AuthManager::shared().accessToken.get(), std::optional<std::string>("the token"));

    QStringList lines = m_fixture.log().take();
    QVERIFY(lines.at(13).startsWith(QLatin1String("Error making GET request: URLError.networkConnectionLost")));
    lines.removeAt(13);
    const QString origin = QString::fromStdString(std::string(serviceEnvironments().back().baseURL));
    QCOMPARE(lines.mid(0, 14),
             (QStringList{fallback, "CURRENT BASE API URL IN API MANAGER " + origin, fallback, "URL is: " + origin,
                          fallback, "CURRENT BASE API URL IN API MANAGER " + origin, fallback, fallback,
                          "BASE URL IN LOGIN FUNCTION IS: " + origin, fallback, stillWaiting, "No data received",
                          stillWaiting, "Access token received: the token"}));
    QVERIFY(!m_fixture.server().requests().front().headers.contains("authorization"));
    // The panel's first acts ask for the version and for who the user is, once.
    QTRY_COMPARE(UserDetailsManager::shared().email(), std::string("a@b.example"));
    QTRY_COMPARE(m_fixture.server().requests().size(), std::size_t(8));
    auto requested = m_fixture.server().lines();
    std::sort(requested.begin(), requested.end());
    QCOMPARE(requested[0], "GET /api/v1" + PanelFixture::versionCheck());
    QCOMPARE(requested[1], std::string("GET /api/v1/me"));
}

void SignInTest::comesToNothing_data()
{
    QTest::addColumn<TestReply>("sessionReply");
    QTest::addColumn<TestReply>("pollReply");
    QTest::addColumn<QString>("line"); // its beginning; empty for none
    QTest::addColumn<int>("pages");    // handed to the browser
    QTest::addColumn<int>("requests");
    const auto unreadable = QStringLiteral("Error parsing access token JSON response: ");
    const TestReply page{200, "<html>"};
    const TestReply yes{200, granted};
    QTest::newRow("no session") << page << yes << "Error parsing JSON response: " << 0 << 1;
    QTest::newRow("no page") << TestReply{200, R"({"id":"s1","login_url":null})"} << yes << "" << 0 << 1;
    QTest::newRow("an error page in place of the token") << TestReply{200, session} << page << unreadable << 1 << 2;
    QTest::newRow("no URL in place of a page")
        << TestReply{200, R"({"id":"s1","login_url":"https://a b/"})"} << page << unreadable << 0 << 2;
    QTest::newRow("an id that is no part of a URL")
        << TestReply{200, R"({"id":"s 1","login_url":"https://other.example/l"})"} << page << "Invalid URL" << 1 << 1;
}

Q_DECLARE_METATYPE(quillmate::TestReply)

void SignInTest::comesToNothing()
{
    QFETCH(const TestReply, sessionReply);
    QFETCH(const TestReply, pollReply);
    QFETCH(const QString, line);
    QFETCH(const int, pages);
    QFETCH(const int, requests);
    const ManualTime time;
    m_fixture.server().reply(create, sessionReply);
    m_fixture.server().reply(create, "<html>"); // for a second sign-in
    m_fixture.server().reply(poll, pollReply);
    login();
    if (line.isEmpty()) {
        // Nothing tells that it is over; a second sign-in that fails loudly comes after it.
        QTRY_COMPARE(m_fixture.server().requests().size(), std::size_t(1));
        QTRY_VERIFY((m_fixture.click("loginButton"), m_fixture.server().requests().size() >= 2));
        QTRY_VERIFY(m_fixture.log().lines().last().startsWith(QLatin1String("Error parsing JSON response: ")));
    } else {
        QTRY_VERIFY(!m_fixture.log().lines().filter(line).isEmpty());
    }
    MainSchedule::shared().drain();
    QCOMPARE(m_fixture.opened().size(), static_cast<std::size_t>(pages));
    const auto lines = m_fixture.server().lines();
    QCOMPARE(static_cast<int>(lines.size() - std::count(lines.begin(), lines.end(), create)), requests - 1);
    ManualTime::advance(3.0);                                     // Until a press opens a page again.
    QCOMPARE(ManualTime::pendingDelays().size(), std::size_t(1)); // the update check alone
    QVERIFY(m_fixture.item("loginButton"));
    QVERIFY(!AuthManager::shared().accessToken.get());
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
    QTRY_VERIFY(isPollWaiting());
    m_fixture.close();
    // The poll that waits keeps the panel; it is sent, and its reply finds nobody.
    QVERIFY(!panel.expired());
    {
        const auto held = m_fixture.server().hold(); // Until the step that sends it has let go of the panel.
        ManualTime::advance(2.0);
        QVERIFY(panel.expired());
    }
    QTRY_COMPARE(m_fixture.log().lines().filter(stillWaiting).size(), 2);
    QVERIFY(!isPollWaiting());
    ManualTime::advance(3600.0);
    QCOMPARE(m_fixture.server().requests().size(), std::size_t(3)); // the session, and two polls
}

void SignInTest::closedPanelTakesNobodysPlace()
{
    const ManualTime time;
    beginPolling({waiting, granted});
    m_fixture.close();
    AuthManager& manager = AuthManager::shared();
    {
        const auto held = m_fixture.server().hold();
        ManualTime::advance(2.0);
        manager.accessToken.set("another panel's");
    }
    QTRY_VERIFY(m_fixture.log().lines().contains(QStringLiteral("Access token received: the token")));
    QCoreApplication::processEvents();
    MainSchedule::shared().drain();
    QCOMPARE(manager.accessToken.get(), std::optional<std::string>("another panel's"));
}

void SignInTest::pressedAgain()
{
    const ManualTime time;
    m_fixture.server().reply(create, session);
    m_fixture.server().reply(poll, waiting);
    login();
    m_fixture.click("loginButton");
    QTRY_COMPARE(m_fixture.opened().size(), std::size_t(1));
    m_fixture.click("loginButton");
    QTRY_VERIFY(isPollWaiting());
    QCOMPARE(m_fixture.opened().size(), std::size_t(1));
    QCOMPARE(m_fixture.server().requests().size(), std::size_t(2));
    // Whoever has closed the page gets another one.
    ManualTime::advance(3.0);
    m_fixture.click("loginButton");
    QTRY_COMPARE(m_fixture.opened().size(), std::size_t(2));
    // Another panel has signed in meanwhile.
    AuthManager::shared().accessToken.set("token");
    m_fixture.click("loginButton");
    MainSchedule::shared().drain();
    QVERIFY(m_fixture.item("sessionModalView"));
    const auto lines = m_fixture.server().lines();
    QCOMPARE(std::count(lines.begin(), lines.end(), create), 2);
}

void SignInTest::endsEarly_data()
{
    QTest::addColumn<QString>("event");
    QTest::addColumn<bool>("showsPanel");
    QTest::newRow("log-out") << "log-out" << false;
    QTest::newRow("another environment as the token comes") << "environment" << false;
    QTest::newRow("a token of another panel") << "token" << true;
}

void SignInTest::endsEarly()
{
    QFETCH(const QString, event);
    QFETCH(const bool, showsPanel);
    const ManualTime time;
    beginPolling({waiting, granted});
    if (event == "environment") {
        const auto held = m_fixture.server().hold();
        ManualTime::advance(2.0);
        APIManager::selectApiEndpoint("staging");
    } else if (event == "log-out") {
        AuthManager::shared().logout();
    } else {
        AuthManager::shared().accessToken.set("another panel's");
    }
    const auto polls = [this] {
        const auto lines = m_fixture.server().lines();
        return std::count(lines.begin(), lines.end(), poll);
    };
    ManualTime::advance(2.0);
    // What is asked last is answered last.
    QTRY_COMPARE(polls(), event == "environment" ? 2 : 1);
    m_fixture.server().reply("GET /last", "{}");
    std::atomic<bool> answered = false;
    URLSession::shared()
        .dataTask(URLRequest{URL::parseAbsolute("https://other.example/last").value()},
                  [&answered](const auto&, const auto&, const auto&) { answered = true; })
        ->resume();
    QTRY_VERIFY(answered);
    MainSchedule::shared().drain();
    QCOMPARE(polls(), event == "environment" ? 2 : 1);
    QCOMPARE(m_fixture.item("sessionModalView") != nullptr, showsPanel);
    QCOMPARE(AuthManager::shared().accessToken.get().has_value(), showsPanel);
    QVERIFY(!isPollWaiting());
}

void SignInTest::twoPanels()
{
    const ManualTime time;
    m_fixture.server().reply(create, session);
    m_fixture.server().reply(poll, granted);
    const auto other = ComposeSessionViewController::make(currentMessage());
    QQuickWindow otherWindow;
    other->view()->item()->setParentItem(otherWindow.contentItem());
    login();
    QTRY_VERIFY(m_fixture.item("sessionModalView"));
    QVERIFY(!other->isLoggedIn());
    QCOMPARE(other->children().size(), std::size_t(0)); // still the sign-in screen
    other->view()->item()->setParentItem(nullptr);
}

void SignInTest::serviceOfThisMachine()
{
    const ManualTime time;
    setServiceOfThisMachine(true);
    const auto another = qScopeGuard([] { setServiceOfThisMachine(false); });
    m_fixture.server().reply(create, session);
    m_fixture.server().reply(poll, waiting);
    m_fixture.server().reply(poll, granted);
    login();
    QTRY_VERIFY(isPollWaiting(0.4));
    ManualTime::advance(0.4);
    QTRY_VERIFY(m_fixture.item("sessionModalView"));
}

void SignInTest::anotherEnvironment()
{
    const ManualTime time;
    UserDefaults::standard().setString("selectedApiEndpoint", "staging");
    m_fixture.server().reply(create, session);
    m_fixture.server().reply(poll, granted);
    login();
    QTRY_VERIFY(m_fixture.item("sessionModalView"));
    QCOMPARE(m_fixture.server().requests().front().headers.at("host"),
             std::string(serviceEnvironments().at(1).baseURL.substr(8)));
    QVERIFY(!m_fixture.log().lines().contains(fallback));
}

QUILLMATE_TEST(SignInTest, quillmate::ViewTestApplication)
#include "SignInTest.moc"
