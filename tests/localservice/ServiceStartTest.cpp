#include "localservice/ServiceProcess.h"

#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <vector>

using namespace quillmate::localservice;

/// How the program understands its command line, starts and refuses to start.
class ServiceStartTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_data = m_folder.filePath(QStringLiteral("service")); }

    void aTakenPortIsSaid()
    {
        QTcpServer taken;
        QVERIFY(taken.listen(QHostAddress(QHostAddress::LocalHost)));
        const QString port = QString::number(taken.serverPort());
        const auto [status, line] = run({QStringLiteral("--data"), m_data, QStringLiteral("--port"), port});
        QCOMPARE(status, 1);
        QVERIFY2(line.contains(port.toUtf8()) && line.count('\n') == 1, line.constData());
    }

    void theCertificateIsForItsOwnNamesOnly()
    {
        ServiceProcess service(m_data);
        QVERIFY(service.start());
        const auto connects = [&](const QString& host) {
            return HttpExchange::secure(service.port(), host, service.root()).isConnected();
        };
        QVERIFY(connects(QStringLiteral(QUILLMATE_LIVE_HOST)) && connects(QStringLiteral("localhost")));
        QVERIFY(!connects(QStringLiteral("evil.example")));
        QCOMPARE(service.stop(), 0);
    }

    void itListensWhereItIsTold()
    {
        ServiceProcess service(m_data, {QStringLiteral("--listen"), QStringLiteral("::1")});
        QVERIFY(service.start());
        QVERIFY(service.line().contains(QStringLiteral("https://[::1]:")));
        HttpExchange exchange =
            HttpExchange::secure(service.port(), QStringLiteral("::1"), service.root(), QStringLiteral("::1"));
        QVERIFY2(exchange.isConnected(), qPrintable(exchange.errorText()));
        QCOMPARE(exchange.request("GET /apple-version HTTP/1.1\r\nHost: x\r\n").status, 200);
        QCOMPARE(service.stop(), 0);
    }

    void clientsThatNeverSpeakKeepNobodyOut()
    {
        ServiceProcess service(m_data);
        QVERIFY(service.start());
        std::vector<HttpExchange> silent;
        for (int count = 0; count < 60; ++count) {
            silent.push_back(HttpExchange::plain(service.port()));
            QVERIFY(silent.back().isConnected());
        }
        QCOMPARE(service.get("/apple-version").status, 200);
        // Still there: it was not their end that made room.
        QVERIFY(std::all_of(silent.begin(), silent.end(), [](HttpExchange& one) { return !one.hasEnded(); }));
    }

    void aWrongCommandLineIsNamed_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("named");
        const auto row = [](const char* line) {
            const QStringList words = QString::fromUtf8(line).split(u' ');
            QTest::newRow(line) << words << words.first().section(u'=', 0, 0).toUtf8();
        };
        for (const char* line : {"--unknown",
                                 "surplus",
                                 "--port 65536",
                                 "--port=x",
                                 "--port",
                                 "--port -1",
                                 "--listen host.example",
                                 "--listen=",
                                 "--engine magic",
                                 "--engine openai",
                                 "--engine openai --openai-model m",
                                 "--openai-url http://127.0.0.1:8080",
                                 "--openai-context 1023 --engine openai",
                                 "--openai-context many",
                                 "--update-url ftp://x/y --update-version 1",
                                 "--update-version 1.0",
                                 "--update-version new --update-url https://x/",
                                 "--data=",
                                 "--openai-url nowhere",
                                 "--update-version= --update-url https://x/",
                                 "--update-version 1..2 --update-url https://x/",
                                 "--update-version 1.2- --update-url https://x/",
                                 "--update-version v1.2 --update-url https://x/",
                                 "--update-version 1.2\n3 --update-url https://x/",
                                 "--update-url x/y --update-version 1",
                                 "--update-url https:// --update-version 1",
                                 "--update-url https://x/"}) {
            row(line);
        }
    }

    void aWrongCommandLineIsNamed()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, named);
        const auto [status, line] = run(arguments);
        QCOMPARE(status, 2);
        QVERIFY2(line.contains(named) && line.count('\n') == 1, line.constData());
    }

    void aSecretIsNotRepeated_data()
    {
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<QStringList>("given");
        QTest::addColumn<QByteArray>("named");
        const auto url = [](const char* value) {
            QTest::newRow(value) << QByteArray()
                                 << QStringList{QStringLiteral("--openai-url"), QString::fromUtf8(value)}
                                 << QByteArray("--openai-url");
        };
        for (const char* value :
             {"http://anna:Secret@h/v1", "anna:Secret@h/v1", "http://h/v1?key=Secret", "http://h/v1#Secret",
              "http://anna:x?Secret@h/v1", "http://anna:x#Secret@h/v1", "anna:x://Secret@h/v1", "http://h/@?Secret"}) {
            url(value);
        }
        QTest::newRow("line end in the key")
            << QByteArray("sk-Secret\n")
            << QStringList{QStringLiteral("--openai-url"), QStringLiteral("http://127.0.0.1:9/v1")}
            << QByteArray("QUILLMATE_OPENAI_API_KEY");
        QTest::newRow("key as an option") << QByteArray() << QStringList{QStringLiteral("--openai-api-key=sk-Secret")}
                                          << QByteArray("unknown option --openai-api-key:");
    }

    void aSecretIsNotRepeated()
    {
        QFETCH(QByteArray, key);
        QFETCH(QStringList, given);
        QFETCH(QByteArray, named);
        qputenv("QUILLMATE_OPENAI_API_KEY", key);
        const auto [status, line] =
            run(QStringList{QStringLiteral("--engine"), QStringLiteral("openai"), QStringLiteral("--openai-model"),
                            QStringLiteral("m"), QStringLiteral("--port"), QStringLiteral("0"),
                            QStringLiteral("--data"), m_data} +
                given);
        qunsetenv("QUILLMATE_OPENAI_API_KEY");
        QCOMPARE(status, 2);
        QVERIFY2(line.contains(named) && line.count('\n') == 1 && !line.contains("Secret"), line.constData());
    }

    void helpAndVersionEndWell()
    {
        QProcess help;
        help.start(QStringLiteral(QUILLMATE_SERVICE_PROGRAM), {QStringLiteral("--help")});
        QVERIFY(help.waitForFinished());
        QCOMPARE(help.exitCode(), 0);
        const QByteArray usage = help.readAllStandardOutput();
        QVERIFY2(usage.contains("--openai-context") && usage.contains("QUILLMATE_OPENAI_API_KEY"), usage.constData());
        QProcess version;
        version.start(QStringLiteral(QUILLMATE_SERVICE_PROGRAM), {QStringLiteral("--version")});
        QVERIFY(version.waitForFinished());
        QCOMPARE(version.readAllStandardOutput(), "quillmate-service " QUILLMATE_VERSION "\n");
    }

private:
    /// Runs the program to its end: its exit status and what it said on standard error.
    static std::pair<int, QByteArray> run(const QStringList& arguments)
    {
        QProcess process;
        process.start(QStringLiteral(QUILLMATE_SERVICE_PROGRAM), arguments);
        if (!process.waitForFinished()) {
            process.kill();
            process.waitForFinished();
            return {-1, {}};
        }
        return {process.exitCode(), process.readAllStandardError()};
    }

    QTemporaryDir m_folder;
    QString m_data;
};

QTEST_GUILESS_MAIN(ServiceStartTest)
#include "ServiceStartTest.moc"
