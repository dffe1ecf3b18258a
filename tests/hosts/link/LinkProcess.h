#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

namespace quillmate
{

class TestServer;

/// The extension's program, started from outside as a Mail host starts it, with folders of its own and the service's
/// hosts on the loopback interface.
class LinkProcess
{
public:
    explicit LinkProcess(const TestServer& server);
    ~LinkProcess();
    LinkProcess(const LinkProcess&) = delete;
    LinkProcess& operator=(const LinkProcess&) = delete;

    /// A null value removes the variable. To be called before the start.
    void setEnvironment(const QString& name, const QString& value);
    void start(const QStringList& arguments = {});
    void send(const QJsonObject& frame);
    void sendBytes(const QByteArray& bytes);
    /// Waits until the program has taken in what was sent, but for what a pipe holds.
    [[nodiscard]] bool waitForTaken();
    /// Waits for the next frame of the program; an empty object when none comes.
    [[nodiscard]] QJsonObject nextFrame();
    /// Waits for a line on standard error.
    [[nodiscard]] bool waitForLine(const QString& line);
    /// Ends the input and waits for the program's end; -1 when it does not end by itself.
    [[nodiscard]] int endInput();
    /// Sends SIGTERM and waits, likewise.
    [[nodiscard]] int terminate();
    /// Waits for the program's end, likewise.
    [[nodiscard]] int wait();

    /// The lines of standard error so far.
    [[nodiscard]] QStringList diagnostics();
    /// What has arrived on standard output and was not taken as a frame.
    [[nodiscard]] QByteArray restOfOutput();
    [[nodiscard]] QString dataFolder() const { return m_folder.filePath(QStringLiteral("data")); }

private:
    QTemporaryDir m_folder;
    QProcess m_process;
    QByteArray m_output;
    QByteArray m_errors;
};

/// A frame's bytes: the length in native byte order, then the body.
[[nodiscard]] QByteArray framed(const QByteArray& body);

} // namespace quillmate
