#include "hosts/startup/LocalService.h"

#include "base/AsciiText.h"
#include "state/APIManager.h"

#include <QUrl>
#include <algorithm>
#include <chrono>
#include <csignal>
#include <string_view>
#include <sys/prctl.h>
#include <unistd.h>

namespace quillmate
{
namespace
{

using namespace std::chrono_literals;

// The first start makes keys and certificates, which takes seconds on a slow machine.
constexpr auto startPatience = 30s;
constexpr int stopPatience = 2000; // Milliseconds; a mail application that ends waits as long for its programs.

const auto listeningPrefix = QByteArrayLiteral("quillmate-service listening on ");

std::string hostOf(const ServiceEnvironment& service)
{
    constexpr std::string_view scheme = "https://";
    return lowerCase(std::string_view(service.baseURL).substr(scheme.size()));
}

} // namespace

SocketEndpoint listeningEndpoint(const QByteArray& line)
{
    if (!line.startsWith(listeningPrefix)) {
        return {};
    }
    const QUrl url = QUrl::fromEncoded(line.mid(listeningPrefix.size()).trimmed(), QUrl::StrictMode);
    if (!url.isValid() || url.scheme() != u"https" || url.host().isEmpty() || url.port() <= 0) {
        return {};
    }
    return {url.host().toStdString(), static_cast<std::uint16_t>(url.port())};
}

LocalService::LocalService(const QString& program, const QString& dataFolder)
    : m_dataFolder(dataFolder)
{
    m_process.setProgram(program);
    m_process.setArguments({QStringLiteral("--port"), QStringLiteral("0"), QStringLiteral("--data"), dataFolder});
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    const pid_t ourselves = ::getpid();
    m_process.setChildProcessModifier([ourselves] {
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
        // We may have ended before the line above took effect.
        if (::getppid() != ourselves) {
            ::_exit(1);
        }
    });
    connect(&m_process, &QProcess::readyReadStandardOutput, this, &LocalService::readOutput);
    connect(&m_process, &QProcess::finished, this, &LocalService::processEnded);
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            fail(QStringLiteral("it could not be started (%1)").arg(m_process.errorString()));
        }
    });
    m_patience.setSingleShot(true);
    connect(&m_patience, &QTimer::timeout, this, [this] {
        if (m_stage == Stage::Starting) {
            fail(QStringLiteral("it did not come up within 30 seconds"));
        }
        m_process.kill();
    });
}

LocalService::~LocalService()
{
    m_process.disconnect(this);
    if (m_process.state() != QProcess::NotRunning) {
        m_process.terminate();
        if (!m_process.waitForFinished(stopPatience)) {
            m_process.kill();
            m_process.waitForFinished(1000);
        }
    }
}

std::string LocalService::rootCertificateFile() const
{
    return (m_dataFolder + QStringLiteral("/ca.pem")).toStdString();
}

void LocalService::start()
{
    if (m_stage == Stage::Starting || m_stage == Stage::Ready) {
        return;
    }
    m_output.clear();
    m_stage = Stage::Starting;
    m_patience.start(startPatience);
    m_process.start(QIODevice::ReadOnly);
}

void LocalService::readOutput()
{
    const QByteArray arrived = m_process.readAllStandardOutput();
    if (m_stage != Stage::Starting) {
        return;
    }
    m_output += arrived;
    while (m_output.contains('\n')) {
        const qsizetype length = m_output.indexOf('\n');
        const SocketEndpoint endpoint = listeningEndpoint(m_output.left(length));
        m_output.remove(0, length + 1);
        if (endpoint.port != 0) {
            m_patience.stop();
            m_endpoint = endpoint;
            m_stage = Stage::Ready;
            m_output.clear();
            Q_EMIT ready();
            return;
        }
    }
}

void LocalService::processEnded()
{
    m_patience.stop();
    if (m_stage == Stage::Starting || m_stage == Stage::Ready) {
        fail(m_stage == Stage::Starting ? QStringLiteral("it ended before it was ready")
                                        : QStringLiteral("it ended unexpectedly"));
    }
}

void LocalService::fail(const QString& reason)
{
    m_patience.stop();
    m_stage = Stage::Failed;
    Q_EMIT failed(
        QStringLiteral("The assistant service on this machine is not available: %1. Try it once more; if that does "
                       "not help, install Quillmate again.")
            .arg(reason));
}

NetworkEnvironment withoutServiceRoutes(NetworkEnvironment environment)
{
    for (const ServiceEnvironment& service : serviceEnvironments()) {
        environment.connectTo.erase(hostOf(service));
    }
    return environment;
}

NetworkEnvironment withServiceAt(NetworkEnvironment environment, const SocketEndpoint& endpoint,
                                 const std::string& rootCertificateFile)
{
    for (const ServiceEnvironment& service : serviceEnvironments()) {
        environment.connectTo.try_emplace(hostOf(service), endpoint);
    }
    environment.rootCertificateFiles.push_back(rootCertificateFile);
    return environment;
}

} // namespace quillmate
