#include "support/ProgramRun.h"
#include "support/TestEnvironment.h"
#include "support/TestProgram.h"
#include "support/TestServer.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTemporaryFile>

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace quillmate;

namespace
{

/// A frame's bytes: the length in native byte order, then the body.
QByteArray framed(const QByteArray& body)
{
    const auto length = static_cast<quint32>(body.size());
    return QByteArray(reinterpret_cast<const char*>(&length), sizeof length) + body;
}

const auto fallback = QStringLiteral("Error: Invalid or missing API endpoint in UserDefaults. Falling back to live.");
const auto noSubject = QStringLiteral("No subject found in the original message.");
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

/// The extension's program, started from outside as a Mail host starts it, with the service's hosts on the loopback
/// interface.
class LinkProcess
{
public:
    explicit LinkProcess(const TestServer& server, const QString& program = QUILLMATE_EXTENSION_PROGRAM)
        : m_run(program, m_surroundings)
    {
        m_surroundings.connectServiceHosts(server.port());
        m_surroundings.set("QUILLMATE_CA_FILE", TestEnvironment::certificateFile(QStringLiteral("ca.pem")));
    }

    void send(const QJsonObject& frame) { m_run.write(framed(QJsonDocument(frame).toJson(QJsonDocument::Compact))); }
    /// Waits for the next frame of the program; an empty object when none comes.
    QJsonObject nextFrame()
    {
        quint32 length = 0;
        const auto isWhole = [&] {
            const QByteArray& output = m_run.output();
            std::memcpy(&length, output.constData(), std::min(sizeof length, std::size_t(output.size())));
            return output.size() >= qsizetype(sizeof length) + length;
        };
        if (!QTest::qWaitFor([&] { return isWhole() || !m_run.isRunning(); }, ProgramRun::patience) || !isWhole()) {
            return {};
        }
        const QByteArray frame = m_run.output().mid(sizeof length, length);
        m_run.output().remove(0, qsizetype(sizeof length) + length);
        return QJsonDocument::fromJson(frame).object();
    }
    /// A frame that changes nothing and is answered: what came before it has been done by then.
    bool settled()
    {
        send({{"type", "Nonsense"}, {"request", 4711}});
        const QJsonObject answer = nextFrame();
        return answer["type"] == "error" && answer["request"] == 4711;
    }
    /// What the program said of beginnings without a message and of panels, in order.
    QStringList begunAndShown()
    {
        return m_run.errorLines().filter(QRegularExpression("^(No subject found|i enter in the login)"));
    }
    ProgramRun& run() { return m_run; }
    /// To be changed before a start.
    ProgramSurroundings& surroundings() { return m_surroundings; }

private:
    ProgramSurroundings m_surroundings;
    ProgramRun m_run;
};

} // namespace

class LinkProgramTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_server.reset(); }
    void oneSession()
    {
        LinkProcess process(m_server);
        process.run().start({"/usr/lib/mozilla/native-messaging-hosts/quillmate.json", "quillmate@example"});
        process.send(begin("s1", message("Subject: Plans\n\n\n  Hello\nthere \n", "<m1>")));
        process.send(moved("viewControllerForSession", "s1"));
        process.send(moved("composeSessionFrameDidChange", "s1"));
        QVERIFY(process.settled());
        process.send(about("composeSessionDidEnd", "s1"));
        QVERIFY(process.settled());
        QCOMPARE(process.run().endInput(), 0);
        QCOMPARE(
            process.run().errorLines(),
            (QStringList{"SESSSION FROM CONTENT EMAIL Hello", "there", "getting email address from apple ana@a.example",
                         "Date header not found", "Acess token is empty. User need to be logged in.", fallback,
                         "CURRENT API URL IN API MANAGER https://" + serviceHosts().front() + "/api/v1", fallback,
                         signInScreen}));
        QCOMPARE(process.run().output(), QByteArray());
        QVERIFY(m_server.requests().empty());
    }

    void sessionsAndErrors()
    {
        LinkProcess process(m_server);
        process.run().start();
        process.send(begin("s1"));
        process.send(begin("s1")); // More is known of its message: no mistake.
        const std::pair<QJsonObject, QString> rows[] = {
            // The frame, and what the sentence names. None of them changes anything.
            {{}, "type"},
            {about("composeSessionDidEnd", "s0"), "\"s0\""},
            {about("viewControllerForSession", "s0"), "\"s0\""},
            // A name of many megabytes comes back in no frame.
            {moved("composeSessionFrameDidChange", QString(3'000'000, 'x')), "3000000"},
        };
        for (const auto& [frame, named] : rows) {
            process.send(frame);
            const QJsonObject error = process.nextFrame();
            QCOMPARE(error.keys(), (QStringList{"message", "type"}));
            QCOMPARE(error["type"].toString(), QStringLiteral("error"));
            QVERIFY2(error["message"].toString().contains(named), qPrintable(error["message"].toString()));
        }
        QJsonObject wrong = moved("composeSessionFrameDidChange", "s0");
        wrong["request"] = 12;
        process.send(wrong);
        QCOMPARE(process.nextFrame()["request"].toInt(), 12);

        process.send(about("viewControllerForSession", "s1"));
        process.send(begin("s2"));
        process.send(moved("viewControllerForSession", "s2"));
        process.send(about("viewControllerForSession", "s1")); // once more: the same panel
        process.send(about("composeSessionDidEnd", "s1"));
        process.send(moved("composeSessionFrameDidChange", "s2"));
        process.send(begin("s1")); // An ended session's name is free again.
        QVERIFY(process.settled());
        // A panel is open still.
        QCOMPARE(process.run().endInput(), 0);
        QCOMPARE(process.begunAndShown(),
                 (QStringList{noSubject, noSubject, signInScreen, noSubject, signInScreen, noSubject}));
        QCOMPARE(process.run().output(), QByteArray());
    }

    void questionsBesideASession()
    {
        QJsonObject mars{{"type", "decideActionForMessage"}, {"request", 1}};
        // Large enough to arrive in many pieces.
        QJsonObject asked =
            message("Subject: x\n\n" + QByteArray("A line of a long message.\n").repeated(100'000), "<m>");
        asked["subject"] = "Mars";
        mars["message"] = asked;
        LinkProcess process(m_server);
        process.run().start();
        process.send(mars);
        process.send(begin("s1"));
        process.send({{"type", "contentRulesJSON"}, {"request", 3}});
        QCOMPARE(process.nextFrame(),
                 (QJsonObject{{"type", "messageActionDecision"},
                              {"request", 1},
                              {"decision", QJsonObject{{"action", "setBackgroundColor"}, {"color", 4}}}}));
        QVERIFY(process.nextFrame()["data"].toString().size() > 1000); // The program carries its rules.
        process.send({{"type", "programVersion"}, {"request", 4}});
        QCOMPARE(process.nextFrame(),
                 (QJsonObject{{"type", "programVersion"}, {"request", 4}, {"version", builtVersion()}}));
        QCOMPARE(process.run().endInput(), 0);
        QCOMPARE(process.begunAndShown(), QStringList{noSubject});
        QVERIFY(!process.run().errors().contains("SESSSION FROM CONTENT EMAIL")); // A question says nothing.
        QCOMPARE(process.run().output(), QByteArray());
    }

    void serviceIsChosen()
    {
        const bool hasRemote = serviceHosts().front() != QLatin1String("quillmate.example");
        const QString usual = hasRemote ? QStringLiteral("remote") : QStringLiteral("local");
        const QString refused = QStringLiteral("refused");
        struct Step {
            QString choice; // empty: only asked
            QString found;
        };
        const auto play = [&](LinkProcess& process, bool isFixed, const std::vector<Step>& steps) {
            process.run().start();
            int request = 0;
            for (const auto& [choice, found] : steps) {
                QJsonObject frame{{"type", choice.isEmpty() ? "service" : "chooseService"}, {"request", ++request}};
                if (!choice.isEmpty()) {
                    frame["choice"] = choice;
                }
                process.send(frame);
                const QJsonObject answer = process.nextFrame();
                const QJsonObject wanted{{"type", "service"}, {"request", request},
                                         {"choice", found},   {"host", serviceHosts().front()},
                                         {"fixed", isFixed},  {"offered", hasRemote}};
                if (found == refused) {
                    QCOMPARE(answer["type"].toString(), QStringLiteral("error"));
                    QCOMPARE(answer["request"].toInt(), request);
                    QVERIFY(!answer["message"].toString().isEmpty());
                } else {
                    QCOMPARE(answer, wanted);
                }
            }
            QCOMPARE(process.run().endInput(), 0);
        };
        LinkProcess fixed(m_server);
        play(fixed, true, {{"", "remote"}, {"local", refused}, {"", "remote"}});

        LinkProcess chosen(m_server);
        chosen.surroundings().set("QUILLMATE_CONNECT_TO", {});
        const QString other = hasRemote ? QStringLiteral("remote") : refused;
        play(chosen, false,
             {{"", usual}, {"both", refused}, {"local", "local"}, {"remote", other}, {"local", "local"}});
        QFile file(chosen.surroundings().file("config/quillmate/service"));
        QCOMPARE(file.permissions() & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
        QVERIFY(file.open(QFile::ReadWrite));
        QCOMPARE(file.readAll(), QByteArray("local\n"));
        play(chosen, false, {{"", "local"}}); // The next start.
        file.write("damaged");
        file.close();
        play(chosen, false, {{"", usual}});
        QVERIFY(chosen.run().errors().contains("cannot be read and counts as none"));
    }

    void inputEnds()
    {
        const QByteArray whole = framed("{\"type\":\"Nonsense\"}");
        const std::pair<QByteArray, QStringList> rows[] = {
            {"", {}},
            {whole + whole.chopped(1), {"quillmate-extension: the input ended inside a frame"}},
        };
        for (const auto& [bytes, lines] : rows) {
            LinkProcess process(m_server);
            process.run().start();
            process.run().write(bytes);
            QCOMPARE(process.run().endInput(), lines.isEmpty() ? 0 : 1);
            QCOMPARE(process.run().errorLines(), lines);
            if (!bytes.isEmpty()) {
                QCOMPARE(process.nextFrame()["type"].toString(), QStringLiteral("error"));
            }
            QCOMPARE(process.run().output(), QByteArray());
        }
    }

    void theJournalGetsNoText()
    {
        QTemporaryFile journal;
        QVERIFY(journal.open());
        struct stat status = {};
        QCOMPARE(::fstat(journal.handle(), &status), 0);
        LinkProcess process(m_server, "/bin/sh");
        process.run().start({"-c", "exec env JOURNAL_STREAM=\"$2\" \"$0\" 2>\"$1\"", QUILLMATE_EXTENSION_PROGRAM,
                             journal.fileName(), QStringLiteral("%1:%2").arg(status.st_dev).arg(status.st_ino)});
        process.send(begin("s1", message("Subject: Plans\n\nHello", "<m1>")));
        QVERIFY(process.settled());
        QCOMPARE(process.run().endInput(), 0);
        const QByteArray lines = journal.readAll();
        QVERIFY2(lines.startsWith("Date header not found\n") && !lines.contains("Hello"), lines);
    }

    void theMemoryOfLongMessagesGoesBack()
    {
#ifdef QUILLMATE_SANITIZED
        QSKIP("The sanitizers have an allocator of their own.");
#endif
        LinkProcess process(m_server);
        process.run().start();
        const auto reply = [&process](const QByteArray& body) {
            process.send(begin("s", message("Subject: x\n\n" + body, "<m>")));
            process.send(moved("viewControllerForSession", "s"));
            process.send(about("composeSessionDidEnd", "s"));
            return process.settled();
        };
        QVERIFY(reply("x") && reply("x"));
        const qint64 before = process.run().memory();
        for (int count = 0; count < 3; ++count) {
            QVERIFY(reply(QByteArray(26'000'000, 'x')));
        }
        QTRY_VERIFY2(process.run().memory() - before < 10 * 1024, QByteArray::number(process.run().memory() - before));
        QCOMPARE(process.run().endInput(), 0);
    }

    void nobodyTakesTheDiagnostics()
    {
        const QTemporaryDir folder;
        const QString pipe = folder.filePath("pipe");
        QCOMPARE(::mkfifo(pipe.toLocal8Bit(), 0600), 0);
        const int reader = ::open(pipe.toLocal8Bit(), O_RDWR | O_CLOEXEC);
        const std::pair<const char*, QByteArray> rows[] = {
            // Where the program's standard error leads, and how its input ends.
            {"2>&-", ""},
            {"2>\"$1\"", ""},
            {"2>\"$1\"", "x"},
        };
        for (const auto& [errors, bytes] : rows) {
            LinkProcess process(m_server, "/bin/sh");
            process.run().start({"-c", QStringLiteral("exec \"$0\" ") + errors, QUILLMATE_EXTENSION_PROGRAM, pipe});
            process.send(begin("s1", message("Subject: x\n\n" + QByteArray(200'000, 'x'), "<m1>")));
            process.send(moved("viewControllerForSession", "s1"));
            QVERIFY2(process.settled(), errors);
            process.run().write(bytes);
            QCOMPARE(process.run().endInput(), bytes.isEmpty() ? 0 : 1);
            QCOMPARE(process.run().output(), QByteArray());
        }
        ::close(reader);
    }

    void terminated()
    {
        for (const bool isBusy : {false, true}) {
            LinkProcess process(m_server);
            process.run().start();
            if (isBusy) {
                process.send(begin("s1"));
                process.send(about("viewControllerForSession", "s1"));
            }
            QVERIFY(process.settled());
            if (isBusy) { // A message is on its way.
                process.run().write(framed(QByteArray(20'000'000, 'x')).first(10'000'000));
            }
            QVERIFY(process.run().waitForTaken());
            QCOMPARE(process.run().terminate(), 0);
            QCOMPARE(process.begunAndShown(), isBusy ? QStringList({noSubject, signInScreen}) : QStringList());
            QCOMPARE(process.run().output(), QByteArray());
        }
    }

private:
    TestServer m_server;
};

QUILLMATE_TEST(LinkProgramTest, QCoreApplication)
#include "LinkProgramTest.moc"
