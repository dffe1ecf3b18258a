#include "hosts/link/LinkProcess.h"
#include "support/TestServer.h"

#include <QTest>

using namespace quillmate;

/// How the program takes its arguments and its environment.
class LinkStartTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void arguments_data();
    void arguments();
    void environment_data();
    void environment();

private:
    TestServer m_server;
};

void LinkStartTest::arguments_data()
{
    QTest::addColumn<QStringList>("given");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("output"); // begins with this
    QTest::addColumn<QString>("errors"); // is one line that contains this; empty: no line
    QTest::newRow("help") << QStringList{"--help"} << 0 << "Usage: quillmate-extension"
                          << "";
    QTest::newRow("version") << QStringList{"--version"} << 0 << "quillmate-extension " QUILLMATE_PROJECT_VERSION "\n"
                             << "";
    QTest::newRow("help behind host arguments") << QStringList{"/manifest.json", "--help"} << 0 << "Usage:"
                                                << "";
    QTest::newRow("unknown option") << QStringList{"--nonsense"} << 2 << ""
                                    << "--nonsense";
    QTest::newRow("unknown short option") << QStringList{"/manifest.json", "-x"} << 2 << ""
                                          << "-x";
    QTest::newRow("host arguments") << QStringList{"/path/manifest.json", "quillmate@example"} << 0 << ""
                                    << "";
    QTest::newRow("an origin as argument") << QStringList{"chrome-extension://abc/"} << 0 << ""
                                           << "";
}

void LinkStartTest::arguments()
{
    QFETCH(const QStringList, given);
    QFETCH(const int, status);
    QFETCH(const QString, output);
    QFETCH(const QString, errors);
    LinkProcess process(m_server);
    process.start(given);
    QCOMPARE(process.endInput(), status);
    const QString printed = QString::fromUtf8(process.restOfOutput());
    QVERIFY2(output.isEmpty() ? printed.isEmpty() : printed.startsWith(output), qPrintable(printed));
    const auto lines = process.diagnostics();
    QCOMPARE(lines.size(), errors.isEmpty() ? 0 : 1);
    QVERIFY(errors.isEmpty() || lines.front().contains(errors));
}

void LinkStartTest::environment_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QString>("value"); // null: not set
    QTest::addColumn<QString>("named"); // in the one line that is printed
    QTest::newRow("connect to nonsense") << QStringList{"QUILLMATE_CONNECT_TO"} << "nonsense"
                                         << "QUILLMATE_CONNECT_TO";
    QTest::newRow("connect without port") << QStringList{"QUILLMATE_CONNECT_TO"} << "quillmate.example=127.0.0.1"
                                          << "QUILLMATE_CONNECT_TO";
    QTest::newRow("no such certificates") << QStringList{"QUILLMATE_CA_FILE"} << "/nowhere.pem"
                                          << "QUILLMATE_CA_FILE";
    QTest::newRow("no display") << QStringList{"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"} << QString()
                                << "DISPLAY";
    QTest::newRow("a platform that is none") << QStringList{"QT_QPA_PLATFORM"} << "bogus"
                                             << "QT_QPA_PLATFORM";
}

void LinkStartTest::environment()
{
    QFETCH(const QStringList, names);
    QFETCH(const QString, value);
    QFETCH(const QString, named);
    LinkProcess process(m_server);
    for (const QString& name : names) {
        process.setEnvironment(name, value);
    }
    process.start(); // Its input stays open.
    QCOMPARE(process.wait(), 2);
    const auto lines = process.diagnostics();
    QCOMPARE(lines.size(), 1);
    QVERIFY2(lines.front().contains(named), qPrintable(lines.front()));
    QCOMPARE(process.restOfOutput(), QByteArray());
}

QTEST_GUILESS_MAIN(LinkStartTest)
#include "LinkStartTest.moc"
