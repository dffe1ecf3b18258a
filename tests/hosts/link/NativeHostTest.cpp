#include "hosts/link/NativeHostManifest.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

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
    void init();
    void names_data();
    void names();
    void replaces_data();
    void replaces();
    void leavesNothingHalf();
    void program_data();
    void program();

private:
    [[nodiscard]] QString folder() const { return m_home->filePath(QStringLiteral(".mozilla/native-messaging-hosts")); }
    [[nodiscard]] QString manifest() const { return folder() + QStringLiteral("/quillmate.json"); }

    std::unique_ptr<QTemporaryDir> m_home;
};

void NativeHostTest::init()
{
    m_home = std::make_unique<QTemporaryDir>();
}

void NativeHostTest::names_data()
{
    QTest::addColumn<QByteArray>("program");
    QTest::addColumn<bool>("written");
    QTest::newRow("plain") << QByteArray("/usr/bin/quillmate-extension") << true;
    QTest::newRow("quotes and backslashes") << QByteArray("/home/a \"b\"\\c/quillmate-extension") << true;
    QTest::newRow("control characters") << QByteArray("/home/a\nb\x01/quillmate-extension") << true;
    QTest::newRow("beyond ASCII") << QByteArray("/home/Jürgen 東京/quillmate-extension") << true;
    QTest::newRow("not UTF-8") << QByteArray("/home/J\xfcrgen/quillmate-extension") << false;
}

void NativeHostTest::names()
{
    QFETCH(const QByteArray, program);
    QFETCH(const bool, written);
    const auto outcome = installNativeHost(folder().toStdString(), program.toStdString());
    QVERIFY2(outcome.hasValue() == written, qPrintable(textOf(outcome)));
    QCOMPARE(QFileInfo::exists(manifest()), written);
    if (!written) {
        return;
    }
    const QJsonObject expected{
        {QStringLiteral("name"), QStringLiteral("quillmate")},
        {QStringLiteral("description"), QStringLiteral("E-mail assistant beside the compose window")},
        {QStringLiteral("path"), QString::fromUtf8(program)},
        {QStringLiteral("type"), QStringLiteral("stdio")},
        {QStringLiteral("allowed_extensions"), QJsonArray{QStringLiteral("quillmate@quillmate.example")}}};
    QCOMPARE(QJsonDocument::fromJson(contentsOf(manifest())).object(), expected);
    QVERIFY(textOf(outcome).contains(manifest()));
}

void NativeHostTest::replaces_data()
{
    QTest::addColumn<QByteArray>("before"); // null: no file; "/": a folder in its place
    QTest::addColumn<bool>("isOurs");
    QTest::addColumn<QString>("named"); // by the sentences that refuse
    QTest::newRow("nothing") << QByteArray() << true << "";
    QTest::newRow("ours, from elsewhere") << QByteArray(ours) << true << "";
    QTest::newRow("another add-on's") << QByteArray(theirs) << false << "/opt/other for other@example";
    QTest::newRow("no manifest") << QByteArray("hello") << false << "no manifest";
    QTest::newRow("empty") << QByteArray("") << false << "no manifest";
    QTest::newRow("endless") << QByteArray(ours) + QByteArray(1'000'000, ' ') + 'x' << false << "too large";
    QTest::newRow("a folder") << QByteArray("/") << false << "directory";
}

void NativeHostTest::replaces()
{
    QFETCH(const QByteArray, before);
    QFETCH(const bool, isOurs);
    QFETCH(const QString, named);
    const auto prepare = [&] {
        QDir().mkpath(before == "/" ? manifest() : folder());
        if (!before.isNull() && before != "/") {
            write(manifest(), before);
        }
    };
    prepare();
    const auto installed = installNativeHost(folder().toStdString(), "/new");
    QVERIFY2(installed.hasValue() == isOurs, qPrintable(textOf(installed)));
    QVERIFY2(isOurs || textOf(installed).contains(named), qPrintable(textOf(installed)));
    QCOMPARE(contentsOf(manifest()).contains("/new"), isOurs);

    prepare();
    const bool wasThere = QFileInfo::exists(manifest());
    const auto removed = removeNativeHost(folder().toStdString());
    QVERIFY2(removed.hasValue() == isOurs, qPrintable(textOf(removed)));
    QVERIFY2(isOurs || textOf(removed).contains(named), qPrintable(textOf(removed)));
    QCOMPARE(QFileInfo::exists(manifest()), wasThere && !isOurs);
    if (isOurs) {
        const auto again = removeNativeHost(folder().toStdString());
        QVERIFY(again.hasValue());
        QVERIFY2(textOf(again).contains(QStringLiteral("there is no")), qPrintable(textOf(again)));
    }
}

void NativeHostTest::leavesNothingHalf()
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

void NativeHostTest::program_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("there"); // afterwards
    QTest::newRow("install") << QStringList{"--install-host"} << 0 << true;
    QTest::newRow("remove what is not there") << QStringList{"--remove-host"} << 0 << false;
    QTest::newRow("install and more") << QStringList{"--install-host", "now"} << 2 << false;
    QTest::newRow("more and install") << QStringList{"/manifest.json", "--install-host"} << 2 << false;
    QTest::newRow("both") << QStringList{"--remove-host", "--install-host"} << 2 << false;
}

void NativeHostTest::program()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const int, status);
    QFETCH(const bool, there);
    QProcess process;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), m_home->path());
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        environment.remove(QLatin1String(name));
    }
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(QUILLMATE_EXTENSION_PROGRAM), arguments);
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), status);
    const QByteArray said = status == 0 ? process.readAllStandardOutput() : process.readAllStandardError();
    QVERIFY2(said.count('\n') == 1 && said.endsWith('\n'), said.constData());
    QCOMPARE(QFileInfo::exists(manifest()), there);
    if (there) {
        const QString path =
            QJsonDocument::fromJson(contentsOf(manifest())).object()[QStringLiteral("path")].toString();
        QCOMPARE(path, QFileInfo(QStringLiteral(QUILLMATE_EXTENSION_PROGRAM)).canonicalFilePath());
    }
}

QTEST_GUILESS_MAIN(NativeHostTest)
#include "NativeHostTest.moc"
