#include "platform/foundation/net/URLManagers.h"

#include "base/ApplicationFolders.h"
#include "base/AsciiText.h"
#include "base/PrivateFiles.h"
#include "platform/foundation/net/FreshDiskCache.h"
#include "platform/foundation/net/URLExchange.h"
#include "platform/foundation/text/print.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>

#include <algorithm>
#include <utility>

namespace quillmate
{
namespace
{

constexpr qint64 largestCache = 8LL * 1024 * 1024; // Per host and token; replies here are small.
// Tokens end with their process, so a folder that nobody touches any more belongs to nobody.
constexpr int daysKept = 7;

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

QDir cacheFolder()
{
    return QDir(QString::fromStdString(applicationCacheFolder().string()));
}

template<typename Condition>
void removeFolders(Condition condition)
{
    for (const QFileInfo& entry : cacheFolder().entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        if (condition(entry)) {
            QDir(entry.filePath()).removeRecursively();
        }
    }
}

bool isHeader(const std::pair<std::string, std::string>& header, std::string_view lowerCaseName)
{
    return lowerCase(header.first) == lowerCaseName;
}

} // namespace

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

URLManagers::URLManagers(NetworkEnvironment environment)
    : m_environment(std::move(environment))
    , m_security(QSslConfiguration::defaultConfiguration())
{
    for (const std::string& file : m_environment.rootCertificateFiles) {
        if (!m_security.addCaCertificates(QString::fromLocal8Bit(file.c_str()), QSsl::Pem)) {
            print("No root certificate could be read from " + file + ".");
        }
    }
    const QDateTime oldest = QDateTime::currentDateTime().addDays(-daysKept);
    removeFolders([&oldest](const QFileInfo& entry) { return entry.lastModified() < oldest; });
}

URLManagers::~URLManagers()
{
    // A manager waits for its own thread, which may be waiting for a request's body here: the requests go first.
    qDeleteAll(findChildren<URLExchange*>(QString(), Qt::FindDirectChildrenOnly));
}

QNetworkAccessManager& URLManagers::managerFor(const URLRequest& request)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(QByteArray::fromStdString(request.url.host()) + '\n');
    if (const auto* token = authorizationHeader(request)) {
        hash.addData(QByteArray::fromStdString(*token));
    }
    const QByteArray owner = hash.result().toHex();
    QNetworkAccessManager*& manager = m_managers[owner];
    if (!manager) {
        manager = new QNetworkAccessManager(this);
        manager->setProxyFactory(new ProxyFactory(m_environment)); // The manager takes it over.
        if (const auto made = makePrivateFolder(applicationCacheFolder())) {
            auto* cache = new FreshDiskCache;
            cache->setCacheDirectory(cacheFolder().filePath(QString::fromLatin1(owner)));
            cache->setMaximumCacheSize(largestCache);
            manager->setCache(cache); // The manager takes it over.
        } else {
            print("Replies cannot be cached: " + made.error() + ".");
        }
    }
    return *manager;
}

void URLManagers::clearCache()
{
    for (const auto& [owner, manager] : m_managers) {
        if (auto* cache = manager->cache()) {
            cache->clear();
        }
    }
    removeFolders([this](const QFileInfo& entry) { return !m_managers.contains(entry.fileName().toLatin1()); });
}

} // namespace quillmate
