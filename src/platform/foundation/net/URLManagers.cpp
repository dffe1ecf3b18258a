#include "platform/foundation/net/URLManagers.h"

#include "base/ApplicationFolders.h"
#include "base/AsciiText.h"
#include "platform/foundation/net/URLExchange.h"
#include "platform/foundation/text/print.h"

#include <QDir>
#include <QNetworkProxyFactory>

#include <algorithm>
#include <ctime>
#include <utility>

namespace quillmate
{
namespace
{

/// The system's proxies, but none for an endpoint that the environment names: there the connection itself is the point.
class ProxyFactory : public QNetworkProxyFactory
{
public:
    explicit ProxyFactory(const NetworkEnvironment& environment)
        : m_environment(environment)
    {
    }

    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery& query) override
    {
        const bool named =
            std::any_of(m_environment.connectTo.begin(), m_environment.connectTo.end(), [&](const auto& entry) {
                return query.peerPort() == entry.second.port &&
                       query.peerHostName().toStdString() == entry.second.address;
            });
        return named ? QList{QNetworkProxy(QNetworkProxy::NoProxy)} : systemProxyForQuery(query);
    }

private:
    NetworkEnvironment m_environment;
};

bool isHeader(const std::pair<std::string, std::string>& header, std::string_view lowerCaseName)
{
    return lowerCase(header.first) == lowerCaseName;
}

} // namespace

std::chrono::milliseconds timeSinceBoot()
{
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::seconds(now.tv_sec) +
                                                                 std::chrono::nanoseconds(now.tv_nsec));
}

const std::string* authorizationHeader(const URLRequest& request)
{
    const auto found = std::find_if(request.headers.begin(), request.headers.end(),
                                    [](const auto& header) { return isHeader(header, "authorization"); });
    return found == request.headers.end() ? nullptr : &found->second;
}

void removeHeader(URLRequest& request, std::string_view lowerCaseName)
{
    std::erase_if(request.headers, [lowerCaseName](const auto& header) { return isHeader(header, lowerCaseName); });
}

URLManagers::URLManagers(NetworkEnvironment environment, NetworkLimits limits)
    : m_limits(std::move(limits))
    , m_keptReplies(m_limits)
{
    setEnvironment(std::move(environment));
    // Earlier versions kept replies there, some with a token.
    QDir(QString::fromStdString(applicationCacheFolder().string())).removeRecursively();
}

void URLManagers::setEnvironment(NetworkEnvironment environment)
{
    m_environment = std::move(environment);
    m_security = QSslConfiguration::defaultConfiguration();
    for (const std::string& file : m_environment.rootCertificateFiles) {
        if (!m_security.addCaCertificates(QString::fromLocal8Bit(file.c_str()), QSsl::Pem)) {
            print("No root certificate could be read from " + file + ".");
        }
    }
}

URLManagers::~URLManagers()
{
    qDeleteAll(findChildren<URLExchange*>(QString(), Qt::FindDirectChildrenOnly)); // They use the rest.
}

std::unique_ptr<QNetworkAccessManager> URLManagers::makeManager() const
{
    auto manager = std::make_unique<QNetworkAccessManager>();
    manager->setProxyFactory(new ProxyFactory(m_environment)); // The manager takes it over.
    return manager;
}

} // namespace quillmate
