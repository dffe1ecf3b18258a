#include "extension/PanelFixture.h"
#include "features/RepliedMessage.h"
#include "features/SummarizeStateManager.h"
#include "platform/foundation/MainSchedule.h"
#include "platform/foundation/NotificationCenter.h"
#include "platform/foundation/UserDefaults.h"
#include "state/APIManager.h"
#include "state/AuthManager.h"
#include "state/ReplyEmailManager.h"
#include "state/SummarizeManager.h"

#include <QTest>

#include <algorithm>

using namespace quillmate;

class SummaryPanelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { std::ignore = currentApiURL(); } // The first use is told of, once.
    void init();
    void summaryArrives();
    void storedSummary();
    void summaryGivesUp();
    void messageTooLongToShow();
    void replyWithoutSummary();
    void userDetailsFail();
    void anotherSessionBegins();
    void logOutWhileUnderWay();
    void panelClosedWhileUnderWay();
    void noToken();
    void editorOfAnEarlierMessage();
    void lookingChangesNothing();

private:
    void showSignedIn();
    [[nodiscard]] QString shownSummary() const;
    [[nodiscard]] static std::optional<std::string> stored(const std::string& key);

    PanelFixture m_fixture;
};

namespace
{

const std::string me = "GET /api/v1/me";
const std::string summarize = "POST /api/v1/summarize";
const std::string shortSummary = R"({"response":"Short."})";
const std::string contentOfTheRequest = "\"content\":\"The content\"";

} // namespace

void SummaryPanelTest::init()
{
    m_fixture.reset();
    useMessage("m1", "The content");
}

void SummaryPanelTest::showSignedIn()
{
    AuthManager::shared().accessToken.set("token");
    m_fixture.show();
}

QString SummaryPanelTest::shownSummary() const
{
    const auto* item = m_fixture.item("summaryText");
    return item ? item->property("text").toString() : QString();
}

std::optional<std::string> SummaryPanelTest::stored(const std::string& key)
{
    return UserDefaults::standard().string(key);
}

void SummaryPanelTest::summaryArrives()
{
    const ManualTime time;
    m_fixture.server().reply(summarize, shortSummary);
    showSignedIn();
    QTRY_COMPARE(shownSummary(), QStringLiteral("Short."));
    QCOMPARE(stored("summarizeResponse m1"), std::optional<std::string>("Short."));
    QVERIFY(UserDefaults::standard().boolean("m1_summarize"));
    QCOMPARE(stored("Optional(\"m1\") fallbackContent"), std::optional<std::string>("The content"));
    QCOMPARE(SummarizeManager::shared().responses.get().at("m1"), (SummarizedResponse{"m1", "Short."}));
    const auto requests = m_fixture.server().requests();
    const auto request =
        std::find_if(requests.begin(), requests.end(), [](const auto& received) { return received.method == "POST"; });
    QVERIFY(request->body.find(contentOfTheRequest) != std::string::npos);
}

void SummaryPanelTest::storedSummary()
{
    const ManualTime time;
    UserDefaults::standard().setString("summarizeResponse m1", "Known already.");
    showSignedIn();
    QCOMPARE(shownSummary(), QStringLiteral("Known already."));
    QTRY_COMPARE(m_fixture.server().requests().size(), std::size_t(2));
    useMessage("m2", "Another");
    m_fixture.server().reply(summarize, shortSummary);
    m_fixture.show();
    QTRY_COMPARE(shownSummary(), QStringLiteral("Short."));
    QCOMPARE(stored("summarizeResponse m1"), std::optional<std::string>("Known already."));
}

void SummaryPanelTest::summaryGivesUp()
{
    const ManualTime time;
    m_fixture.server().reply(summarize, TestReply{500});
    showSignedIn();
    QTRY_VERIFY(m_fixture.item("summarySpinner"));
    for (int attempt = 1; attempt <= 3; ++attempt) {
        QTRY_COMPARE(ManualTime::pendingDelays().size(), std::size_t(2));
        ManualTime::advance(2.0);
    }
    QTRY_VERIFY(m_fixture.item("fallbackInput"));
    auto* input = m_fixture.item("fallbackInput");
    QCOMPARE(input->property("text").toString(), QStringLiteral("The content")); // what was sent last
    QCOMPARE(stored("summarizeResponse m1"), std::nullopt);
    QVERIFY(SummarizeManager::shared().responses.get().empty());

    // Every change is kept.
    input->setProperty("text", QStringLiteral("Pasted"));
    QCOMPARE(stored("Optional(\"m1\") fallbackContent"), std::optional<std::string>("Pasted"));
    QCOMPARE(SummarizeManager::shared().fallbackSummarizeContent.get(), std::string("Pasted"));

    // Without content of its own, the message is what was pasted.
    ReplyEmailManager::shared().update([](ReplyEmail& record) { record.content.reset(); });
    m_fixture.server().reset();
    m_fixture.server().reply(me, R"({"email":"a@b.example","name":"A"})");
    m_fixture.server().reply(summarize, "{}");
    m_fixture.server().reply(summarize, shortSummary);
    m_fixture.log().take();
    m_fixture.click("summarizeButton");
    QTRY_VERIFY(m_fixture.log().lines().contains(QStringLiteral("Failed to summarize.")));
    m_fixture.click("summarizeButton");
    QTRY_COMPARE(shownSummary(), QStringLiteral("Short."));
    QCOMPARE(m_fixture.log().lines().filter(QStringLiteral("Summarization successful: ")).size(), 1);
    QVERIFY(m_fixture.server().requests().back().body.find("\"content\":\"Pasted\"") != std::string::npos);

    // Shown, not kept: the editor is back with the text that was typed.
    QCOMPARE(stored("summarizeResponse m1"), std::nullopt);
    m_fixture.server().reply(summarize, "{}");
    m_fixture.show();
    QTRY_VERIFY(m_fixture.item("fallbackInput"));
    QCOMPARE(m_fixture.item("fallbackInput")->property("text").toString(), QStringLiteral("Pasted"));
}

void SummaryPanelTest::messageTooLongToShow()
{
    const ManualTime time;
    const std::string content(3'000'000, 'x');
    useMessage("m1", content.c_str());
    UserDefaults::standard().setString("Optional(\"m1\") fallbackContent", content);
    ReplyEmailManager::shared().update([](ReplyEmail& record) { record.content.reset(); });
    SummarizeManager::shared().requestFailed = true;
    SummarizeManager::shared().fallbackSummarizeContent.set(content);
    m_fixture.server().reply(summarize, "{}");
    showSignedIn();
    auto* input = m_fixture.item("fallbackInput");
    QVERIFY(input);
    QCOMPARE(input->property("text").toString(), QString());
    QVERIFY(input->property("placeholderText").toString().contains(QStringLiteral("3.0 MB")));
    // It is kept and sent all the same.
    m_fixture.click("summarizeButton");
    QTRY_VERIFY(m_fixture.log().lines().contains(QStringLiteral("Failed to summarize.")));
    QVERIFY(m_fixture.server().requests().back().body.size() > content.size());
    QVERIFY(stored("Optional(\"m1\") fallbackContent") == content);
    input->setProperty("text", QStringLiteral("Only this"));
    QCOMPARE(stored("Optional(\"m1\") fallbackContent"), std::optional<std::string>("Only this"));
}

void SummaryPanelTest::replyWithoutSummary()
{
    const ManualTime time;
    SummarizeManager::shared().responses.set({{"m1", {"m1", "old"}}});
    m_fixture.server().reply(summarize, R"({"response":42})");
    showSignedIn();
    QTRY_VERIFY(!m_fixture.item("summarySpinner")); // neither spinner nor editor
    QVERIFY(SummarizeManager::shared().responses.get().empty());
    QVERIFY(!UserDefaults::standard().boolean("m1_summarize"));
}

void SummaryPanelTest::userDetailsFail()
{
    const ManualTime time;
    m_fixture.server().reset();
    m_fixture.server().reply(me, TestReply{401, R"({"error":"no"})"});
    showSignedIn();
    QTRY_COMPARE(m_fixture.log().lines().filter(QStringLiteral("Email or name not found")).size(), 2);
    QVERIFY(m_fixture.item("summarySpinner")); // goes on spinning
    QVERIFY(!m_fixture.item("fallbackInput"));
    SummarizeManager::shared().requestFailed = true;
    m_fixture.show();
    QTRY_VERIFY(m_fixture.item("fallbackInput"));
}

void SummaryPanelTest::anotherSessionBegins()
{
    const ManualTime time;
    m_fixture.server().reply(summarize, TestReply{500});
    m_fixture.server().reply(summarize, shortSummary);
    showSignedIn();
    QTRY_COMPARE(ManualTime::pendingDelays().size(), std::size_t(2));
    useMessage("m2", "Another content");
    ManualTime::advance(2.0);
    QTRY_COMPARE(shownSummary(), QStringLiteral("Short."));
    QCOMPARE(stored("summarizeResponse m1"), std::optional<std::string>("Short."));
    QCOMPARE(stored("summarizeResponse m2"), std::nullopt);
    QCOMPARE(SummarizeManager::shared().responses.get().count("m1"), std::size_t(1));
    for (const auto& request : m_fixture.server().requests()) {
        QVERIFY(request.body.empty() || request.body.find(contentOfTheRequest) != std::string::npos);
    }
    QCOMPARE(stored("Optional(\"m2\") fallbackContent"), std::nullopt);
}

void SummaryPanelTest::logOutWhileUnderWay()
{
    const ManualTime time;
    m_fixture.server().reply(summarize, TestReply{500});
    m_fixture.server().reply(summarize, shortSummary);
    showSignedIn();
    QTRY_COMPARE(ManualTime::pendingDelays().size(), std::size_t(2));
    m_fixture.click("logOutButton");
    QVERIFY(m_fixture.item("loginButton"));
    ManualTime::advance(2.0);
    QTRY_VERIFY(SummarizeManager::shared().responses.with([](const auto& all) { return all.contains("m1"); }));
    MainSchedule::shared().drain();
    // The store was emptied: whoever signs in next finds nothing of this session.
    QVERIFY(UserDefaults::standard().dictionaryRepresentation().empty());
    QVERIFY(m_fixture.item("loginButton"));
    QVERIFY(!AuthManager::shared().accessToken.get());
}

void SummaryPanelTest::panelClosedWhileUnderWay()
{
    const ManualTime time;
    m_fixture.server().reply(summarize, TestReply{500});
    m_fixture.server().reply(summarize, shortSummary);
    showSignedIn();
    QTRY_COMPARE(ManualTime::pendingDelays().size(), std::size_t(2));
    m_fixture.close();
    ManualTime::advance(2.0);
    // The result is noted and not shown or stored by anybody.
    QTRY_COMPARE(SummarizeManager::shared().responses.get().count("m1"), std::size_t(1));
    QCOMPARE(stored("summarizeResponse m1"), std::nullopt);
}

void SummaryPanelTest::noToken()
{
    const ManualTime time;
    const auto manager = SummarizeStateManager::make();
    QCOMPARE(manager->summarizeResponseKey(), std::string("summarizeResponse m1"));
    manager->summarize();
    QCOMPARE(manager->section(), SummarizeStateManager::Section::Spinner);
    QTRY_COMPARE(manager->section(), SummarizeStateManager::Section::Nothing);
    QCOMPARE(m_fixture.log().lines(), QStringList{"Access token is null in summarize API call"});
    QCOMPARE(loadFallbackContent("m1"), std::optional<std::string>("The content"));
    QVERIFY(m_fixture.server().requests().empty());
}

void SummaryPanelTest::editorOfAnEarlierMessage()
{
    const ManualTime time;
    m_fixture.server().reply(summarize, TestReply{500});
    showSignedIn();
    QTRY_COMPARE(ManualTime::pendingDelays().size(), std::size_t(2));
    useMessage("m2", "Another content");
    storeFallbackContent("m2", "kept for m2");
    for (int attempt = 1; attempt <= 3; ++attempt) {
        QTRY_COMPARE(ManualTime::pendingDelays().size(), std::size_t(2));
        ManualTime::advance(2.0);
    }
    // The panel goes on speaking of its own message.
    QTRY_VERIFY(m_fixture.item("fallbackInput"));
    QCOMPARE(m_fixture.item("fallbackInput")->property("text").toString(), QStringLiteral("The content"));
    m_fixture.item("fallbackInput")->setProperty("text", QStringLiteral("Pasted for m1"));
    m_fixture.server().reset();
    m_fixture.server().reply(me, R"({"email":"a@b.example","name":"A"})");
    m_fixture.server().reply(summarize, "{}");
    m_fixture.click("summarizeButton");
    QTRY_VERIFY(m_fixture.log().lines().contains(QStringLiteral("Failed to summarize.")));
    QVERIFY(m_fixture.server().requests().back().body.find("Pasted for m1") != std::string::npos);
    QCOMPARE(loadFallbackContent("m1"), std::optional<std::string>("Pasted for m1"));
    QCOMPARE(loadFallbackContent("m2"), std::optional<std::string>("kept for m2"));
}

void SummaryPanelTest::lookingChangesNothing()
{
    // The control shows these three otherwise than it got them.
    const ManualTime time;
    const std::string content = "a\r\nb\u00a0c\u2028d";
    useMessage("m1", content.c_str());
    storeFallbackContent("m1", content);
    SummarizeManager::shared().requestFailed = true;
    SummarizeManager::shared().fallbackSummarizeContent.set("of another message");
    m_fixture.server().reply(summarize, "{}");
    showSignedIn();
    QTRY_VERIFY(m_fixture.item("fallbackInput"));
    QVERIFY(m_fixture.item("fallbackInput")->property("text").toString().startsWith(QStringLiteral("a")));
    QCOMPARE(loadFallbackContent("m1"), std::optional(content));
    QCOMPARE(SummarizeManager::shared().fallbackSummarizeContent.get(), content);
}

QTEST_MAIN(SummaryPanelTest)
#include "SummaryPanelTest.moc"
