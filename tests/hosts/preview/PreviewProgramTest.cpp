#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>

namespace
{

struct Run {
    int status = -1;
    QByteArray output;
    QByteArray errors;
};

/// Whether a process still runs; one that has ended and that nobody has asked about does not.
bool isRunning(qint64 process)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(process));
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray line = file.readAll();
    return !line.mid(line.lastIndexOf(')') + 1).trimmed().startsWith('Z');
}

QList<qint64> childrenOf(qint64 process)
{
    QList<qint64> children;
    QFile file(QStringLiteral("/proc/%1/task/%1/children").arg(process));
    if (file.open(QIODevice::ReadOnly)) {
        for (const QByteArray& number : file.readAll().simplified().split(' ')) {
            if (!number.isEmpty()) {
                children.append(number.toLongLong());
            }
        }
    }
    return children;
}

QString sample(const char* name)
{
    return QStringLiteral(QUILLMATE_SAMPLES "/%1.eml").arg(QLatin1String(name));
}

} // namespace

class PreviewProgramTest : public QObject
{
    Q_OBJECT

private:
    /// An environment of its own: settings in the test's folder, no display, every service host at a closed port.
    QProcessEnvironment environment() const
    {
        QProcessEnvironment values = QProcessEnvironment::systemEnvironment();
        values.insert(QStringLiteral("XDG_DATA_HOME"), m_folder.filePath(QStringLiteral("data")));
        values.insert(QStringLiteral("XDG_CACHE_HOME"), m_folder.filePath(QStringLiteral("cache")));
        values.insert(QStringLiteral("QUILLMATE_CONNECT_TO"), QStringLiteral(QUILLMATE_CLOSED_HOSTS));
        values.insert(QStringLiteral("QUILLMATE_APPEARANCE"), QStringLiteral("light"));
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "QUILLMATE_CA_FILE"}) {
            values.remove(QLatin1String(name));
        }
        return values;
    }

    static QProcessEnvironment offscreen(QProcessEnvironment values)
    {
        values.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        return values;
    }

    static void begin(QProcess& process, const QStringList& arguments, const QProcessEnvironment& values)
    {
        process.setProcessEnvironment(values);
        process.start(QStringLiteral(QUILLMATE_PROGRAM), arguments);
    }

    static Run run(const QStringList& arguments, const QProcessEnvironment& values, const QByteArray& input = {})
    {
        QProcess process;
        begin(process, arguments, values);
        process.write(input);
        process.closeWriteChannel();
        if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit) {
            return {-1, process.readAllStandardOutput(), process.readAllStandardError()};
        }
        return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
    }

    QTemporaryDir m_folder;

private Q_SLOTS:
    void helpAndVersion()
    {
        const Run help = run({QStringLiteral("--help")}, environment());
        QCOMPARE(help.status, 0);
        QVERIFY(help.output.startsWith("Usage: quillmate [OPTIONS] [MESSAGE"));
        QVERIFY(help.output.contains("--screenshot FILE"));
        const Run version = run({QStringLiteral("--version")}, environment());
        QCOMPARE(version.status, 0);
        QCOMPARE(version.output, "quillmate " QUILLMATE_VERSION "\n");
    }

    void refused_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("named");

        const QString prose = m_folder.filePath(QStringLiteral("prose.eml"));
        QFile file(prose);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("This is no mail.\n");
        QTest::newRow("unknown option") << QStringList{"--nonsense"} << QByteArray("--nonsense");
        QTest::newRow("missing message") << QStringList{"missing.eml"} << QByteArray("missing.eml");
        QTest::newRow("no mail") << QStringList{prose} << prose.toUtf8();
        QTest::newRow("second message is none") << QStringList{sample("plain"), prose} << prose.toUtf8();
        QTest::newRow("too high a number")
            << QStringList{"--reply", "3", sample("plain"), sample("arabic")} << QByteArray("--reply 3");
        QTest::newRow("empty standard input") << QStringList{"-"} << QByteArray("standard input");
        QTest::newRow("picture in no folder")
            << QStringList{"--screenshot", "/nonexistent/x.png"} << QByteArray("/nonexistent/x.png");
    }

    void refused()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, named);
        const Run refusal = run(arguments, offscreen(environment()));
        QCOMPARE(refusal.status, 2);
        QVERIFY2(refusal.errors.contains(named), refusal.errors.constData());
        QVERIFY(refusal.errors.startsWith("quillmate: "));
        QCOMPARE(refusal.errors.count('\n'), 1);
    }

    void malformedEnvironment()
    {
        QProcessEnvironment values = offscreen(environment());
        values.insert(QStringLiteral("QUILLMATE_CONNECT_TO"), QStringLiteral("nonsense"));
        const Run refusal = run({QStringLiteral("--new")}, values);
        QCOMPARE(refusal.status, 2);
        QVERIFY2(refusal.errors.contains("QUILLMATE_CONNECT_TO"), refusal.errors.constData());
        QCOMPARE(refusal.errors.count('\n'), 1);
    }

    void noDisplay()
    {
        const Run refusal = run({sample("plain")}, environment());
        QCOMPARE(refusal.status, 2);
        QVERIFY2(refusal.errors.contains("--screenshot"), refusal.errors.constData());
        QCOMPARE(refusal.errors.count('\n'), 1);
    }

    void displayThatIsNone()
    {
        QProcessEnvironment values = environment();
        values.insert(QStringLiteral("DISPLAY"), QStringLiteral(":987"));
        const Run refusal = run({sample("plain")}, values);
        QCOMPARE(refusal.status, 2);
        QVERIFY2(refusal.errors.contains("DISPLAY"), refusal.errors.constData());
    }

    void pictures_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QByteArray>("printed");

        QTest::newRow("reply") << QStringList{sample("plain")} << QSize(1080, 680)
                               << QByteArray("getting email address from apple helen.marsh@riverside-print.example");
        QTest::newRow("numbered reply") << QStringList{"--reply", "2", sample("plain"), sample("japanese")}
                                        << QSize(1080, 680)
                                        << QByteArray("getting email address from apple m.tanaka@aoba-travel.example");
        QTest::newRow("new message") << QStringList{"--new", sample("plain")} << QSize(1080, 680)
                                     << QByteArray("No headers found in the original message.");
        QTest::newRow("list") << QStringList{sample("plain"), sample("arabic")} << QSize(980, 640) << QByteArray();
        QTest::newRow("empty list") << QStringList{} << QSize(980, 640) << QByteArray();
    }

    void pictures()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, printed);
        const QString file = m_folder.filePath(QStringLiteral("picture.png"));
        QFile::remove(file);
        const Run taken = run(QStringList{QStringLiteral("--screenshot"), file} + arguments, environment());
        QVERIFY2(taken.status == 0, taken.errors.constData());
        QVERIFY2(taken.output.contains(printed), taken.output.constData());
        const QImage picture(file);
        QTEST(picture.size(), "size");
        // Letters are drawn with smooth edges, so a window with text has many shades.
        QSet<QRgb> shades;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                shades.insert(picture.pixel(x, y));
            }
        }
        QVERIFY(shades.size() > 20);
    }

    void standardInput()
    {
        QFile message(sample("crlf"));
        QVERIFY(message.open(QIODevice::ReadOnly));
        const QString file = m_folder.filePath(QStringLiteral("input.png"));
        const Run taken =
            run({QStringLiteral("--screenshot"), file, QStringLiteral("-")}, environment(), message.readAll());
        QCOMPARE(taken.status, 0);
        QVERIFY(taken.output.contains("SESSSION FROM CONTENT EMAIL Dear Mr Balogun,\n"));
        QVERIFY(QFile::exists(file));
    }

    void terminationEndsInOrder_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<bool>("localService");

        QTest::newRow("compose window") << QStringList{"--new"} << false;
        QTest::newRow("local service") << QStringList{"--new"} << true;
        QTest::newRow("waiting for standard input") << QStringList{"--new", "-"} << true;
    }

    void terminationEndsInOrder()
    {
        QFETCH(QStringList, arguments);
        QFETCH(bool, localService);
        QProcessEnvironment values = offscreen(environment());
        if (localService) {
            values.remove(QStringLiteral("QUILLMATE_CONNECT_TO"));
        }
        QProcess process;
        begin(process, arguments, values);
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

    void localServiceServesAndEnds()
    {
        QProcessEnvironment values = environment();
        values.remove(QStringLiteral("QUILLMATE_CONNECT_TO"));
        const QString file = m_folder.filePath(QStringLiteral("local.png"));
        const Run taken = run({QStringLiteral("--screenshot"), file, sample("plain")}, values);
        QVERIFY2(taken.status == 0, taken.errors.constData());
        QCOMPARE(taken.errors, QByteArray());
        QVERIFY(taken.output.contains("getting email address from apple"));
        QVERIFY(QFile::exists(m_folder.filePath(QStringLiteral("data/quillmate/service/ca.pem"))));
    }

    void localServiceThatCannotStart()
    {
        // A file where the service wants its folder.
        QTemporaryDir blocked;
        QVERIFY(QDir(blocked.path()).mkpath(QStringLiteral("quillmate")));
        QFile obstacle(blocked.filePath(QStringLiteral("quillmate/service")));
        QVERIFY(obstacle.open(QIODevice::WriteOnly));
        QProcessEnvironment values = environment();
        values.remove(QStringLiteral("QUILLMATE_CONNECT_TO"));
        values.insert(QStringLiteral("XDG_DATA_HOME"), blocked.path());
        const QString file = m_folder.filePath(QStringLiteral("failed.png"));
        const Run taken = run({QStringLiteral("--screenshot"), file, sample("plain")}, values);
        QCOMPARE(taken.status, 0);
        QVERIFY2(taken.errors.contains("The assistant service on this machine is not available"),
                 taken.errors.constData());
        QVERIFY(!QImage(file).isNull());
        QVERIFY(!taken.output.contains("getting email address from apple"));
    }

    void localServiceEndsWithACrash()
    {
        QProcessEnvironment values = offscreen(environment());
        values.remove(QStringLiteral("QUILLMATE_CONNECT_TO"));
        QProcess process;
        begin(process, {QStringLiteral("--new")}, values);
        QByteArray output;
        QTRY_VERIFY_WITH_TIMEOUT((output += process.readAllStandardOutput()).contains("Acess token is empty"), 30000);
        const QList<qint64> children = childrenOf(process.processId());
        QCOMPARE(children.size(), 1);
        process.kill();
        QVERIFY(process.waitForFinished(30000));
        QTRY_VERIFY_WITH_TIMEOUT(!isRunning(children.front()), 30000);
    }
};

QTEST_GUILESS_MAIN(PreviewProgramTest)
#include "PreviewProgramTest.moc"
