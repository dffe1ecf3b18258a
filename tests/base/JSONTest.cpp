#include "base/JSON.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

using namespace quillmate;

class JSONTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void texts();
    void failuresAreOneLine();
    void members();
};

void JSONTest::texts()
{
    struct Row {
        QByteArray text;
        QByteArray rendered; // null: no JSON
        bool isFragment = false;
    };
    const auto same = [](const QByteArray& text, bool isFragment = false) { return Row{text, text, isFragment}; };
    const auto none = [](const QByteArray& text) { return Row{text, {}}; };
    const Row rows[] = {
        same("{}"),
        same(R"({"b":1,"a":[true,false,null,"x"],"":{}})"),
        {" { \"a\" : [ 1 ,\r\n 2 ]\t} ", R"({"a":[1,2]})"},
        {R"(["\u00e9\ud83e\udeb6\/\"\\\b\f\n\r\t\u0001"])", "[\"é🪶/\\\"\\\\\\b\\f\\n\\r\\t\\u0001\"]"},
        {"[0,-0,18446744073709551615,-9223372036854775808,0.1]", "[0,0,18446744073709551615,-9223372036854775808,0.1]"},
        same("[123456789012345678901234567890,0.12345678901234567890123,1e300,-1.50E-3]"),
        same(QByteArray(512, '[') + QByteArray(512, ']')),
        same(R"("a")", true),
        same("42", true),
        same("null", true),
        none(""),
        none("<html></html>"),
        none(R"({"a":1)"),
        none("[1,]"),
        none("{} {}"),
        none("[1]//x"),
        none("[\"\xff\"]"),
        none(R"(["\ud800"])"),
        none("[\"a\nb\"]"),
        none(QByteArray(513, '[') + QByteArray(513, ']')),
        none(QByteArray(1'000'000, '[')),
        none(QByteArray("{\"a\":").repeated(1'000'000)),
        none('[' + QByteArray("0,").repeated(1'000'000) + "0]"),
        none("[1e999]"),
        none(QByteArray("[1]\0", 4)),
    };
    for (const Row& row : rows) {
        const std::string text = row.text.toStdString();
        const auto allowed = JSONSerialization::jsonObject(text, JSONSerialization::Fragments::Allowed);
        const auto refused = JSONSerialization::jsonObject(text, JSONSerialization::Fragments::Refused);
        QVERIFY2(allowed.hasValue() == !row.rendered.isNull(), row.text.left(100).constData());
        QVERIFY2(refused.hasValue() == (allowed.hasValue() && !row.isFragment), row.text.left(100).constData());
        if (allowed) {
            QCOMPARE(QByteArray::fromStdString(JSONEncoder::encode(allowed.value()).value()), row.rendered);
        }
    }
}

void JSONTest::failuresAreOneLine()
{
    for (const std::string text : {"{\n\"a\":\n\x01}", "\xff\xfe\n", "[\"\x1b[31m", "x\r\ny"}) {
        const auto parsed = JSONSerialization::jsonObject(text, JSONSerialization::Fragments::Allowed);
        QVERIFY(!parsed);
        QVERIFY(!parsed.error().description.empty());
        for (const char c : parsed.error().description) {
            QVERIFY(static_cast<unsigned char>(c) >= 0x20);
        }
    }
}

void JSONTest::members()
{
    const std::string text = "{\"a\":\"first\",\"a\":\"last\",\"n\":1,\"o\":{\"a\":\"inner\"}}";
    const auto object = JSONSerialization::jsonObject(text, JSONSerialization::Fragments::Refused).value();
    QCOMPARE(*object.stringMember("a"), std::string("last"));
    QVERIFY(!object.stringMember("n"));
    QVERIFY(!object.stringMember("missing"));
    QCOMPARE(*object.member("o")->stringMember("a"), std::string("inner"));
    QVERIFY(!object.member("n")->member("a"));
}

QUILLMATE_TEST(JSONTest, QCoreApplication)
#include "JSONTest.moc"
