#include "state/SessionResponse.h"

#include <QTest>

using namespace quillmate;

class SessionResponseTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void accepts_data();
    void accepts();
    void refuses_data();
    void refuses();
};

Q_DECLARE_METATYPE(quillmate::SessionResponse)

namespace
{

constexpr auto everything = R"({"id":"s1","access_token":"t","refresh_token":"r","login_url":"https://l.example/"})";
constexpr auto nulls = R"({"id":"s1","access_token":null,"refresh_token":null,"login_url":null})";
constexpr auto unknownKeys = R"( {"more":[1,{"id":7}],"id":"s1","Access_Token":"no"} )";
constexpr auto empties = R"({"id":"","access_token":"","refresh_token":"","login_url":""})";
constexpr auto twice = R"({"id":"first","id":"second"})";
constexpr auto escapes = R"({"id":"\u00fc \"/"})";

} // namespace

void SessionResponseTest::accepts_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<SessionResponse>("expected");
    QTest::newRow("everything") << QByteArray(everything) << SessionResponse{"s1", "t", "r", "https://l.example/"};
    QTest::newRow("id alone") << QByteArray("{\"id\":\"s1\"}") << SessionResponse{"s1", {}, {}, {}};
    QTest::newRow("nulls") << QByteArray(nulls) << SessionResponse{"s1", {}, {}, {}};
    QTest::newRow("unknown keys, other case") << QByteArray(unknownKeys) << SessionResponse{"s1", {}, {}, {}};
    QTest::newRow("empty texts are not absent") << QByteArray(empties) << SessionResponse{"", "", "", ""};
    QTest::newRow("last of two") << QByteArray(twice) << SessionResponse{"second", {}, {}, {}};
    QTest::newRow("escapes") << QByteArray(escapes) << SessionResponse{"ü \"/", {}, {}, {}};
}

void SessionResponseTest::accepts()
{
    QFETCH(const QByteArray, body);
    QFETCH(const SessionResponse, expected);
    const auto decoded = SessionResponse::decode(body.toStdString());
    QVERIFY2(decoded, decoded ? "" : decoded.error().description.c_str());
    QCOMPARE(decoded.value(), expected);
}

void SessionResponseTest::refuses_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("named"); // what the description must name
    QTest::newRow("nothing") << QByteArray() << QByteArray("JSON");
    QTest::newRow("a page") << QByteArray("<html>502</html>") << QByteArray("JSON");
    QTest::newRow("cut") << QByteArray("{\"id\":\"s1\"") << QByteArray("JSON");
    QTest::newRow("more behind") << QByteArray("{\"id\":\"s1\"}x") << QByteArray("JSON");
    QTest::newRow("not UTF-8") << QByteArray("{\"id\":\"\xff\"}") << QByteArray("JSON");
    QTest::newRow("array") << QByteArray("[]") << QByteArray("object");
    QTest::newRow("null") << QByteArray("null") << QByteArray("object");
    QTest::newRow("text") << QByteArray("\"id\"") << QByteArray("object");
    QTest::newRow("empty object") << QByteArray("{}") << QByteArray("\"id\"");
    QTest::newRow("null id") << QByteArray("{\"id\":null}") << QByteArray("\"id\"");
    QTest::newRow("number as id") << QByteArray("{\"id\":1}") << QByteArray("\"id\"");
    QTest::newRow("id in other case") << QByteArray("{\"ID\":\"s1\"}") << QByteArray("\"id\"");
    for (const char* key : {"access_token", "refresh_token", "login_url"}) {
        for (const char* value : {"1", "true", "[]", "{}"}) {
            QTest::addRow("%s as %s", key, value)
                << QByteArray("{\"id\":\"s1\",\"") + key + "\":" + value + '}' << '"' + QByteArray(key) + '"';
        }
    }
}

void SessionResponseTest::refuses()
{
    QFETCH(const QByteArray, body);
    QFETCH(const QByteArray, named);
    const auto decoded = SessionResponse::decode(body.toStdString());
    QVERIFY(!decoded);
    QVERIFY2(decoded.error().description.find(named.toStdString()) != std::string::npos,
             decoded.error().description.c_str());
}

QTEST_GUILESS_MAIN(SessionResponseTest)
#include "SessionResponseTest.moc"
