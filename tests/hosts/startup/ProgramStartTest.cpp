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
    void ends()
    {
        struct Row {
            QString program;
            QStringList arguments;
            QString variables; // NAME=value, with blanks between
            int status;
            QString said; // on the one line of a failure, or where the output begins; empty: no output
        };
        const QString chat = QUILLMATE_CHAT_PROGRAM;
        const QString extension = QUILLMATE_EXTENSION_PROGRAM;
        std::vector<Row> rows = {
            {chat, {"-help"}, {}, 2, "\"-help\" is unknown"},
            {chat, {"word"}, {}, 2, "word"},
            {chat, {}, "QT_QPA_PLATFORM=bogus", 2, "QT_QPA_PLATFORM=\"bogus\""},
            {chat, {}, "QT_QPA_PLATFORM= DISPLAY=:987", 2, "check DISPLAY"},
            {chat, {}, "QUILLMATE_CONNECT_TO=nonsense", 2, "QUILLMATE_CONNECT_TO"},
            {chat, {}, "QUILLMATE_SERVICE=lokal", 2, "QUILLMATE_SERVICE is \"lokal\""},
            {chat, {}, "QUILLMATE_CA_FILE=/nowhere.pem", 2, "QUILLMATE_CA_FILE"},
            // What mail applications and browsers add by themselves.
            {extension, {"/path/manifest.json", "quillmate@example"}, {}, 0, {}},
            {extension, {"chrome-extension://abc/"}, {}, 0, {}},
            {extension, {"/manifest.json", "--help"}, {}, 0, "Usage: "},
        };
        for (const QString& program : {QString(QUILLMATE_PROGRAM), chat, extension}) {
            const QString name = QFileInfo(program).fileName();
            // Without a display, as a build or a terminal asks.
            rows.push_back({program, {"--help"}, "QT_QPA_PLATFORM=", 0, "Usage: " + name});
            rows.push_back({program, {"--version"}, "QT_QPA_PLATFORM=", 0, name + ' ' + builtVersion() + '\n'});
            rows.push_back({program, {"--nonsense"}, {}, 2, "\"--nonsense\" is unknown"});
            rows.push_back({program, {}, "QT_QPA_PLATFORM=", 2, "there is no display"});
        }
        for (const auto& [program, arguments, variables, status, said] : rows) {
            ProgramSurroundings surroundings;
            for (const QString& variable : variables.split(u' ', Qt::SkipEmptyParts)) {
                surroundings.set(variable.section(u'=', 0, 0), variable.section(u'=', 1));
            }
            ProgramRun run(program, surroundings);
            const int ended = run.run(arguments);
            const QString output = QString::fromUtf8(run.output());
            const QString told = program + ' ' + arguments.join(' ') + ' ' + variables + '\n' + output + run.errors();
            QVERIFY2(ended == status, qPrintable(told));
            if (status == 0) {
                QVERIFY2(output.startsWith(said) && output.isEmpty() == said.isEmpty(), qPrintable(told));
                QVERIFY2(run.errors().isEmpty(), qPrintable(told));
            } else {
                const QStringList lines = run.errorLines();
                QVERIFY2(output.isEmpty() && lines.size() == 1 && lines.front().contains(said) &&
                             lines.front().startsWith(QFileInfo(program).fileName() + ": "),
                         qPrintable(told));
                QVERIFY2(variables != "QT_QPA_PLATFORM=bogus" || !lines.front().contains("check DISPLAY"),
                         qPrintable(told));
            }
        }
    }
};

QUILLMATE_TEST(ProgramStartTest, QCoreApplication)
#include "ProgramStartTest.moc"
