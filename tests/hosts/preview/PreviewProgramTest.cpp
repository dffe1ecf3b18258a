#include "support/ProgramRun.h"
#include "support/TestEnvironment.h"
#include "support/TestProgram.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>

#include <memory>
#include <optional>
#include <sys/stat.h>

using namespace quillmate;

namespace
{

const auto program = QStringLiteral(QUILLMATE_PROGRAM);

QString sample(const char* name)
{
    return QStringLiteral(QUILLMATE_SAMPLES "/%1.eml").arg(QLatin1String(name));
}

} // namespace

/// The program from outside: what it refuses, what it draws, which service it runs, and how it ends.
class PreviewProgramTest : public QObject
{
    Q_OBJECT

private:
    /// Creates the file with the folders above it.
    [[nodiscard]] QString write(const QString& name, const QByteArray& bytes) const
    {
        QFile file(m_surroundings->file(name));
        const bool written = QDir().mkpath(QFileInfo(file).path()) && file.open(QIODevice::WriteOnly) &&
                             file.write(bytes) == bytes.size();
        return written ? file.fileName() : QString();
    }
    [[nodiscard]] QStringList screenshot(const QStringList& rest) const
    {
        return QStringList{"--screenshot", m_surroundings->file("picture.png")} + rest;
    }

    std::optional<ProgramSurroundings> m_surroundings;

private Q_SLOTS:
    void init() { m_surroundings.emplace(); }

    void refused()
    {
        const QString prose = write("prose.eml", "This is no mail.\n");
        const QString maildir = m_surroundings->file("maildir");
        QVERIFY(QDir().mkpath(maildir + "/cur"));
        const std::pair<QStringList, QByteArray> rows[] = {
            {{sample("plain"), prose}, prose.toUtf8()},
            {{"--reply", "3", sample("plain"), sample("arabic")},
             "--reply 3 asks for more than the 2 messages there are"},
            {{"--reply", "2", sample("plain")}, "the one message there is"},
            {{"--reply", "1", maildir}, "--reply needs a message"},
            {{"-"}, "standard input"},
            {{"--screenshot", "/nonexistent/x.png"}, "/nonexistent/x.png"},
        };
        for (const auto& [arguments, named] : rows) {
            ProgramRun refusal(program, *m_surroundings);
            QCOMPARE(refusal.run(arguments), 2);
            const QByteArray said = refusal.errors();
            QVERIFY2(said.startsWith("quillmate: ") && said.contains(named) && said.count('\n') == 1, said.constData());
        }
    }

    void pictures()
    {
        m_surroundings->unsetDisplay(); // What a picture is taken of goes to memory, without a word.
        QFile input(sample("crlf"));
        QVERIFY(input.open(QIODevice::ReadOnly));
        const QByteArray crlf = input.readAll();
        const QSize composeSize(1080, 680);
        const QSize listSize(980, 640);
        const struct {
            QStringList arguments;
            QSize size;
            QByteArray printed;
        } rows[] = {
            {{"--reply", "2", sample("plain"), sample("japanese")},
             composeSize,
             "getting email address from apple m.tanaka@aoba-travel.example"},
            {{"--new", sample("plain")}, composeSize, "No headers found in the original message."},
            {{"-"}, composeSize, "SESSSION FROM CONTENT EMAIL Dear Mr Balogun,\n"},
            {{}, listSize, ""},
            {{sample("plain"), sample("mars")}, listSize, ""},
        };
        for (const auto& row : rows) {
            QFile::remove(screenshot({}).back());
            ProgramRun taken(program, *m_surroundings);
            QVERIFY2(taken.run(screenshot(row.arguments), crlf) == 0, taken.errors().constData());
            QVERIFY2(taken.output().contains(row.printed), taken.output().constData());
            const QImage picture(screenshot({}).back());
            QCOMPARE(picture.size(), row.size);
            // Letters are drawn with smooth edges, so a window with text has many shades.
            QSet<QRgb> shades;
            for (int pixel = 0; pixel < picture.width() * picture.height(); ++pixel) {
                shades.insert(picture.pixel(pixel % picture.width(), pixel / picture.width()));
            }
            QVERIFY(shades.size() > 20);
        }
    }

    void terminationEndsInOrder()
    {
        m_surroundings->set(QStringLiteral("QUILLMATE_CONNECT_TO"), {});
        const QString pipe = m_surroundings->file("pipe");
        QCOMPARE(::mkfifo(pipe.toLocal8Bit().constData(), 0600), 0);
        for (const QString& message : {sample("plain"), QStringLiteral("-"), pipe}) {
            ProgramRun run(program, *m_surroundings);
            run.start({QStringLiteral("--new"), message});
            QTRY_VERIFY_WITH_TIMEOUT(!childrenOf(run.processId()).isEmpty(), ProgramRun::patience);
            const QList<qint64> children = childrenOf(run.processId());
            QCOMPARE(run.terminate(), 0);
            for (const qint64 child : children) {
                QVERIFY(!isRunning(child));
            }
        }
    }

    void localServiceServesAndEnds()
    {
        const struct {
            QStringList options;
            bool routed;
            bool started;
        } rows[] = {
            {{}, false, true},
            {{}, true, false},
            {{"--service", "local"}, true, true},
            {{"--service", "remote"}, true, false},
        };
        for (const auto& row : rows) {
            init();
            if (row.routed) {
                m_surroundings->set(QStringLiteral("QUILLMATE_CA_FILE"),
                                    TestEnvironment::certificateFile(QStringLiteral("ca.pem")));
            } else {
                m_surroundings->set(QStringLiteral("QUILLMATE_CONNECT_TO"), {});
            }
            ProgramRun run(program, *m_surroundings);
            run.start(row.options + QStringList{sample("plain")});
            QVERIFY(run.waitForOutput("Acess token is empty"));
            QCOMPARE(childrenOf(run.processId()).isEmpty(), !row.started);
            QCOMPARE(run.terminate(), 0);
            QCOMPARE(run.errors(), QByteArray());
            QVERIFY(run.output().contains("getting email address from apple helen.marsh@riverside-print.example"));
        }
    }

    void localServiceThatCannotStart()
    {
        m_surroundings->set(QStringLiteral("QUILLMATE_CONNECT_TO"), {});
        QVERIFY(!write("data/quillmate/service", "").isNull()); // A file where the service wants its folder.
        ProgramRun run(program, *m_surroundings);
        run.start({sample("plain")});
        QVERIFY(run.waitForOutput("Acess token is empty")); // The panel comes all the same.
        QTRY_VERIFY_WITH_TIMEOUT(run.errors().contains("The assistant service on this machine is not available"),
                                 ProgramRun::patience);
        QCOMPARE(run.terminate(), 0);
    }

    void localServiceEndsWithACrash()
    {
        m_surroundings->set(QStringLiteral("QUILLMATE_CONNECT_TO"), {});
        auto run = std::make_unique<ProgramRun>(program, *m_surroundings);
        run->start({QStringLiteral("--new")});
        QVERIFY(run->waitForOutput("Acess token is empty"));
        const QList<qint64> children = childrenOf(run->processId());
        QCOMPARE(children.size(), 1);
        run.reset(); // By force.
        QTRY_VERIFY_WITH_TIMEOUT(!isRunning(children.front()), ProgramRun::patience);
    }
};

QUILLMATE_TEST(PreviewProgramTest, QCoreApplication)
#include "PreviewProgramTest.moc"
