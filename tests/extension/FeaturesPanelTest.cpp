#include "extension/PanelFixture.h"
#include "platform/foundation/MainSchedule.h"
#include "platform/foundation/URLSession.h"
#include "platform/foundation/UserDefaults.h"
#include "state/APIManager.h"
#include "state/AuthManager.h"
#include "state/IncommingUpdatesManager.h"

#include <QTest>

#include <algorithm>
#include <atomic>

using namespace quillmate;

/// Replies and the chat in a whole panel, and what becomes of them when the panel or its user goes.
class FeaturesPanelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { std::ignore = currentApiURL(); } // The first use is told of, once.
    void init();
    void firstReplyAndAnotherPanel();
    void endsAtAnyMoment_data();
    void endsAtAnyMoment();
    void environmentChange();
    void updateFound();

private:
    void showSignedIn();
    void ask(const char* question);
    static void waitForTheNetwork();
    [[nodiscard]] QString text(const char* item) const;

    PanelFixture m_fixture;
};

namespace
{

const std::string generate = "POST /api/v1/response";
const std::string chatStart = "POST /api/v1/chat/start";
const std::string chatSend = "POST /api/v1/chat/send";
const std::string training = "POST /api/v1/create-training-data";
const std::string started = R"({"response":{"assistantId":"a","threadId":"t"}})";

} // namespace

void FeaturesPanelTest::init()
{
    m_fixture.reset();
    IncommingUpdatesManager::shared().setIncommingUpdatesAvailable(false);
    m_fixture.server().reply("POST /api/v1/summarize", R"({"response":"Short."})");
    m_fixture.server().reply(generate, R"({"response":"Dear Ana"})");
    m_fixture.server().reply(chatStart, started);
    m_fixture.server().reply(chatSend, R"({"response":"On Thursday."})");
    m_fixture.server().reply(training, R"({"success":"Stored."})");
    useMessage("m1", "The content");
}

void FeaturesPanelTest::showSignedIn()
{
    AuthManager::shared().accessToken.set("token");
    m_fixture.show();
    QTRY_VERIFY(m_fixture.item("summaryText"));
}

void FeaturesPanelTest::ask(const char* question)
{
    m_fixture.item("panelTabs")->setProperty("currentIndex", 1);
    auto* input = m_fixture.item("chatInput");
    QVERIFY(input);
    input->setProperty("text", QString::fromUtf8(question));
    m_fixture.click("sendButton");
}

/// Nothing tells when a reply has arrived at a panel that is gone; one that was asked for later has.
void FeaturesPanelTest::waitForTheNetwork()
{
    const auto arrived = std::make_shared<std::atomic<bool>>(false);
    URLSession::shared()
        .dataTask({*URL::parseAbsolute("https://quillmate.example/later")},
                  [arrived](const auto&, const auto&, const auto&) { *arrived = true; })
        ->resume();
    QTRY_VERIFY(*arrived);
    MainSchedule::shared().drain();
}

QString FeaturesPanelTest::text(const char* item) const
{
    const auto* found = m_fixture.item(item);
    return found ? found->property("text").toString() : QString();
}

void FeaturesPanelTest::firstReplyAndAnotherPanel()
{
    const ManualTime time;
    showSignedIn();
    {
        const auto held = m_fixture.server().hold();
        m_fixture.click("generateButton");
        QVERIFY(m_fixture.item("loadingOverlay"));
    }
    QTRY_COMPARE(text("replyText"), QStringLiteral("Dear Ana"));
    QVERIFY(!m_fixture.item("loadingOverlay"));
    QVERIFY(m_fixture.item("toast"));
    const auto sent = m_fixture.server().requests();
    QCOMPARE(sent.back().body, std::string(R"({"messageId":"m1","content":"The content","email":"a@b.example",)"
                                           R"("plugin_source":"plugin_apple","plugin_version":"v1.0.0"})"));
    ask("When?");
    QTRY_COMPARE(m_fixture.server().lines().back(), chatSend);
    QTRY_COMPARE(m_fixture.item("chatMessages")->property("count").toInt(), 2);
    // The panel of another message has nothing of this; the one for this message has it all, without asking.
    useMessage("m2", "Another content");
    showSignedIn();
    QVERIFY(m_fixture.item("generateButton"));
    m_fixture.item("panelTabs")->setProperty("currentIndex", 1);
    QCOMPARE(m_fixture.item("chatMessages")->property("count").toInt(), 0);
    const auto asked = m_fixture.server().lines();
    useMessage("m1", "The content");
    showSignedIn();
    QCOMPARE(text("replyText"), QStringLiteral("Dear Ana"));
    m_fixture.item("panelTabs")->setProperty("currentIndex", 1);
    QCOMPARE(m_fixture.item("chatMessages")->property("count").toInt(), 2);
    for (const std::string& line : {generate, chatStart, chatSend}) {
        const auto now = m_fixture.server().lines();
        QCOMPARE(std::count(now.begin(), now.end(), line), std::count(asked.begin(), asked.end(), line));
    }
}

void FeaturesPanelTest::endsAtAnyMoment_data()
{
    QTest::addColumn<QString>("request");
    QTest::addColumn<QString>("end");
    for (const char* request : {"reply", "training", "chat start", "chat send"}) {
        for (const char* end : {"log out", "close", "another message", "nothing"}) {
            QTest::addRow("%s, %s", request, end) << QString::fromLatin1(request) << QString::fromLatin1(end);
        }
    }
}

void FeaturesPanelTest::endsAtAnyMoment()
{
    QFETCH(const QString, request);
    QFETCH(const QString, end);
    const ManualTime time;
    showSignedIn();
    if (request == QLatin1String("training")) {
        m_fixture.click("generateButton");
        QTRY_VERIFY(m_fixture.item("submitButton"));
        m_fixture.click("submitButton");
    } else if (request == QLatin1String("reply")) {
        m_fixture.click("generateButton");
    } else {
        ask("When?");
        if (request == QLatin1String("chat send")) {
            QTRY_VERIFY(m_fixture.log().lines().filter(QStringLiteral("Start chat body")).size() == 1);
        }
    }
    if (end == QLatin1String("log out")) {
        m_fixture.click("logOutButton");
    } else if (end == QLatin1String("close")) {
        m_fixture.close();
    } else if (end == QLatin1String("another message")) {
        useMessage("m2", "Another content");
    }
    // Whatever is under way arrives.
    const auto last = request == QLatin1String("training") ? training
                      : request == QLatin1String("reply")  ? generate
                                                           : chatStart;
    QTRY_VERIFY([&] {
        const auto lines = m_fixture.server().lines();
        return std::find(lines.begin(), lines.end(), last) != lines.end();
    }());
    waitForTheNetwork();
    const auto stored = UserDefaults::standard().dictionaryRepresentation();
    if (end == QLatin1String("log out")) {
        QVERIFY2(stored.empty(), stored.empty() ? "" : stored.begin()->first.c_str());
        QVERIFY(m_fixture.item("loginButton"));
    }
    for (const auto& [key, value] : stored) {
        QVERIFY2(key.find("m2") == std::string::npos, key.c_str());
    }
    if (end == QLatin1String("another message") && request == QLatin1String("reply")) {
        QTRY_COMPARE(UserDefaults::standard().string("generateResponse m1"), std::optional<std::string>("Dear Ana"));
        QVERIFY(UserDefaults::standard().boolean("m1_generateResponse"));
    }
}

void FeaturesPanelTest::environmentChange()
{
    const ManualTime time;
    showSignedIn();
    ask("When?");
    QTRY_COMPARE(m_fixture.item("chatMessages")->property("count").toInt(), 2);
    APIManager::selectApiEndpoint("staging");
    QVERIFY(m_fixture.item("loginButton"));
    QVERIFY(UserDefaults::standard().data("reply m1")); // Only a sign-out empties the store.
    APIManager::selectApiEndpoint("live");
}

void FeaturesPanelTest::updateFound()
{
    const ManualTime time;
    m_fixture.server().reset();
    m_fixture.server().reply("GET /api/v1/me", R"({"email":"a@b.example","name":"A"})");
    m_fixture.server().reply("POST /api/v1/summarize", R"({"response":"Short."})");
    m_fixture.server().reply("GET /api/v1/apple-version?currentVersion=1.0.0",
                             R"({"current_version":"2.0.0","download_url":"https://quillmate.example/d"})");
    AuthManager::shared().accessToken.set("token");
    m_fixture.show();
    QTRY_VERIFY(m_fixture.item("updateNowButton"));
    m_fixture.click("updateNowButton");
    QCOMPARE(m_fixture.opened(), std::vector<std::string>{"https://quillmate.example/d"});
    QVERIFY(m_fixture.item("updateNowButton"));
    m_fixture.click("logOutButton"); // The notice's own.
    QVERIFY(m_fixture.item("loginButton"));
    QVERIFY(!m_fixture.item("updateNowButton"));
}

QTEST_MAIN(FeaturesPanelTest)
#include "FeaturesPanelTest.moc"
