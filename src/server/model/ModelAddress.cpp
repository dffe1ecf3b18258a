#include "server/model/ModelAddress.h"

#include <QHostAddress>
#include <QRegularExpression>

#include <algorithm>

namespace quillmate::server
{

namespace
{

bool isHere(const QString& host)
{
    return host == QStringLiteral("localhost") || QHostAddress(host).isLoopback();
}

} // namespace

bool ModelAddress::isInClear() const
{
    return completions.scheme() == QStringLiteral("http") && !isHere(completions.host());
}

bool isWebUrl(const QUrl& url)
{
    const bool web = url.scheme() == QStringLiteral("https") || url.scheme() == QStringLiteral("http");
    return web && url.isValid() && !url.host().isEmpty();
}

Result<ModelAddress, std::string> readModelAddress(const std::string& url)
{
    QUrl base(QString::fromStdString(url), QUrl::StrictMode);
    if (!isWebUrl(base)) {
        return Failure("give a whole https or http URL, such as http://127.0.0.1:8080/v1");
    }
    if (!base.userInfo().isEmpty()) {
        return Failure("give it without a user and password; a key comes from QUILLMATE_OPENAI_API_KEY");
    }
    if (base.hasQuery() || base.hasFragment()) {
        return Failure("give it without \"?\" and \"#\"");
    }
    static const QRegularExpression end(QStringLiteral("(/+chat/+completions)?/*$"));
    static const QRegularExpression version(QStringLiteral("(^|/)v[0-9][^/]*(/|$)"));
    static const QRegularExpression lastVersion(QStringLiteral("/v[0-9][^/]*$"));
    QString path = base.path().remove(end);
    if (!path.contains(version)) {
        path += QStringLiteral("/v1");
    }
    const QString root = QString(path).remove(lastVersion);
    const auto at = [&base](const QString& place) {
        QUrl whole = base;
        whole.setPath(place);
        return whole;
    };
    return ModelAddress{at(path + QStringLiteral("/chat/completions")), at(path + QStringLiteral("/models")),
                        at(root + QStringLiteral("/props")), at(root + QStringLiteral("/api/show")),
                        at(root + QStringLiteral("/api/ps"))};
}

Result<void, std::string> checkKey(const std::string& key)
{
    if (std::all_of(key.begin(), key.end(), [](char c) { return c > ' ' && c < 0x7F; })) {
        return {};
    }
    return Failure("QUILLMATE_OPENAI_API_KEY holds a blank, a line end or another character that no key has: set it to "
                   "the key alone");
}

} // namespace quillmate::server
