#include "platform/foundation/net/KeptReplies.h"

#include "platform/foundation/net/URLManagers.h"

#include <QNetworkReply>

namespace quillmate
{
namespace
{

constexpr int largestSum = 8 * 1024 * 1024; // Of the contents, in bytes; replies here are small.

QByteArray keyOf(const URLRequest& request)
{
    const auto* token = authorizationHeader(request);
    return QByteArray::fromStdString(request.url.absoluteString() + '\n' + (token ? *token : ""));
}

std::chrono::seconds freshness(const QNetworkReply& reply)
{
    const QByteArray lifetime = "max-age=";
    qlonglong seconds = 0;
    for (const QByteArray& part : reply.rawHeader("Cache-Control").toLower().split(',')) {
        const QByteArray directive = part.trimmed();
        if (directive == "no-store" || directive.startsWith("no-cache")) {
            return std::chrono::seconds(0);
        }
        if (directive.startsWith(lifetime)) {
            seconds = directive.mid(lifetime.size()).toInt();
        }
    }
    return std::chrono::seconds(seconds - reply.rawHeader("Age").toInt());
}

} // namespace

KeptReplies::KeptReplies(const NetworkLimits& limits)
    : m_limits(limits)
    , m_kept(largestSum)
{
}

std::optional<std::string> KeptReplies::find(const URLRequest& request) const
{
    const Kept* kept = request.method == "GET" ? m_kept.object(keyOf(request)) : nullptr;
    return kept && m_limits.now() < kept->end ? std::optional(kept->content) : std::nullopt;
}

void KeptReplies::keep(const URLRequest& request, int period, const QNetworkReply& reply, const std::string& content)
{
    const auto fresh = freshness(reply);
    const bool ordinary = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt() == 200;
    if (period == m_period && request.method == "GET" && ordinary && fresh.count() > 0 && !reply.hasRawHeader("Vary")) {
        m_kept.insert(keyOf(request), new Kept{m_limits.now() + fresh, content}, // The cache takes it over.
                      static_cast<qsizetype>(content.size()) + 1);
    }
}

void KeptReplies::clear()
{
    ++m_period;
    m_kept.clear();
}

} // namespace quillmate
