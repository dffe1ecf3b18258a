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

constexpr auto id = "E621E1F8-C36C-495A-93FC-0C247A3E6E5F";

/// JSON written with single quotes, and with ID for an id.
QByteArray json(const QByteArray& text)
{
    return QByteArray(text).replace('\'', '"').replace("ID", id);
}

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
    const std::string written = json("[{'id':'ID','text':'Why \\\"so\\\"?\\n','isSentByCurrentUser':true},"
                                     "{'id':'ID','response':'Dé\u2028🪶/\\\\\\u0001','isSentByCurrentUser':false},"
                                     "{'id':'ID','isSentByCurrentUser':true},"
                                     "{'id':'ID','text':'','response':'','isSentByCurrentUser':false}]")
                                    .toStdString();
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
    const QByteArray one = json("[{'id':'ID','text':'a','isSentByCurrentUser':true}]");
    const QByteArray none = json("[{'id':'ID','isSentByCurrentUser':true}]");
    const auto row = [](const char* name, const QByteArray& stored, const QByteArray& ours) {
        QTest::newRow(name) << stored << ours;
    };
    row("ours", one, one);
    row("empty", "[]", "[]");
    row("white space and order", json("\n[ {\t'isSentByCurrentUser' : true,\r\n'text':'a', 'id' : 'ID' } ] \n"), one);
    row("lower-case id", QByteArray(one).replace(id, QByteArray(id).toLower()), one);
    row("nulls", json("[{'id':'ID','text':null,'response':null,'isSentByCurrentUser':true}]"), none);
    row("unknown keys",
        json("[{'id':'ID','date':-1.5e3,'more':{'text':['b',{}]},'Text':1,'isSentByCurrentUser':true}]"), none);
    row("a large number under an unknown key",
        json("[{'id':'ID','n':123456789012345678901234567890,'text':'a','isSentByCurrentUser':true}]"), one);
    row("a key twice", json("[{'id':'ID','text':'b','text':'a','isSentByCurrentUser':true}]"), one);
    row("escapes", json("[{'\\u0069d':'ID','text':'\\ud83e\\udeb6\\u00e9\\/\\u0000','isSentByCurrentUser':true}]"),
        json("[{'id':'ID','text':'🪶é/\\u0000','isSentByCurrentUser':true}]"));
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
    for (const char* text : {"", "[", "{}", "null", "'a'", "42", "[1]", "[null]", "[[]]", "[{}]", "[{'id':'ID'}]",
                             "[{'isSentByCurrentUser':true}]"}) {
        QTest::addRow("%s", text) << json(text);
    }
    // Beside a sound one, which is not taken either.
    const QByteArray good = "{'id':'ID','text':'a','isSentByCurrentUser':true}";
    constexpr const char* changes[][2] = {{"ID", "E621E1F8-C36C-495A-93FC-0C247A3E6E5"}, // too short
                                          {"ID", "E621E1F8C36C495A93FC0C247A3E6E5F"},
                                          {"ID", "{ID}"},
                                          {"'ID'", "1"},
                                          {"'ID'", "null"},
                                          {"true", "1"},
                                          {"true", "'true'"},
                                          {"true", "null"},
                                          {"'a'", "1"},
                                          {"'a'", "['a']"},
                                          {"'text':'a'", "'response':true"},
                                          {"'a'", "'\\ud83e'"}, // half a pair
                                          {"'a'", "'\xff'"},
                                          {"true}", "true"},
                                          {"true}", "true}]x"}};
    for (const auto& [before, after] : changes) {
        QTest::addRow("%s for %s", after, before)
            << json("[" + good + "," + QByteArray(good).replace(before, after) + "]");
    }
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
