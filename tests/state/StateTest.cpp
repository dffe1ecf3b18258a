#include "base/ApplicationFolders.h"
#include "platform/foundation/NotificationCenter.h"
#include "platform/foundation/net/URLSession.h"
#include "platform/foundation/schedule/MainSchedule.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "state/APIManager.h"
#include "state/AppVersion.h"
#include "state/AuthManager.h"
#include "state/IncommingUpdatesManager.h"
#include "state/Notifications.h"
#include "state/ReplyEmailManager.h"
#include "state/SignInPeriod.h"
#include "state/StartChatManager.h"
#include "state/SummarizeManager.h"
#include "state/UserDetailsManager.h"
#include "support/LogCapture.h"
#include "support/TestEnvironment.h"
#include "support/TestProgram.h"
#include "support/TestServer.h"

#include <QCoreApplication>
#include <QSignalSpy>

#include <array>
#include <barrier>
#include <set>
#include <thread>

using namespace quillmate;

class StateTest : public QObject
{
    Q_OBJECT

public:
    StateTest() { TestEnvironment::connectTo(m_server); }

private Q_SLOTS:
    // First, while nothing has been made yet.
    void firstUse();
    void init();
    void selectEndpoint();
    void logout();
    void logoutInAnotherProcess();
    void logoutEmptiesTheCache();
    void observableFieldsAnnounce();
    void version();

private:
    TestEnvironment m_environment;
    TestServer m_server;
    LogCapture m_log;
};

namespace
{

const auto staging = QStringLiteral("https://" QUILLMATE_STAGING_HOST);
const auto dev = QStringLiteral("https://" QUILLMATE_DEV_HOST);
const auto api = QStringLiteral("/api/v1");

UserDefaults& defaults()
{
    return UserDefaults::standard();
}

/// Writes down what was posted, with what others can see at that moment.
class Witness
{
public:
    Witness()
        : m_self(this, [](Witness*) {})
    {
        NotificationCenter::defaultCenter().addObserver(m_self, &Witness::loggedOut, userDidLogout);
        NotificationCenter::defaultCenter().addObserver(m_self, &Witness::changed, apiEndpointChanged);
    }

    [[nodiscard]] const QStringList& seen() const { return m_seen; }

private:
    void loggedOut() { note("UserDidLogout"); }
    void changed() { note("apiEndpointChanged"); }
    void note(const char* name)
    {
        const bool token = AuthManager::shared().accessToken.get().has_value();
        const auto keys = defaults().dictionaryRepresentation().size();
        m_seen.append(QStringLiteral("%1: %2, %3 stored, endpoint %4")
                          .arg(QLatin1String(name), token ? QStringLiteral("token") : QStringLiteral("no token"))
                          .arg(keys)
                          .arg(QString::fromStdString(defaults().string("selectedApiEndpoint").value_or("none"))));
    }

    QStringList m_seen;
    std::shared_ptr<Witness> m_self;
};

} // namespace

void StateTest::firstUse()
{
    defaults().setString("selectedApiEndpoint", "staging");
    using Objects = std::vector<const void*>;
    std::array<Objects, 8> seen;
    std::barrier together(static_cast<std::ptrdiff_t>(seen.size()));
    {
        std::vector<std::jthread> asking;
        for (Objects& each : seen) {
            asking.emplace_back([&each, &together] {
                together.arrive_and_wait();
                each = {&AuthManager::shared(),
                        &ReplyEmailManager::shared(),
                        &UserDetailsManager::shared(),
                        &SummarizeManager::shared(),
                        &IncommingUpdatesManager::shared(),
                        &StartChatManager::shared(),
                        &APIManager::shared(),
                        &UserDefaults::standard(),
                        &currentApiURL(),
                        &currentBaseURL()};
            });
        }
    }
    QCOMPARE(std::set<Objects>(seen.begin(), seen.end()).size(), std::size_t(1));
    QCOMPARE(QString::fromStdString(currentApiURL()), staging + api);
    QCOMPARE(QString::fromStdString(currentBaseURL()), staging);
    QCOMPARE(m_log.take(), (QStringList{"CURRENT API URL IN API MANAGER " + staging + api,
                                        "CURRENT BASE API URL IN API MANAGER " + staging}));
    // Made on some other thread; what is announced belongs here.
    QCOMPARE(UserDetailsManager::shared().thread(), thread());
    QCOMPARE(IncommingUpdatesManager::shared().thread(), thread());
    // Everything starts empty.
    QVERIFY(!AuthManager::shared().accessToken.get());
    QCOMPARE(ReplyEmailManager::shared().record(), ReplyEmail());
    QVERIFY(!IncommingUpdatesManager::shared().incommingUpdatesAvailable());
}

void StateTest::init()
{
    if (QTest::currentTestFunction() == QLatin1String("firstUse")) {
        return;
    }
    AuthManager::shared().accessToken.set(std::nullopt);
    for (const auto& [key, value] : defaults().dictionaryRepresentation()) {
        defaults().removeObject(key);
    }
    m_log.take();
}

void StateTest::selectEndpoint()
{
    AuthManager::shared().accessToken.set("token");
    defaults().setString("summarizeResponse m1", "kept");
    const Witness witness;
    const SignInPeriod period;
    APIManager::selectApiEndpoint("dev");
    QVERIFY(period.isTokenGone());
    QVERIFY(!period.isOver());
    QCOMPARE(witness.seen(), (QStringList{"apiEndpointChanged: token, 2 stored, endpoint dev",
                                          "UserDidLogout: token, 2 stored, endpoint dev"}));
    QVERIFY(!AuthManager::shared().accessToken.get());
    QCOMPARE(defaults().string("summarizeResponse m1"), std::optional<std::string>("kept"));
    QCOMPARE(m_log.take(),
             (QStringList{"API Endpoint changed to: " + dev + api, "BASE API Endpoint changed to : " + dev}));
    // What was taken at the first use stays.
    QCOMPARE(QString::fromStdString(APIManager::shared().apiURL()), dev + api);
    QCOMPARE(QString::fromStdString(currentApiURL()), staging + api);
    QCOMPARE(QString::fromStdString(currentBaseURL()), staging);
    QCOMPARE(m_log.take(), QStringList());
}

void StateTest::logout()
{
    AuthManager::shared().accessToken.set("token");
    UserDetailsManager::shared().setEmail("a@b.example");
    ReplyEmailManager::shared().update([](ReplyEmail& record) { record.messageId = "m1"; });
    defaults().setString("selectedApiEndpoint", "staging");
    defaults().setBoolean("m1_summarize", true);
    defaults().setData("reply m1", "[]");
    defaults().setString("somebody else's", "x");
    const Witness witness;
    const SignInPeriod period;
    AuthManager::shared().logout();
    QVERIFY(period.isTokenGone() && period.isOver());
    QCOMPARE(witness.seen(), QStringList{"UserDidLogout: no token, 0 stored, endpoint none"});
    QVERIFY(!AuthManager::shared().accessToken.get());
    QCOMPARE(m_log.take(), (QStringList{"UserDefaults cleared", "URLSession cache cleared"}));
    QCOMPARE(UserDetailsManager::shared().email(), std::string());
    // The message stays.
    QCOMPARE(ReplyEmailManager::shared().record().messageId, std::optional<std::string>("m1"));
}

void StateTest::logoutInAnotherProcess()
{
    AuthManager::shared().accessToken.set("token");
    const Witness witness;
    const SignInPeriod period;
    UserDefaults other(applicationDataFolder() / "settings.db"); // As another process has it.
    other.removeAll();
    QVERIFY(period.isOver() && period.isTokenGone());
    const QStringList once{"UserDidLogout: no token, 0 stored, endpoint none"};
    QTRY_COMPARE(witness.seen(), once);
    QVERIFY(!SignInPeriod().isOver());
    // A sign-in that finds out about the next one began after it.
    other.removeAll();
    const SignInPeriod signIn;
    QVERIFY(period.isOver());
    MainSchedule::shared().drain();
    QVERIFY(!signIn.isTokenGone());
    QCOMPARE(witness.seen(), once);
}

void StateTest::logoutEmptiesTheCache()
{
    m_server.reply("GET /x", TestReply{200, "{}", {{"Cache-Control", "max-age=3600"}}});
    const auto fetch = [] {
        std::atomic<bool> done = false;
        URLSession::shared()
            .dataTask(URLRequest{URL::parseAbsolute("https://other.example/x").value()},
                      [&done](const auto&, const auto&, const auto&) { done = true; })
            ->resume();
        [&] { QTRY_VERIFY(done); }();
    };
    fetch();
    fetch();
    QCOMPARE(m_server.requests().size(), std::size_t(1));
    AuthManager::shared().logout();
    fetch();
    QCOMPARE(m_server.requests().size(), std::size_t(2));
}

void StateTest::observableFieldsAnnounce()
{
    UserDetailsManager& user = UserDetailsManager::shared();
    user.setEmail("one@b.example");
    const QSignalSpy emails(&user, &UserDetailsManager::emailChanged);
    user.setEmail("one@b.example");
    QCOMPARE(emails.count(), 0);
    user.setEmail("two@b.example");
    QCOMPARE(emails.count(), 1);
    IncommingUpdatesManager& updates = IncommingUpdatesManager::shared();
    const QSignalSpy notices(&updates, &IncommingUpdatesManager::incommingUpdatesAvailableChanged);
    updates.setIncommingUpdatesAvailable(true);
    updates.setIncommingUpdatesAvailable(true);
    QCOMPARE(notices.count(), 1);
    QVERIFY(updates.incommingUpdatesAvailable());
}

void StateTest::version()
{
    QCOMPARE(appVersion(), std::optional<std::string>(QUILLMATE_PROJECT_VERSION));
}

QUILLMATE_TEST(StateTest, QCoreApplication)
#include "StateTest.moc"
