#include "base/ApplicationFolders.h"
#include "features/ChatState.h"
#include "features/CurrentMessage.h"
#include "features/FeatureFixture.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "state/APIManager.h"
#include "state/AuthManager.h"
#include "state/StartChatManager.h"
#include "support/TestProgram.h"

#include <QCoreApplication>
#include <QFile>
#include <QRegularExpression>
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
    void questionsWaitTheirTurn();
    void endOfTheUserMeanwhile();
    void screenGoneMeanwhile();
    void twoScreensOfOneMessage();
    void halfTypedQuestion();
    void longConversation();

private:
    void answerSends(const TestReply& reply) { m_fixture.server().reply("POST /api/v1/chat/send", reply); }

    FeatureFixture m_fixture;
};

namespace
{

using Chat = std::shared_ptr<ChatState>;

const TestReply started{200, R"({"response":{"assistantId":"a1","threadId":"t1"}})"};
const TestReply hi{200, R"({"response":"Hi."})"};
const auto wentWrong = QStringLiteral(", error: Something went wrong, please try again");

QString word(const Text& text)
{
    return QString::fromStdString(text.value_or("-"));
}

/// All that a chat screen shows, on one line; the user's messages in brackets, the failed one marked.
QString shown(const Chat& chat)
{
    QStringList messages;
    const auto& failed = chat->failedQuestion();
    for (const Message& message : chat->messages()) {
        const QString text = word(message.text) + (failed && failed->id == message.id ? "!" : "");
        messages.append(message.isSentByCurrentUser ? "[" + text + "]" : word(message.response));
    }
    return QStringLiteral("%1, chat %2 %3%4%5%6")
        .arg(messages.join(QLatin1Char(' ')), word(chat->assistantId()), word(chat->threadId()),
             chat->isLoading() ? ", loading" : "", failed ? ", error: " + word(failed->sentence) : QString(),
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

/// By this process so far, to files and all else.
qint64 bytesWritten()
{
    QFile counters(QStringLiteral("/proc/self/io"));
    const bool opened = counters.open(QIODevice::ReadOnly);
    static const QRegularExpression written(QStringLiteral("wchar: (\\d+)"));
    return opened ? written.match(QString::fromLatin1(counters.readAll())).captured(1).toLongLong() : -1;
}

/// Whether the text stands in the settings' main file.
bool fileHolds(const std::string& text)
{
    QFile file(QString::fromStdString(applicationDataFolder() / "settings.db"));
    return file.open(QIODevice::ReadOnly) && file.readAll().contains(QByteArray::fromStdString(text));
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
        bool again;
    };
    const TestReply closed{200, "", {}, TestReply::Manner::CloseAtOnce};
    for (const auto& [start, send, printed, again] :
         {Row{closed, hi, "Error from start chat is: networkError(URLError.networkConnectionLost: ", true},
          Row{closed, hi, "Error from start chat is: networkError(", false},
          Row{started, {401}, "Error from chat message is: serverError(401)", true},
          Row{started, {200, "{}"}, "Error from chat message is: invalidData", false}}) {
        init();
        m_fixture.server().reset();
        m_fixture.server().reply("POST /api/v1/chat/start", start);
        m_fixture.server().reply("POST /api/v1/chat/start", started);
        answerSends(send);
        answerSends(hi);
        const auto chat = ChatState::make(currentMessage());
        const bool isStarted = start.body == started.body;
        say(chat, "one");
        QTRY_COMPARE(shown(chat), "[one!], chat " + QString(isStarted ? "a1 t1" : "- -") + wentWrong);
        QVERIFY2(m_fixture.log().lines().last().startsWith(printed), qPrintable(m_fixture.log().lines().last()));
        QCOMPARE(storedChat("reply m1"), storedFormOf(chat));
        QVERIFY(ManualTime::pendingDelays().empty()); // no second try

        // It is this screen's alone, also when another one gets its answer.
        FeatureFixture::replyTo("m2", "Another content");
        const auto other = ChatState::make(currentMessage());
        say(other, "two");
        QTRY_COMPARE(shown(other), QStringLiteral("[two] Hi., chat a1 t1"));
        QVERIFY(chat->failedQuestion());

        // Once more, or with another question behind it.
        const auto before = m_fixture.sent().size();
        if (again) {
            chat->sendAgain();
            chat->sendAgain();
        } else {
            say(chat, "three");
        }
        QVERIFY(chat->isLoading() && !chat->failedQuestion());
        QTRY_COMPARE(shown(chat), again ? QStringLiteral("[one] Hi., chat a1 t1")
                                        : QStringLiteral("[one] [three] Hi. Hi., chat a1 t1"));
        QStringList expected = isStarted ? QStringList() : QStringList{starts()};
        expected += again ? QStringList{sends("one")} : QStringList{sends("one"), sends("three")};
        QCOMPARE(m_fixture.sent().mid(before), expected);
        chat->sendAgain(); // Nothing waits.
        QVERIFY(!chat->isLoading());
    }
    // Nobody is signed in.
    for (const int status : {401, 403}) {
        init();
        m_fixture.server().reset();
        m_fixture.server().reply("POST /api/v1/chat/start", TestReply{status});
        AuthManager::shared().accessToken.set(std::nullopt);
        const auto chat = ChatState::make(currentMessage());
        say(chat, "one");
        QTRY_VERIFY(chat->failedQuestion());
        QVERIFY(word(chat->failedQuestion()->sentence).contains(QLatin1String("sign-in")));
    }
}

void ChatFlowTest::textsThatCannotBeSent()
{
    // The content: the start fails within the call, and is acted on after it.
    FeatureFixture::replyTo("m1", "caf\xe9");
    auto chat = ChatState::make(currentMessage());
    say(chat, "one");
    QCOMPARE(shown(chat), QStringLiteral("[one], chat - -, loading"));
    QTRY_COMPARE(shown(chat), "[one!], chat - -" + wentWrong);
    QCOMPARE(m_fixture.log().take().last(), QStringLiteral("Error from start chat is: invalidData"));
    // The message: what is stored stays as it was.
    FeatureFixture::replyTo("m1", "The content");
    chat = ChatState::make(currentMessage());
    chat->loadMessages();
    say(chat, "caf\xe9");
    QTRY_VERIFY(chat->failedQuestion());
    QCOMPARE(m_fixture.sent(), QStringList{starts()});
    QCOMPARE(m_fixture.log().lines().filter("Failed to save messages: ").size(), 2);
    QVERIFY(m_fixture.log().lines().contains("Error from chat message is: invalidData"));
    QVERIFY(storedChat("reply m1").endsWith(QLatin1String(R"(,"text":"one","isSentByCurrentUser":true}])")));
}

void ChatFlowTest::halfTypedQuestion()
{
    const auto message = currentMessage();
    ChatState::make(message)->setNewMessageText("And wh");
    AuthManager::shared().endSignIn("token"); // The service has refused it; a new panel comes after the next sign-in.
    QCOMPARE(ChatState::make(message)->newMessageText(), std::string("And wh"));
    AuthManager::shared().logout();
    QCOMPARE(ChatState::make(message)->newMessageText(), std::string());
}

void ChatFlowTest::unreadableStore()
{
    answerSends(hi);
    for (const bool isShown : {true, false}) {
        UserDefaults::standard().setData("reply m1", "[{}]");
        m_fixture.log().take();
        const auto chat = ChatState::make(currentMessage());
        if (isShown) {
            chat->loadMessages();
            QCOMPARE(m_fixture.log().lines().size(), 1);
            QVERIFY(m_fixture.log().take().front().startsWith(QLatin1String("Failed to load messages: ")));
            QVERIFY(chat->messages().empty());
        }
        chat->saveMessages(); // Nothing was said.
        QCOMPARE(storedChat("reply m1"), QStringLiteral("[{}]"));
        say(chat, "one");
        QVERIFY(m_fixture.log().lines().front().contains(QLatin1String("\"reply m1 unreadable\"")));
        QTRY_COMPARE(shown(chat), QStringLiteral("[one] Hi., chat a1 t1"));
        QCOMPARE(storedChat("reply m1"), storedFormOf(chat));
        QCOMPARE(storedChat("reply m1 unreadable"), QStringLiteral("[{}]"));
        UserDefaults::standard().removeObject("reply m1 unreadable");
    }
}

void ChatFlowTest::questionsWaitTheirTurn()
{
    for (const TestReply& reply : {hi, TestReply{500}, hi}) {
        answerSends(reply);
    }
    const auto chat = ChatState::make(currentMessage());
    {
        const auto held = m_fixture.server().hold();
        for (const char* question : {"one", "two", "three"}) {
            say(chat, question);
        }
        chat->sendAgain(); // A request is under way.
    }
    // One fails: those behind it wait with it, and the line stands under it.
    QTRY_COMPARE(shown(chat), "[one] [two!] [three] Hi., chat a1 t1" + wentWrong);
    QCOMPARE(m_fixture.sent(), (QStringList{starts(), sends("one"), sends("two")}));
    {
        const auto held = m_fixture.server().hold();
        chat->sendAgain();
        QCOMPARE(shown(chat), QStringLiteral("[one] [two] [three] Hi., chat a1 t1, loading"));
        say(chat, "four");
    }
    QTRY_COMPARE(shown(chat), QStringLiteral("[one] [two] [three] Hi. [four] Hi. Hi. Hi., chat a1 t1"));
    QCOMPARE(m_fixture.sent().mid(3), (QStringList{sends("two"), sends("three"), sends("four")}));
    QCOMPARE(storedChat("reply m1"), storedFormOf(chat));
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
        say(chat, "three"); // Waits, and is never sent.
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
    // What one says is stored beside what the other has said meanwhile, which it takes over.
    say(other, "two");
    QTRY_COMPARE(shown(other), QStringLiteral("[one] Hi. [two] Hi., chat a1 t1"));
    say(one, "three");
    QCOMPARE(shown(one), QStringLiteral("[one] Hi. [two] Hi. [three], chat - -, loading"));
    QCOMPARE(replaced.count(), 2);
    say(other, "four");
    QTRY_COMPARE(other->messages().size(), std::size_t(7));
    QTRY_VERIFY(!one->isLoading());
    QTRY_VERIFY(!other->isLoading());
    one->loadMessages();
    other->loadMessages();
    QCOMPARE(one->messages().size(), std::size_t(8));
    QVERIFY(one->messages() == other->messages());
    // Who has said nothing since writes nothing.
    UserDefaults::standard().removeObject("reply m1");
    one->saveMessages();
    QCOMPARE(FeatureFixture::stored(), QStringList());

    // Messages without an id share a key: each shows what was said about it, and keeps what was said about the other.
    FeatureFixture::replyTo(std::nullopt, "One");
    const auto message = currentMessage();
    const auto nameless = ChatState::make(message);
    const auto another = ChatState::make(currentMessage());
    say(nameless, "a");
    QTRY_COMPARE(shown(nameless), QStringLiteral("[a] Hi., chat a1 t1"));
    say(another, "b");
    QTRY_COMPARE(shown(another), QStringLiteral("[b] Hi., chat a1 t1"));
    const auto again = ChatState::make(message);
    again->loadMessages();
    QCOMPARE(shown(again), QStringLiteral("[a] Hi., chat - -"));
    const auto alone = ChatState::make(RepliedMessage::none());
    alone->loadMessages();
    QCOMPARE(shown(alone), QStringLiteral("[a] Hi. [b] Hi., chat - -"));
}

/// Read in a later turn, and written in its last pages alone.
void ChatFlowTest::longConversation()
{
    MessageHistory history;
    for (int i = 0; i < 10'000; ++i) {
        history.append(i % 2 == 0 ? Message::question(std::string(200, 'q')) : Message::answer(std::string(200, 'a')));
    }
    const std::string bytes = [&history] {
        const auto form = std::string(history.encode().value());
        return form.substr(0, form.find_last_not_of(' ') + 1); // As others write it, without room.
    }();
    UserDefaults::standard().setData("reply m1", bytes);
    const auto chat = ChatState::make(currentMessage());
    QSignalSpy replaced(chat.get(), &ChatState::messagesReplaced);
    chat->loadMessages();
    QVERIFY(chat->messages().empty());
    QTRY_COMPARE(replaced.count(), 1);
    QVERIFY(chat->messages() == history.messages());

    // Everything that goes to the disk, to the log and from there to the file, beside the little that the network gets.
    const auto settle = [](const std::string& text) {
        UserDefaults::standard().synchronize();
        QTRY_VERIFY(fileHolds(text));
    };
    settle(bytes.substr(bytes.size() - 100));
    answerSends(TestReply{200, R"({"response":"Hardly anything."})"});
    const qint64 before = bytesWritten();
    say(chat, "What is new?");
    QTRY_COMPARE(chat->messages().size(), std::size_t(10'002));
    settle("Hardly anything.");
    const double exchange = static_cast<double>(bytesWritten() - before) / static_cast<double>(bytes.size());
    QVERIFY2(exchange < 2.2, qPrintable(QString::number(exchange)));
    // Said before it is read.
    const auto later = ChatState::make(currentMessage());
    later->loadMessages();
    say(later, "Again?");
    QCOMPARE(later->messages().size(), std::size_t(10'003));
    QTRY_COMPARE(later->messages().size(), std::size_t(10'004));
    QVERIFY(std::equal(chat->messages().begin(), chat->messages().end(), later->messages().begin()));
}

QUILLMATE_TEST(ChatFlowTest, QCoreApplication)
#include "ChatFlowTest.moc"
