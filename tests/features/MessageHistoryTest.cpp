#include "features/MessageHistory.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

using namespace quillmate;

/// The stored form of a conversation.
class MessageHistoryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writtenForm();
    void foreignForms();
    void unreadableForms();
    void manyMessages();
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
    QCOMPARE(MessageHistory().encode().value(), std::string_view("[]"));
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
    QCOMPARE(history.encode().value(), std::string_view(written));
    QCOMPARE(MessageHistory(everyKind()).encode().value(), std::string_view(written));
    QVERIFY(same(MessageHistory::decode(written).value().messages(), everyKind()));
    history.append(Message::question("caf\xe9"));
    QVERIFY(!history.encode());
    history.append(Message::question("more"));
    QVERIFY(!history.encode());
}

void MessageHistoryTest::foreignForms()
{
    const QByteArray one = json("[{'id':'ID','text':'a','isSentByCurrentUser':true}]");
    const QByteArray none = json("[{'id':'ID','isSentByCurrentUser':true}]");
    const std::pair<QByteArray, QByteArray> rows[] = {
        {one, one},
        {"[]", "[]"},
        {json("\n[ {\t'isSentByCurrentUser' : true,\r\n'text':'a', 'id' : 'ID' } ] \n"), one},
        {QByteArray(one).replace(id, QByteArray(id).toLower()), one},
        {json("[{'id':'ID','text':null,'response':null,'isSentByCurrentUser':true}]"), none},
        {json("[{'id':'ID','date':-1.5e3,'more':{'text':['b',{}]},'Text':1,'isSentByCurrentUser':true}]"), none},
        {json("[{'id':'ID','n':123456789012345678901234567890,'text':'a','isSentByCurrentUser':true}]"), one},
        {json("[{'id':'ID','text':'b','text':'a','isSentByCurrentUser':true}]"), one},
        {json("[{'\\u0069d':'ID','text':'\\ud83e\\udeb6\\u00e9\\/\\u0000','isSentByCurrentUser':true}]"),
         json("[{'id':'ID','text':'🪶é/\\u0000','isSentByCurrentUser':true}]")}};
    for (const auto& [stored, ours] : rows) {
        auto read = MessageHistory::decode(stored.toStdString());
        QVERIFY2(read, stored);
        MessageHistory history = std::move(read).value();
        QCOMPARE(history.encode().value(), std::string_view(ours));
        // It goes on as one that was never stored.
        history.append(everyKind().back());
        QCOMPARE(history.encode().value(), MessageHistory(history.messages()).encode().value());
    }
}

void MessageHistoryTest::unreadableForms()
{
    const auto refuse = [](const QByteArray& stored) {
        const auto read = MessageHistory::decode(stored.toStdString());
        QVERIFY2(!read && !read.error().description.empty(), stored);
    };
    for (const char* text : {"", "[", "{}", "null", "'a'", "42", "[1]", "[null]", "[[]]", "[{}]", "[{'id':'ID'}]",
                             "[{'isSentByCurrentUser':true}]"}) {
        refuse(json(text));
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
        refuse(json("[" + good + "," + QByteArray(good).replace(before, after) + "]"));
    }
}

void MessageHistoryTest::manyMessages()
{
    std::vector<Message> messages;
    for (int i = 0; i < 50'000; ++i) {
        messages.push_back(Message::question("Question \"" + std::to_string(i) + "\""));
        messages.push_back(Message::answer(std::string(100, 'a')));
    }
    MessageHistory history(messages);
    const auto read = MessageHistory::decode(history.encode().value());
    QVERIFY(read);
    QVERIFY(same(read.value().messages(), messages));
}

QUILLMATE_TEST(MessageHistoryTest, QCoreApplication)
#include "MessageHistoryTest.moc"
