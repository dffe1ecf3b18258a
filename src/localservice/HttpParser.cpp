#include "localservice/HttpParser.h"

#include "localservice/HttpSyntax.h"

#include <algorithm>
#include <optional>

namespace quillmate::localservice
{

namespace
{

constexpr std::string_view tooLarge = "The body is larger than this address takes: send a smaller one.";

} // namespace

HttpParser::Event HttpParser::fail(int status, std::string_view sentence)
{
    m_failure = errorResponse(status, sentence);
    m_state = State::Failed;
    m_buffer.clear();
    m_offset = 0;
    m_request.body.clear();
    return Event::Failed;
}

void HttpParser::append(std::string_view bytes)
{
    m_buffer.erase(0, m_offset);
    m_offset = 0;
    m_buffer.append(bytes);
}

HttpParser::Event HttpParser::advance()
{
    while (true) {
        const std::optional<Event> event = step();
        if (event) {
            return *event;
        }
    }
}

std::optional<HttpParser::Event> HttpParser::step()
{
    switch (m_state) {
    case State::Head:
        return readHead();
    case State::Body:
        return readBody();
    case State::ChunkSize:
        return readChunkSize();
    case State::ChunkData:
        return readChunkData();
    case State::Trailers:
        return readTrailers();
    case State::Complete:
        return Event::Complete;
    case State::Failed:
        return Event::Failed;
    }
    return Event::Failed;
}

std::string_view HttpParser::available() const
{
    return std::string_view(m_buffer).substr(m_offset);
}

HttpRequest HttpParser::takeRequest()
{
    HttpRequest request = std::move(m_request);
    m_request = {};
    m_state = State::Head;
    m_trailerBytes = 0;
    m_expectsContinue = false;
    return request;
}

HttpParser::Event HttpParser::readHead()
{
    // RFC 9112, 2.2: an empty line before the request line is ignored.
    m_offset = std::min(m_buffer.find_first_not_of("\r\n", m_offset), m_buffer.size());
    const std::size_t end = available().find("\r\n\r\n");
    if (end == std::string_view::npos ? available().size() > headLimit : end > headLimit) {
        return fail(431, "The request's header is longer than 64 KiB: send less.");
    }
    if (end == std::string_view::npos) {
        return Event::NeedMore;
    }
    const std::string head(available().substr(0, end));
    m_offset += end + 4;

    std::string_view rest = head;
    bool first = true;
    while (!rest.empty()) {
        const std::string_view line = rest.substr(0, rest.find("\r\n"));
        rest.remove_prefix(std::min(rest.size(), line.size() + 2));
        const bool understood = first ? parseRequestLine(line) : parseField(line);
        if (m_state == State::Failed) {
            return Event::Failed;
        }
        if (!understood) {
            return fail(400, "The request's header is not well formed.");
        }
        first = false;
    }
    return frameBody();
}

bool HttpParser::parseRequestLine(std::string_view line)
{
    const std::size_t firstBlank = line.find(' ');
    const std::size_t lastBlank = line.rfind(' ');
    if (firstBlank == std::string_view::npos || firstBlank == lastBlank) {
        return false;
    }
    const std::string_view target = line.substr(firstBlank + 1, lastBlank - firstBlank - 1);
    const std::string_view version = line.substr(lastBlank + 1);
    if (!isToken(line.substr(0, firstBlank)) || target.find(' ') != std::string_view::npos) {
        return false;
    }
    if (version != "HTTP/1.1" && version != "HTTP/1.0") {
        fail(505, "Only HTTP/1.1 is spoken here.");
        return false;
    }
    if (target.empty() || target.front() != '/') {
        return false;
    }
    m_keepAlive = version == "HTTP/1.1";
    m_request.method = line.substr(0, firstBlank);
    m_request.headOnly = m_request.method == "HEAD";
    if (m_request.headOnly) {
        m_request.method = "GET";
    }
    const std::size_t question = target.find('?');
    m_request.path = target.substr(0, question);
    m_request.query = question == std::string_view::npos ? std::string_view() : target.substr(question + 1);
    return true;
}

bool HttpParser::parseField(std::string_view line)
{
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos || !isToken(line.substr(0, colon))) {
        return false;
    }
    const std::string_view value = trimmed(line.substr(colon + 1));
    const bool control = std::any_of(value.begin(), value.end(), [](char c) {
        return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F;
    });
    if (control) {
        return false;
    }
    m_request.headers.emplace_back(lowered(line.substr(0, colon)), value);
    return true;
}

HttpParser::Event HttpParser::frameBody()
{
    std::optional<std::size_t> length;
    bool chunked = false;
    int hosts = 0;
    for (const auto& [name, value] : m_request.headers) {
        if (name == "content-length") {
            const auto parsed = number(value, 10);
            // RFC 9112, 6.3: lengths that disagree or are no numbers must not be guessed at.
            if (!parsed || (length && *length != *parsed)) {
                return fail(400, "The request's Content-Length is not one number.");
            }
            length = parsed;
        } else if (name == "transfer-encoding") {
            if (chunked || lowered(value) != "chunked") {
                return fail(501, "Only the chunked transfer coding is understood here.");
            }
            chunked = true;
        } else if (name == "connection") {
            const std::string options = lowered(value);
            m_keepAlive = options.find("close") == std::string::npos &&
                          (m_keepAlive || options.find("keep-alive") != std::string::npos);
        } else if (name == "expect") {
            if (lowered(value) != "100-continue") {
                return fail(417, "Only the expectation 100-continue is understood here.");
            }
            m_expectsContinue = true;
        } else if (name == "host") {
            ++hosts;
        }
    }
    if (chunked && length) {
        return fail(400, "A request has either a Content-Length or a Transfer-Encoding, not both.");
    }
    // RFC 9112, 3.2.
    if (hosts != 1) {
        return fail(400, "A request names its host exactly once.");
    }
    m_remaining = length.value_or(0);
    m_state = chunked ? State::ChunkSize : State::Body;
    m_expectsContinue = m_expectsContinue && (chunked || m_remaining > 0);
    return Event::HeadReady;
}

void HttpParser::takeBodyBytes()
{
    const std::string_view bytes = available().substr(0, m_remaining);
    m_request.body.append(bytes);
    m_offset += bytes.size();
    m_remaining -= bytes.size();
}

bool HttpParser::takeLine(std::string_view& line)
{
    const std::size_t end = available().find("\r\n");
    if (end == std::string_view::npos) {
        return false;
    }
    line = available().substr(0, end);
    m_offset += end + 2;
    return true;
}

HttpParser::Event HttpParser::readBody()
{
    if (m_remaining > m_bodyLimit - m_request.body.size()) {
        return fail(413, tooLarge);
    }
    takeBodyBytes();
    if (m_remaining > 0) {
        return Event::NeedMore;
    }
    m_state = State::Complete;
    return Event::Complete;
}

std::optional<HttpParser::Event> HttpParser::readChunkSize()
{
    std::string_view line;
    if (!takeLine(line)) {
        return available().size() > 1024 ? fail(400, "A chunk's size line is too long.") : Event::NeedMore;
    }
    const auto size = number(trimmed(line.substr(0, line.find(';'))), 16);
    if (!size) {
        return fail(400, "A chunk's size is not a hexadecimal number.");
    }
    if (*size > m_bodyLimit - m_request.body.size()) {
        return fail(413, tooLarge);
    }
    m_remaining = *size;
    m_state = *size == 0 ? State::Trailers : State::ChunkData;
    return std::nullopt;
}

std::optional<HttpParser::Event> HttpParser::readChunkData()
{
    takeBodyBytes();
    if (m_remaining > 0 || available().size() < 2) {
        return Event::NeedMore;
    }
    if (available().substr(0, 2) != "\r\n") {
        return fail(400, "A chunk does not end where its size says.");
    }
    m_offset += 2;
    m_state = State::ChunkSize;
    return std::nullopt;
}

HttpParser::Event HttpParser::readTrailers()
{
    std::string_view line;
    while (takeLine(line)) {
        if (line.empty()) {
            m_state = State::Complete;
            return Event::Complete;
        }
        m_trailerBytes += line.size();
        if (m_trailerBytes > headLimit) {
            break;
        }
    }
    return available().size() + m_trailerBytes > headLimit ? fail(431, "The request's trailer is longer than 64 KiB.")
                                                           : Event::NeedMore;
}

} // namespace quillmate::localservice
