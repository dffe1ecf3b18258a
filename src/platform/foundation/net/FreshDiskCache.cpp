#include "platform/foundation/net/FreshDiskCache.h"

#include <QDateTime>

namespace quillmate
{
namespace
{

bool isFresh(const QNetworkCacheMetaData& metaData)
{
    return metaData.expirationDate().isValid() && metaData.expirationDate() > QDateTime::currentDateTimeUtc();
}

} // namespace

QNetworkCacheMetaData FreshDiskCache::metaData(const QUrl& url)
{
    const auto found = QNetworkDiskCache::metaData(url);
    if (found.isValid() && !isFresh(found)) {
        remove(url);
        return {};
    }
    return found;
}

QIODevice* FreshDiskCache::prepare(const QNetworkCacheMetaData& metaData)
{
    return isFresh(metaData) ? QNetworkDiskCache::prepare(metaData) : nullptr;
}

} // namespace quillmate
