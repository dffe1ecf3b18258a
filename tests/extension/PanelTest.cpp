#include "extension/PanelFixture.h"
#include "platform/foundation/NotificationCenter.h"
#include "platform/foundation/schedule/MainSchedule.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "state/APIManager.h"
#include "state/AuthManager.h"
#include "support/TestProgram.h"
#include "views/ViewTestApplication.h"

#include <QRegularExpression>

#include <algorithm>

using namespace quillmate;

class PanelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void signedOut();
    void signedIn();
    void updateChecks();
    void logOutAndInAgain();
    void closedPanelIsFreed();

private:
    void showSignedIn();
    [[nodiscard]] QString shownSummary() const;

    PanelFixture m_fixture;
};

namespace
{

const std::string me = "GET /api/v1/me";
const std::string summarize = "POST /api/v1/summarize";
const std::string shortSummary = R"({"response":"Short."})";

} // namespace

void PanelTest::initTestCase()
{
    // The first use of each is told of once; what follows is the same in every case then.
    std::ignore = currentApiURL();
    std::ignore = currentBaseURL();
}

void PanelTest::init()
{
    m_fixture.reset();
    PanelFixture::replyTo("m1", "The content");
}

void PanelTest::showSignedIn()
{
    AuthManager::shared().accessToken.set("token");
    m_fixture.show();
}

QString PanelTest::shownSummary() const
{
    const auto* item = m_fixture.item("summaryText");
    return item ? item->property("text").toString() : QString();
}

void PanelTest::signedOut()
{
    const ManualTime time;
    m_fixture.show();
    QVERIFY(m_fixture.item("loginButton"));
    QVERIFY(!m_fixture.item("sessionModalView"));
    QCOMPARE(m_fixture.log().lines(), QStringList{"i enter in the login content view page"});
    QCOMPARE(ManualTime::pendingDelays(), std::vector<double>{43200.0});
    QVERIFY(m_fixture.server().requests().empty());
}

void PanelTest::signedIn()
{
    const ManualTime time;
    m_fixture.server().reply(summarize, shortSummary);
    showSignedIn();
    QVERIFY(m_fixture.item("sessionModalView"));
    QVERIFY(!m_fixture.item("loginButton"));
    QTRY_COMPARE(shownSummary(), QStringLiteral("Short."));
    // The controller's own question, the version, the summary's refresh of the details, the summary.
    auto lines = m_fixture.server().lines();
    std::sort(lines.begin(), lines.end());
    QCOMPARE(lines, (std::vector<std::string>{"GET /api/v1" + PanelFixture::versionCheck(), me, me, summarize}));
    const QString url = QString::fromStdString(currentApiURL());
    // Of what is sent, wherever the replies' own lines stand.
    QCOMPARE(m_fixture.log().lines().filter(QRegularExpression("^(URL|ACCESS TOKEN|Sending request)")).mid(0, 5),
             (QStringList{"URL: " + url + "/me", "ACCESS TOKEN: token",
                          "Sending request to URL: " + url + QString::fromStdString(PanelFixture::versionCheck()),
                          "URL: " + url + "/me", "ACCESS TOKEN: token"}));
}

void PanelTest::updateChecks()
{
    const ManualTime time;
    const std::string check = "GET " + PanelFixture::versionCheck();
    m_fixture.server().reply(check, "{}");
    m_fixture.show();
    ManualTime::advance(43199.0);
    QVERIFY(m_fixture.server().requests().empty());
    ManualTime::advance(1.0);
    QTRY_COMPARE(m_fixture.server().lines(), std::vector<std::string>{check});
    ManualTime::advance(43200.0);
    QTRY_COMPARE(m_fixture.server().requests().size(), std::size_t(2));
}

void PanelTest::logOutAndInAgain()
{
    const ManualTime time;
    m_fixture.server().reply(summarize, shortSummary);
    showSignedIn();
    QTRY_COMPARE(shownSummary(), QStringLiteral("Short."));
    QTRY_VERIFY(m_fixture.log().lines().contains(QStringLiteral("New download URL is null in response")));
    UserDefaults::standard().setString("selectedApiEndpoint", "staging");
    m_fixture.log().take();
    m_fixture.click("logOutButton");
    QCOMPARE(m_fixture.log().take(),
             (QStringList{"Logout button clicked", "UserDefaults cleared", "URLSession cache cleared",
                          "i enter in the login content view page"}));
    QVERIFY(!AuthManager::shared().accessToken.get());
    QCOMPARE(UserDefaults::standard().dictionaryRepresentation().size(), std::size_t(0));
    // The sign-in screen lies over the panel, which can no longer be reached.
    QVERIFY(m_fixture.item("loginButton"));
    QVERIFY(!m_fixture.item("sessionModalView"));
    QVERIFY(m_fixture.item("loginButton")->property("visualFocus").toBool());

    m_fixture.server().reply("GET /plugin-auth/session-request/",
                             R"({"id":"s1","login_url":"https://other.example/l"})");
    m_fixture.server().reply("GET /plugin-auth/session-request/s1", R"({"id":"s1","access_token":"second"})");
    m_fixture.click("loginButton");
    QTRY_VERIFY(!m_fixture.item("loginButton"));
    QVERIFY(m_fixture.item("sessionModalView"));
}

void PanelTest::closedPanelIsFreed()
{
    const ManualTime time;
    for (const bool signedIn : {false, true}) {
        AuthManager::shared().accessToken.set(signedIn ? std::optional<std::string>("token") : std::nullopt);
        const std::weak_ptr<ComposeSessionViewController> panel = m_fixture.show();
        // Screens have piled up and been replaced.
        NotificationCenter::defaultCenter().post("UserDidLogout");
        panel.lock()->showSessionView();
        NotificationCenter::defaultCenter().post("UserDidLogout");
        m_fixture.close();
        QVERIFY(panel.expired());
        QCOMPARE(ManualTime::pendingDelays().size(), std::size_t(0));
        NotificationCenter::defaultCenter().post("UserDidLogout");
    }
}

QUILLMATE_TEST(PanelTest, quillmate::ViewTestApplication)
#include "PanelTest.moc"
