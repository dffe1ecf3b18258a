#pragma once

#include "platform/foundation/net/URLRequest.h"

#include <QNetworkReply>
#include <QObject>

namespace quillmate
{

class URLManagers;

/// One request on its way, redirects included. Belongs to the managers and removes itself once it has told the
/// completion.
class URLExchange : public QObject
{
    Q_OBJECT

public:
    static void begin(URLManagers& managers, URLRequest request, DataTaskCompletion completion);

private:
    URLExchange(URLManagers& managers, URLRequest request, DataTaskCompletion completion);
    void send();
    void received();
    void finished();
    void follow(const URL& target, int status);
    void succeed(int status);
    void fail(URLError::Kind kind, const QString& detail);
    void complete(std::optional<std::string> data, std::optional<HTTPURLResponse> response,
                  std::optional<URLError> error);

    URLManagers& m_managers;
    URLRequest m_request;
    DataTaskCompletion m_completion;
    QNetworkReply* m_reply = nullptr; // A child of this object.
    int m_redirects = 0;
    bool m_tooLarge = false;
};

} // namespace quillmate
