#include "hosts/link/NativeHostManifest.h"
#include "support/ProgramRun.h"
#include "support/TestProgram.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <memory>

using namespace quillmate;

namespace
{

constexpr auto ours =
    R"({"name":"quillmate","path":"/old","allowed_extensions":["x@y","quillmate@quillmate.example"]})";
constexpr auto theirs = R"({"name":"quillmate","path":"/opt/other","allowed_extensions":["other@example"]})";

QByteArray contentsOf(const QString& name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString& name, const QByteArray& bytes)
{
    QFile file(name);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QString textOf(const NativeHostOutcome& outcome)
{
    return QString::fromStdString(outcome ? outcome.value() : outcome.error());
}

} // namespace

/// The manifest that leads a mail application's add-on to this program.
class NativeHostTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_home = std::make_unique<QTemporaryDir>(); }

    void names()
    {
        QVERIFY(!installNativeHost(folder().toStdString(), "/home/J\xfcrgen/quillmate-extension"));
        QVERIFY(!QFileInfo::exists(manifest()));
        const QByteArray program = "/home/a \"b\"\\c\n\x01/Jürgen 東京/quillmate-extension";
        const auto outcome = installNativeHost(folder().toStdString(), program.toStdString());
        QVERIFY2(outcome.hasValue() && textOf(outcome).contains(manifest()), qPrintable(textOf(outcome)));
        QCOMPARE(QJsonDocument::fromJson(contentsOf(manifest())).object(),
                 (QJsonObject{{"name", "quillmate"},
                              {"description", "E-mail assistant beside the compose window"},
                              {"path", QString::fromUtf8(program)},
                              {"type", "stdio"},
                              {"allowed_extensions", QJsonArray{"quillmate@quillmate.example"}}}));
    }

    void replaces()
    {
        const struct {
            QByteArray before; // null: no file; "/": a folder in its place
            bool isOurs;
            QString named; // by the sentences that refuse
        } rows[] = {
            {{}, true, ""},
            {ours, true, ""},
            {theirs, false, "/opt/other for other@example"},
            {"", false, "no manifest"},
            {QByteArray(ours) + QByteArray(1'000'000, ' '), false, "no manifest"},
            {"/", false, "no manifest"},
        };
        for (const auto& row : rows) {
            init();
            const auto prepare = [&] {
                QDir().mkpath(row.before == "/" ? manifest() : folder());
                if (!row.before.isNull() && row.before != "/") {
                    write(manifest(), row.before);
                }
            };
            const auto check = [&row](const NativeHostOutcome& outcome) {
                QVERIFY2(outcome.hasValue() == row.isOurs && textOf(outcome).contains(row.named),
                         qPrintable(textOf(outcome)));
            };
            prepare();
            check(installNativeHost(folder().toStdString(), "/new"));
            QCOMPARE(contentsOf(manifest()).contains("/new"), row.isOurs);

            prepare();
            const bool wasThere = QFileInfo::exists(manifest());
            check(removeNativeHost(folder().toStdString()));
            QCOMPARE(QFileInfo::exists(manifest()), wasThere && !row.isOurs);
            if (row.isOurs) {
                const auto again = removeNativeHost(folder().toStdString());
                QVERIFY2(again && textOf(again).contains(u"there is no"_qs), qPrintable(textOf(again)));
            }
        }
    }

    void leavesNothingHalf()
    {
        QDir().mkpath(folder());
        const QString file = folder() + QStringLiteral("/file");
        write(file, "x");
        const auto outcome = installNativeHost((file + QStringLiteral("/under a file")).toStdString(), "/new");
        QVERIFY(!outcome);
        QCOMPARE(QDir(folder()).entryList(QDir::Files), QStringList{QStringLiteral("file")});
        QVERIFY(installNativeHost(folder().toStdString(), "/new").hasValue());
        QCOMPARE(QDir(folder()).entryList(QDir::Files | QDir::Hidden),
                 (QStringList{QStringLiteral("file"), QStringLiteral("quillmate.json")}));
    }

    void program()
    {
        const struct {
            QStringList arguments;
            int status;
            bool there; // afterwards
        } rows[] = {
            {{"--install-host", "now"}, 2, false},
            {{"/manifest.json", "--install-host"}, 2, false},
            {{"--remove-host", "--install-host"}, 2, false},
            {{"--install-host"}, 0, true},
            {{"--remove-host"}, 0, false},
        };
        ProgramSurroundings surroundings;
        surroundings.set(QStringLiteral("HOME"), m_home->path());
        surroundings.unsetDisplay();
        for (const auto& row : rows) {
            ProgramRun run(QStringLiteral(QUILLMATE_EXTENSION_PROGRAM), surroundings);
            QCOMPARE(run.run(row.arguments), row.status);
            const QByteArray said = row.status == 0 ? run.output() : run.errors();
            QVERIFY2(said.count('\n') == 1 && said.endsWith('\n'), said.constData());
            const QJsonValue path = QJsonDocument::fromJson(contentsOf(manifest())).object().value("path");
            QCOMPARE(QFileInfo::exists(manifest()), row.there);
            QVERIFY(!row.there || path == QFileInfo(QStringLiteral(QUILLMATE_EXTENSION_PROGRAM)).canonicalFilePath());
        }
    }

private:
    [[nodiscard]] QString folder() const { return m_home->filePath(QStringLiteral(".mozilla/native-messaging-hosts")); }
    [[nodiscard]] QString manifest() const { return folder() + QStringLiteral("/quillmate.json"); }

    std::unique_ptr<QTemporaryDir> m_home;
};

QUILLMATE_TEST(NativeHostTest, QCoreApplication)
#include "NativeHostTest.moc"
