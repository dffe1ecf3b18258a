#include "platform/foundation/JSON.h"

#include <QTest>

using namespace quillmate;

class JSONTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void texts_data();
    void texts();
    void failuresAreOneLine();
    void members();
};

void JSONTest::texts_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("rendered"); // null: no JSON
    QTest::addColumn<bool>("fragment");
    const auto good = [](const char* name, const QByteArray& text, const QByteArray& rendered = {}) {
        QTest::newRow(name) << text << (rendered.isNull() ? text : rendered) << false;
    };
    const auto fragment = [](const char* name, const QByteArray& text) { QTest::newRow(name) << text << text << true; };
    const auto bad = [](const char* name, const QByteArray& text) {
        QTest::newRow(name) << text << QByteArray() << false;
    };

    good("empty object", "{}");
    good("empty list", "[]");
    good("members keep their order", R"({"b":1,"a":[true,false,null,"x"],"":{}})");
    good("white space", " { \"a\" : [ 1 ,\r\n 2 ]\t} ", R"({"a":[1,2]})");
    good("escapes", R"(["\u00e9\ud83e\udeb6\/\"\\\b\f\n\r\t\u0001"])", "[\"é🪶/\\\"\\\\\\b\\f\\n\\r\\t\\u0001\"]");
    good("numbers keep their value", "[0,-0,18446744073709551615,-9223372036854775808,9007199254740993,0.1]",
         "[0,0,18446744073709551615,-9223372036854775808,9007199254740993,0.1]");
    good("numbers beyond any machine's", "[123456789012345678901234567890,0.12345678901234567890123,1e300,-1.50E-3]");
    good("512 levels", QByteArray(512, '[') + QByteArray(512, ']'));
    fragment("a bare text", R"("a")");
    fragment("a bare number", "42");
    fragment("bare null", "null");
    bad("nothing", "");
    bad("a word", "hello");
    bad("a page", "<html></html>");
    bad("an end that is missing", R"({"a":1)");
    bad("a trailing comma", "[1,]");
    bad("something behind", "{} {}");
    bad("single quotes", "{'a':1}");
    bad("a comment", "[1]//x");
    bad("not UTF-8", "[\"\xff\"]");
    bad("a lone surrogate", R"(["\ud800"])");
    bad("a raw line break", "[\"a\nb\"]");
    bad("513 levels", QByteArray(513, '[') + QByteArray(513, ']'));
    bad("a million lists", QByteArray(1'000'000, '['));
    bad("a million objects", QByteArray("{\"a\":").repeated(1'000'000));
    bad("a number without end", "[1e999]");
    bad("a NUL", QByteArray("[1]\0", 4));
}

void JSONTest::texts()
{
    QFETCH(const QByteArray, text);
    QFETCH(const QByteArray, rendered);
    QFETCH(const bool, fragment);
    const auto allowed = JSONSerialization::jsonObject(text.toStdString(), JSONSerialization::Fragments::Allowed);
    const auto refused = JSONSerialization::jsonObject(text.toStdString(), JSONSerialization::Fragments::Refused);
    QCOMPARE(allowed.hasValue(), !rendered.isNull());
    QCOMPARE(refused.hasValue(), !rendered.isNull() && !fragment);
    if (allowed) {
        QCOMPARE(QByteArray::fromStdString(JSONEncoder::encode(allowed.value()).value()), rendered);
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

QTEST_GUILESS_MAIN(JSONTest)
#include "JSONTest.moc"
