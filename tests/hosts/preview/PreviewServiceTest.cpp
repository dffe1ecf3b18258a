#include "hosts/preview/ProgramRun.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTest>
#include <sys/stat.h>

class PreviewServiceTest : public QObject
{
    Q_OBJECT

private:
    ProgramRunner m_runner;

private Q_SLOTS:
    void terminationEndsInOrder_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<bool>("localService");

        const QString pipe = m_runner.file("pipe");
        QCOMPARE(::mkfifo(pipe.toLocal8Bit().constData(), 0600), 0);
        QTest::newRow("compose window") << QStringList{"--new"} << false;
        QTest::newRow("local service") << QStringList{"--new"} << true;
        QTest::newRow("waiting for standard input") << QStringList{"--new", "-"} << true;
        QTest::newRow("waiting for a pipe's first writer") << QStringList{"--new", pipe} << true;
    }

    void terminationEndsInOrder()
    {
        QFETCH(QStringList, arguments);
        QFETCH(bool, localService);
        const QProcessEnvironment values = m_runner.offscreen();
        QProcess process;
        ProgramRunner::begin(process, arguments, localService ? ProgramRunner::unrouted(values) : values);
        QList<qint64> children;
        if (localService) {
            QTRY_VERIFY_WITH_TIMEOUT(!childrenOf(process.processId()).isEmpty(), 30000);
            children = childrenOf(process.processId());
        } else {
            QByteArray output;
            QTRY_VERIFY_WITH_TIMEOUT((output += process.readAllStandardOutput()).contains("Acess token is empty"),
                                     30000);
        }
        process.terminate();
        QVERIFY(process.waitForFinished(30000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 0);
        for (const qint64 child : children) {
            QVERIFY(!isRunning(child));
        }
    }

    void localServiceServesAndEnds_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<bool>("routed");
        QTest::addColumn<bool>("started");

        QTest::newRow("nothing said") << QStringList{} << false << true;
        QTest::newRow("the environment alone") << QStringList{} << true << false;
        QTest::newRow("the option above the environment") << QStringList{"--service", "local"} << true << true;
        QTest::newRow("remote") << QStringList{"--service", "remote"} << true << false;
    }

    void localServiceServesAndEnds()
    {
        QFETCH(QStringList, options);
        QFETCH(bool, routed);
        QProcessEnvironment values = routed ? m_runner.environment() : ProgramRunner::unrouted(m_runner.environment());
        const QTemporaryDir data;
        values.insert(QStringLiteral("XDG_DATA_HOME"), data.path());
        const QString file = m_runner.file("local.png");
        const ProgramRun taken =
            ProgramRunner::run(QStringList{QStringLiteral("--screenshot"), file, sample("plain")} + options, values);
        QVERIFY2(taken.status == 0, taken.errors.constData());
        QCOMPARE(taken.errors, QByteArray());
        QVERIFY(taken.output.contains("getting email address from apple"));
        QTEST(QFile::exists(data.filePath(QStringLiteral("quillmate/service/ca.pem"))), "started");
    }

    void furtherRootsAreReadWithoutAWord()
    {
        const QProcessEnvironment local = ProgramRunner::unrouted(m_runner.environment());
        const QStringList arguments{QStringLiteral("--screenshot"), m_runner.file("roots.png"), sample("plain")};
        QCOMPARE(ProgramRunner::run(arguments, local).status, 0); // Makes a certificate.
        QProcessEnvironment values = m_runner.environment();
        values.insert(QStringLiteral("QUILLMATE_CA_FILE"), m_runner.file("data/quillmate/service/ca.pem"));
        const ProgramRun taken = ProgramRunner::run(arguments, values);
        QCOMPARE(taken.status, 0);
        QCOMPARE(taken.errors, QByteArray());
    }

    void localServiceThatCannotStart()
    {
        // A file where the service wants its folder.
        QTemporaryDir blocked;
        QVERIFY(QDir(blocked.path()).mkpath(QStringLiteral("quillmate")));
        QFile obstacle(blocked.filePath(QStringLiteral("quillmate/service")));
        QVERIFY(obstacle.open(QIODevice::WriteOnly));
        QProcessEnvironment values = ProgramRunner::unrouted(m_runner.environment());
        values.insert(QStringLiteral("XDG_DATA_HOME"), blocked.path());
        const QString file = m_runner.file("failed.png");
        const ProgramRun taken = ProgramRunner::run({QStringLiteral("--screenshot"), file, sample("plain")}, values);
        QCOMPARE(taken.status, 0);
        QVERIFY2(taken.errors.contains("The assistant service on this machine is not available"),
                 taken.errors.constData());
        QVERIFY(!QImage(file).isNull());
        QVERIFY(!taken.output.contains("getting email address from apple"));
    }

    void localServiceEndsWithACrash()
    {
        QProcess process;
        ProgramRunner::begin(process, {QStringLiteral("--new")}, ProgramRunner::unrouted(m_runner.offscreen()));
        QByteArray output;
        QTRY_VERIFY_WITH_TIMEOUT((output += process.readAllStandardOutput()).contains("Acess token is empty"), 30000);
        const QList<qint64> children = childrenOf(process.processId());
        QCOMPARE(children.size(), 1);
        process.kill();
        QVERIFY(process.waitForFinished(30000));
        QTRY_VERIFY_WITH_TIMEOUT(!isRunning(children.front()), 30000);
    }
};

QTEST_GUILESS_MAIN(PreviewServiceTest)
#include "PreviewServiceTest.moc"
