#pragma once

#include <QAbstractNetworkCache>
#include <QNetworkDiskCache>

namespace quillmate
{

/// A disk cache whose entries belong to an owner: a request names its owner by the fragment of its URL, which is never sent,
/// and finds only what that owner stored.
class PartitionedDiskCache : public QAbstractNetworkCache
{
    Q_OBJECT

public:
    explicit PartitionedDiskCache(const QString& folder, QObject* parent = nullptr);

    QNetworkCacheMetaData metaData(const QUrl& url) override;
    void updateMetaData(const QNetworkCacheMetaData& metaData) override;
    QIODevice* data(const QUrl& url) override;
    bool remove(const QUrl& url) override;
    [[nodiscard]] qint64 cacheSize() const override;
    QIODevice* prepare(const QNetworkCacheMetaData& metaData) override;
    void insert(QIODevice* device) override;
    void clear() override;

private:
    QNetworkDiskCache m_store;
};

} // namespace quillmate
