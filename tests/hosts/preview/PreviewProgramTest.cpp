#include "hosts/preview/ProgramRun.h"

#include <QColor>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QTest>

class PreviewProgramTest : public QObject
{
    Q_OBJECT

private:
    ProgramRunner m_runner;

private Q_SLOTS:
    void helpAndVersion()
    {
        const ProgramRun help = ProgramRunner::run({QStringLiteral("--help")}, m_runner.environment());
        QCOMPARE(help.status, 0);
        QVERIFY(help.output.startsWith("Usage: quillmate [OPTIONS] [MESSAGE"));
        QVERIFY(help.output.contains("--screenshot FILE"));
        QVERIFY(help.output.contains("QUILLMATE_CONNECT_TO"));
        const ProgramRun version = ProgramRunner::run({QStringLiteral("--version")}, m_runner.environment());
        QCOMPARE(version.status, 0);
        QCOMPARE(version.output, "quillmate " QUILLMATE_VERSION "\n");
    }

    void refused_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("named");

        const QString prose = m_runner.file("prose.eml");
        QFile file(prose);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("This is no mail.\n");
        const QString maildir = m_runner.file("maildir");
        QVERIFY(QDir().mkpath(maildir + "/cur"));
        QTest::newRow("unknown option") << QStringList{"--nonsense"} << QByteArray("--nonsense");
        QTest::newRow("missing message") << QStringList{"missing.eml"} << QByteArray("missing.eml");
        QTest::newRow("empty name") << QStringList{""} << QByteArray("the name of a message is empty");
        QTest::newRow("no mail") << QStringList{prose} << prose.toUtf8();
        QTest::newRow("second message is none") << QStringList{sample("plain"), prose} << prose.toUtf8();
        QTest::newRow("too high a number") << QStringList{"--reply", "3", sample("plain"), sample("arabic")}
                                           << QByteArray("--reply 3 asks for more than the 2 messages there are");
        QTest::newRow("too high a number for one message")
            << QStringList{"--reply", "2", sample("plain")} << QByteArray("the one message there is");
        QTest::newRow("no message in the Maildir")
            << QStringList{"--reply", "1", maildir} << QByteArray("--reply needs a message");
        QTest::newRow("no file to write") << QStringList{"--new", "--screenshot"} << QByteArray("--screenshot");
        QTest::newRow("empty standard input") << QStringList{"-"} << QByteArray("standard input");
        QTest::newRow("picture in no folder")
            << QStringList{"--screenshot", "/nonexistent/x.png"} << QByteArray("/nonexistent/x.png");
    }

    void refused()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, named);
        const ProgramRun refusal = ProgramRunner::run(arguments, m_runner.offscreen());
        QCOMPARE(refusal.status, 2);
        QVERIFY2(refusal.errors.contains(named), refusal.errors.constData());
        QVERIFY(refusal.errors.startsWith("quillmate: "));
        QCOMPARE(refusal.errors.count('\n'), 1);
    }

    void refusedEnvironment_data()
    {
        QTest::addColumn<QString>("variable");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QByteArray>("named");
        QTest::addColumn<QByteArray>("unnamed");

        const QByteArray none("\a");
        QTest::newRow("no route") << "QUILLMATE_CONNECT_TO"
                                  << "nonsense" << QByteArray("QUILLMATE_CONNECT_TO") << none;
        QTest::newRow("no certificate") << "QUILLMATE_CA_FILE" << sample("plain") << QByteArray("QUILLMATE_CA_FILE")
                                        << none;
        QTest::newRow("no display that is there") << "DISPLAY"
                                                  << ":987" << QByteArray("check DISPLAY") << none;
        QTest::newRow("no platform that is there")
            << "QT_QPA_PLATFORM"
            << "bogus" << QByteArray("QT_QPA_PLATFORM=\"bogus\"") << QByteArray("DISPLAY");
        QTest::newRow("no display at all") << "DISPLAY"
                                           << "" << QByteArray("--screenshot") << none;
    }

    void refusedEnvironment()
    {
        QFETCH(QString, variable);
        QFETCH(QString, value);
        QFETCH(QByteArray, named);
        QFETCH(QByteArray, unnamed);
        const bool isDisplay = variable == "DISPLAY" || variable == "QT_QPA_PLATFORM";
        QProcessEnvironment values = isDisplay ? m_runner.environment() : m_runner.offscreen();
        values.insert(variable, value);
        const ProgramRun refusal = ProgramRunner::run({QStringLiteral("--new")}, values);
        QCOMPARE(refusal.status, 2);
        QVERIFY2(refusal.errors.contains(named), refusal.errors.constData());
        QVERIFY2(!refusal.errors.contains(unnamed), refusal.errors.constData());
        QVERIFY(refusal.errors.startsWith("quillmate: "));
        QCOMPARE(refusal.errors.count('\n'), 1);
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
        const QString file = m_runner.file("picture.png");
        QFile::remove(file);
        const ProgramRun taken =
            ProgramRunner::run(QStringList{QStringLiteral("--screenshot"), file} + arguments, m_runner.environment());
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

    void decidedRows()
    {
        const QString file = m_runner.file("rows.png");
        const ProgramRun taken = ProgramRunner::run(
            {QStringLiteral("--screenshot"), file, sample("plain"), sample("mars"), sample("newsletter")},
            m_runner.environment());
        QVERIFY2(taken.status == 0, taken.errors.constData());
        const QImage picture(file);
        const auto isRed = [&picture](int row) {
            const QColor color = picture.pixelColor(12, row * 90 + 80); // Below the row's text.
            return color.red() > color.green() + 20 && color.red() > color.blue() + 20;
        };
        QVERIFY(!isRed(0));
        QVERIFY(isRed(1));
        QVERIFY(!isRed(2));
    }

    void largeMailbox()
    {
        const QString mbox = m_runner.file("large.mbox");
        QFile mail(mbox);
        QVERIFY(mail.open(QIODevice::WriteOnly));
        for (int i = 0; i < 10'000; ++i) {
            mail.write("From a@b Tue Mar  4 09:15:37 2025\nFrom: Ann <ann@example.com>\nSubject: " +
                       QByteArray(i % 2 == 0 ? "To Mars" : "To Venus") + "\n\nText of message " +
                       QByteArray::number(i) + "\n\n");
        }
        mail.close();
        const QString file = m_runner.file("large.png");
        const ProgramRun taken = ProgramRunner::run(
            {QStringLiteral("--screenshot"), file, QStringLiteral("--reply"), QStringLiteral("9999"), mbox},
            m_runner.environment());
        QVERIFY2(taken.status == 0, taken.errors.constData());
        QVERIFY(taken.output.contains("SESSSION FROM CONTENT EMAIL Text of message 9998\n"));
    }

    void standardInput()
    {
        QFile message(sample("crlf"));
        QVERIFY(message.open(QIODevice::ReadOnly));
        const QString file = m_runner.file("input.png");
        const ProgramRun taken = ProgramRunner::run({QStringLiteral("--screenshot"), file, QStringLiteral("-")},
                                                    m_runner.environment(), message.readAll());
        QCOMPARE(taken.status, 0);
        QVERIFY(taken.output.contains("SESSSION FROM CONTENT EMAIL Dear Mr Balogun,\n"));
        QVERIFY(QFile::exists(file));
    }
};

QTEST_GUILESS_MAIN(PreviewProgramTest)
#include "PreviewProgramTest.moc"
