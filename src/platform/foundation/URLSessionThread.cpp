#include "platform/foundation/URLSessionThread.h"

#include "platform/foundation/ApplicationFolders.h"
#include "platform/foundation/PartitionedDiskCache.h"
#include "platform/foundation/URLExchange.h"
#include "platform/foundation/print.h"

#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QThread>

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
        for (const auto& [host, endpoint] : m_environment.connectTo) {
            if (query.peerPort() == endpoint.port && query.peerHostName().toStdString() == endpoint.address) {
                return {QNetworkProxy(QNetworkProxy::NoProxy)};
            }
        }
        return systemProxyForQuery(query);
    }

private:
    NetworkEnvironment m_environment;
};

} // namespace

std::mutex URLSessionThread::s_sharedMutex;
NetworkEnvironment URLSessionThread::s_environment;
std::unique_ptr<URLSessionThread, void (*)(URLSessionThread*)> URLSessionThread::s_shared{nullptr, nullptr};

URLSessionThread& URLSessionThread::shared()
{
    const std::lock_guard lock(s_sharedMutex);
    if (!s_shared) {
        s_shared = {new URLSessionThread(s_environment), [](URLSessionThread* thread) { delete thread; }};
        // Network objects must not outlive the application object.
        qAddPostRoutine([] { URLSessionThread::stop(); });
    }
    return *s_shared;
}

void URLSessionThread::configure(NetworkEnvironment environment)
{
    const std::lock_guard lock(s_sharedMutex);
    s_environment = std::move(environment);
}

void URLSessionThread::stop()
{
    decltype(s_shared) ended{nullptr, nullptr};
    const std::lock_guard lock(s_sharedMutex);
    ended.swap(s_shared);
}

URLSessionThread::URLSessionThread(NetworkEnvironment environment)
    : m_environment(std::move(environment))
    , m_thread(std::make_unique<QThread>())
{
    m_thread->setObjectName(QStringLiteral("URLSession"));
    moveToThread(m_thread.get());
    m_thread->start();
}

URLSessionThread::~URLSessionThread()
{
    add([this] {
        delete std::exchange(m_manager, nullptr);
        m_thread->quit();
    });
    m_thread->wait();
    m_thread->deleteLater();
    std::ignore = m_thread.release();
}

void URLSessionThread::add(Work work)
{
    {
        const std::lock_guard lock(m_mutex);
        m_waiting.push_back(std::move(work));
    }
    QMetaObject::invokeMethod(this, &URLSessionThread::runWaiting, Qt::QueuedConnection);
}

void URLSessionThread::runWaiting()
{
    std::deque<Work> waiting;
    {
        const std::lock_guard lock(m_mutex);
        waiting.swap(m_waiting);
    }
    for (Work& work : waiting) {
        work();
    }
}

QNetworkAccessManager& URLSessionThread::manager()
{
    if (m_manager) {
        return *m_manager;
    }
    m_manager = new QNetworkAccessManager(this);
    m_manager->setProxyFactory(new ProxyFactory(m_environment)); // The manager takes it over.
    m_security = QSslConfiguration::defaultConfiguration();
    for (const std::string& file : m_environment.rootCertificateFiles) {
        if (!m_security.addCaCertificates(QString::fromLocal8Bit(file.c_str()), QSsl::Pem)) {
            print("No root certificate could be read from " + file + ".");
        }
    }
    const auto folder = applicationCacheFolder();
    if (makePrivateFolder(folder)) {
        m_manager->setCache(new PartitionedDiskCache(QString::fromStdString(folder.string())));
    } else {
        print("Replies cannot be cached: the folder " + folder.string() + " cannot be made.");
    }
    return *m_manager;
}

void URLSessionThread::send(URLRequest request, DataTaskCompletion completion)
{
    add([this, request = std::move(request), completion = std::move(completion)]() mutable {
        QNetworkAccessManager& network = manager(); // Also loads the roots to trust.
        URLExchange::begin({network, m_environment, m_security}, std::move(request), std::move(completion));
    });
}

void URLSessionThread::clearCache()
{
    add([this] {
        if (auto* cache = manager().cache()) {
            cache->clear();
        }
    });
}

} // namespace quillmate
