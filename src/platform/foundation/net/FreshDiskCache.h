#pragma once

#include <QNetworkDiskCache>

namespace quillmate
{

/// A disk cache of replies that say how long they stay fresh (RFC 9111, section 4.2.1), for that long. Qt's own keeps
/// the others as well and shows them in place of a failure of the server, which the protocol does not allow.
class FreshDiskCache : public QNetworkDiskCache
{
    Q_OBJECT

public:
    using QNetworkDiskCache::QNetworkDiskCache;

    QNetworkCacheMetaData metaData(const QUrl& url) override;
    QIODevice* prepare(const QNetworkCacheMetaData& metaData) override;
};

} // namespace quillmate
