#include "platform/foundation/PartitionedDiskCache.h"

#include <QUrl>

namespace quillmate
{
namespace
{

constexpr qint64 largestCache = 16LL * 1024 * 1024;

/// The store ignores fragments, so the owner becomes a part of the path under which it files the entry.
QUrl filed(QUrl url)
{
    url.setPath(QLatin1Char('/') + url.fragment() + url.path());
    url.setFragment(QString());
    return url;
}

QNetworkCacheMetaData withUrl(QNetworkCacheMetaData metaData, const QUrl& url)
{
    metaData.setUrl(url);
    return metaData;
}

} // namespace

PartitionedDiskCache::PartitionedDiskCache(const QString& folder, QObject* parent)
    : QAbstractNetworkCache(parent)
{
    m_store.setCacheDirectory(folder);
    m_store.setMaximumCacheSize(largestCache);
}

QNetworkCacheMetaData PartitionedDiskCache::metaData(const QUrl& url)
{
    const auto found = m_store.metaData(filed(url));
    return found.isValid() ? withUrl(found, url) : found;
}

void PartitionedDiskCache::updateMetaData(const QNetworkCacheMetaData& metaData)
{
    m_store.updateMetaData(withUrl(metaData, filed(metaData.url())));
}

QIODevice* PartitionedDiskCache::data(const QUrl& url)
{
    return m_store.data(filed(url));
}

bool PartitionedDiskCache::remove(const QUrl& url)
{
    return m_store.remove(filed(url));
}

qint64 PartitionedDiskCache::cacheSize() const
{
    return m_store.cacheSize();
}

QIODevice* PartitionedDiskCache::prepare(const QNetworkCacheMetaData& metaData)
{
    return m_store.prepare(withUrl(metaData, filed(metaData.url())));
}

void PartitionedDiskCache::insert(QIODevice* device)
{
    m_store.insert(device);
}

void PartitionedDiskCache::clear()
{
    m_store.clear();
}

} // namespace quillmate
