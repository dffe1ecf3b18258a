#pragma once

#include <QByteArray>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTemporaryDir>

namespace quillmate
{

/// The version of this build and its three service hosts, which every build chooses.
[[nodiscard]] QString builtVersion();
[[nodiscard]] QStringList serviceHosts();

/// What a program of ours finds around it: data, cache, configuration and runtime folders of its own, gone with this
/// object; windows that go to memory; every service host at a closed port of this machine.
class ProgramSurroundings
{
public:
    ProgramSurroundings();

    /// A path within the folder that goes with this object.
    [[nodiscard]] QString file(const QString& name) const { return m_folder.filePath(name); }
    /// A null value takes the variable away.
    void set(const QString& variable, const QString& value);
    /// Takes away what names a display or a platform.
    void unsetDisplay();
    /// Leads every service host to that port of 127.0.0.1.
    void connectServiceHosts(quint16 port);
    [[nodiscard]] const QProcessEnvironment& variables() const { return m_variables; }

private:
    QTemporaryDir m_folder;
    QProcessEnvironment m_variables;
};

/// One of our programs, started from outside; ended by force with this object. Waiting takes half a minute at most, and
/// only a failure takes that long.
class ProgramRun
{
public:
    static constexpr int patience = 30'000; ///< milliseconds

    /// The surroundings outlive this object, and are read at the start.
    ProgramRun(const QString& program, const ProgramSurroundings& surroundings);
    ~ProgramRun();
    ProgramRun(const ProgramRun&) = delete;
    ProgramRun& operator=(const ProgramRun&) = delete;

    void start(const QStringList& arguments = {});
    /// Starts, gives the input and its end, and waits for the program's end: its status, -1 for a crash or none.
    int run(const QStringList& arguments, const QByteArray& input = {});
    /// Ends the input and waits for the program's end, likewise.
    int endInput();
    /// Sends SIGTERM and waits, likewise.
    int terminate();
    int wait();

    void write(const QByteArray& bytes) { m_process.write(bytes); }
    /// Waits until the program has taken in what was written, but for what a pipe holds.
    [[nodiscard]] bool waitForTaken();
    /// Waits until standard output holds the bytes; false at once when the program ends without them.
    [[nodiscard]] bool waitForOutput(const QByteArray& bytes);

    /// What has arrived and was not taken.
    [[nodiscard]] QByteArray& output();
    [[nodiscard]] const QByteArray& errors();
    /// The whole lines of standard error so far.
    [[nodiscard]] QStringList errorLines();
    [[nodiscard]] bool isRunning() const { return m_process.state() != QProcess::NotRunning; }
    /// What it holds of memory that is its alone, in KiB.
    [[nodiscard]] qint64 memory() const;
    [[nodiscard]] qint64 processId() const { return m_process.processId(); }

private:
    const ProgramSurroundings& m_surroundings;
    QProcess m_process;
    QByteArray m_output;
    QByteArray m_errors;
};

/// Whether a process still runs; one that has ended and that nobody has asked about does not.
[[nodiscard]] bool isRunning(qint64 process);
[[nodiscard]] QList<qint64> childrenOf(qint64 process);

} // namespace quillmate
