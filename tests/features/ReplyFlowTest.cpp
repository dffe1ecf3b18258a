#include "features/ButtonStateManager.h"
#include "features/CurrentMessage.h"
#include "features/FeatureFixture.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "state/AuthManager.h"
#include "support/TestProgram.h"

#include <QCoreApplication>
#include <QSignalSpy>

using namespace quillmate;

using Text = FeatureFixture::Text;

/// What is known when a panel opens.
struct Known {
    Text messageId = "m1";
    Text content = "The content";
    Text pasted = std::nullopt;
    Text token = "token";
};

Q_DECLARE_METATYPE(Known)
Q_DECLARE_METATYPE(quillmate::TestReply)

/// Replies from the service, from the button to the store, and what goes back as training data.
class ReplyFlowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_fixture.reset(); }
    void sections();
    void generate_data();
    void generate();
    void failedRegenerationKeepsTheReply();
    void anotherComposeSessionBegins();
    void signOutMeanwhile();
    void managerGoneMeanwhile();
    void training();

private:
    FeatureFixture m_fixture;
};

namespace
{

using Manager = std::shared_ptr<ButtonStateManager>;

/// All that the views show of it, on one line.
QString shown(const Manager& manager)
{
    return QStringLiteral("%1%2, reply: %3, toast: %4")
        .arg(manager->section() == ButtonStateManager::Section::Reply ? "reply section" : "introduction",
             manager->isGenerateResponseLoading() ? ", loading" : "",
             QString::fromStdString(manager->generateResponse().value_or("-")),
             manager->showToast() ? QString::fromStdString(manager->toastMessage()) : QStringLiteral("-"));
}

std::shared_ptr<const RepliedMessage> begin(const Known& known)
{
    FeatureFixture::replyTo(known.messageId, known.content);
    AuthManager::shared().accessToken.set(known.token);
    auto message = currentMessage();
    if (known.pasted) {
        message->storeFallbackContent(*known.pasted, SignInPeriod());
    }
    return message;
}

/// The request that asks for a reply.
QString asks(const char* messageId, const char* content, const char* token = "token")
{
    return QStringLiteral(R"(/response Bearer %1 {"messageId":"%2","content":"%3","email":"e@a.example",%4})")
        .arg(token, messageId, content, pluginMembers);
}

const TestReply yes{200, R"({"response":"Yes."})"};
const auto generated = QStringLiteral("reply section, reply: Yes., toast: Response generated successfully.");

} // namespace

void ReplyFlowTest::sections()
{
    struct Row {
        std::vector<const char*> texts;
        const char* flag;
        const char* seen;
    };
    for (const auto& [texts, flag, seen] :
         {Row{{}, "", "introduction, reply: -"},
          Row{{"generateResponse m1"}, "m1_generateResponse", "reply section, reply: stored"},
          Row{{}, "m1_generateResponse", "introduction, reply: -"},
          Row{{"generateResponse m1"}, "", "introduction, reply: stored"},
          Row{{"generateResponse m2", "generateResponse compose"}, "_generateResponse", "introduction, reply: -"}}) {
        m_fixture.reset();
        for (const char* key : texts) {
            UserDefaults::standard().setString(key, "stored");
        }
        UserDefaults::standard().setBoolean(flag, true);
        const auto manager = ButtonStateManager::make(currentMessage());
        QCOMPARE(shown(manager), QStringLiteral("introduction, reply: -, toast: -"));
        manager->loadStoredResponses();
        QCOMPARE(shown(manager), QString(seen) + ", toast: -");
        QCOMPARE(m_fixture.sent(), QStringList());
    }
}

void ReplyFlowTest::generate_data()
{
    QTest::addColumn<Known>("known");
    QTest::addColumn<TestReply>("reply");
    QTest::addColumn<QStringList>("sent");
    QTest::addColumn<QString>("seen"); // its beginning; the line printed stands before a bar
    QTest::addColumn<QStringList>("written");
    const auto row = [](const char* name, const Known& known, const TestReply& reply, const QStringList& sent,
                        const QString& seen, const QStringList& written = {}) {
        QTest::newRow(name) << known << reply << sent << seen << written;
    };
    const Text none;
    const auto toast = QStringLiteral("introduction, reply: -, toast: ");
    const QStringList asked{asks("m1", "The content")};
    const QStringList stored{"generateResponse m1=Yes.", "m1_generateResponse=true"};
    const QStringList storedWithoutId{"_generateResponse=true", "generateResponse compose=Yes."};
    row("first reply", {}, yes, asked, generated, stored);
    row("no message id", {none}, yes, {asks("", "The content")}, generated, storedWithoutId);
    row("its own text goes first", {"m1", "The content", "pasted"}, yes, asked, generated, stored);
    row("pasted text", {"m1", none, "pasted"}, yes, {asks("m1", "pasted")}, generated, stored);
    row("pasted text for an empty one", {"m1", "", "pasted"}, yes, {asks("m1", "pasted")}, generated, stored);
    row("pasted text, no id", {none, none, "pasted"}, yes, {asks("", "pasted")}, generated, storedWithoutId);
    row("empty token", {"m1", "The content", none, ""}, yes, {asks("m1", "The content", "")}, generated, stored);
    row("empty reply", {}, {200, R"({"response":""})"}, asked,
        "reply section, reply: , toast: Response generated successfully.",
        {"generateResponse m1=", "m1_generateResponse=true"});
    for (const Known& known : {Known{"m1", none}, Known{"m1", ""}, Known{"m1", none, ""}}) {
        row("nothing to answer", known, yes, {}, "Message content is empty.|" + toast + "Message content is empty.");
    }
    row("signed out", {"m1", "The content", none, none}, yes, {},
        "Access token is null in generate response API call|" + toast + "Access token is null");
    row("not UTF-8", {"m1", "caf\xe9"}, yes, {}, toast + "Failed to encode JSON: ");
    row("500", {}, {500}, asked, toast + "Server error: 500");
}

void ReplyFlowTest::generate()
{
    QFETCH(const Known, known);
    QFETCH(const TestReply, reply);
    QFETCH(const QStringList, sent);
    QFETCH(const QString, seen);
    QFETCH(const QStringList, written);
    const auto message = begin(known);
    const QStringList before = FeatureFixture::stored();
    m_fixture.server().reply("POST /api/v1/response", reply);
    const auto manager = ButtonStateManager::make(message);
    manager->generate();
    manager->generate(); // One is under way.
    // Nothing comes of it within the call.
    QCOMPARE(shown(manager), QStringLiteral("introduction, loading, reply: -, toast: -"));
    QTRY_VERIFY(!manager->isGenerateResponseLoading());
    const QString after = (m_fixture.log().lines() << shown(manager)).join(QLatin1Char('|'));
    QVERIFY2(after.startsWith(seen), qPrintable(after));
    QCOMPARE(m_fixture.sent(), sent);
    QStringList stored = before + written;
    stored.sort();
    QCOMPARE(FeatureFixture::stored(), stored);
    QVERIFY(ManualTime::pendingDelays().empty()); // no second try
    // A panel that is opened later shows what was stored.
    const auto later = ButtonStateManager::make(message);
    later->loadStoredResponses();
    QCOMPARE(later->section(), manager->section());
    QCOMPARE(later->generateResponse(), manager->generateResponse());
    // Another message without an id has nothing of it.
    const auto other = ButtonStateManager::make(std::make_shared<const RepliedMessage>(ReplyEmail()));
    other->loadStoredResponses();
    QCOMPARE(shown(other), QStringLiteral("introduction, reply: -, toast: -"));
}

void ReplyFlowTest::failedRegenerationKeepsTheReply()
{
    m_fixture.server().reply("POST /api/v1/response", yes);
    m_fixture.server().reply("POST /api/v1/response", TestReply{502});
    m_fixture.server().reply("POST /api/v1/response", R"({"response":"No."})");
    const auto manager = ButtonStateManager::make(currentMessage());
    QSignalSpy sections(manager.get(), &ButtonStateManager::sectionChanged);
    QSignalSpy replies(manager.get(), &ButtonStateManager::generateResponseChanged);
    for (const char* seen : {"Yes., toast: Response generated successfully.", "Yes., toast: Server error: 502",
                             "No., toast: Response generated successfully."}) {
        manager->setShowToast(false);
        manager->generate();
        QTRY_VERIFY(!manager->isGenerateResponseLoading());
        QCOMPARE(shown(manager), QStringLiteral("reply section, reply: ") + seen);
    }
    QCOMPARE(sections.count(), 1);
    QCOMPARE(replies.count(), 2);
    QCOMPARE(FeatureFixture::stored(), (QStringList{"generateResponse m1=No.", "m1_generateResponse=true"}));
    QCOMPARE(m_fixture.sent(), QStringList(3, asks("m1", "The content")));
}

void ReplyFlowTest::anotherComposeSessionBegins()
{
    m_fixture.server().reply("POST /api/v1/response", yes);
    m_fixture.server().reply("POST /api/v1/create-training-data", R"({"success":"Thanks."})");
    const auto manager = ButtonStateManager::make(currentMessage());
    manager->generate();
    FeatureFixture::replyTo("m2", "Another content");
    QTRY_COMPARE(shown(manager), generated);
    QCOMPARE(FeatureFixture::stored(), (QStringList{"generateResponse m1=Yes.", "m1_generateResponse=true"}));
    // Nor does what is asked now speak of it.
    manager->setShowToast(false);
    manager->generate();
    QTRY_COMPARE(shown(manager), generated);
    manager->submitTrainingData();
    QTRY_COMPARE(manager->toastMessage(), std::string("Success: Thanks."));
    QCOMPARE(m_fixture.sent().mid(0, 2), QStringList(2, asks("m1", "The content")));
    QVERIFY(m_fixture.sent().at(2).contains(QStringLiteral(R"("question":"The content","answer":"Yes.")")));
}

void ReplyFlowTest::signOutMeanwhile()
{
    for (const TestReply& reply : {yes, TestReply{500}}) {
        m_fixture.reset();
        m_fixture.server().reply("POST /api/v1/response", reply);
        m_fixture.server().reply("POST /api/v1/create-training-data", R"({"success":"Thanks."})");
        const auto manager = ButtonStateManager::make(currentMessage());
        {
            const auto held = m_fixture.server().hold(); // No answer comes before.
            manager->submitTrainingData();
            manager->generate();
            AuthManager::shared().logout();
        }
        AuthManager::shared().accessToken.set("another user's");
        QTRY_COMPARE(m_fixture.server().requests().size(), std::size_t(2));
        QTRY_VERIFY(!manager->isGenerateResponseLoading());
        QCOMPARE(shown(manager), QStringLiteral("introduction, reply: -, toast: -"));
        QCOMPARE(FeatureFixture::stored(), QStringList());
        QCOMPARE(m_fixture.sent().filter("/response"), QStringList{asks("m1", "The content")});
    }
}

void ReplyFlowTest::managerGoneMeanwhile()
{
    m_fixture.server().reply("POST /api/v1/response", yes);
    m_fixture.server().reply("POST /api/v1/create-training-data", R"({"success":"Thanks."})");
    auto manager = ButtonStateManager::make(currentMessage());
    manager->generate();
    manager->submitTrainingData();
    const std::weak_ptr<ButtonStateManager> weak = manager;
    manager.reset();
    QVERIFY(weak.expired());
    QTRY_COMPARE(m_fixture.server().requests().size(), std::size_t(2));
    // The next panel's reply comes after the dropped one.
    FeatureFixture::replyTo("m2", "Another content");
    const auto next = ButtonStateManager::make(currentMessage());
    next->generate();
    QTRY_COMPARE(shown(next), generated);
    QCOMPARE(FeatureFixture::stored(), (QStringList{"generateResponse m2=Yes.", "m2_generateResponse=true"}));
}

void ReplyFlowTest::training()
{
    struct Row {
        Known known;
        Text reply;
        TestReply answer;
        const char* sent;    // question and answer
        const char* printed; // beside the body's line, its beginning; empty for nothing
        const char* toast;
    };
    const Text none;
    const TestReply thanks{200, R"({"success":"Thanks."})"};
    const char* const ordinary = R"("question":"The content","answer":"Yes.")";
    const char* const noId = "Session message id is nil";
    for (const auto& [known, reply, answer, sent, printed, toast] :
         {Row{{}, "Yes.", thanks, ordinary, "", "Success: Thanks."},
          Row{{}, none, thanks, R"("question":"The content","answer":"No response available")", "", "Success: Thanks."},
          Row{{"m1", none, "pasted"}, "", thanks, R"("question":"","answer":"")", "", "Success: Thanks."},
          Row{{"m1", "The content", none, none}, "Yes.", thanks, ordinary, "", "Success: Thanks."},
          Row{{none}, "Yes.", thanks, ordinary, noId, "Success: Thanks."},
          Row{{""}, "Yes.", thanks, ordinary, noId, "Success: Thanks."},
          Row{{}, "Yes.", {200, R"({"success":""})"}, ordinary, "", "Failed to submit training data."},
          Row{{}, "Yes.", {500}, ordinary, "Server error: 500", "Failed to submit training data."},
          Row{{"m1", "caf\xe9"}, "Yes.", thanks, "", "Failed to encode JSON: ", "Failed to submit training data."}}) {
        m_fixture.reset();
        const auto message = begin(known);
        m_fixture.server().reply("POST /api/v1/create-training-data", answer);
        const auto manager = ButtonStateManager::make(message);
        manager->setGenerateResponse(reply);
        manager->submitTrainingData();
        manager->submitTrainingData(); // One is under way.
        QVERIFY(!manager->showToast() && !manager->isGenerateResponseLoading());
        QTRY_VERIFY(manager->showToast());
        QTRY_COMPARE(m_fixture.log().lines().size(), *printed == '\0' ? 1 : 2);
        QCOMPARE(m_fixture.log().lines().filter("TRAINIG DATA BODY {\"email\":\"e@a.example\",\"question\":\"").size(),
                 1);
        QVERIFY2(*printed == '\0' || m_fixture.log().lines().filter(printed).size() == 1, printed);
        QCOMPARE(shown(manager), QStringLiteral("introduction, reply: %1, toast: %2")
                                     .arg(QString::fromStdString(reply.value_or("-")), toast));
        const QString whole = QStringLiteral(R"(/create-training-data Bearer %1 {"email":"e@a.example",%2,%3})")
                                  .arg(QString::fromStdString(known.token.value_or("")), sent, pluginMembers);
        QCOMPARE(m_fixture.sent(), *sent == '\0' ? QStringList() : QStringList{whole});
    }
}

QUILLMATE_TEST(ReplyFlowTest, QCoreApplication)
#include "ReplyFlowTest.moc"
