#include "hosts/preview/ProgramRun.h"

#include <QFile>

QProcessEnvironment ProgramRunner::environment() const
{
    QProcessEnvironment values = QProcessEnvironment::systemEnvironment();
    values.insert(QStringLiteral("XDG_DATA_HOME"), file("data"));
    values.insert(QStringLiteral("XDG_CACHE_HOME"), file("cache"));
    values.insert(QStringLiteral("QUILLMATE_CONNECT_TO"), QStringLiteral(QUILLMATE_CLOSED_HOSTS));
    values.insert(QStringLiteral("QUILLMATE_APPEARANCE"), QStringLiteral("light"));
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "QUILLMATE_CA_FILE"}) {
        values.remove(QLatin1String(name));
    }
    return values;
}

QProcessEnvironment ProgramRunner::offscreen() const
{
    QProcessEnvironment values = environment();
    values.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    return values;
}

QProcessEnvironment ProgramRunner::unrouted(QProcessEnvironment values)
{
    values.remove(QStringLiteral("QUILLMATE_CONNECT_TO"));
    return values;
}

void ProgramRunner::begin(QProcess& process, const QStringList& arguments, const QProcessEnvironment& values)
{
    process.setProcessEnvironment(values);
    process.start(QStringLiteral(QUILLMATE_PROGRAM), arguments);
}

ProgramRun ProgramRunner::run(const QStringList& arguments, const QProcessEnvironment& values, const QByteArray& input)
{
    QProcess process;
    begin(process, arguments, values);
    process.write(input);
    process.closeWriteChannel();
    const bool ended = process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit;
    return {ended ? process.exitCode() : -1, process.readAllStandardOutput(), process.readAllStandardError()};
}

QString sample(const char* name)
{
    return QStringLiteral(QUILLMATE_SAMPLES "/%1.eml").arg(QLatin1String(name));
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
