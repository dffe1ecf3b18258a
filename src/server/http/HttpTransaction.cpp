#include "server/http/HttpTransaction.h"

#include "base/AsciiText.h"
#include "base/Result.h"
#include "base/TerminalText.h"

#include <QDeadlineTimer>

#include <algorithm>
#include <charconv>
#include <exception>
#include <unistd.h>

namespace quillmate::server
{

namespace
{

constexpr std::size_t smallBody = std::size_t(256) * 1024;
constexpr std::size_t mostDiscarded = std::size_t(64) * 1024 * 1024;

/// How a request's body is delimited.
struct Framing {
    std::optional<std::size_t> length; ///< nothing where it comes in chunks
    bool awaitsContinue = false;       ///< RFC 9110, 10.1.1
};

using FramingRead = Result<Framing, HttpResponse>;

FramingRead malformed(int status, std::string_view sentence)
{
    return FramingRead::failure(errorResponse(status, sentence));
}

/// A token (RFC 9110, 5.6.2).
bool isToken(std::string_view text)
{
    constexpr std::string_view allowed =
        "!#$%&'*+-.^_`|~0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    return !text.empty() && text.find_first_not_of(allowed) == std::string_view::npos;
}

bool hasControl(std::string_view value)
{
    return std::any_of(value.begin(), value.end(),
                       [](char c) { return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F; });
}

/// Refuses what another reader of the same bytes, such as a proxy before this one, could delimit differently: the
/// library itself takes the first of several lengths, and chunks before any length.
FramingRead readFraming(const HttpRequest& request)
{
    Framing framing;
    framing.length = 0;
    int lengths = 0;
    int codings = 0;
    int hosts = 0;
    for (const auto& [name, value] : request.headers) {
        if (!isToken(name) || hasControl(value)) {
            return malformed(400, "The request's header is not well formed.");
        }
        if (name == "content-length") {
            ++lengths;
            std::from_chars(value.data(), value.data() + value.size(), framing.length.emplace());
        } else if (name == "transfer-encoding") {
            if (++codings > 1 || lowerCase(value) != "chunked") {
                return malformed(501, "Only the chunked transfer coding is understood here.");
            }
        } else if (name == "expect") {
            if (lowerCase(value) != "100-continue") {
                return malformed(417, "Only the expectation 100-continue is understood here.");
            }
            framing.awaitsContinue = true;
        } else if (name == "host") {
            ++hosts;
        }
    }
    // RFC 9112, 6.3.
    if (lengths + codings > 1) {
        return malformed(400, "A request tells the length of its body once.");
    }
    // RFC 9112, 3.2.
    if (hosts != 1 || !isToken(request.method) || request.path.empty() || request.path.front() != '/') {
        return malformed(400, "A request names its host exactly once, and a path of it.");
    }
    if (codings > 0) {
        framing.length.reset();
    }
    return framing;
}

MHD_Result addHeader(void* headers, MHD_ValueKind, const char* name, std::size_t nameSize, const char* value,
                     std::size_t valueSize)
{
    const std::string_view text(value == nullptr ? "" : value, valueSize);
    const std::size_t end = text.find_last_not_of(" \t") + 1;
    static_cast<HttpHeaders*>(headers)->emplace_back(lowerCase(std::string_view(name, nameSize)), text.substr(0, end));
    return MHD_YES;
}

HttpResponse tooBusy()
{
    HttpResponse response = errorResponse(503, "The service has too much to do: try again in half a minute.");
    response.headers.emplace_back("Retry-After", "30");
    return response;
}

} // namespace

HttpTransaction::HttpTransaction(HttpWork& work, HttpConnection& connection, Listener listener, std::string_view target)
    : m_work(work)
    , m_connection(connection)
    , m_targetSize(target.size())
{
    const std::size_t question = target.find('?');
    m_request.path = target.substr(0, question);
    m_request.query = question == std::string_view::npos ? std::string_view() : target.substr(question + 1);
    m_request.listener = listener;
}

HttpTransaction::~HttpTransaction()
{
    dropBody();
    if (m_stage != Stage::Head) {
        // Longer than the pause between two polls of a client, which share a connection.
        constexpr std::chrono::seconds pause{75};
        m_connection.expectRequest(pause + m_work.limits.requestTime);
        m_work.end();
    }
}

MHD_Result HttpTransaction::proceed(MHD_Connection* connection, const char* method, std::size_t targetSize,
                                    std::string_view bytes)
{
    if (m_stage == Stage::Head) {
        return begin(connection, method, targetSize);
    }
    if (!bytes.empty()) {
        return take(bytes);
    }
    if (m_stage == Stage::Body) {
        m_stage = Stage::Answer;
        if (!m_response && m_isSlow) {
            return answerLater(connection);
        }
        if (!m_response) {
            m_response = answer();
        }
    }
    return reply(connection);
}

MHD_Result HttpTransaction::begin(MHD_Connection* connection, const char* method, std::size_t targetSize)
{
    m_stage = Stage::Body;
    m_work.begin();
    m_connection.requestCame();
    m_request.method = std::string_view(method) == "HEAD" ? "GET" : method;
    MHD_get_connection_values_n(connection, MHD_HEADER_KIND, addHeader, &m_request.headers);
    // The library hands a target over as if it ended at its first NUL.
    const FramingRead framing =
        targetSize == m_targetSize ? readFraming(m_request) : malformed(400, "A request's target holds no NUL.");
    if (!framing) {
        m_response = framing.error();
        m_connection.answeredEarly();
        return reply(connection);
    }
    RequestHandler::Admission admission = m_work.handler.admit(m_request);
    m_bodyLimit = admission.bodyLimit;
    m_isSlow = admission.isSlow;
    m_response = std::move(admission.refusal);
    const std::optional<std::size_t> length = framing.value().length;
    if (!m_response && length.value_or(0) > m_bodyLimit) {
        m_response = tooLarge();
    }
    // A small body is read to its end, so that the connection can carry the next request; no other is waited for.
    const bool readsOn = length && *length <= smallBody && !framing.value().awaitsContinue;
    if (!m_response || readsOn) {
        return MHD_YES;
    }
    m_connection.answeredEarly();
    return reply(connection);
}

MHD_Result HttpTransaction::take(std::string_view bytes)
{
    if (m_response) {
        m_discarded += bytes.size();
        return m_discarded <= mostDiscarded ? MHD_YES : MHD_NO;
    }
    // The library takes an answer before a body or after it, so what is left of one that is too much is thrown away.
    if (bytes.size() > m_bodyLimit - m_request.body.size()) {
        m_response = tooLarge();
        dropBody();
        return MHD_YES;
    }
    m_request.body.append(bytes);
    if ((m_work.bodyBytes += bytes.size()) > m_work.limits.bodyBytes) {
        m_response = m_work.handler.refusal(
            m_request, errorResponse(503, "The service has too much to do: try again in a moment."));
        dropBody();
    }
    return MHD_YES;
}

HttpResponse HttpTransaction::tooLarge() const
{
    return m_work.handler.refusal(
        m_request, errorResponse(413, "The body is larger than this address takes: send a smaller one."));
}

MHD_Result HttpTransaction::answerLater(MHD_Connection* connection)
{
    const auto work = [this, connection, latest = QDeadlineTimer(m_work.limits.longestWait)] {
        m_response = m_connection.isGone() || latest.hasExpired() ? tooBusy() : answer();
        dropBody();
        MHD_resume_connection(connection);
    };
    if (m_work.answerSlowly(connection, work)) {
        return MHD_YES; // Another thread may have this object by now.
    }
    m_response = tooBusy();
    dropBody();
    return reply(connection);
}

HttpResponse HttpTransaction::answer() const
{
    try {
        return m_work.handler.handle(m_request);
    } catch (const std::exception& error) {
        qCritical("quillmate-service: %s failed: %s", textFor(STDERR_FILENO, m_request.path).c_str(), error.what());
        return errorResponse(500, "The service could not answer: its log says why.");
    }
}

MHD_Result HttpTransaction::reply(MHD_Connection* connection)
{
    // Both live until the answer is sent.
    MHD_Response* response =
        MHD_create_response_from_buffer(m_response->body.size(), m_response->body.data(), MHD_RESPMEM_PERSISTENT);
    for (const auto& [name, value] : m_response->headers) {
        MHD_add_response_header(response, name.c_str(), value.c_str());
    }
    if (m_work.isEnding) {
        MHD_add_response_header(response, MHD_HTTP_HEADER_CONNECTION, "close");
    }
    const MHD_Result queued = MHD_queue_response(connection, static_cast<unsigned>(m_response->status), response);
    MHD_destroy_response(response);
    return queued;
}

void HttpTransaction::dropBody()
{
    m_work.bodyBytes -= m_request.body.size();
    std::string().swap(m_request.body); // An assignment would keep the memory.
}

} // namespace quillmate::server
