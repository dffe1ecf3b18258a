#pragma once

#include "platform/foundation/net/URLRequest.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QObject>

namespace quillmate
{

class UploadBody;
class URLManagers;

/// One request on its way, redirects included. Belongs to the managers and removes itself once it has told the
/// completion.
class URLExchange : public QObject
{
    Q_OBJECT

public:
    static void begin(URLManagers& managers, URLRequest request, DataTaskCompletion completion);
    ~URLExchange() override;

private:
    URLExchange(URLManagers& managers, URLRequest request, DataTaskCompletion completion);
    void send();
    [[nodiscard]] bool hasLeft() const;
    void connecting();
    void headReceived();
    void received();
    void refuse(URLError::Kind kind);
    void finished();
    void sendAnew();
    void follow(const URL& target, int status);
    void succeed(int status);
    void fail(URLError::Kind kind, const QString& detail);
    void complete(std::optional<std::string> data, std::optional<HTTPURLResponse> response,
                  std::optional<URLError> error);

    URLManagers& m_managers;
    URLRequest m_request;
    DataTaskCompletion m_completion;
    int m_keptPeriod = 0;
    std::unique_ptr<QNetworkAccessManager> m_manager; // For the reply alone.
    QNetworkReply* m_reply = nullptr;                 // A child of this object.
    const UploadBody* m_body = nullptr;               // A child of the reply.
    int m_redirects = 0;
    int m_resends = 0;
    bool m_headLeft = false;
    std::optional<URLError::Kind> m_refusal; // Why this exchange ended its reply.
};

} // namespace quillmate
