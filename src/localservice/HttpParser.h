#pragma once

#include "localservice/HttpMessage.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quillmate::localservice
{

/// Reads HTTP/1.1 requests (RFC 9112) from bytes as they come. The head is bounded to 64 KiB, the body to
/// `setBodyLimit`; nothing beyond these bounds is kept. Framing that two readers could understand differently is
/// refused.
class HttpParser
{
public:
    static constexpr std::size_t headLimit = std::size_t(64) * 1024;

    enum class Event {
        NeedMore,  ///< give more bytes
        HeadReady, ///< `request()` is complete but for its body; told once per request
        Complete,  ///< `takeRequest()` hands the request over
        Failed,    ///< `failure()` is the answer, then the connection ends
    };

    void append(std::string_view bytes);
    /// Reads on; call again after each event but NeedMore and Failed.
    Event advance();
    /// The largest body in bytes; set it between HeadReady and the next `advance`.
    void setBodyLimit(std::size_t bytes) { m_bodyLimit = bytes; }

    [[nodiscard]] const HttpRequest& request() const { return m_request; }
    [[nodiscard]] const HttpResponse& failure() const { return m_failure; }
    /// Whether the client wants the connection kept after this request.
    [[nodiscard]] bool keepAlive() const { return m_keepAlive; }
    /// Whether the client waits for "100 Continue" before it sends the body (RFC 9110, 10.1.1).
    [[nodiscard]] bool expectsContinue() const { return m_expectsContinue; }
    /// What is still to come of a body whose length was told; nothing for a chunked one.
    [[nodiscard]] std::optional<std::size_t> remainingLength() const
    {
        return m_state == State::Body ? std::optional(m_remaining) : std::nullopt;
    }
    /// Whether bytes of a request have arrived that is not yet complete.
    [[nodiscard]] bool midRequest() const { return m_state != State::Head || m_offset < m_buffer.size(); }
    /// Hands the complete request over and begins the next one.
    HttpRequest takeRequest();

private:
    enum class State { Head, Body, ChunkSize, ChunkData, Trailers, Complete, Failed };

    Event fail(int status, std::string_view sentence);
    /// One step; nothing means that the next step can follow at once.
    std::optional<Event> step();
    Event readHead();
    Event frameBody();
    Event readBody();
    std::optional<Event> readChunkSize();
    std::optional<Event> readChunkData();
    Event readTrailers();
    bool parseRequestLine(std::string_view line);
    bool parseField(std::string_view line);
    [[nodiscard]] std::string_view available() const;
    void takeBodyBytes();
    /// Takes one line without its line end; false when none is there yet. The view lasts until the next `append`.
    bool takeLine(std::string_view& line);

    State m_state = State::Head;
    std::string m_buffer;
    std::size_t m_offset = 0;
    HttpRequest m_request;
    HttpResponse m_failure;
    std::size_t m_bodyLimit = 0;
    std::size_t m_remaining = 0;
    std::size_t m_trailerBytes = 0;
    bool m_keepAlive = true;
    bool m_expectsContinue = false;
};

} // namespace quillmate::localservice
