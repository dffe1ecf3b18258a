#pragma once

#include "platform/foundation/net/NetworkEnvironment.h"

#include <QObject>
#include <QProcess>
#include <QTimer>
#include <string>

namespace quillmate
{

/// The assistant service on this machine, as a process that lives as long as this object's program: it is asked to end
/// with it, and the system ends it when this program crashes. Main thread; nothing here blocks.
class LocalService : public QObject
{
    Q_OBJECT

public:
    /// `program` and `dataFolder` are paths; nothing is started yet.
    LocalService(const QString& program, const QString& dataFolder);
    ~LocalService() override;

    /// Starts the process; `ready` or `failed` follows.
    void start();
    /// Asks the process to end and ends it by force after three seconds; `stopped` follows, in a later turn of the
    /// loop.
    void stop();

    /// Where it listens and the root it is to be trusted by, once ready.
    [[nodiscard]] const SocketEndpoint& endpoint() const { return m_endpoint; }
    [[nodiscard]] std::string rootCertificateFile() const;

Q_SIGNALS:
    void ready();
    /// It did not come up, or ended on its own later: one sentence for the user.
    void failed(const QString& sentence);
    void stopped();

private:
    void readOutput();
    void processEnded();
    void fail(const QString& reason);

    QProcess m_process;
    QTimer m_patience;
    QByteArray m_output;
    QString m_dataFolder;
    SocketEndpoint m_endpoint;
    enum class Stage { Idle, Starting, Ready, Failed, Stopping, Stopped } m_stage = Stage::Idle;
};

/// The address and port of the line with which the service says that it listens; port 0 when the line says no such
/// thing.
[[nodiscard]] SocketEndpoint listeningEndpoint(const QByteArray& line);

/// Whether the environment leads every service host of the build somewhere already.
[[nodiscard]] bool routesAllServiceHosts(const NetworkEnvironment& environment);

/// The environment without what it says of the service hosts of the build.
[[nodiscard]] NetworkEnvironment withoutServiceRoutes(NetworkEnvironment environment);

/// The environment with the service hosts it says nothing of led to `endpoint`, and `rootCertificateFile` trusted
/// besides.
[[nodiscard]] NetworkEnvironment withServiceAt(NetworkEnvironment environment, const SocketEndpoint& endpoint,
                                               const std::string& rootCertificateFile);

} // namespace quillmate
