#pragma once

#include "server/http/HttpConnections.h"
#include "server/http/HttpWork.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace quillmate::server
{

/// One request and its answer. The library calls it on the connection's thread.
class HttpTransaction
{
public:
    /// Of a connection that does not end before it, with the request line's target.
    HttpTransaction(HttpWork& work, HttpConnection& connection, Listener listener, std::string_view target);
    ~HttpTransaction();
    HttpTransaction(const HttpTransaction&) = delete;
    HttpTransaction& operator=(const HttpTransaction&) = delete;

    /// The head is there, then pieces of the body, then all of it (no bytes), and once more when a slow answer is
    /// ready. `targetSize` is that of the target as it was received.
    MHD_Result proceed(MHD_Connection* connection, const char* method, std::size_t targetSize, std::string_view bytes);

private:
    enum class Stage { Head, Body, Answer };

    MHD_Result begin(MHD_Connection* connection, const char* method, std::size_t targetSize);
    MHD_Result take(std::string_view bytes);
    MHD_Result answerLater(MHD_Connection* connection);
    MHD_Result reply(MHD_Connection* connection);
    [[nodiscard]] HttpResponse answer() const;
    [[nodiscard]] HttpResponse tooLarge() const;
    void dropBody();

    HttpWork& m_work;
    HttpConnection& m_connection;
    Stage m_stage = Stage::Head;
    const std::size_t m_targetSize;
    HttpRequest m_request;
    std::optional<HttpResponse> m_response;
    std::size_t m_bodyLimit = 0;
    std::size_t m_discarded = 0;
    bool m_isSlow = false;
};

} // namespace quillmate::server
