#include "features/ButtonStateManager.h"
#include "features/FeatureFixture.h"
#include "features/ReplyRequest.h"
#include "features/Training.h"
#include "platform/foundation/UserDefaults.h"
#include "state/AuthManager.h"

#include <QSignalSpy>
#include <QTest>

using namespace quillmate;

using Text = FeatureFixture::Text;

/// What is known when a panel opens.
struct Known {
    Text messageId = "m1";
    Text content = "The content";
    Text pasted = std::nullopt;
    Text token = "token";
};

Q_DECLARE_METATYPE(Text)
Q_DECLARE_METATYPE(Known)
Q_DECLARE_METATYPE(quillmate::TestReply)

/// Replies from the service, from the button to the store, and what goes back as training data.
class ReplyFlowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_fixture.reset(); }
    void sections_data();
    void sections();
    void generate_data();
    void generate();
    void failedRegenerationKeepsTheReply();
    void anotherComposeSessionBegins();
    void signOutMeanwhile();
    void managerGoneMeanwhile();
    void training_data();
    void training();
    void trainingAfterTheSignOut();

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

void begin(const Known& known)
{
    FeatureFixture::replyTo(known.messageId, known.content);
    AuthManager::shared().accessToken.set(known.token);
    if (known.pasted) {
        UserDefaults::standard().setString(known.messageId ? "Optional(\"m1\") fallbackContent" : "nil fallbackContent",
                                           *known.pasted);
    }
}

void pressGenerate(const Manager& manager)
{
    manager->setGenerateResponseLoading(true);
    requestReply(manager);
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

void ReplyFlowTest::sections_data()
{
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<QString>("flag");
    QTest::addColumn<QString>("seen");
    const QStringList none;
    QTest::newRow("nothing stored") << none << ""
                                    << "introduction, reply: -";
    QTest::newRow("both stored") << QStringList{"generateResponse m1"} << "m1_generateResponse"
                                 << "reply section, reply: stored";
    QTest::newRow("only the flag") << none << "m1_generateResponse"
                                   << "introduction, reply: -";
    QTest::newRow("only the reply") << QStringList{"generateResponse m1"} << ""
                                    << "introduction, reply: stored";
    QTest::newRow("others'") << QStringList{"generateResponse m2", "generateResponse compose"} << "_generateResponse"
                             << "introduction, reply: -";
}

void ReplyFlowTest::sections()
{
    QFETCH(const QStringList, texts);
    QFETCH(const QString, flag);
    QFETCH(const QString, seen);
    for (const QString& key : texts) {
        UserDefaults::standard().setString(key.toStdString(), "stored");
    }
    UserDefaults::standard().setBoolean(flag.toStdString(), true);
    const auto manager = ButtonStateManager::make();
    QCOMPARE(shown(manager), QStringLiteral("introduction, reply: -, toast: -"));
    manager->loadStoredResponses();
    QCOMPARE(shown(manager), seen + ", toast: -");
    QCOMPARE(m_fixture.sent(), QStringList());
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
    row("no JSON", {}, {204}, asked, toast + "Server error! Please try again later.");
    row("cut", {}, {200, "{}", {}, TestReply::Manner::CutInBody}, asked,
        toast + "Error sending request: The connection to quillmate.example was lost.");
}

void ReplyFlowTest::generate()
{
    QFETCH(const Known, known);
    QFETCH(const TestReply, reply);
    QFETCH(const QStringList, sent);
    QFETCH(const QString, seen);
    QFETCH(const QStringList, written);
    begin(known);
    const QStringList before = FeatureFixture::stored();
    m_fixture.server().reply("POST /api/v1/response", reply);
    const auto manager = ButtonStateManager::make();
    pressGenerate(manager);
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
    const auto later = ButtonStateManager::make();
    later->loadStoredResponses();
    QCOMPARE(later->section(), manager->section());
    QCOMPARE(later->generateResponse(), manager->generateResponse());
}

void ReplyFlowTest::failedRegenerationKeepsTheReply()
{
    m_fixture.server().reply("POST /api/v1/response", yes);
    m_fixture.server().reply("POST /api/v1/response", TestReply{502});
    m_fixture.server().reply("POST /api/v1/response", R"({"response":"No."})");
    const auto manager = ButtonStateManager::make();
    QSignalSpy sections(manager.get(), &ButtonStateManager::sectionChanged);
    QSignalSpy replies(manager.get(), &ButtonStateManager::generateResponseChanged);
    for (const char* seen : {"Yes., toast: Response generated successfully.", "Yes., toast: Server error: 502",
                             "No., toast: Response generated successfully."}) {
        manager->setShowToast(false);
        pressGenerate(manager);
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
    const auto manager = ButtonStateManager::make();
    pressGenerate(manager);
    FeatureFixture::replyTo("m2", "Another content");
    QTRY_COMPARE(shown(manager), generated);
    QCOMPARE(FeatureFixture::stored(), (QStringList{"generateResponse m1=Yes.", "m1_generateResponse=true"}));

    // The other message's text is not this one's: without one of its own there is none.
    pressGenerate(manager);
    QTRY_COMPARE(shown(manager), QStringLiteral("reply section, reply: Yes., toast: Message content is empty."));
    UserDefaults::standard().setString("Optional(\"m1\") fallbackContent", "pasted");
    pressGenerate(manager);
    QTRY_COMPARE(shown(manager), generated);
    manager->setShowToast(false);
    submitTrainingData(manager);
    QTRY_VERIFY(manager->showToast());
    QCOMPARE(m_fixture.sent().mid(0, 2), (QStringList{asks("m1", "The content"), asks("m1", "pasted")}));
    QVERIFY(m_fixture.sent().at(2).contains(QStringLiteral(R"("question":"pasted","answer":"Yes.")")));
}

void ReplyFlowTest::signOutMeanwhile()
{
    for (const TestReply& reply : {yes, TestReply{500}}) {
        m_fixture.reset();
        m_fixture.server().reply("POST /api/v1/response", reply);
        const auto manager = ButtonStateManager::make();
        pressGenerate(manager);
        AuthManager::shared().logout();
        AuthManager::shared().accessToken.set("another user's");
        QTRY_VERIFY(!manager->isGenerateResponseLoading());
        QCOMPARE(shown(manager), QStringLiteral("introduction, reply: -, toast: -"));
        QCOMPARE(FeatureFixture::stored(), QStringList());
        QCOMPARE(m_fixture.sent(), QStringList{asks("m1", "The content")});
    }
}

void ReplyFlowTest::managerGoneMeanwhile()
{
    m_fixture.server().reply("POST /api/v1/response", yes);
    m_fixture.server().reply("POST /api/v1/create-training-data", R"({"success":"Thanks."})");
    auto manager = ButtonStateManager::make();
    pressGenerate(manager);
    submitTrainingData(manager);
    const std::weak_ptr<ButtonStateManager> weak = manager;
    manager.reset();
    QVERIFY(weak.expired());
    QTRY_COMPARE(m_fixture.server().requests().size(), std::size_t(2));
    // The next panel's reply comes after the dropped one.
    FeatureFixture::replyTo("m2", "Another content");
    const auto next = ButtonStateManager::make();
    pressGenerate(next);
    QTRY_COMPARE(shown(next), generated);
    QCOMPARE(FeatureFixture::stored(), (QStringList{"generateResponse m2=Yes.", "m2_generateResponse=true"}));
}

void ReplyFlowTest::training_data()
{
    QTest::addColumn<Known>("known");
    QTest::addColumn<Text>("reply");
    QTest::addColumn<TestReply>("answer");
    QTest::addColumn<QString>("sent");    // question and answer; empty for nothing
    QTest::addColumn<QString>("printed"); // beside the body's line, its beginning; empty for nothing
    QTest::addColumn<QString>("toast");   // "-" for none
    const auto row = [](const char* name, const Known& known, const Text& reply, const TestReply& answer,
                        const char* sent, const char* printed, const char* toast) {
        QTest::newRow(name) << known << reply << answer << QString(sent) << QString(printed) << QString(toast);
    };
    const Text none;
    const TestReply thanks{200, R"({"success":"Thanks."})"};
    const auto* const ordinary = R"("question":"The content","answer":"Yes.")";
    row("well", {}, "Yes.", thanks, ordinary, "", "Success: Thanks.");
    row("no reply known", {}, none, thanks, R"("question":"The content","answer":"No response available")", "",
        "Success: Thanks.");
    row("no text", {"m1", none, "pasted"}, "", thanks, R"("question":"","answer":"")", "", "Success: Thanks.");
    row("signed out", {"m1", "The content", none, none}, "Yes.", thanks, ordinary, "", "Success: Thanks.");
    row("no id", {none}, "Yes.", thanks, ordinary, "Session message id is nil", "Success: Thanks.");
    row("empty id", {""}, "Yes.", thanks, ordinary, "Session message id is nil", "Success: Thanks.");
    row("empty success", {}, "Yes.", {200, R"({"success":""})"}, ordinary, "", "Failed to submit training data.");
    row("500", {}, "Yes.", {500}, ordinary, "Server error: 500", "-");
    row("not UTF-8", {"m1", "caf\xe9"}, "Yes.", thanks, "", "Failed to encode JSON: ", "-");
}

void ReplyFlowTest::training()
{
    QFETCH(const Known, known);
    QFETCH(const Text, reply);
    QFETCH(const TestReply, answer);
    QFETCH(const QString, sent);
    QFETCH(const QString, printed);
    QFETCH(const QString, toast);
    begin(known);
    m_fixture.server().reply("POST /api/v1/create-training-data", answer);
    const auto manager = ButtonStateManager::make();
    manager->setGenerateResponse(reply);
    submitTrainingData(manager);
    QVERIFY(!manager->showToast() && !manager->isGenerateResponseLoading());
    QTRY_COMPARE(manager->showToast(), toast != QLatin1String("-"));
    QTRY_COMPARE(m_fixture.log().lines().size(), printed.isEmpty() ? 1 : 2);
    QCOMPARE(m_fixture.log().lines().filter("TRAINIG DATA BODY ").size(), 1);
    QVERIFY2(printed.isEmpty() || m_fixture.log().lines().filter(printed).size() == 1, qPrintable(printed));
    QCOMPARE(
        shown(manager),
        QStringLiteral("introduction, reply: %1, toast: %2").arg(QString::fromStdString(reply.value_or("-")), toast));
    const QString whole = QStringLiteral(R"(/create-training-data Bearer %1 {"email":"e@a.example",%2,%3})")
                              .arg(QString::fromStdString(known.token.value_or("")), sent, pluginMembers);
    QCOMPARE(m_fixture.sent(), sent.isEmpty() ? QStringList() : QStringList{whole});
}

void ReplyFlowTest::trainingAfterTheSignOut()
{
    const auto manager = ButtonStateManager::make();
    AuthManager::shared().logout();
    deliverTrainingResult("Thanks.", *manager);
    QCOMPARE(shown(manager), QStringLiteral("introduction, reply: -, toast: -"));
}

QTEST_GUILESS_MAIN(ReplyFlowTest)
#include "ReplyFlowTest.moc"
