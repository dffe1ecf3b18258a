#include "features/FeatureFixture.h"
#include "features/MessageContent.h"
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
    SummarizeManager::shared().requestFailed = false;
    SummarizeManager::shared().responses.set({});
    SummarizeManager::shared().fallbackSummarizeContent.set("");
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
              {"_summarize=true", "nil fallbackContent=The content", "summarizeResponse compose=Short."}},
          Row{"m1",
              no,
              "token",
              good,
              {asks("pasted")},
              "result Short., m1/m1: Short.",
              {"Optional(\"m1\") fallbackContent=pasted", "m1_summarize=true", "summarizeResponse m1=Short."}},
          Row{"m1", "The content", "token", none, once, "nothing", {kept}},
          Row{"m1", "The content", no, good, {}, "nothing, m1/m1: old", {kept}}}) {
        init();
        FeatureFixture::replyTo(messageId, content);
        AuthManager::shared().accessToken.set(token);
        SummarizeManager::shared().fallbackSummarizeContent.set("pasted");
        if (messageId) {
            SummarizeManager::shared().responses.set({{"m1", {"m1", "old"}}});
        }
        answer(reply);
        const auto manager = SummarizeStateManager::make();
        QCOMPARE(manager->section(), SummarizeStateManager::Section::Nothing);
        manager->summarize();
        manager->summarize(); // One is under way.
        QCOMPARE(manager->section(), SummarizeStateManager::Section::Spinner);
        QTRY_VERIFY(!manager->isSummarizeLoading());
        QCOMPARE(shown(manager), QString(seen));
        QCOMPARE(asked(), sent);
        QCOMPARE(FeatureFixture::stored(), stored);
        QCOMPARE(m_fixture.log().lines().contains("Access token is null in summarize API call"), !token);
    }
}

void SummaryFlowTest::storedOneIsEnough()
{
    answer(good);
    const auto first = SummarizeStateManager::make();
    first->summarize();
    QTRY_VERIFY(!first->isSummarizeLoading());
    first->summarize();
    SummarizeManager::shared().requestFailed = true; // Nobody asks for the editor while there is a summary.
    const auto second = SummarizeStateManager::make();
    QCOMPARE(second->section(), SummarizeStateManager::Section::FallbackEditor);
    second->loadStoredSummary();
    second->summarize();
    QCOMPARE(shown(second), QStringLiteral("result Short., m1/m1: Short."));
    QVERIFY(!second->isSummarizeLoading());
    QCOMPARE(asked().size(), 1);
    FeatureFixture::replyTo("m2", "Another content");
    const auto other = SummarizeStateManager::make();
    other->loadStoredSummary();
    QCOMPARE(other->summarizeResponse(), Text());
}

void SummaryFlowTest::givesUpAndIsPasted()
{
    answer(TestReply{500});
    const auto manager = SummarizeStateManager::make();
    manager->summarize();
    passRetries(3);
    QTRY_VERIFY(!manager->isSummarizeLoading());
    QCOMPARE(shown(manager), QStringLiteral("editor"));
    const QStringList kept = FeatureFixture::stored();
    QCOMPARE(kept, QStringList{"Optional(\"m1\") fallbackContent=The content"});

    m_fixture.server().reset();
    m_fixture.server().reply("GET /api/v1/me", R"({"email":"e@a.example","name":"A"})");
    answer(none);
    answer(good);
    m_fixture.log().take();
    manager->summarizeFallback();
    QVERIFY(manager->isSummarizeLoading());
    QTRY_VERIFY(!manager->isSummarizeLoading());
    QCOMPARE(shown(manager), QStringLiteral("editor"));
    QCOMPARE(m_fixture.log().take().last(), QStringLiteral("Failed to summarize."));
    manager->summarizeFallback();
    QTRY_COMPARE(shown(manager), QStringLiteral("result Short., m1/m1: Short."));
    QVERIFY(!manager->isSummarizeLoading());
    const auto told =
        QStringLiteral(R"(Summarization successful: SummarizedResponse(messageId: "m1", response: "Short."))");
    QCOMPARE(m_fixture.log().lines().last(), told);
    QCOMPARE(FeatureFixture::stored(), kept); // shown, not stored
}

void SummaryFlowTest::userDetailsFail()
{
    m_fixture.server().reset();
    m_fixture.server().reply("GET /api/v1/me", TestReply{401, R"({"error":"no"})"});
    const auto manager = SummarizeStateManager::make();
    manager->summarize();
    QTRY_COMPARE(m_fixture.log().lines().last(), QStringLiteral("Email or name not found in response"));
    MainSchedule::shared().drain();
    QCOMPARE(shown(manager), QStringLiteral("spinner")); // goes on spinning
}

void SummaryFlowTest::anotherSessionBegins()
{
    answer(TestReply{500});
    answer(good);
    const auto manager = SummarizeStateManager::make();
    manager->summarize();
    QTRY_COMPARE(ManualTime::pendingDelays().size(), std::size_t(1));
    FeatureFixture::replyTo("m2", "Another content");
    passRetries(1);
    QTRY_COMPARE(shown(manager), QStringLiteral("result Short., m1/m1: Short."));
    // What is pasted in the panel of one message is not sent for the other.
    storeFallbackContent("m1", "pasted for m1");
    SummarizeManager::shared().fallbackSummarizeContent.set("pasted for m2");
    manager->summarizeFallback();
    QTRY_VERIFY(!manager->isSummarizeLoading());
    QCOMPARE(asked(), (QStringList{asks("The content"), asks("The content"), asks("pasted for m1")}));
    QCOMPARE(FeatureFixture::stored(), (QStringList{"Optional(\"m1\") fallbackContent=pasted for m1",
                                                    "m1_summarize=true", "summarizeResponse m1=Short."}));
}

void SummaryFlowTest::signOutMeanwhile()
{
    answer(TestReply{500});
    answer(good);
    const auto manager = SummarizeStateManager::make();
    manager->summarize();
    QTRY_COMPARE(ManualTime::pendingDelays().size(), std::size_t(1));
    const auto fallback = SummarizeStateManager::make();
    fallback->summarizeFallback();
    AuthManager::shared().logout();
    m_fixture.log().take();
    passRetries(1);
    QTRY_VERIFY(!manager->isSummarizeLoading() && !fallback->isSummarizeLoading());
    QCOMPARE(manager->summarizeResponse(), Text());
    QCOMPARE(fallback->summarizeResponse(), Text());
    QCOMPARE(FeatureFixture::stored(), QStringList());
    QCOMPARE(m_fixture.log().lines().filter("Summarization"), QStringList());
}

void SummaryFlowTest::panelGoneMeanwhile()
{
    answer(TestReply{500});
    answer(good);
    auto manager = SummarizeStateManager::make();
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
    manager = SummarizeStateManager::make();
    manager->summarizeFallback();
    const std::weak_ptr<SummarizeStateManager> kept = manager;
    manager.reset();
    QVERIFY(!kept.expired());
    QTRY_VERIFY(kept.expired());
    QVERIFY(m_fixture.log().lines().last().startsWith("Summarization successful: "));
}

QUILLMATE_TEST(SummaryFlowTest, QCoreApplication)
#include "SummaryFlowTest.moc"
