#include "hosts/link/LinkFrame.h"
#include "hosts/link/Frame.h"
#include "hosts/link/LinkAnswers.h"

#include <QTest>

using namespace quillmate;

class LinkFrameTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void didBegin();
    void didBeginWithoutMessage();
    void messagesWithoutMuch();
    void viewController();
    void frameDidChange();
    void didEnd();
    void refuses_data();
    void refuses();
    void requestIsEchoed_data();
    void requestIsEchoed();
    void errorsFitAFrame_data();
    void errorsFitAFrame();
};

namespace
{

constexpr auto wholeMessage =
    R"({"type":"composeSessionDidBegin","session":"s1","unknown":1,"originalMessage":{)"
    R"("rawData":"U3ViamVjdDogeAoKYf9i","subject":"Plans","fromAddress":{"addressString":"ana@a.example"},)"
    R"("headers":{"message-id":["<m1>"],"received":["one","two"],"x-empty":[]}}})";
constexpr auto messageOfNulls = R"({"type":"composeSessionDidBegin","session":"","originalMessage":{)"
                                R"("rawData":null,"subject":"","fromAddress":{"addressString":null},"headers":null}})";
constexpr auto emptyRawData = R"({"type":"composeSessionDidBegin","session":"s","originalMessage":{)"
                              R"("rawData":"","subject":"","fromAddress":{"addressString":""},"headers":{}}})";
constexpr auto newMessage = R"({"type":"composeSessionDidBegin","session":"s1","originalMessage":null})";
constexpr auto viewWithoutFrame = R"({"type":"viewControllerForSession","session":"s1"})";
constexpr auto viewWithNullFrame = R"({"type":"viewControllerForSession","session":"s1","frame":null})";
constexpr auto viewWithFrame =
    R"({"type":"viewControllerForSession","session":"s1","frame":{"left":-10.5,"top":20,"width":3e2,"height":400}})";
constexpr auto frameChange =
    R"({"type":"composeSessionFrameDidChange","session":"s1","frame":{"left":1,"top":2,"width":3,"height":4}})";
constexpr auto sessionEnd = R"({"type":"composeSessionDidEnd","session":"sünde"})";

template<typename Frame>
Frame readAs(const std::string& bytes)
{
    auto read = readLinkFrame(bytes);
    if (!read) {
        qFatal("%s", read.error().message.c_str());
    }
    return std::get<Frame>(std::move(read).value().frame);
}

/// A beginning whose message has this in the place of one of its members, or lacks it.
std::string withMember(const std::string& key, const char* value)
{
    std::string members;
    for (const auto& [name, usual] : std::map<std::string, std::string>{{"rawData", "null"},
                                                                        {"subject", "\"x\""},
                                                                        {"fromAddress", "{\"addressString\":null}"},
                                                                        {"headers", "null"}}) {
        const std::string chosen = name == key ? (value ? value : "") : usual;
        if (!chosen.empty()) {
            members.append(members.empty() ? "\"" : ",\"").append(name).append("\":").append(chosen);
        }
    }
    return R"({"type":"composeSessionDidBegin","session":"s","originalMessage":{)" + members + "}}";
}

std::string withFrame(const std::string& frame)
{
    return R"({"type":"composeSessionFrameDidChange","session":"s","frame":)" + frame + "}";
}

} // namespace

void LinkFrameTest::didBegin()
{
    const auto frame = readAs<ComposeSessionDidBegin>(wholeMessage);
    QCOMPARE(frame.session, std::string("s1"));
    QVERIFY(frame.originalMessage);
    const MEMessage expected{
        "Subject: x\n\na\xff"
        "b",
        "Plans",
        {"ana@a.example"},
        MEMessage::Headers{{"message-id", {"<m1>"}}, {"received", {"one", "two"}}, {"x-empty", {}}}};
    QCOMPARE(*frame.originalMessage, expected);
}

void LinkFrameTest::didBeginWithoutMessage()
{
    const auto frame = readAs<ComposeSessionDidBegin>(newMessage);
    QCOMPARE(frame.session, std::string("s1"));
    QVERIFY(!frame.originalMessage);
}

void LinkFrameTest::messagesWithoutMuch()
{
    const auto nulls = readAs<ComposeSessionDidBegin>(messageOfNulls);
    QVERIFY(nulls.originalMessage);
    QCOMPARE(*nulls.originalMessage, MEMessage());
    // Empty is not absent.
    const auto empties = readAs<ComposeSessionDidBegin>(emptyRawData);
    QVERIFY(empties.originalMessage);
    QCOMPARE(*empties.originalMessage, (MEMessage{"", "", {""}, MEMessage::Headers()}));
}

void LinkFrameTest::viewController()
{
    QVERIFY(!readAs<ViewControllerForSession>(viewWithoutFrame).frame);
    QVERIFY(!readAs<ViewControllerForSession>(viewWithNullFrame).frame);
    const auto frame = readAs<ViewControllerForSession>(viewWithFrame);
    QCOMPARE(frame.session, std::string("s1"));
    QCOMPARE(frame.frame, std::optional<WindowFrame>({-10.5, 20, 300, 400}));
}

void LinkFrameTest::frameDidChange()
{
    const auto frame = readAs<ComposeSessionFrameDidChange>(frameChange);
    QCOMPARE(frame.session, std::string("s1"));
    QCOMPARE(frame.frame, (WindowFrame{1, 2, 3, 4}));
}

void LinkFrameTest::didEnd()
{
    QCOMPARE(readAs<ComposeSessionDidEnd>(sessionEnd).session, std::string("sünde"));
}

void LinkFrameTest::refuses_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("named"); // what the sentence must name
    const auto row = [](const char* name, const std::string& bytes, const QStringList& named) {
        QTest::newRow(name) << QByteArray::fromStdString(bytes) << named;
    };
    row("nothing", "", {"JSON"});
    row("no JSON", "composeSessionDidEnd", {"JSON"});
    row("cut", std::string(sessionEnd).substr(0, 30), {"JSON"});
    row("not UTF-8", "{\"type\":\"\xff\"}", {"JSON"});
    row("deep", std::string(100'000, '['), {"deep"});
    row("number without end", withFrame("{\"left\":1e999}"), {"JSON"});
    row("array", "[]", {"object"});
    row("text", "\"composeSessionDidEnd\"", {"object"});
    row("null", "null", {"object"});
    row("no type", "{}", {"\"type\""});
    row("type is a number", "{\"type\":1}", {"\"type\""});
    row("unknown type", "{\"type\":\"Nonsense\"}", {"Nonsense"});
    row("type in other case", "{\"type\":\"composesessiondidend\"}", {"composesessiondidend"});
    for (const char* type : {"composeSessionDidBegin", "viewControllerForSession", "composeSessionFrameDidChange",
                             "composeSessionDidEnd"}) {
        const std::string start =
            "{\"type\":\"" + std::string(type) +
            "\",\"originalMessage\":null,\"frame\":{\"left\":1,\"top\":1,\"width\":1,\"height\":1}";
        for (const char* session : {"", ",\"session\":null", ",\"session\":1", ",\"session\":[]"}) {
            QTest::addRow("%s with session %s", type, session)
                << QByteArray::fromStdString(start + session + "}") << QStringList{"\"session\"", QLatin1String(type)};
        }
    }
    row("no message", R"({"type":"composeSessionDidBegin","session":"s"})", {"\"originalMessage\""});
    row("message is a text", R"({"type":"composeSessionDidBegin","session":"s","originalMessage":"x"})", {"message"});
    const std::vector<std::pair<const char*, std::vector<const char*>>> wrong = {
        {"rawData", {nullptr, "1", "\"a\"", "\"YWJjZ\"", "\"a b=\"", "\"\u00fc\"", "[]"}},
        {"subject", {nullptr, "null", "1", "[]"}},
        {"fromAddress", {nullptr, "null", "\"a@b.example\"", "[]"}},
        {"addressString", {"{}", "{\"addressString\":1}", "{\"addressString\":[]}"}},
        {"headers", {nullptr, "1", "[]", "{\"a\":null}", "{\"a\":\"b\"}", "{\"a\":[1]}", "{\"a\":[\"b\",null]}"}},
    };
    for (const auto& [key, values] : wrong) {
        for (const char* value : values) {
            const char* member = qstrcmp(key, "addressString") == 0 ? "fromAddress" : key;
            QTest::addRow("%s is %s", key, value ? value : "missing")
                << QByteArray::fromStdString(withMember(member, value)) << QStringList{'"' + QLatin1String(key) + '"'};
        }
    }
    row("no frame", R"({"type":"composeSessionFrameDidChange","session":"s"})", {"\"frame\""});
    row("frame is null", withFrame("null"), {"\"frame\""});
    row("frame is a list", withFrame("[1,2,3,4]"), {"\"frame\""});
    row("view's frame is a text", R"({"type":"viewControllerForSession","session":"s","frame":"x"})", {"\"frame\""});
    row("view's frame lacks a side", R"({"type":"viewControllerForSession","session":"s","frame":{}})", {"\"left\""});
    const std::vector<std::string> sides = {"left", "top", "width", "height"};
    for (const std::string& wrongSide : sides) {
        for (const char* value : {"", "null", "\"1\"", "true", "1e7", "-1e308"}) {
            std::string members;
            for (const std::string& side : sides) {
                const std::string number = side == wrongSide ? value : "1";
                if (!number.empty()) {
                    members.append(members.empty() ? "\"" : ",\"").append(side).append("\":").append(number);
                }
            }
            QTest::addRow("%s is %s", wrongSide.c_str(), value)
                << QByteArray::fromStdString(withFrame("{" + members + "}"))
                << QStringList{'"' + QString::fromStdString(wrongSide) + '"'};
        }
    }
}

void LinkFrameTest::refuses()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QStringList, named);
    const auto read = readLinkFrame(bytes.toStdString());
    QVERIFY(!read);
    const QString message = QString::fromStdString(read.error().message);
    for (const QString& name : named) {
        QVERIFY2(message.contains(name), qPrintable(message));
    }
    QVERIFY(read.error().request.isNull());
}

void LinkFrameTest::requestIsEchoed_data()
{
    QTest::addColumn<QByteArray>("request"); // empty: none
    QTest::addColumn<QByteArray>("echo");
    QTest::newRow("none") << QByteArray() << QByteArray();
    QTest::newRow("small") << QByteArray("7") << QByteArray("7");
    QTest::newRow("zero") << QByteArray("0") << QByteArray("0");
    QTest::newRow("negative") << QByteArray("-3") << QByteArray("-3");
    QTest::newRow("past a double") << QByteArray("9007199254740993") << QByteArray("9007199254740993");
    QTest::newRow("largest of 64 bits") << QByteArray("18446744073709551615") << QByteArray("18446744073709551615");
    QTest::newRow("past 64 bits") << QByteArray("123456789012345678901234567890")
                                  << QByteArray("123456789012345678901234567890");
    QTest::newRow("fraction") << QByteArray("1.50") << QByteArray("1.50");
    QTest::newRow("null") << QByteArray("null") << QByteArray();
    QTest::newRow("text") << QByteArray("\"7\"") << QByteArray();
    QTest::newRow("object") << QByteArray("{}") << QByteArray();
}

void LinkFrameTest::requestIsEchoed()
{
    QFETCH(const QByteArray, request);
    QFETCH(const QByteArray, echo);
    const std::string member = request.isEmpty() ? "" : ",\"request\":" + request.toStdString();
    const std::string tail = echo.isEmpty() ? "}" : ",\"request\":" + echo.toStdString() + "}";
    const auto good = readLinkFrame("{\"type\":\"composeSessionDidEnd\",\"session\":\"s\"" + member + "}");
    QVERIFY(good);
    QCOMPARE(writeLinkError({"No.", good.value().request}), "{\"type\":\"error\",\"message\":\"No.\"" + tail);
    for (const char* wrong : {"{\"type\":\"Nonsense\"", "{\"type\":1", "{\"type\":\"composeSessionDidEnd\""}) {
        const auto read = readLinkFrame(wrong + member + "}");
        QVERIFY(!read);
        const auto answer = writeLinkError(read.error());
        QVERIFY2(answer.ends_with('"' + tail), answer.c_str());
    }
}

void LinkFrameTest::errorsFitAFrame_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray much(3'000'000, 'x');
    QTest::newRow("long type") << "{\"type\":\"" + much + "\"}";
    QTest::newRow("long type of control characters")
        << "{\"type\":\"" + QByteArray("\\u0001").repeated(500'000) + "\"}";
    QTest::newRow("long text that does not end") << "{\"type\":\"" + much;
    QTest::newRow("long word") << much;
    QTest::newRow("long number") << "{\"type\":\"Nonsense\",\"request\":" + QByteArray(3'000'000, '1') + "}";
    QTest::newRow("long number that is none") << QByteArray(3'000'000, '1') + "x";
    QTest::newRow("text cut inside a character") << "{\"type\":\"" + QByteArray(99, 'x') + "\\ud83d\\ude00 and more\"}";
}

void LinkFrameTest::errorsFitAFrame()
{
    QFETCH(const QByteArray, bytes);
    const auto read = readLinkFrame(bytes.toStdString());
    QVERIFY(!read);
    const std::string answer = writeLinkError(read.error());
    QVERIFY2(answer.size() <= largestOutgoingFrame, QByteArray::number(qulonglong(answer.size())).constData());
    const auto parsed = JSONSerialization::jsonObject(answer, JSONSerialization::Fragments::Refused);
    QVERIFY(parsed);
    QVERIFY(parsed.value().stringMember("message"));
    QVERIFY2(parsed.value().stringMember("message")->size() < 1000, "a sentence, not a novel");
}

QTEST_GUILESS_MAIN(LinkFrameTest)
#include "LinkFrameTest.moc"
