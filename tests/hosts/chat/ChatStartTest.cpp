#include <QDir>
#include <QProcess>
#include <QTest>

/// How quillmate-chat takes its arguments and its environment, and how it ends.
class ChatStartTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void start_data();
    void start();
};

void ChatStartTest::start_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QStringList>("variables"); // NAME=value; an empty value takes it away
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("output"); // begins with this
    QTest::addColumn<QString>("error");  // is one line that holds this; empty: no line
    QTest::newRow("help") << QStringList{"--help"} << QStringList() << 0 << "Usage: quillmate-chat" << QString();
    QTest::newRow("version") << QStringList{"--version"} << QStringList() << 0 << "quillmate-chat " << QString();
    QTest::newRow("unknown option") << QStringList{"--nonsense"} << QStringList() << 2 << ""
                                    << "--nonsense";
    QTest::newRow("a word more") << QStringList{"--help", "more"} << QStringList() << 2 << ""
                                 << "more";
    QTest::newRow("no display") << QStringList() << QStringList{"DISPLAY=", "WAYLAND_DISPLAY=", "QT_QPA_PLATFORM="} << 2
                                << ""
                                << "DISPLAY";
    QTest::newRow("wrong address") << QStringList() << QStringList{"QUILLMATE_CONNECT_TO=nonsense"} << 2 << ""
                                   << "QUILLMATE_CONNECT_TO";
}

void ChatStartTest::start()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const QStringList, variables);
    QFETCH(const int, status);
    QFETCH(const QString, output);
    QFETCH(const QString, error);
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    environment.insert("XDG_RUNTIME_DIR", QDir::tempPath());
    for (const QString& variable : variables) {
        const QString name = variable.section(u'=', 0, 0);
        const QString value = variable.section(u'=', 1);
        value.isEmpty() ? environment.remove(name) : environment.insert(name, value);
    }
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QUILLMATE_CHAT_PROGRAM, arguments);
    QVERIFY(process.waitForFinished(60'000));
    QCOMPARE(process.exitCode(), status);
    const QString printed = QString::fromUtf8(process.readAllStandardOutput());
    QVERIFY2(output.isEmpty() ? printed.isEmpty() : printed.startsWith(output), qPrintable(printed));
    const QStringList lines =
        QString::fromUtf8(process.readAllStandardError()).split(u'\n', Qt::SkipEmptyParts).filter("quillmate-chat:");
    QCOMPARE(lines.size(), error.isEmpty() ? 0 : 1);
    QVERIFY(error.isEmpty() || lines.front().contains(error));
}

QTEST_GUILESS_MAIN(ChatStartTest)
#include "ChatStartTest.moc"
