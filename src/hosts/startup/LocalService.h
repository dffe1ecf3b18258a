#pragma once

#include "platform/foundation/net/NetworkEnvironment.h"

#include <QObject>
#include <QProcess>
#include <QTimer>
#include <string>

namespace quillmate
{

/// The assistant service on this machine, as a process that lives as long as this object: it is asked to end with it,
/// and the system ends it when this program crashes. Main thread; nothing here blocks but the end, for at most three
/// seconds.
class LocalService : public QObject
{
    Q_OBJECT

public:
    /// `program` and `dataFolder` are paths; nothing is started yet.
    LocalService(const QString& program, const QString& dataFolder);
    ~LocalService() override;

    /// Starts the process unless it runs; `ready` or `failed` follows, in a later turn of the loop.
    void start();

    /// Where it listens and the root it is to be trusted by, once ready.
    [[nodiscard]] const SocketEndpoint& endpoint() const { return m_endpoint; }
    [[nodiscard]] std::string rootCertificateFile() const;

Q_SIGNALS:
    void ready();
    /// It did not come up, or ended on its own later: one sentence for the user.
    void failed(const QString& sentence);

private:
    void readOutput();
    void processEnded();
    void fail(const QString& reason);

    QProcess m_process;
    QTimer m_patience;
    QByteArray m_output;
    QString m_dataFolder;
    SocketEndpoint m_endpoint;
    enum class Stage { Idle, Starting, Ready, Failed } m_stage = Stage::Idle;
};

/// The address and port of the line with which the service says that it listens; port 0 when the line says no such
/// thing.
[[nodiscard]] SocketEndpoint listeningEndpoint(const QByteArray& line);

/// The environment without what it says of the service hosts of the build.
[[nodiscard]] NetworkEnvironment withoutServiceRoutes(NetworkEnvironment environment);

/// The environment with the service hosts it says nothing of led to `endpoint`, and `rootCertificateFile` trusted
/// besides.
[[nodiscard]] NetworkEnvironment withServiceAt(NetworkEnvironment environment, const SocketEndpoint& endpoint,
                                               const std::string& rootCertificateFile);

} // namespace quillmate
