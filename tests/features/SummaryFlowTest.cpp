#include "features/CurrentMessage.h"
#include "features/FeatureFixture.h"
#include "features/SummarizeStateManager.h"
#include "state/AuthManager.h"
#include "state/SummarizeManager.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

using namespace quillmate;

using Text = FeatureFixture::Text;

/// Summaries, from the section that asks to the store.
class SummaryFlowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void automatic();
    void storedOneIsEnough();
    void givesUpAndIsPasted();
    void userDetailsFail();
    void addressOfTheRefresh();
    void pastedText();
    void anotherSessionBegins();
    void signOutMeanwhile();
    void panelGoneMeanwhile();

private:
    void answer(const TestReply& reply) { m_fixture.server().reply("POST /api/v1/summarize", reply); }
    /// The bodies of the summary requests.
    [[nodiscard]] QStringList asked() const { return m_fixture.sent().filter("/summarize"); }

    FeatureFixture m_fixture;
};

namespace
{

using Manager = std::shared_ptr<SummarizeStateManager>;

const TestReply good{200, R"({"response":"Short."})"};
const TestReply none{200, "{}"};

/// All that the views show of it, and what the process keeps, on one line.
QString shown(const Manager& manager)
{
    constexpr const char* sections[] = {"nothing", "result", "editor", "spinner"};
    QString text = QLatin1String(sections[static_cast<int>(manager->section())]);
    if (manager->summarizeResponse()) {
        text += " " + QString::fromStdString(*manager->summarizeResponse());
    }
    for (const auto& [id, record] : SummarizeManager::shared().responses.get()) {
        text += QString::fromStdString(", " + id + "/" + record.messageId + ": " + record.response);
    }
    return text;
}

QString asks(const char* content, const char* token = "token")
{
    return QStringLiteral(R"(/summarize Bearer %1 {"content":"%2","email":"e@a.example",%3})")
        .arg(token, content, pluginMembers);
}

void passRetries(int retries)
{
    for (int attempt = 1; attempt <= retries; ++attempt) {
        QTRY_COMPARE(ManualTime::pendingDelays().size(), std::size_t(1));
        ManualTime::advance(2.0);
    }
}

} // namespace

void SummaryFlowTest::init()
{
    m_fixture.reset();
    m_fixture.server().reply("GET /api/v1/me", R"({"email":"e@a.example","name":"A"})");
}

void SummaryFlowTest::automatic()
{
    struct Row {
        Text messageId;
        Text content;
        Text token;
        TestReply reply;
        QStringList sent;
        const char* seen;
        QStringList stored;
    };
    const Text no;
    const QStringList once{asks("The content")};
    const auto kept = QStringLiteral("Optional(\"m1\") fallbackContent=The content");
    for (const auto& [messageId, content, token, reply, sent, seen, stored] :
         {Row{"m1",
              "The content",
              "token",
              good,
              once,
              "result Short., m1/m1: Short.",
              {kept, "m1_summarize=true", "summarizeResponse m1=Short."}},
          Row{no,
              "The content",
              "token",
              good,
              once,
              "result Short., /: Short.",
              {"_summarize=true", "nil fallbackContent=The content"}},
          Row{"m1", no, "token", good, {}, "editor, m1/m1: old", {}},
          Row{"m1", "", "token", good, {}, "editor, m1/m1: old", {}},
          Row{"m1", "The content", "token", none, once, "editor", {kept}},
          Row{"m1", "The content", no, good, {}, "editor, m1/m1: old", {kept}}}) {
        init();
        FeatureFixture::replyTo(messageId, content);
        AuthManager::shared().accessToken.set(token);
        if (messageId) {
            SummarizeManager::shared().responses.set({{"m1", {"m1", "old"}}});
        }
        answer(reply);
        const auto manager = SummarizeStateManager::make(currentMessage());
        QCOMPARE(manager->section(), SummarizeStateManager::Section::Nothing);
        manager->summarize();
        manager->summarize(); // One is under way.
        QCOMPARE(manager->isSummarizeLoading(), !content.value_or("").empty());
        QTRY_VERIFY(!manager->isSummarizeLoading());
        QCOMPARE(shown(manager), QString(seen));
        manager->loadStoredSummary(); // As a panel that is shown again does.
        QCOMPARE(shown(manager), QString(seen));
        QCOMPARE(asked(), sent);
        QCOMPARE(FeatureFixture::stored(), stored);
        QCOMPARE(m_fixture.log().lines().contains("Access token is null in summarize API call"), !token);
    }
}

void SummaryFlowTest::storedOneIsEnough()
{
    answer(good);
    const auto first = SummarizeStateManager::make(currentMessage());
    first->summarize();
    QTRY_VERIFY(!first->isSummarizeLoading());
    first->summarize();
    const auto second = SummarizeStateManager::make(currentMessage());
    second->loadStoredSummary();
    second->summarize();
    QCOMPARE(shown(second), QStringLiteral("result Short., m1/m1: Short."));
    QVERIFY(!second->isSummarizeLoading());
    QCOMPARE(asked().size(), 1);
    FeatureFixture::replyTo("m2", "Another content");
    const auto other = SummarizeStateManager::make(currentMessage());
    other->loadStoredSummary();
    QCOMPARE(other->summarizeResponse(), Text());
}

void SummaryFlowTest::givesUpAndIsPasted()
{
    answer(TestReply{500});
    const auto manager = SummarizeStateManager::make(currentMessage());
    manager->summarize();
    passRetries(3);
    QTRY_VERIFY(!manager->isSummarizeLoading());
    QCOMPARE(shown(manager), QStringLiteral("editor"));
    QCOMPARE(FeatureFixture::stored(), QStringList{"Optional(\"m1\") fallbackContent=The content"});
    // What is pasted goes in the place of the message, and stays; a new request begins without the editor.
    currentMessage()->storeFallbackContent("pasted", SignInPeriod());
    const QStringList kept = FeatureFixture::stored();
    manager->summarize();
    QCOMPARE(shown(manager), QStringLiteral("spinner"));
    passRetries(3);
    QTRY_VERIFY(!manager->isSummarizeLoading());

    m_fixture.server().reset();
    m_fixture.server().reply("GET /api/v1/me", R"({"email":"e@a.example","name":"A"})");
    answer(none);
    answer(good);
    m_fixture.log().take();
    QStringList failures;
    connect(manager.get(), &SummarizeStateManager::fallbackFailed, this,
            [&failures](const QString& reason) { failures.append(reason); });
    manager->summarizeFallback();
    manager->summarizeFallback(); // One is under way.
    QVERIFY(manager->isSummarizeLoading());
    QTRY_VERIFY(!manager->isSummarizeLoading());
    QCOMPARE(shown(manager), QStringLiteral("editor"));
    QCOMPARE(m_fixture.log().take().last(), QStringLiteral("Failed to summarize."));
    QCOMPARE(failures, QStringList{"Failed to summarize."});
    manager->summarizeFallback();
    QTRY_COMPARE(shown(manager), QStringLiteral("result Short., m1/m1: Short."));
    QVERIFY(!manager->isSummarizeLoading());
    const auto told =
        QStringLiteral(R"(Summarization successful: SummarizedResponse(messageId: "m1", response: "Short."))");
    QCOMPARE(m_fixture.log().lines().last(), told);
    QCOMPARE(FeatureFixture::stored(), kept); // shown, not stored
    QCOMPARE(asked(), (QStringList{asks("pasted"), asks("pasted")}));
}

void SummaryFlowTest::userDetailsFail()
{
    struct Row {
        TestReply reply;
        const char* seen;
        Text tokenAfter;
        const char* refused; // Whose token.
    };
    const TestReply refusal{401, R"({"error":"no"})"};
    for (const auto& [reply, seen, tokenAfter, refused] :
         {Row{{500}, "editor", "token", "token"}, Row{refusal, "nothing", Text(), "token"},
          Row{refusal, "editor", "a newer token", "a newer token"}}) {
        m_fixture.reset();
        currentMessage()->storeFallbackContent("pasted", SignInPeriod());
        m_fixture.server().reply("GET /api/v1/me", reply);
        const auto manager = SummarizeStateManager::make(currentMessage());
        {
            const auto held = m_fixture.server().hold();
            manager->summarize();
            AuthManager::shared().accessToken.set(refused);
        }
        QTRY_VERIFY(!manager->isSummarizeLoading());
        QCOMPARE(shown(manager), QString(seen));
        QCOMPARE(AuthManager::shared().accessToken.get(), tokenAfter);
        QCOMPARE(FeatureFixture::stored(), QStringList{"Optional(\"m1\") fallbackContent=pasted"});
        QCOMPARE(asked(), QStringList());
    }
}

void SummaryFlowTest::addressOfTheRefresh()
{
    answer(good);
    UserDetailsManager::shared().setEmail("");
    const auto manager = SummarizeStateManager::make(currentMessage());
    manager->summarize();
    QTRY_COMPARE(asked(), QStringList{asks("The content")});
}

void SummaryFlowTest::pastedText()
{
    struct Row {
        Text content;
        Text kept;
        QStringList sent;
    };
    for (const auto& [content, kept, sent] :
         {Row{"The content", "pasted", {asks("pasted")}}, Row{"The content", "", {asks("The content")}},
          Row{"The content", Text(), {asks("The content")}}, Row{Text(), "pasted", {asks("pasted")}},
          Row{"", Text(), {}}}) {
        for (const Text& messageId : {Text("m1"), Text()}) {
            init();
            answer(good);
            // Of another message without an id.
            RepliedMessage(ReplyEmail()).storeFallbackContent("somebody else's", SignInPeriod());
            FeatureFixture::replyTo(messageId, content);
            const auto message = currentMessage();
            if (kept) {
                message->storeFallbackContent(*kept, SignInPeriod());
            }
            const auto manager = SummarizeStateManager::make(message);
            manager->summarizeFallback();
            QCOMPARE(manager->isSummarizeLoading(), !sent.empty());
            QTRY_VERIFY(!manager->isSummarizeLoading());
            QCOMPARE(asked(), sent);
            QCOMPARE(message->fallbackContent(), kept);
            AuthManager::shared().logout();
            QCOMPARE(message->fallbackContent(), Text());
        }
    }
}

void SummaryFlowTest::anotherSessionBegins()
{
    answer(TestReply{500});
    answer(good);
    const auto manager = SummarizeStateManager::make(currentMessage());
    manager->summarize();
    QTRY_COMPARE(ManualTime::pendingDelays().size(), std::size_t(1));
    FeatureFixture::replyTo("m2", "Another content");
    passRetries(1);
    QTRY_COMPARE(shown(manager), QStringLiteral("result Short., m1/m1: Short."));
    QCOMPARE(asked(), (QStringList{asks("The content"), asks("The content")}));
}

void SummaryFlowTest::signOutMeanwhile()
{
    answer(TestReply{500});
    answer(good);
    const auto manager = SummarizeStateManager::make(currentMessage());
    manager->summarize();
    QTRY_COMPARE(ManualTime::pendingDelays().size(), std::size_t(1));
    const auto fallback = SummarizeStateManager::make(currentMessage());
    fallback->summarizeFallback();
    AuthManager::shared().logout();
    m_fixture.log().take();
    const auto askedBefore = asked().size();
    passRetries(1);
    QTRY_VERIFY(!manager->isSummarizeLoading() && !fallback->isSummarizeLoading());
    QVERIFY(asked().size() <= askedBefore); // Neither the retry nor what waited for the details.
    QCOMPARE(manager->summarizeResponse(), Text());
    QCOMPARE(fallback->summarizeResponse(), Text());
    QCOMPARE(FeatureFixture::stored(), QStringList());
    QCOMPARE(m_fixture.log().lines().filter("Summarization"), QStringList());
}

void SummaryFlowTest::panelGoneMeanwhile()
{
    answer(TestReply{500});
    answer(good);
    auto manager = SummarizeStateManager::make(currentMessage());
    manager->summarize();
    QTRY_COMPARE(ManualTime::pendingDelays().size(), std::size_t(1));
    const std::weak_ptr<SummarizeStateManager> weak = manager;
    manager.reset();
    QVERIFY(weak.expired());
    passRetries(1);
    // The result is noted, and not stored by anybody.
    QTRY_COMPARE(SummarizeManager::shared().responses.get().count("m1"), std::size_t(1));
    MainSchedule::shared().drain();
    QCOMPARE(FeatureFixture::stored(), QStringList{"Optional(\"m1\") fallbackContent=The content"});
    // The editor's request keeps its panel's state until it is done.
    manager = SummarizeStateManager::make(currentMessage());
    manager->summarizeFallback();
    const std::weak_ptr<SummarizeStateManager> kept = manager;
    manager.reset();
    QVERIFY(!kept.expired());
    QTRY_VERIFY(kept.expired());
    QVERIFY(m_fixture.log().lines().last().startsWith("Summarization successful: "));
}

QUILLMATE_TEST(SummaryFlowTest, QCoreApplication)
#include "SummaryFlowTest.moc"
