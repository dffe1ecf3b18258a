#include "support/ProgramRun.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <sys/stat.h>

namespace quillmate
{

QString builtVersion()
{
    return QStringLiteral(QUILLMATE_VERSION);
}

QStringList serviceHosts()
{
    return {QStringLiteral(QUILLMATE_LIVE_HOST), QStringLiteral(QUILLMATE_STAGING_HOST),
            QStringLiteral(QUILLMATE_DEV_HOST)};
}

ProgramSurroundings::ProgramSurroundings()
    : m_variables(QProcessEnvironment::systemEnvironment())
{
    const QDir folder(m_folder.path());
    for (const char* name : {"DATA", "CACHE", "CONFIG"}) {
        const QString kind = QString::fromLatin1(name);
        m_variables.insert(QStringLiteral("XDG_%1_HOME").arg(kind), folder.filePath(kind.toLower()));
    }
    // Qt complains of one that is not there, or not the user's alone.
    const QString runtime = folder.filePath(QStringLiteral("runtime"));
    folder.mkdir(runtime);
    QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    m_variables.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);
    unsetDisplay();
    set(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    set(QStringLiteral("QUILLMATE_APPEARANCE"), QStringLiteral("light"));
    set(QStringLiteral("QUILLMATE_CA_FILE"), {});
    constexpr quint16 closedPort = 1;
    connectServiceHosts(closedPort);
}

void ProgramSurroundings::set(const QString& variable, const QString& value)
{
    if (value.isNull()) {
        m_variables.remove(variable);
    } else {
        m_variables.insert(variable, value);
    }
}

void ProgramSurroundings::unsetDisplay()
{
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        m_variables.remove(QLatin1String(name));
    }
}

void ProgramSurroundings::connectServiceHosts(quint16 port)
{
    QStringList entries;
    for (const QString& host : serviceHosts()) {
        entries << QStringLiteral("%1=127.0.0.1:%2").arg(host).arg(port);
    }
    set(QStringLiteral("QUILLMATE_CONNECT_TO"), entries.join(u','));
}

ProgramRun::ProgramRun(const QString& program, const ProgramSurroundings& surroundings)
    : m_surroundings(surroundings)
{
    m_process.setProgram(program);
    // Files are private by the program's own doing, not by the caller's mask.
    m_process.setChildProcessModifier([] { ::umask(0); });
}

ProgramRun::~ProgramRun()
{
    if (isRunning()) {
        m_process.kill();
        m_process.waitForFinished(patience);
    }
}

void ProgramRun::start(const QStringList& arguments)
{
    m_process.setProcessEnvironment(m_surroundings.variables());
    m_process.setArguments(arguments);
    m_process.start();
    if (!m_process.waitForStarted(patience)) {
        qFatal("%s cannot be started: %s", qPrintable(m_process.program()), qPrintable(m_process.errorString()));
    }
}

int ProgramRun::run(const QStringList& arguments, const QByteArray& input)
{
    start(arguments);
    write(input);
    return endInput();
}

int ProgramRun::endInput()
{
    m_process.closeWriteChannel();
    return wait();
}

int ProgramRun::terminate()
{
    m_process.terminate();
    return wait();
}

int ProgramRun::wait()
{
    const bool ended = !isRunning() || m_process.waitForFinished(patience);
    return ended && m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}

bool ProgramRun::waitForTaken()
{
    return QTest::qWaitFor([this] { return m_process.bytesToWrite() == 0; }, patience);
}

bool ProgramRun::waitForOutput(const QByteArray& bytes)
{
    const auto isThere = [&] { return output().contains(bytes); };
    return QTest::qWaitFor([&] { return isThere() || !isRunning(); }, patience) && isThere();
}

QByteArray& ProgramRun::output()
{
    m_output += m_process.readAllStandardOutput();
    return m_output;
}

const QByteArray& ProgramRun::errors()
{
    m_errors += m_process.readAllStandardError();
    return m_errors;
}

QStringList ProgramRun::errorLines()
{
    QStringList lines = QString::fromUtf8(errors()).split(u'\n');
    lines.removeLast();
    return lines;
}

qint64 ProgramRun::memory() const
{
    QFile file(QStringLiteral("/proc/%1/status").arg(processId()));
    file.open(QIODevice::ReadOnly);
    const QByteArray status = file.readAll();
    return status.mid(status.indexOf("RssAnon:") + 8).simplified().split(' ').front().toLongLong();
}

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

} // namespace quillmate
