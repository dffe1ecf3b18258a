#pragma once

#include <QProcess>
#include <QTemporaryDir>

/// How a run of the program ended.
struct ProgramRun {
    int status = -1; ///< -1 when it crashed or did not end within a minute
    QByteArray output;
    QByteArray errors;
};

/// Runs the program in an environment of its own: settings in a folder of the test's, no display, every service host at
/// a closed port.
class ProgramRunner
{
public:
    /// A path within the folder.
    [[nodiscard]] QString file(const char* name) const { return m_folder.filePath(QLatin1String(name)); }

    [[nodiscard]] QProcessEnvironment environment() const;
    /// As `environment`, with windows that go to memory.
    [[nodiscard]] QProcessEnvironment offscreen() const;
    /// The same without a word about the service hosts.
    static QProcessEnvironment unrouted(QProcessEnvironment values);

    static void begin(QProcess& process, const QStringList& arguments, const QProcessEnvironment& values);
    static ProgramRun run(const QStringList& arguments, const QProcessEnvironment& values,
                          const QByteArray& input = {});

private:
    QTemporaryDir m_folder;
};

/// The path of a sample message.
QString sample(const char* name);

/// Whether a process still runs; one that has ended and that nobody has asked about does not.
bool isRunning(qint64 process);
QList<qint64> childrenOf(qint64 process);
