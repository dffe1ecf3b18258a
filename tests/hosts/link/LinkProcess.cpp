#include "hosts/link/LinkProcess.h"

#include "support/TestEnvironment.h"
#include "support/TestServer.h"

#include <QDir>
#include <QJsonDocument>
#include <QTest>

#include <cstring>
#include <sys/stat.h>

namespace quillmate
{
namespace
{

constexpr int patience = 30'000; // Milliseconds; only a failure waits that long.

} // namespace

QByteArray framed(const QByteArray& body)
{
    const auto length = static_cast<quint32>(body.size());
    return QByteArray(reinterpret_cast<const char*>(&length), sizeof length) + body;
}

LinkProcess::LinkProcess(const TestServer& server)
{
    auto environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DATA", "CACHE", "CONFIG", "RUNTIME"}) {
        const QString folder = m_folder.filePath(QString::fromLatin1(name).toLower());
        environment.insert(QStringLiteral("XDG_%1_%2")
                               .arg(QLatin1String(name), QLatin1String(qstrcmp(name, "RUNTIME") == 0 ? "DIR" : "HOME")),
                           folder);
    }
    QDir(m_folder.path()).mkdir(QStringLiteral("runtime"));
    QFile::setPermissions(m_folder.filePath(QStringLiteral("runtime")),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner); // Else Qt complains of it.
    QStringList connectTo;
    for (const char* host : {"quillmate.example", "staging.quillmate.example", "quillmate-dev.test"}) {
        connectTo << QStringLiteral("%1=127.0.0.1:%2").arg(QLatin1String(host)).arg(server.port());
    }
    environment.insert(QStringLiteral("QUILLMATE_CONNECT_TO"), connectTo.join(QLatin1Char(',')));
    environment.insert(QStringLiteral("QUILLMATE_CA_FILE"), TestEnvironment::certificateFile(QStringLiteral("ca.pem")));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    m_process.setProcessEnvironment(environment);
    // Files are private by the program's own doing, not by the caller's mask.
    m_process.setChildProcessModifier([] { ::umask(0); });
}

LinkProcess::~LinkProcess()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished(patience);
    }
}

void LinkProcess::setEnvironment(const QString& name, const QString& value)
{
    auto environment = m_process.processEnvironment();
    if (value.isNull()) {
        environment.remove(name);
    } else {
        environment.insert(name, value);
    }
    m_process.setProcessEnvironment(environment);
}

void LinkProcess::start(const QStringList& arguments)
{
    m_process.start(QStringLiteral(QUILLMATE_EXTENSION_PROGRAM), arguments);
    if (!m_process.waitForStarted(patience)) {
        qFatal("The program cannot be started: %s", qPrintable(m_process.errorString()));
    }
}

void LinkProcess::send(const QJsonObject& frame)
{
    sendBytes(framed(QJsonDocument(frame).toJson(QJsonDocument::Compact)));
}

void LinkProcess::sendBytes(const QByteArray& bytes)
{
    m_process.write(bytes);
}

bool LinkProcess::waitForTaken()
{
    return QTest::qWaitFor([this] { return m_process.bytesToWrite() == 0; }, patience);
}

QJsonObject LinkProcess::nextFrame()
{
    const auto whole = [this] {
        m_output += m_process.readAllStandardOutput();
        quint32 length = 0;
        if (m_output.size() < 4) {
            return qsizetype(0);
        }
        std::memcpy(&length, m_output.constData(), sizeof length);
        return m_output.size() >= 4 + qsizetype(length) ? 4 + qsizetype(length) : 0;
    };
    if (!QTest::qWaitFor([&] { return whole() > 0 || m_process.state() == QProcess::NotRunning; }, patience)) {
        return {};
    }
    const QByteArray frame = m_output.left(whole()).mid(4);
    m_output.remove(0, whole());
    return QJsonDocument::fromJson(frame).object();
}

bool LinkProcess::waitForLine(const QString& line)
{
    return QTest::qWaitFor([&] { return diagnostics().contains(line); }, patience);
}

int LinkProcess::endInput()
{
    m_process.closeWriteChannel();
    return wait();
}

int LinkProcess::terminate()
{
    m_process.terminate();
    return wait();
}

int LinkProcess::wait()
{
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(patience)) {
        return -1;
    }
    return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}

QStringList LinkProcess::diagnostics()
{
    m_errors += m_process.readAllStandardError();
    auto lines = QString::fromUtf8(m_errors).split(QLatin1Char('\n'));
    lines.removeLast();
    return lines;
}

QByteArray LinkProcess::restOfOutput()
{
    m_output += m_process.readAllStandardOutput();
    return m_output;
}

} // namespace quillmate
