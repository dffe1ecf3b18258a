#pragma once

#include "platform/foundation/net/NetworkEnvironment.h"
#include "platform/foundation/net/URLRequest.h"

#include <map>

#include <QByteArray>
#include <QObject>
#include <QSslConfiguration>

class QNetworkAccessManager;

namespace quillmate
{

/// The network managers of a session, one per host and bearer token, each with its own folder of the cache: what was
/// fetched with one token is never found with another, and hosts that the environment sends to one address stay apart.
/// Belongs to the session's thread.
class URLManagers : public QObject
{
    Q_OBJECT

public:
    explicit URLManagers(NetworkEnvironment environment);
    /// What is under way ends without a completion.
    ~URLManagers() override;

    /// The manager for a request, made on first need; stays until this object goes.
    QNetworkAccessManager& managerFor(const URLRequest& request);
    [[nodiscard]] const NetworkEnvironment& environment() const { return m_environment; }
    /// Which roots are trusted.
    [[nodiscard]] const QSslConfiguration& security() const { return m_security; }

    /// Empties the whole cache, what earlier processes left included.
    void clearCache();

private:
    const NetworkEnvironment m_environment;
    QSslConfiguration m_security;
    std::map<QByteArray, QNetworkAccessManager*> m_managers; // Children of this object.
};

/// The request's bearer header, null when it has none.
[[nodiscard]] const std::string* authorizationHeader(const URLRequest& request);
/// Removes every header of that name, given in lower case.
void removeHeader(URLRequest& request, std::string_view lowerCaseName);

} // namespace quillmate
