#include "features/ChatState.h"
#include "features/FeatureFixture.h"
#include "platform/foundation/UserDefaults.h"

#include <QRandomGenerator>
#include <QTest>

using namespace quillmate;

/// The stored form of a conversation.
class MessageHistoryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writtenForm();
    void foreignForms_data();
    void foreignForms();
    void unreadableForms_data();
    void unreadableForms();
    void everyTextComesBack();
    void manyMessages();

private:
    FeatureFixture m_fixture;
};

namespace
{

#define ID "E621E1F8-C36C-495A-93FC-0C247A3E6E5F"
constexpr auto id = ID;

std::vector<Message> everyKind()
{
    const UUID uuid = UUID::parse(id).value();
    return {{uuid, "Why \"so\"?\n", std::nullopt, true},
            {uuid, std::nullopt, "Dé\u2028🪶/\\\x01", false},
            {uuid, std::nullopt, std::nullopt, true},
            {uuid, "", "", false}};
}

/// Whether two conversations are the same in every field.
bool same(const std::vector<Message>& one, const std::vector<Message>& other)
{
    return std::equal(one.begin(), one.end(), other.begin(), other.end(), [](const Message& a, const Message& b) {
        return a.id == b.id && a.text == b.text && a.response == b.response &&
               a.isSentByCurrentUser == b.isSentByCurrentUser;
    });
}

} // namespace

void MessageHistoryTest::writtenForm()
{
    QCOMPARE(MessageHistory().encode().value(), std::string("[]"));
    // Message for message, as a conversation grows.
    MessageHistory history;
    for (const Message& message : everyKind()) {
        history.append(message);
        QVERIFY(history.encode());
    }
    const std::string written = R"([{"id":")" ID R"(","text":"Why \"so\"?\n","isSentByCurrentUser":true},)"
                                R"({"id":")" ID R"(","response":"Dé)"
                                "\u2028"
                                R"(🪶/\\\u0001","isSentByCurrentUser":false},)"
                                R"({"id":")" ID R"(","isSentByCurrentUser":true},)"
                                R"({"id":")" ID R"(","text":"","response":"","isSentByCurrentUser":false}])";
    QCOMPARE(history.encode().value(), written);
    QCOMPARE(MessageHistory(everyKind()).encode().value(), written);
    QVERIFY(same(MessageHistory::decode(written).value().messages(), everyKind()));
    history.append(Message::question("caf\xe9"));
    QVERIFY(!history.encode());
    history.append(Message::question("more"));
    QVERIFY(!history.encode());
}

void MessageHistoryTest::foreignForms_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<QByteArray>("ours");
    const QByteArray one = R"([{"id":")" ID R"(","text":"a","isSentByCurrentUser":true}])";
    const QByteArray none = R"([{"id":")" ID R"(","isSentByCurrentUser":true}])";
    QTest::newRow("ours") << one << one;
    QTest::newRow("empty") << QByteArray("[]") << QByteArray("[]");
    QTest::newRow("white space and order")
        << QByteArray("\n[ {\t\"isSentByCurrentUser\" : true,\r\n\"text\":\"a\", \"id\" : \"" ID "\" } ] \n") << one;
    QTest::newRow("lower-case id") << one.toLower().replace("issentbycurrentuser", "isSentByCurrentUser") << one;
    QTest::newRow("nulls") << QByteArray(R"([{"id":")" ID
                                         R"(","text":null,"response":null,"isSentByCurrentUser":true}])")
                           << none;
    QTest::newRow("unknown keys")
        << QByteArray(R"([{"id":")" ID
                      R"(","date":-1.5e3,"more":{"text":["b",{}]},"Text":1,"isSentByCurrentUser":true}])")
        << none;
    QTest::newRow("a key twice") << QByteArray(one).replace("\"text\"", R"("text":"b","text")") << one;
    QTest::newRow("escapes") << QByteArray(R"([{"\u0069d":")" ID
                                           R"(","text":"\ud83e\udeb6\u00e9\/\u0000","isSentByCurrentUser":true}])")
                             << QByteArray(R"([{"id":")" ID R"(","text":"🪶é/\u0000","isSentByCurrentUser":true}])");
}

void MessageHistoryTest::foreignForms()
{
    QFETCH(const QByteArray, stored);
    QFETCH(const QByteArray, ours);
    m_fixture.reset();
    UserDefaults::standard().setData("reply m1", stored.toStdString());
    ChatState chat;
    chat.loadMessages();
    QCOMPARE(m_fixture.log().lines(), QStringList());
    chat.saveMessages();
    QCOMPARE(UserDefaults::standard().data("reply m1"), std::optional(ours.toStdString()));
}

void MessageHistoryTest::unreadableForms_data()
{
    QTest::addColumn<QByteArray>("stored");
    const QByteArray good = R"({"id":")" ID R"(","text":"a","isSentByCurrentUser":true})";
    for (const char* text : {"", "[", "{}", "null", "\"a\"", "42", "[1]", "[null]", "[[]]", "[{}]",
                             "[{\"id\":\"" ID "\"}]", R"([{"isSentByCurrentUser":true}])"}) {
        QTest::addRow("%s", text) << QByteArray(text);
    }
    const auto changed = [&good](const char* name, const char* before, const char* after) {
        QTest::newRow(name) << "[" + good + "," + QByteArray(good).replace(before, after) + "]";
    };
    changed("an id too short", "5F\"", "5\"");
    changed("an id without hyphens", ID, "E621E1F8C36C495A93FC0C247A3E6E5F");
    changed("an id in braces", ID, "{" ID "}");
    changed("an id that is a number", "\"" ID "\"", "1");
    changed("an id that is null", "\"" ID "\"", "null");
    changed("a sender that is a number", "true", "1");
    changed("a sender that is a text", "true", "\"true\"");
    changed("a sender that is null", "true", "null");
    changed("a text that is a number", "\"a\"", "1");
    changed("a text that is a list", "\"a\"", "[\"a\"]");
    changed("a response that is a Boolean", "\"text\":\"a\"", "\"response\":true");
    changed("a lone surrogate", "\"a\"", R"("\ud83e")");
    changed("not UTF-8", "\"a\"", "\"\xff\"");
    changed("no end", "true}", "true");
    QTest::newRow("something behind") << "[" + good + "]x";
}

void MessageHistoryTest::unreadableForms()
{
    QFETCH(const QByteArray, stored);
    m_fixture.reset();
    UserDefaults::standard().setData("reply m1", stored.toStdString());
    ChatState chat;
    chat.loadMessages();
    QCOMPARE(m_fixture.log().lines().size(), 1);
    QVERIFY(m_fixture.log().lines().front().startsWith(QLatin1String("Failed to load messages: ")));
    QVERIFY(m_fixture.log().take().front().size() > QStringLiteral("Failed to load messages: ").size());
    QVERIFY(chat.messages().empty());
    QCOMPARE(UserDefaults::standard().data("reply m1"), std::optional(stored.toStdString()));
    chat.saveMessages();
    QCOMPARE(UserDefaults::standard().data("reply m1"), std::optional<std::string>("[]"));
}

void MessageHistoryTest::everyTextComesBack()
{
    QRandomGenerator random(20261123);
    const auto text = [&random]() -> std::optional<std::string> {
        if (random.bounded(3) == 0) {
            return std::nullopt;
        }
        QList<char32_t> characters;
        for (int i = random.bounded(40); i > 0; --i) {
            const auto code = static_cast<char32_t>(random.bounded(random.bounded(2) == 0 ? 0x80 : 0x110000));
            characters.append(code >= 0xD800 && code < 0xE000 ? U'"' : code);
        }
        return QString::fromUcs4(characters.data(), characters.size()).toStdString();
    };
    MessageHistory history;
    std::vector<Message> messages;
    for (int i = 0; i < 200; ++i) {
        messages.push_back({UUID::random(), text(), text(), random.bounded(2) == 0});
        history.append(messages.back());
        auto read = MessageHistory::decode(history.encode().value());
        QVERIFY(read);
        QVERIFY(same(read.value().messages(), messages));
        if (i % 10 == 0) { // goes on as the one that was read
            history = std::move(read).value();
        }
    }
}

void MessageHistoryTest::manyMessages()
{
    m_fixture.reset();
    std::vector<Message> messages;
    for (int i = 0; i < 50'000; ++i) {
        messages.push_back(Message::question("Question \"" + std::to_string(i) + "\""));
        messages.push_back(Message::answer(std::string(100, 'a')));
    }
    UserDefaults::standard().setData("reply m1", MessageHistory(messages).encode().value());
    ChatState chat;
    chat.loadMessages();
    QCOMPARE(m_fixture.log().lines(), QStringList());
    QVERIFY(same(chat.messages(), messages));
}

QTEST_GUILESS_MAIN(MessageHistoryTest)
#include "MessageHistoryTest.moc"
