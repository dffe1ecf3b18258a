#include "server/ServiceProcess.h"
#include "support/TestProgram.h"

#include <QCoreApplication>
#include <QTcpServer>
#include <QTemporaryDir>

#include <algorithm>
#include <sys/resource.h>
#include <vector>

using namespace quillmate;
using namespace quillmate::server;
using namespace Qt::StringLiterals;

/// How the program understands its command line, starts and refuses to start.
class ServiceStartTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_data = m_folder.filePath(u"service"_s); }

    void aTakenPortIsSaid()
    {
        QTcpServer taken;
        QVERIFY(taken.listen(QHostAddress(QHostAddress::LocalHost)));
        const QString port = QString::number(taken.serverPort());
        const auto [status, line] = run({u"--data"_s, m_data, u"--port"_s, port});
        QCOMPARE(status, 1);
        QVERIFY2(line.contains(port.toUtf8()) && line.count('\n') == 1, line.constData());
    }

    void itListensWhereItIsTold()
    {
        ServiceProcess service(m_data, {u"--listen"_s, u"::1"_s});
        QVERIFY(service.start());
        QVERIFY(service.line().contains(u"https://[::1]:"_s));
        HttpExchange exchange = HttpExchange::secure(service.port(), u"::1"_s, service.root(), u"::1"_s);
        QCOMPARE(exchange.request("GET /apple-version HTTP/1.1\r\nHost: x\r\n").status, 200);
        QCOMPARE(service.stop(), 0);
    }

    void clientsThatNeverSpeakKeepNobodyOut()
    {
#ifdef QUILLMATE_SANITIZED
        constexpr std::size_t wanted = 200;
#else
        constexpr std::size_t wanted = 2'000;
#endif
        rlimit files = {};
        getrlimit(RLIMIT_NOFILE, &files);
        files.rlim_cur = files.rlim_max;
        setrlimit(RLIMIT_NOFILE, &files);
        ServiceProcess service(m_data);
        QVERIFY(service.start());
        std::vector<HttpExchange> silent;
        while (silent.size() < std::min<std::size_t>(wanted, files.rlim_max / 2)) {
            silent.push_back(HttpExchange::plain(service.port()));
            QVERIFY(!silent.back().hasEnded());
        }
        QCOMPARE(service.get("/apple-version").status, 200);
        // Still there: it was not their end that made room.
        QVERIFY(std::all_of(silent.begin(), silent.end(), [](HttpExchange& one) { return !one.hasEnded(); }));
    }

    void aWrongCommandLineIsNamed()
    {
        for (const char* given : {"--unknown",
                                  "surplus",
                                  "--port 65536",
                                  "--port=x",
                                  "--port",
                                  "--help=3 --port 0",
                                  "--listen host.example",
                                  "--listen=",
                                  "--engine magic",
                                  "--engine openai",
                                  "--engine openai --openai-model m",
                                  "--openai-url http://127.0.0.1:8080",
                                  "--openai-context 1023 --engine openai",
                                  "--data=",
                                  "--update-url ftp://x/y --update-version 1",
                                  "--update-url https:// --update-version 1",
                                  "--update-version 1..2 --update-url https://x/",
                                  "--update-version 1.0",
                                  "--update-url https://x/",
                                  "--openai-api-key=sk-Secret"}) {
            const QStringList words = QString::fromUtf8(given).split(u' ');
            const auto [status, line] = run(words);
            QVERIFY2(status == 2, given);
            const QByteArray name = words.first().section(u'=', 0, 0).remove(u"--"_s).toUtf8();
            QVERIFY2(QByteArray(line).replace("quillmate-service --help", "").contains(name), line.constData());
            QVERIFY2(line.count('\n') == 1 && !line.contains("Secret"), line.constData());
        }
    }

    void aSecretIsNotRepeated()
    {
        qputenv("QUILLMATE_OPENAI_API_KEY", "sk-Secret\n");
        for (const char* url : {"http://anna:Secret@h/v1", "anna:Secret@h/v1", "http://h/v1?key=Secret",
                                "http://h/v1#Secret", "http://anna:x?Secret@h/v1", "http://anna:x#Secret@h/v1",
                                "anna:x://Secret@h/v1", "http://h/@?Secret", "http://127.0.0.1:9/v1"}) {
            const QString words = u"--engine openai --openai-model m --openai-url "_s;
            const auto [status, line] = run((words + QString::fromUtf8(url)).split(u' '));
            QVERIFY2(status == 2, url);
            const bool isGood = !QByteArray(url).contains("Secret");
            QVERIFY2(line.contains(isGood ? "QUILLMATE_OPENAI_API_KEY" : "--openai-url"), line.constData());
            QVERIFY2(line.count('\n') == 1 && !line.contains("Secret"), line.constData());
        }
        qunsetenv("QUILLMATE_OPENAI_API_KEY");
    }

    void helpAndVersionEndWell()
    {
        const auto [status, usage] = run({u"--help"_s});
        QCOMPARE(status, 0);
        QVERIFY2(usage.contains("--openai-context") && usage.contains("QUILLMATE_OPENAI_API_KEY"), usage.constData());
        QCOMPARE(run({u"--version"_s}).second, "quillmate-service " + builtVersion().toUtf8() + '\n');
    }

private:
    /// Runs the program to its end: its exit status and all that it said.
    static std::pair<int, QByteArray> run(const QStringList& arguments)
    {
        const ProgramSurroundings surroundings;
        ProgramRun ran(QStringLiteral(QUILLMATE_SERVICE_PROGRAM), surroundings);
        const int status = ran.run(arguments);
        return {status, ran.output() + ran.errors()};
    }

    QTemporaryDir m_folder;
    QString m_data;
};

QUILLMATE_TEST(ServiceStartTest, QCoreApplication)
#include "ServiceStartTest.moc"
