#pragma once

#include "platform/foundation/net/KeptReplies.h"
#include "platform/foundation/net/NetworkEnvironment.h"
#include "platform/foundation/net/NetworkLimits.h"
#include "platform/foundation/net/URLRequest.h"

#include <memory>

#include <QNetworkAccessManager>
#include <QObject>
#include <QSslConfiguration>

namespace quillmate
{

/// What all exchanges of a session share. Belongs to the session's thread.
class URLManagers : public QObject
{
    Q_OBJECT

public:
    URLManagers(NetworkEnvironment environment, NetworkLimits limits);
    /// What is under way ends without a completion.
    ~URLManagers() override;

    /// Connections from now on are made as this says.
    void setEnvironment(NetworkEnvironment environment);
    /// A manager for one exchange, and so a connection for it alone. What Qt 6.4 shares between exchanges it cannot be
    /// trusted with: it sends into connections whose TLS the server has ended and waits there, fails what waits for a
    /// connection when another one breaks, and hands the rest of one reply to the next request.
    [[nodiscard]] std::unique_ptr<QNetworkAccessManager> makeManager() const;

    [[nodiscard]] const NetworkEnvironment& environment() const { return m_environment; }
    [[nodiscard]] const NetworkLimits& limits() const { return m_limits; }
    /// Which roots are trusted.
    [[nodiscard]] const QSslConfiguration& security() const { return m_security; }
    [[nodiscard]] KeptReplies& keptReplies() { return m_keptReplies; }

private:
    NetworkEnvironment m_environment;
    const NetworkLimits m_limits;
    QSslConfiguration m_security;
    KeptReplies m_keptReplies;
};

/// The request's bearer header, null when it has none.
[[nodiscard]] const std::string* authorizationHeader(const URLRequest& request);
/// Removes every header of that name, given in lower case.
void removeHeader(URLRequest& request, std::string_view lowerCaseName);

} // namespace quillmate
