#pragma once

#include "platform/foundation/net/NetworkLimits.h"
#include "platform/foundation/net/URLRequest.h"

#include <QByteArray>
#include <QCache>

class QNetworkReply;

namespace quillmate
{

/// The replies that say how long they stay fresh (RFC 9111, section 4.2), for that long, in memory alone: a reply may
/// hold a token. What was fetched with one bearer token is never found with another. Belongs to the session's thread.
class KeptReplies
{
public:
    explicit KeptReplies(const NetworkLimits& limits);

    /// The content for a GET.
    [[nodiscard]] std::optional<std::string> find(const URLRequest& request) const;
    /// Ends with each `clear`. What was asked for in an earlier period is not kept.
    [[nodiscard]] int period() const { return m_period; }
    void keep(const URLRequest& request, int period, const QNetworkReply& reply, const std::string& content);
    void clear();

private:
    struct Kept {
        std::chrono::milliseconds end;
        std::string content;
    };

    const NetworkLimits& m_limits;
    QCache<QByteArray, Kept> m_kept;
    int m_period = 0;
};

} // namespace quillmate
