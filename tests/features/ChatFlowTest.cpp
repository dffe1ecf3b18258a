#include "features/ChatErrorMessage.h"
#include "features/ChatState.h"
#include "features/CurrentMessage.h"
#include "features/FeatureFixture.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "state/APIManager.h"
#include "state/AuthManager.h"
#include "state/StartChatManager.h"
#include "support/TestProgram.h"

#include <QCoreApplication>
#include <QSignalSpy>

using namespace quillmate;

using Text = FeatureFixture::Text;

/// The chat, from the input field to the store.
class ChatFlowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void conversation();
    void whatIsSent();
    void failures();
    void textsThatCannotBeSent();
    void unreadableStore();
    void failureWithoutAMessageOfTheUser();
    void messageWhileAChatIsBeingStarted();
    void requestsWithoutAnAnswer();
    void endOfTheUserMeanwhile();
    void screenGoneMeanwhile();
    void twoScreensOfOneMessage();

private:
    void answerSends(const TestReply& reply) { m_fixture.server().reply("POST /api/v1/chat/send", reply); }

    FeatureFixture m_fixture;
};

namespace
{

using Chat = std::shared_ptr<ChatState>;

const TestReply started{200, R"({"response":{"assistantId":"a1","threadId":"t1"}})"};
const TestReply hi{200, R"({"response":"Hi."})"};
const TestReply silence{200, "", {}, TestReply::Manner::Silence};
const auto wentWrong = QStringLiteral(", error: Something went wrong, please try again");

QString word(const Text& text)
{
    return QString::fromStdString(text.value_or("-"));
}

/// All that a chat screen shows, on one line; the user's messages in brackets.
QString shown(const Chat& chat)
{
    QStringList messages;
    for (const Message& message : chat->messages()) {
        const QString text = word(message.text);
        messages.append(message.isSentByCurrentUser ? "[" + text + "]" : word(message.response));
    }
    const auto& error = ChatErrorMessage::shared().chatErrorMessage();
    return QStringLiteral("%1, chat %2 %3%4%5%6")
        .arg(messages.join(QLatin1Char(' ')), word(chat->assistantId()), word(chat->threadId()),
             chat->isLoading() ? ", loading" : "", error ? ", error: " + QString::fromStdString(*error) : QString(),
             chat->newMessageText().empty() ? QString() : ", input: " + word(chat->newMessageText()));
}

void say(const Chat& chat, const char* text)
{
    chat->setNewMessageText(text);
    chat->sendMessage();
}

QString starts(const QString& content = "The content", const std::string& token = "token")
{
    return QStringLiteral(R"(/chat/start Bearer %1 {"email":"e@a.example",%2,"email_content":"%3"})")
        .arg(QString::fromStdString(token), pluginMembers, content);
}

QString sends(const char* content, const std::string& token = "token")
{
    return QStringLiteral(
               R"(/chat/send Bearer %1 {"assistantId":"a1","threadId":"t1","email":"e@a.example","content":"%2",%3})")
        .arg(QString::fromStdString(token), content, pluginMembers);
}

/// The stored form of the messages, as other clients write it.
QString storedFormOf(const Chat& chat)
{
    QStringList messages;
    for (const Message& message : chat->messages()) {
        messages.append(QStringLiteral(R"({"id":"%1","%2":"%3","isSentByCurrentUser":%4})")
                            .arg(QString::fromStdString(message.id.uuidString()), message.text ? "text" : "response",
                                 word(message.text ? message.text : message.response),
                                 message.isSentByCurrentUser ? "true" : "false"));
    }
    return "[" + messages.join(QLatin1Char(',')) + "]";
}

QString storedChat(const char* key)
{
    return word(UserDefaults::standard().data(key));
}

} // namespace

void ChatFlowTest::init()
{
    m_fixture.reset();
    m_fixture.server().reply("POST /api/v1/chat/start", started);
}

void ChatFlowTest::conversation()
{
    answerSends(hi);
    const auto chat = ChatState::make(currentMessage());
    QSignalSpy loading(chat.get(), &ChatState::isLoadingChanged);
    QSignalSpy appended(chat.get(), &ChatState::messagesAppended);
    chat->sendMessage();
    QCOMPARE(shown(chat), QStringLiteral(", chat - -"));
    QCOMPARE(FeatureFixture::stored(), QStringList());
    QCOMPARE(m_fixture.log().lines(), QStringList());

    say(chat, "one");
    QCOMPARE(shown(chat), QStringLiteral("[one], chat - -, loading"));
    QCOMPARE(storedChat("reply m1"), storedFormOf(chat));
    QTRY_COMPARE(shown(chat), QStringLiteral("[one] Hi., chat a1 t1"));
    QCOMPARE(loading.count(), 4); // for the start, and for the message
    QCOMPARE(StartChatManager::shared().assistantId.get(), chat->assistantId());
    QCOMPARE(StartChatManager::shared().threadId.get(), chat->threadId());
    say(chat, "  ");
    QTRY_COMPARE(shown(chat), QStringLiteral("[one] Hi. [  ] Hi., chat a1 t1"));
    QCOMPARE(appended.count(), 4);
    QCOMPARE(m_fixture.sent(), (QStringList{starts(), sends("one"), sends("  ")}));
    QCOMPARE(m_fixture.log().lines(),
             (QStringList{"Start chat url: " + QString::fromStdString(currentApiURL()) + "/chat/start",
                          "Start chat access_token: token", "Start chat body: " + starts().mid(25)}));
    QCOMPARE(storedChat("reply m1"), storedFormOf(chat));
    QCOMPARE(FeatureFixture::stored(), QStringList{"reply m1=data"});

    // Shown again by another screen, which opens a chat of its own.
    const auto later = ChatState::make(currentMessage());
    later->loadMessages();
    QCOMPARE(shown(later), QStringLiteral("[one] Hi. [  ] Hi., chat - -"));
    QVERIFY(later->messages() == chat->messages());
    say(later, "two");
    QTRY_COMPARE(shown(later), QStringLiteral("[one] Hi. [  ] Hi. [two] Hi., chat a1 t1"));
    QCOMPARE(m_fixture.sent().mid(3), (QStringList{starts(), sends("two")}));
}

void ChatFlowTest::whatIsSent()
{
    struct Row {
        Text messageId;
        Text content;
        Text token;
        const char* contentSent;
    };
    const Text none;
    for (const auto& [messageId, content, token, contentSent] :
         {Row{none, none, "token", "Compose session"}, Row{none, "c", "token", "c"},
          Row{"m1", none, "token", "Compose session"}, Row{"m1", "", "token", ""}, Row{"m1", "c", none, "c"}}) {
        init();
        answerSends(hi);
        FeatureFixture::replyTo(messageId, content);
        AuthManager::shared().accessToken.set(token);
        const auto chat = ChatState::make(currentMessage());
        say(chat, "one");
        QTRY_COMPARE(shown(chat), QStringLiteral("[one] Hi., chat a1 t1"));
        const std::string sentToken = token.value_or("");
        QCOMPARE(m_fixture.sent(), (QStringList{starts(contentSent, sentToken), sends("one", sentToken)}));
        QCOMPARE(FeatureFixture::stored(), QStringList{messageId ? "reply m1=data" : "reply compose=data"});
    }
}

void ChatFlowTest::failures()
{
    struct Row {
        TestReply start;
        TestReply send;
        const char* printed; // the last line, its beginning
    };
    const TestReply closed{200, "", {}, TestReply::Manner::CloseAtOnce};
    for (const auto& [start, send, printed] :
         {Row{closed, hi, "Error from start chat is: networkError(URLError.networkConnectionLost: "},
          Row{started, {401}, "Error from chat message is: serverError(401)"},
          Row{started, {200, "{}"}, "Error from chat message is: invalidData"}}) {
        init();
        m_fixture.server().reset();
        m_fixture.server().reply("POST /api/v1/chat/start", start);
        m_fixture.server().reply("POST /api/v1/chat/start", started);
        answerSends(send);
        answerSends(hi);
        const auto chat = ChatState::make(currentMessage());
        const bool isStarted = start.body == started.body;
        say(chat, "one");
        QTRY_COMPARE(shown(chat), "[one], chat " + QString(isStarted ? "a1 t1" : "- -") + wentWrong);
        QVERIFY2(m_fixture.log().lines().last().startsWith(printed), qPrintable(m_fixture.log().lines().last()));
        QCOMPARE(storedChat("reply m1"), storedFormOf(chat));
        QVERIFY(ManualTime::pendingDelays().empty()); // no second try

        // The error is the whole process's; any chat's answer clears it. The screen's own message stays its own.
        FeatureFixture::replyTo("m2", "Another content");
        const auto other = ChatState::make(currentMessage());
        QCOMPARE(shown(other), ", chat - -" + wentWrong);
        say(other, "two");
        QTRY_COMPARE(shown(other), QStringLiteral("[two] Hi., chat a1 t1"));
        const auto before = m_fixture.sent().size();
        say(chat, "three");
        QTRY_COMPARE(shown(chat), QStringLiteral("[one] [three] Hi., chat a1 t1"));
        QCOMPARE(m_fixture.sent().mid(before),
                 isStarted ? QStringList{sends("three")} : (QStringList{starts(), sends("three")}));
    }
}

void ChatFlowTest::textsThatCannotBeSent()
{
    // The content: the start fails within the call, and is acted on after it.
    FeatureFixture::replyTo("m1", "caf\xe9");
    auto chat = ChatState::make(currentMessage());
    say(chat, "one");
    QCOMPARE(shown(chat), QStringLiteral("[one], chat - -, loading"));
    QTRY_COMPARE(shown(chat), "[one], chat - -" + wentWrong);
    QCOMPARE(m_fixture.log().take().last(), QStringLiteral("Error from start chat is: invalidData"));
    // The message: what is stored stays as it was.
    FeatureFixture::replyTo("m1", "The content");
    chat = ChatState::make(currentMessage());
    chat->loadMessages();
    say(chat, "caf\xe9");
    QTRY_COMPARE(chat->assistantId(), Text("a1"));
    QTRY_VERIFY(!chat->isLoading());
    QCOMPARE(m_fixture.sent(), QStringList{starts()});
    QCOMPARE(m_fixture.log().lines().filter("Failed to save messages: ").size(), 2);
    QVERIFY(m_fixture.log().lines().contains("Error from chat message is: invalidData"));
    QVERIFY(storedChat("reply m1").endsWith(QLatin1String(R"(,"text":"one","isSentByCurrentUser":true}])")));
}

void ChatFlowTest::unreadableStore()
{
    UserDefaults::standard().setData("reply m1", "[{}]");
    const auto chat = ChatState::make(currentMessage());
    chat->loadMessages();
    QCOMPARE(m_fixture.log().lines().size(), 1);
    QVERIFY(m_fixture.log().lines().front().startsWith(QLatin1String("Failed to load messages: ")));
    QVERIFY(chat->messages().empty());
    QCOMPARE(storedChat("reply m1"), QStringLiteral("[{}]"));
    chat->saveMessages();
    QCOMPARE(storedChat("reply m1"), QStringLiteral("[]"));
}

void ChatFlowTest::failureWithoutAMessageOfTheUser()
{
    answerSends(TestReply{500});
    const auto chat = ChatState::make(currentMessage());
    say(chat, "one");
    QTRY_COMPARE(m_fixture.server().requests().size(), std::size_t(2));
    QTRY_VERIFY(!chat->isLoading());
    ChatErrorMessage::shared().setChatErrorMessage(std::nullopt);
    say(chat, "two");
    MessageHistory history({Message::answer("Welcome.")});
    UserDefaults::standard().setData("reply m1", history.encode().value());
    chat->loadMessages();
    QTRY_COMPARE(shown(chat), QStringLiteral("Welcome., chat a1 t1"));
    QCOMPARE(m_fixture.log().lines().last(), QStringLiteral("No message sent by the current user was found."));
}

void ChatFlowTest::messageWhileAChatIsBeingStarted()
{
    m_fixture.server().reset();
    for (const char* reply : {R"({"response":{"assistantId":"a1","threadId":"t1"}})",
                              R"({"response":{"assistantId":"a2","threadId":"t2"}})"}) {
        m_fixture.server().reply("POST /api/v1/chat/start", reply);
    }
    answerSends(hi);
    const auto chat = ChatState::make(currentMessage());
    say(chat, "one");
    say(chat, "two");
    QTRY_COMPARE(chat->messages().size(), std::size_t(4));
    // Either start may be answered first; each sends the newest message into its own chat.
    QStringList sent = m_fixture.sent();
    QStringList expected{starts(), starts(), sends("two"), sends("two").replace("a1", "a2").replace("t1", "t2")};
    sent.sort();
    expected.sort();
    QCOMPARE(sent, expected);
    QCOMPARE(StartChatManager::shared().assistantId.get(), chat->assistantId());
    QCOMPARE(StartChatManager::shared().threadId.get(), chat->threadId());
    QVERIFY(shown(chat).startsWith("[one] [two] Hi. Hi., chat "));
    QCOMPARE(storedChat("reply m1"), storedFormOf(chat));
}

void ChatFlowTest::requestsWithoutAnAnswer()
{
    answerSends(silence);
    answerSends(hi);
    const auto chat = ChatState::make(currentMessage());
    say(chat, "one");
    QTRY_COMPARE(m_fixture.server().requests().size(), std::size_t(2));
    QCOMPARE(shown(chat), QStringLiteral("[one], chat a1 t1, loading"));
    // The next message goes all the same, and its answer ends the loading for both.
    say(chat, "two");
    QTRY_COMPARE(shown(chat), QStringLiteral("[one] [two] Hi., chat a1 t1"));
    say(chat, "three");
    say(chat, "four");
    QTRY_COMPARE(shown(chat), QStringLiteral("[one] [two] Hi. [three] [four] Hi. Hi., chat a1 t1"));
    QCOMPARE(m_fixture.sent().size(), 5);
}

void ChatFlowTest::endOfTheUserMeanwhile()
{
    struct Row {
        TestReply start;
        TestReply send;
        bool isOpen;      // The chat is under way: it ends before the answer to the second message.
        bool environment; // Another one is chosen, in the place of a sign-out.
    };
    for (const auto& [start, send, isOpen, environment] :
         {Row{started, hi, false, false}, Row{started, hi, false, true}, Row{{500}, hi, false, false},
          Row{started, hi, true, false}, Row{started, {500}, true, false}}) {
        m_fixture.reset();
        m_fixture.server().reply("POST /api/v1/chat/start", start);
        const auto chat = ChatState::make(currentMessage());
        if (isOpen) {
            answerSends(hi);
            say(chat, "one");
            QTRY_COMPARE(shown(chat), QStringLiteral("[one] Hi., chat a1 t1"));
        }
        answerSends(send);
        say(chat, "two");
        const QString before = shown(chat);
        if (environment) {
            APIManager::selectApiEndpoint("dev");
        } else {
            AuthManager::shared().logout();
        }
        AuthManager::shared().accessToken.set("another user's");
        QTRY_VERIFY(!chat->isLoading());
        QCOMPARE(shown(chat), QString(before).remove(QStringLiteral(", loading")));
        chat->saveMessages();
        // Only a sign-out empties the store.
        QCOMPARE(FeatureFixture::stored(),
                 environment ? (QStringList{"reply m1=data", "selectedApiEndpoint=dev"}) : QStringList());
        QCOMPARE(m_fixture.server().requests().size(), std::size_t(isOpen ? 3 : 1));
    }
}

void ChatFlowTest::screenGoneMeanwhile()
{
    answerSends(hi);
    auto chat = ChatState::make(currentMessage());
    say(chat, "one");
    const std::weak_ptr<ChatState> weak = chat;
    const QString stored = storedFormOf(chat);
    chat.reset();
    QVERIFY(weak.expired());
    QTRY_COMPARE(m_fixture.server().requests().size(), std::size_t(1));
    // The next screen's answer comes after the dropped one.
    FeatureFixture::replyTo("m2", "Another content");
    const auto next = ChatState::make(currentMessage());
    say(next, "two");
    QTRY_COMPARE(shown(next), QStringLiteral("[two] Hi., chat a1 t1"));
    QCOMPARE(m_fixture.sent(), (QStringList{starts(), starts("Another content"), sends("two")}));
    QCOMPARE(storedChat("reply m1"), stored);
}

void ChatFlowTest::twoScreensOfOneMessage()
{
    answerSends(hi);
    const auto one = ChatState::make(currentMessage());
    const auto other = ChatState::make(currentMessage());
    QSignalSpy replaced(one.get(), &ChatState::messagesReplaced);
    QSignalSpy changed(one.get(), &ChatState::messagesChanged);
    one->loadMessages(); // nothing stored
    say(other, "one");
    QTRY_COMPARE(other->messages().size(), std::size_t(2));
    QCOMPARE(one->messages().size(), std::size_t(0));
    one->loadMessages();
    QCOMPARE(shown(one), QStringLiteral("[one] Hi., chat - -"));
    QCOMPARE(replaced.count(), 1);
    QCOMPARE(changed.count(), 1);
    // The same messages once more are no change, in whatever form.
    one->loadMessages();
    QCOMPARE(replaced.count(), 1);
    UserDefaults::standard().setData("reply m1", " " + storedFormOf(one).toStdString());
    one->loadMessages();
    QCOMPARE(replaced.count(), 1);
    QCOMPARE(changed.count(), 1);
}

QUILLMATE_TEST(ChatFlowTest, QCoreApplication)
#include "ChatFlowTest.moc"
