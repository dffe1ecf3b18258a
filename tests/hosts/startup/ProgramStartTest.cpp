#include "support/ProgramRun.h"
#include "support/TestProgram.h"

#include <QCoreApplication>
#include <QFileInfo>

using namespace quillmate;

/// How the programs with windows take their arguments and their environment.
class ProgramStartTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void start_data();
    void start();
};

void ProgramStartTest::start_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QStringList>("variables"); // NAME=value
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("said"); // on the one line of a failure, or where the output begins; empty: no output
    const auto row = [](const QString& program, const QStringList& arguments, const QStringList& variables, int status,
                        const QString& said) {
        const QString name = QFileInfo(program).fileName() + ' ' + (arguments + variables).join(' ');
        QTest::newRow(qPrintable(name)) << program << arguments << variables << status << said;
    };
    const QString quillmate = QUILLMATE_PROGRAM;
    const QString chat = QUILLMATE_CHAT_PROGRAM;
    const QString extension = QUILLMATE_EXTENSION_PROGRAM;
    for (const QString& program : {quillmate, chat, extension}) {
        const QString name = QFileInfo(program).fileName();
        // Without a display, as a build or a terminal asks.
        row(program, {"--help"}, {"QT_QPA_PLATFORM="}, 0, "Usage: " + name);
        row(program, {"--version"}, {"QT_QPA_PLATFORM="}, 0, name + ' ' + builtVersion() + '\n');
        row(program, {"--nonsense"}, {}, 2, "\"--nonsense\" is unknown");
        row(program, {"-x"}, {}, 2, "\"-x\" is unknown");
        row(program, {"-help"}, {}, 2, "\"-help\" is unknown");
        row(program, {}, {"QT_QPA_PLATFORM="}, 2, "there is no display");
        row(program, {}, {"QT_QPA_PLATFORM=bogus"}, 2, "QT_QPA_PLATFORM=\"bogus\"");
        row(program, {}, {"QT_QPA_PLATFORM=", "DISPLAY=:987"}, 2, "check DISPLAY");
        row(program, {}, {"QUILLMATE_CONNECT_TO=nonsense"}, 2, "QUILLMATE_CONNECT_TO");
        row(program, {}, {"QUILLMATE_CA_FILE=/nowhere.pem"}, 2, "QUILLMATE_CA_FILE");
    }
    row(chat, {"word"}, {}, 2, "word");
    // What mail applications and browsers add by themselves.
    row(extension, {"/path/manifest.json", "quillmate@example"}, {}, 0, "");
    row(extension, {"chrome-extension://abc/"}, {}, 0, "");
    row(extension, {"/manifest.json", "--help"}, {}, 0, "Usage: ");
}

void ProgramStartTest::start()
{
    QFETCH(const QString, program);
    QFETCH(const QStringList, arguments);
    QFETCH(const QStringList, variables);
    QFETCH(const int, status);
    QFETCH(const QString, said);
    ProgramSurroundings surroundings;
    for (const QString& variable : variables) {
        surroundings.set(variable.section(u'=', 0, 0), variable.section(u'=', 1));
    }
    ProgramRun run(program, surroundings);
    QCOMPARE(run.run(arguments), status);
    const QByteArray output = run.output();
    const QStringList lines = run.errorLines();
    if (status == 0) {
        QVERIFY2(said.isEmpty() ? output.isEmpty() : output.startsWith(said.toUtf8()), output.constData());
        QCOMPARE(lines, QStringList());
    } else {
        QCOMPARE(output, QByteArray());
        QVERIFY2(lines.size() == 1 && lines.front().startsWith(QFileInfo(program).fileName() + ": ") &&
                     lines.front().contains(said),
                 run.errors().constData());
        QVERIFY(!variables.contains("QT_QPA_PLATFORM=bogus") || !lines.front().contains("check DISPLAY"));
    }
}

QUILLMATE_TEST(ProgramStartTest, QCoreApplication)
#include "ProgramStartTest.moc"
