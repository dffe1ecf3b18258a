#include "extension/ComposeSessionHandler.h"
#include "extension/PanelFixture.h"
#include "platform/foundation/schedule/DispatchQueue.h"
#include "platform/foundation/schedule/MainSchedule.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "state/APIManager.h"
#include "state/AuthManager.h"
#include "state/IncommingUpdatesManager.h"
#include "support/TestProgram.h"
#include "views/ViewTestApplication.h"

#include <algorithm>

using namespace quillmate;

/// Replies, the chat and the fallback in a whole panel.
class FeaturesPanelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { std::ignore = currentApiURL(); } // The first use is told of, once.
    void init();
    void ofItsOwnSession_data();
    void ofItsOwnSession();
    void firstReplyAndAnotherPanel();
    void environmentChange();
    void updateFound();
    void fallbackEditor();
    void messageTooLongToShow();
    void lookingChangesNothing();
    void contentComesLater_data();
    void contentComesLater();

private:
    void showSignedIn();
    void ask(const char* question);
    /// From now on; nothing else is answered but who the user is.
    void answerSummaries(const TestReply& reply);
    [[nodiscard]] QString text(const char* item) const;
    /// How often the server got the request.
    [[nodiscard]] long countOf(const std::string& request)
    {
        const auto lines = m_fixture.server().lines();
        return std::count(lines.begin(), lines.end(), request);
    }

    PanelFixture m_fixture;
};

namespace
{

const std::string me = "GET /api/v1/me";
const std::string summarize = "POST /api/v1/summarize";
const std::string generate = "POST /api/v1/response";
const std::string chatStart = "POST /api/v1/chat/start";
const std::string chatSend = "POST /api/v1/chat/send";
std::string keptFor(const std::string& id)
{
    return "Optional(\"" + id + "\") fallbackContent";
}

const std::string started = R"({"response":{"assistantId":"a","threadId":"t"}})";

} // namespace

void FeaturesPanelTest::init()
{
    m_fixture.reset();
    IncommingUpdatesManager::shared().setIncommingUpdatesAvailable(false);
    m_fixture.server().reply(summarize, R"({"response":"Short."})");
    m_fixture.server().reply(generate, R"({"response":"Dear Ana"})");
    m_fixture.server().reply(chatStart, started);
    m_fixture.server().reply(chatSend, R"({"response":"On Thursday."})");
    PanelFixture::replyTo("m1", "The content");
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

void FeaturesPanelTest::answerSummaries(const TestReply& reply)
{
    m_fixture.server().reset();
    m_fixture.server().reply(me, R"({"email":"a@b.example","name":"A"})");
    m_fixture.server().reply(summarize, reply);
}

QString FeaturesPanelTest::text(const char* item) const
{
    const auto* found = m_fixture.item(item);
    return found ? found->property("text").toString() : QString();
}

void FeaturesPanelTest::ofItsOwnSession_data()
{
    QTest::addColumn<QStringList>("begun");   // the ids; empty for a message without one, "-" for no message
    QTest::addColumn<int>("shown");           // which of them
    QTest::addColumn<QString>("storedUnder"); // empty for nowhere
    QTest::newRow("the first of two") << QStringList{"m1", "m2"} << 0 << "summarizeResponse m1";
    QTest::newRow("the second of two") << QStringList{"m1", "m2"} << 1 << "summarizeResponse m2";
    QTest::newRow("without ids") << QStringList{"", ""} << 0 << "";
    QTest::newRow("new mail after a reply") << QStringList{"m1", "-"} << 1 << "";
    QTest::newRow("a reply before new mail") << QStringList{"m1", "-"} << 0 << "summarizeResponse m1";
}

void FeaturesPanelTest::ofItsOwnSession()
{
    QFETCH(const QStringList, begun);
    QFETCH(const int, shown);
    QFETCH(const QString, storedUnder);
    const ManualTime time;
    ComposeSessionHandler handler;
    std::vector<MEComposeSession> sessions;
    for (int i = 0; i < begun.size(); ++i) {
        std::shared_ptr<MEMessage> message;
        if (begun[i] != "-") {
            message = std::make_shared<MEMessage>();
            message->rawData = "A: b\n\nContent " + std::to_string(i);
            message->subject = "Plans";
            message->headers = MEMessage::Headers{{"message-id", {begun[i].toStdString()}}};
        }
        sessions.emplace_back("s" + std::to_string(i), MEComposeContext(message));
        handler.mailComposeSessionDidBegin(sessions.back());
    }
    const auto controller = std::dynamic_pointer_cast<ComposeSessionViewController>(
        handler.viewControllerForSession(sessions[static_cast<std::size_t>(shown)]));
    m_fixture.show(controller);
    QVERIFY(m_fixture.item("loginButton"));
    // The sign-in, long after the other window began.
    AuthManager::shared().accessToken.set("token");
    controller->showSessionView();
    m_fixture.click("generateButton");
    const bool hasMessage = begun[shown] != "-";
    if (hasMessage) {
        QTRY_COMPARE(text("summaryText"), QStringLiteral("Short."));
        QTRY_COMPARE(text("replyText"), QStringLiteral("Dear Ana"));
    } else {
        QTRY_COMPARE(m_fixture.item("toast")->property("message").toString(),
                     QStringLiteral("Message content is empty."));
        QVERIFY(!m_fixture.item("summarySection"));
    }
    const std::string own = R"("content":"Content )" + std::to_string(shown) + '"';
    for (const std::string& line : {summarize, generate}) {
        QCOMPARE(countOf(line), hasMessage ? 1L : 0L);
    }
    for (const ReceivedRequest& request : m_fixture.server().requests()) {
        QVERIFY(request.body.empty() || request.body.find(own) != std::string::npos);
    }
    QStringList summaries;
    for (const auto& [key, value] : UserDefaults::standard().dictionaryRepresentation()) {
        summaries.append(QString::fromStdString(key));
    }
    QCOMPARE(summaries.filter("summarizeResponse").join(','), storedUnder);
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
    ask("When?");
    QTRY_COMPARE(m_fixture.server().lines().back(), chatSend);
    QTRY_COMPARE(m_fixture.item("chatMessages")->property("count").toInt(), 2);
    // The panel of another message has nothing of this; the one for this message has it all, without asking.
    PanelFixture::replyTo("m2", "Another content");
    showSignedIn();
    QVERIFY(m_fixture.item("generateButton"));
    m_fixture.item("panelTabs")->setProperty("currentIndex", 1);
    QCOMPARE(m_fixture.item("chatMessages")->property("count").toInt(), 0);
    PanelFixture::replyTo("m1", "The content");
    showSignedIn();
    QCOMPARE(text("replyText"), QStringLiteral("Dear Ana"));
    m_fixture.item("panelTabs")->setProperty("currentIndex", 1);
    QCOMPARE(m_fixture.item("chatMessages")->property("count").toInt(), 2);
    for (const std::string& line : {generate, chatStart, chatSend}) {
        QCOMPARE(countOf(line), 1L);
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
    answerSummaries({200, R"({"response":"Short."})"});
    m_fixture.server().reply("GET /api/v1" + PanelFixture::versionCheck(),
                             R"({"current_version":"2.0.0","download_url":"https://other.example/d"})");
    AuthManager::shared().accessToken.set("token");
    m_fixture.show();
    QTRY_VERIFY(m_fixture.item("updateNowButton"));
    m_fixture.click("updateNowButton");
    QCOMPARE(m_fixture.opened(), std::vector<std::string>{"https://other.example/d"});
    QVERIFY(m_fixture.item("updateNowButton"));
    m_fixture.click("logOutButton"); // The notice's own.
    QVERIFY(m_fixture.item("loginButton"));
    QVERIFY(!m_fixture.item("updateNowButton"));
}

void FeaturesPanelTest::fallbackEditor()
{
    const ManualTime time;
    answerSummaries(TestReply{500});
    AuthManager::shared().accessToken.set("token");
    m_fixture.show();
    QTRY_VERIFY(m_fixture.item("summarySpinner"));
    QTRY_COMPARE(ManualTime::pendingDelays().size(), std::size_t(2));
    // The panel goes on speaking of its own message.
    PanelFixture::replyTo("m2", "Another content");
    UserDefaults::standard().setString(keptFor("m2"), "kept for m2");
    for (int attempt = 1; attempt <= 3; ++attempt) {
        QTRY_COMPARE(ManualTime::pendingDelays().size(), std::size_t(2));
        ManualTime::advance(2.0);
    }
    QTRY_VERIFY(m_fixture.item("fallbackInput"));
    QCOMPARE(text("fallbackInput"), QStringLiteral("The content")); // what was sent last
    // Every change is kept.
    m_fixture.item("fallbackInput")->setProperty("text", QStringLiteral("Pasted for m1"));
    QCOMPARE(UserDefaults::standard().string(keptFor("m1")), std::optional<std::string>("Pasted for m1"));
    QCOMPARE(UserDefaults::standard().string(keptFor("m2")), std::optional<std::string>("kept for m2"));
    answerSummaries({200, R"({"response":"Short."})"});
    {
        const auto held = m_fixture.server().hold();
        m_fixture.click("summarizeButton");
        QVERIFY(m_fixture.item("fallbackLoading"));
    }
    QTRY_COMPARE(text("summaryText"), QStringLiteral("Short."));
    QVERIFY(m_fixture.server().requests().back().body.find("\"content\":\"Pasted for m1\"") != std::string::npos);
    // The next panel has the editor again, with the text that was typed.
    PanelFixture::replyTo("m1", std::nullopt);
    m_fixture.show();
    QVERIFY(m_fixture.item("fallbackInput"));
    QCOMPARE(text("fallbackInput"), QStringLiteral("Pasted for m1"));
}

void FeaturesPanelTest::messageTooLongToShow()
{
    const ManualTime time;
    const std::string content(3'000'000, 'x');
    UserDefaults::standard().setString(keptFor("m1"), content);
    PanelFixture::replyTo("m1", std::nullopt);
    AuthManager::shared().accessToken.set("token");
    answerSummaries({200, "{}"});
    m_fixture.show();
    auto* input = m_fixture.item("fallbackInput");
    QVERIFY(input);
    QCOMPARE(input->property("text").toString(), QString());
    QVERIFY(text("fallbackHint").contains(QStringLiteral("3.0 MB")));
    // It is kept and sent all the same.
    m_fixture.click("summarizeButton");
    constexpr int megabytesTake = 30'000; // The sanitizers' checks of them included.
    QTRY_VERIFY_WITH_TIMEOUT(m_fixture.log().lines().contains(QStringLiteral("Failed to summarize.")), megabytesTake);
    QVERIFY(m_fixture.server().requests().back().body.size() > content.size());
    QVERIFY(UserDefaults::standard().string(keptFor("m1")) == content);
    QCOMPARE(m_fixture.item("toast")->property("message").toString(), QStringLiteral("Failed to summarize."));
}

void FeaturesPanelTest::lookingChangesNothing()
{
    // The control shows these three otherwise than it got them.
    const ManualTime time;
    const std::string content = "a\r\nb\u00a0c\u2028d";
    PanelFixture::replyTo("m1", std::nullopt);
    UserDefaults::standard().setString(keptFor("m1"), content);
    AuthManager::shared().accessToken.set("token");
    answerSummaries({200, "{}"});
    m_fixture.show();
    QTRY_VERIFY(text("fallbackInput").startsWith(QStringLiteral("a")));
    QCOMPARE(UserDefaults::standard().string(keptFor("m1")), std::optional(content));
}

void FeaturesPanelTest::contentComesLater_data()
{
    QTest::addColumn<bool>("isKnown");    // what is answered, when the session begins
    QTest::addColumn<bool>("isExpected"); // its text, then
    QTest::addColumn<QString>("typed");   // into the editor, before the text is there
    QTest::newRow("a long message") << true << true << "";
    QTest::newRow("a server that is away") << true << false << "";
    QTest::newRow("a server that is away, text pasted") << true << false << "Pasted";
    QTest::newRow("nothing known") << false << false << "";
    QTest::newRow("nothing known, text pasted") << false << false << "Pasted";
}

void FeaturesPanelTest::contentComesLater()
{
    QFETCH(const bool, isKnown);
    QFETCH(const bool, isExpected);
    QFETCH(const QString, typed);
    const ManualTime time;
    const auto message = [](bool known, bool follows) {
        auto made = std::make_shared<MEMessage>();
        if (known) {
            made->subject = "Plans";
            made->headers = MEMessage::Headers{{"message-id", {"m9"}}};
        }
        made->rawDataFollows = follows;
        return made;
    };
    ComposeSessionHandler handler;
    handler.mailComposeSessionDidBegin({"s", MEComposeContext(message(isKnown, isExpected))});
    AuthManager::shared().accessToken.set("token");
    m_fixture.show(std::dynamic_pointer_cast<ComposeSessionViewController>(
        handler.viewControllerForSession({"s", MEComposeContext(message(isKnown, isExpected))})));
    if (isExpected) {
        QVERIFY(m_fixture.item("summarySpinner"));
        m_fixture.click("generateButton");
        ask("When?");
    } else {
        QVERIFY(m_fixture.item("fallbackInput"));
        m_fixture.item("fallbackInput")->setProperty("text", typed);
    }
    QCOMPARE(countOf(summarize) + countOf(generate) + countOf(chatStart), 0L);

    auto whole = message(true, false);
    whole->rawData = "A: b\n\nThe late content";
    handler.mailComposeSessionDidBegin({"s", MEComposeContext(whole)});
    if (typed.isEmpty()) {
        QTRY_COMPARE(text("summaryText"), QStringLiteral("Short."));
    } else {
        // A turn of the main thread after the one that changes the panel.
        bool hasTurned = false;
        DispatchQueue::main().async([&hasTurned] { DispatchQueue::main().async([&hasTurned] { hasTurned = true; }); });
        QTRY_VERIFY(hasTurned);
        QCOMPARE(text("fallbackInput"), typed);
        QCOMPARE(countOf(summarize), 0L);
    }
    if (isExpected) { // What was asked for meanwhile is about the whole message.
        QTRY_COMPARE(m_fixture.item("chatMessages")->property("count").toInt(), 2);
        QTRY_COMPARE(countOf(generate), 1L);
        QCOMPARE(countOf(chatStart), 1L);
    }
    for (const ReceivedRequest& request : m_fixture.server().requests()) {
        QVERIFY(request.target.ends_with("/chat/send") || request.body.empty() ||
                request.body.find("The late content") != std::string::npos);
    }
    if (typed.isEmpty()) {
        QVERIFY(UserDefaults::standard().string("summarizeResponse m9"));
    }
}

QUILLMATE_TEST(FeaturesPanelTest, quillmate::ViewTestApplication)
#include "FeaturesPanelTest.moc"
