#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QObject>
#include <QTcpServer>

#include <functional>
#include <memory>
#include <vector>

namespace quillmate::server
{

/// A language model's server on 127.0.0.1, answered by the test. Lives on the thread whose event loop it uses.
class FakeModel : public QObject
{
public:
    struct Request {
        QByteArray path;
        QByteArray head; ///< the header lines
        QByteArray body;

        [[nodiscard]] QJsonObject json() const;
        /// The content of the message at that place, from the end where it is negative.
        [[nodiscard]] QString content(qsizetype index) const;
    };
    /// The bytes of a response; `hangUp` ends the connection instead, `silence` lets it wait.
    using Answer = std::function<QByteArray(const Request&)>;
    static inline const QByteArray hangUp = "hang up";
    static inline const QByteArray silence = {};

    /// Answers chat completions with `answer`, and what else there is with `other`, which says 404 unless it is set.
    explicit FakeModel(Answer answer);
    /// Takes over a server that does not listen yet, such as one for TLS.
    FakeModel(Answer answer, std::unique_ptr<QTcpServer> server);

    Answer other;
    /// The chat completions asked for.
    std::vector<Request> asked;
    [[nodiscard]] std::string url(const char* scheme = "http") const;

    static QByteArray http(int status, const QByteArray& body, const QByteArray& headers = {});
    static QByteArray completion(const QString& text, int promptTokens = 0, const char* finish = "stop");

private:
    void read(QTcpSocket& socket);

    Answer m_answer;
    std::unique_ptr<QTcpServer> m_server;
};

} // namespace quillmate::server
