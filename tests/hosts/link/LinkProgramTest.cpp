#include "hosts/link/LinkProcess.h"
#include "support/TestServer.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QTest>

using namespace quillmate;

class LinkProgramTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_server.reset(); }
    void oneSession();
    void twoSessions();
    void errors();
    void questions();
    void inputEnds_data();
    void inputEnds();
    void lengthOverTheLimit();
    void terminated_data();
    void terminated();
    void largeMessage();
    void decisionOnLargeMessage();
    void privateFiles();

private:
    TestServer m_server;
};

namespace
{

const auto fallback = QStringLiteral("Error: Invalid or missing API endpoint in UserDefaults. Falling back to live.");
const auto signInScreen = QStringLiteral("i enter in the login content view page");

QJsonObject message(const QByteArray& rawData, const QString& messageId)
{
    return {{"rawData", QString::fromLatin1(rawData.toBase64())},
            {"subject", "Plans"},
            {"fromAddress", QJsonObject{{"addressString", "ana@a.example"}}},
            {"headers", QJsonObject{{"message-id", QJsonArray{messageId}}}}};
}

QJsonObject begin(const QString& session, const QJsonValue& originalMessage = QJsonValue::Null)
{
    return {{"type", "composeSessionDidBegin"}, {"session", session}, {"originalMessage", originalMessage}};
}

QJsonObject about(const char* type, const QString& session)
{
    return {{"type", type}, {"session", session}};
}

QJsonObject moved(const char* type, const QString& session)
{
    QJsonObject frame = about(type, session);
    frame["frame"] = QJsonObject{{"left", 10}, {"top", 20.5}, {"width", 300}, {"height", 400}};
    return frame;
}

/// A frame that changes nothing and is answered: what came before it has been done by then.
bool settled(LinkProcess& process)
{
    process.send({{"type", "Nonsense"}, {"request", 4711}});
    const QJsonObject answer = process.nextFrame();
    return answer["type"] == "error" && answer["request"] == 4711;
}

QStringList linesOfNoMessage()
{
    return {"No subject found in the original message.",
            "No email address found in the original message.",
            "No headers found in the original message.",
            "Email address is empty.",
            "Message content is empty.",
            "Session message id is empty.",
            "Acess token is empty. User need to be logged in.",
            fallback,
            "CURRENT API URL IN API MANAGER https://quillmate.example/api/v1",
            fallback};
}

} // namespace

void LinkProgramTest::oneSession()
{
    LinkProcess process(m_server);
    process.start({"/usr/lib/mozilla/native-messaging-hosts/quillmate.json", "quillmate@example"});
    process.send(begin("s1", message("Subject: Plans\n\n\n  Hello\nthere \n", "<m1>")));
    process.send(moved("viewControllerForSession", "s1"));
    process.send(moved("composeSessionFrameDidChange", "s1"));
    QVERIFY(settled(process));
    process.send(about("composeSessionDidEnd", "s1"));
    QVERIFY(settled(process));
    QCOMPARE(process.endInput(), 0);
    QCOMPARE(
        process.diagnostics(),
        (QStringList{"SESSSION FROM CONTENT EMAIL Hello", "there", "getting email address from apple ana@a.example",
                     "Date header not found", "Acess token is empty. User need to be logged in.", fallback,
                     "CURRENT API URL IN API MANAGER https://quillmate.example/api/v1", fallback, signInScreen}));
    QCOMPARE(process.restOfOutput(), QByteArray());
    QVERIFY(m_server.requests().empty());
}

void LinkProgramTest::twoSessions()
{
    LinkProcess process(m_server);
    process.start();
    process.send(begin("s1"));
    process.send(about("viewControllerForSession", "s1"));
    process.send(begin("s2"));
    process.send(moved("viewControllerForSession", "s2"));
    process.send(about("viewControllerForSession", "s1")); // once more: the same panel
    process.send(about("composeSessionDidEnd", "s1"));
    process.send(moved("composeSessionFrameDidChange", "s2"));
    process.send(begin("s1")); // An ended session's name is free again.
    QVERIFY(settled(process));
    // A panel is open still.
    QCOMPARE(process.endInput(), 0);
    QCOMPARE(process.diagnostics(), linesOfNoMessage()
                                        << signInScreen << linesOfNoMessage() << signInScreen << linesOfNoMessage());
    QCOMPARE(process.restOfOutput(), QByteArray());
}

void LinkProgramTest::errors()
{
    LinkProcess process(m_server);
    process.start();
    process.send(begin("s1"));
    const auto answer = [&process](const QByteArray& body) {
        process.sendBytes(framed(body));
        return process.nextFrame();
    };
    struct Row {
        const char* body;
        const char* named;
    };
    for (const Row& row :
         {Row{"", "JSON"}, Row{"nonsense", "JSON"}, Row{"[]", "object"}, Row{"{}", "\"type\""},
          Row{"{\"type\":\"decideActionForMessages\"}", "decideActionForMessages"},
          Row{"{\"type\":\"composeSessionDidEnd\"}", "\"session\""},
          Row{"{\"type\":\"composeSessionDidEnd\",\"session\":\"s0\"}", "\"s0\""},
          Row{"{\"type\":\"viewControllerForSession\",\"session\":\"s0\"}", "\"s0\""},
          Row{"{\"type\":\"composeSessionDidBegin\",\"session\":\"s1\",\"originalMessage\":null}", "begun"}}) {
        const QJsonObject error = answer(row.body);
        QCOMPARE(error.keys(), (QStringList{"message", "type"}));
        QCOMPARE(error["type"].toString(), QStringLiteral("error"));
        QVERIFY2(error["message"].toString().contains(QLatin1String(row.named)),
                 qPrintable(error["message"].toString()));
    }
    QJsonObject wrong = moved("composeSessionFrameDidChange", "s0");
    wrong["request"] = 12;
    process.send(wrong);
    QCOMPARE(process.nextFrame()["request"].toInt(), 12);
    // A name of many megabytes comes back in no frame.
    wrong["session"] = QString(3'000'000, 'x');
    process.send(wrong);
    QVERIFY(process.nextFrame()["message"].toString().contains("3000000"));
    // The link goes on.
    process.send(about("viewControllerForSession", "s1"));
    QVERIFY(process.waitForLine(signInScreen));
    QCOMPARE(process.endInput(), 0);
    QCOMPARE(process.diagnostics(), linesOfNoMessage() + QStringList{signInScreen});
    QCOMPARE(process.restOfOutput(), QByteArray());
}

void LinkProgramTest::questions()
{
    const auto asked = [](const char* type, int request) {
        QJsonObject frame{{"type", type}, {"request", request}};
        frame["message"] = message("Subject: Plans\n\nHello\n", "<m1>");
        return frame;
    };
    QJsonObject toMars = asked("decideActionForMessage", 1);
    QJsonObject mars = toMars["message"].toObject();
    mars["subject"] = "Mars";
    toMars["message"] = mars;
    QJsonObject incomplete = asked("encodeMessage", 6);
    incomplete.remove("message");

    LinkProcess process(m_server);
    process.start();
    process.send(toMars);
    process.send(begin("s1")); // Questions and sessions go side by side.
    process.send(asked("decideActionForMessage", 2));
    process.send({{"type", "contentRulesJSON"}, {"request", 3}});
    process.send({{"type", "contentRulesJSON"}});
    process.send(asked("getEncodingStatus", 4));
    process.send(incomplete);
    process.send(asked("encodeMessage", 7));
    process.send({{"type", "decodedMessage"}, {"request", 8}, {"data", "YQ=="}});

    const QJsonValue null(QJsonValue::Null);
    QCOMPARE(process.nextFrame(),
             (QJsonObject{{"type", "messageActionDecision"},
                          {"request", 1},
                          {"decision", QJsonObject{{"action", "setBackgroundColor"}, {"color", 4}}}}));
    QCOMPARE(process.nextFrame(), (QJsonObject{{"type", "messageActionDecision"}, {"request", 2}, {"decision", null}}));
    const QJsonObject rules = process.nextFrame();
    QCOMPARE(rules["type"], "contentRulesJSON");
    QCOMPARE(rules["request"], 3);
    QFile shipped(QStringLiteral(QUILLMATE_RESOURCES "/ContentBlockerRules.json"));
    QVERIFY(shipped.open(QIODevice::ReadOnly));
    QCOMPARE(QByteArray::fromBase64(rules["data"].toString().toLatin1()), shipped.readAll());
    const QJsonObject withoutNumber = process.nextFrame();
    QCOMPARE(withoutNumber["type"], "error");
    QVERIFY(withoutNumber["message"].toString().contains("\"request\""));
    QVERIFY(!withoutNumber.contains("request"));
    QCOMPARE(process.nextFrame(), (QJsonObject{{"type", "encodingStatus"},
                                               {"request", 4},
                                               {"canSign", false},
                                               {"canEncrypt", false},
                                               {"securityError", null},
                                               {"addressesFailingEncryption", QJsonArray()}}));
    const QJsonObject withoutMessage = process.nextFrame();
    QCOMPARE(withoutMessage["type"], "error");
    QCOMPARE(withoutMessage["request"], 6);
    QVERIFY(withoutMessage["message"].toString().contains("\"message\""));
    QCOMPARE(process.nextFrame(), (QJsonObject{{"type", "messageEncodingResult"},
                                               {"request", 7},
                                               {"encodedMessage", null},
                                               {"signingError", null},
                                               {"encryptionError", null}}));
    QCOMPARE(process.nextFrame(), (QJsonObject{{"type", "decodedMessage"}, {"request", 8}, {"message", null}}));
    QCOMPARE(process.endInput(), 0);
    QCOMPARE(process.diagnostics(), linesOfNoMessage()); // The session's; a question has none.
    QCOMPARE(process.restOfOutput(), QByteArray());
}

void LinkProgramTest::inputEnds_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("status");
    const QByteArray whole = framed("{\"type\":\"Nonsense\"}");
    QTest::newRow("at once") << QByteArray() << 0;
    QTest::newRow("between frames") << whole << 0;
    QTest::newRow("inside a length") << whole + QByteArray("\x05\0", 2) << 1;
    QTest::newRow("before a body") << whole + whole.left(4) << 1;
    QTest::newRow("inside a body") << whole + whole.chopped(1) << 1;
}

void LinkProgramTest::inputEnds()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const int, status);
    LinkProcess process(m_server);
    process.start();
    process.sendBytes(bytes);
    QCOMPARE(process.endInput(), status);
    QCOMPARE(process.diagnostics(),
             status == 0 ? QStringList() : QStringList{"quillmate-extension: the input ended inside a frame"});
    if (!bytes.isEmpty()) {
        QCOMPARE(process.nextFrame()["type"].toString(), QStringLiteral("error"));
    }
    QCOMPARE(process.restOfOutput(), QByteArray());
}

void LinkProgramTest::lengthOverTheLimit()
{
    LinkProcess process(m_server);
    process.start();
    process.sendBytes(QByteArray("\xff\xff\xff\xff", 4)); // And the input stays open.
    QCOMPARE(process.wait(), 1);
    const auto lines = process.diagnostics();
    QCOMPARE(lines.size(), 1);
    QVERIFY2(lines.front().startsWith("quillmate-extension: a frame of 4294967295 bytes is over the limit"),
             qPrintable(lines.front()));
}

void LinkProgramTest::terminated_data()
{
    QTest::addColumn<bool>("panel");
    QTest::addColumn<QByteArray>("received"); // when the signal comes
    QTest::newRow("while waiting") << false << QByteArray();
    QTest::newRow("with a panel") << true << QByteArray();
    QByteArray half = framed(QByteArray(20'000'000, 'x'));
    half.truncate(10'000'000);
    QTest::newRow("while a message arrives") << true << half;
}

void LinkProgramTest::terminated()
{
    QFETCH(const bool, panel);
    QFETCH(const QByteArray, received);
    LinkProcess process(m_server);
    process.start();
    if (panel) {
        process.send(begin("s1"));
        process.send(about("viewControllerForSession", "s1"));
    }
    QVERIFY(settled(process));
    process.sendBytes(received);
    QVERIFY(process.waitForTaken());
    QCOMPARE(process.terminate(), 0);
    QCOMPARE(process.diagnostics(), panel ? linesOfNoMessage() + QStringList{signInScreen} : QStringList());
    QCOMPARE(process.restOfOutput(), QByteArray());
}

void LinkProgramTest::largeMessage()
{
    QByteArray body("start");
    while (body.size() < 25'000'000) {
        body += " and on it goes, line by line with \xc3\xbc\n";
    }
    body += "end";
    LinkProcess process(m_server);
    process.start();
    process.send(begin("s1", message("Subject: Plans\n\n" + body + "\n", "<m1>")));
    QVERIFY(settled(process));
    QCOMPARE(process.endInput(), 0);
    const QString expected = "SESSSION FROM CONTENT EMAIL " + QString::fromUtf8(body);
    const QString printed = process.diagnostics().join('\n');
    QVERIFY(printed.startsWith(expected));
    QVERIFY(printed.mid(expected.size()).startsWith("\ngetting email address from apple ana@a.example\n"));
}

void LinkProgramTest::decisionOnLargeMessage()
{
    QJsonObject large =
        message("Subject: x\n\n" + QByteArray("A line of a long message.\n").repeated(1'000'000), "<m>");
    large["subject"] = "Mars";
    LinkProcess process(m_server);
    process.start();
    process.send({{"type", "decideActionForMessage"}, {"request", 1}, {"message", large}});
    const QJsonObject answer = process.nextFrame();
    QCOMPARE(answer["request"], 1);
    QCOMPARE(answer["decision"]["color"], 4);
    QCOMPARE(process.endInput(), 0);
    QCOMPARE(process.diagnostics(), QStringList());
}

void LinkProgramTest::privateFiles()
{
    LinkProcess process(m_server);
    process.start();
    process.send(begin("s1"));
    QVERIFY(settled(process));
    const QString folder = process.dataFolder() + "/quillmate";
    const auto others =
        QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    const auto owner = QFile::ReadOwner | QFile::WriteOwner;
    QCOMPARE(QFileInfo(folder).permissions() & (others | owner | QFile::ExeOwner), owner | QFile::ExeOwner);
    const auto files = QDir(folder).entryInfoList(QDir::Files | QDir::Hidden);
    QVERIFY(std::any_of(files.begin(), files.end(), [](const auto& file) { return file.fileName() == "settings.db"; }));
    for (const QFileInfo& file : files) {
        QVERIFY2((file.permissions() & (others | owner | QFile::ExeOwner)) == owner, qPrintable(file.fileName()));
    }
    QCOMPARE(process.endInput(), 0);
}

QTEST_GUILESS_MAIN(LinkProgramTest)
#include "LinkProgramTest.moc"
