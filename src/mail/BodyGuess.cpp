#include "mail/BodyGuess.h"

#include "base/AsciiText.h"

#include <QByteArray>
#include <QStringDecoder>

#include <algorithm>
#include <array>

namespace quillmate
{

namespace
{

constexpr std::size_t lookedAt = std::size_t(64) * 1024;
constexpr std::size_t boundaryLimit = 70;    // RFC 2046, 5.1.1
constexpr std::size_t encodedLineLimit = 76; // RFC 2045, 6.7 and 6.8
constexpr qsizetype shortestBase64 = 16;
// Each costs a search for its end.
constexpr int headerlessCandidates = 16;

/// The first line of `rest` without the blanks at its end, which say nothing in what is encoded.
std::string_view takeTrimmedLine(std::string_view& rest)
{
    const std::string_view line = takeLine(rest);
    return line.substr(0, line.find_last_not_of(" \t\r") + 1);
}

/// Whether a header field of a MIME part (RFC 2045, 2183, 2557, 3282, 1864) stands here; any other "Content-…:" is
/// somebody's text.
bool isContentHeader(std::string_view line)
{
    static constexpr std::array<std::string_view, 10> known = {
        "content-type",     "content-transfer-encoding", "content-disposition", "content-id",   "content-description",
        "content-location", "content-language",          "content-md5",         "content-base", "content-class"};
    const std::string name = lowerCase(line.substr(0, line.find(':')));
    if (name.size() == line.size()) {
        return false;
    }
    return std::find(known.begin(), known.end(), name) != known.end();
}

bool isHex(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

bool isText(const QByteArray& bytes)
{
    const auto controls = std::count_if(bytes.begin(), bytes.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\r' && c != '\t' && c != '\x1B';
    });
    if (controls > 0 || bytes.isEmpty()) {
        return false;
    }
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder(bytes);
    // A text in another charset still has mostly letters below 128; random bytes have as many above as below.
    const auto high =
        std::count_if(bytes.begin(), bytes.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
    return !decoder.hasError() || high * 3 < bytes.size();
}

/// Whether the digits of base64 are but the letters of a word, capital at most at its beginning.
bool isWord(const QByteArray& digits)
{
    return std::all_of(digits.begin() + (digits.isEmpty() ? 0 : 1), digits.end(),
                       [](char c) { return c >= 'a' && c <= 'z'; });
}

bool looksLikeBase64(std::string_view body)
{
    std::string_view rest = body.substr(0, lookedAt);
    const bool whole = rest.size() == body.size();
    rest = whole ? rest : rest.substr(0, rest.rfind('\n') + 1);
    QByteArray joined;
    std::size_t lineLength = 0;
    bool ended = false;
    while (!rest.empty()) {
        const std::string_view line = takeTrimmedLine(rest);
        if (line.empty()) {
            continue;
        }
        if (joined.endsWith('=')) {
            break; // What a list puts below is not encoded.
        }
        if (ended || (lineLength != 0 && line.size() > lineLength)) {
            return false;
        }
        ended = lineLength != 0 && line.size() < lineLength;
        lineLength = line.size();
        joined.append(line.data(), static_cast<qsizetype>(line.size()));
    }
    if (!whole) {
        joined.truncate(joined.size() / 4 * 4);
    }
    if (isWord(joined)) {
        return false;
    }
    const auto decoded = QByteArray::fromBase64Encoding(joined, QByteArray::AbortOnBase64DecodingErrors);
    return joined.size() >= shortestBase64 && joined.size() % 4 == 0 && decoded && isText(*decoded);
}

/// Whether the escape at that place of a line is none by chance, as "id=2048" has one: it stands for a letter beyond
/// ASCII, for the sign "=" itself or for a blank at the line's end, in capital digits (RFC 2045, 6.7) or beside another
/// escape, and not in an address.
bool isConvincing(std::string_view line, std::size_t index)
{
    const std::string_view digits = line.substr(index + 1, 2);
    const std::size_t wordStart = line.find_last_of(" \t<\"", index) + 1; // 0 for none
    const bool inAddress = line.substr(wordStart, index - wordStart).find("://") != std::string_view::npos;
    const bool isCapital = std::none_of(digits.begin(), digits.end(), [](char c) { return c >= 'a' && c <= 'f'; });
    const std::string_view next = line.substr(index + 3, 3);
    const bool isOneOfSome = next.size() == 3 && next[0] == '=' && isHex(next[1]) && isHex(next[2]);
    const bool isHigh = isHex(digits.front()) && digits.front() >= '8';
    const bool isBlank = (digits == "20" || digits == "09") && index + 3 >= line.size();
    return digits == "3D" || (!inAddress && (isBlank || (isHigh && (isCapital || isOneOfSome))));
}

bool looksLikeQuotedPrintable(std::string_view body)
{
    // Lines are filled before they are broken; a short one that ends in "=" is somebody's sum.
    constexpr std::size_t leastFilled = 40;
    bool isConvinced = false;
    std::size_t softBreaks = 0;
    std::size_t escapes = 0;
    std::size_t others = 0;
    std::string_view rest = body.substr(0, lookedAt);
    while (!rest.empty()) {
        const std::string_view line = takeTrimmedLine(rest);
        if (line.size() > encodedLineLimit && !rest.empty()) {
            return false;
        }
        for (std::size_t index = line.find('='); index != std::string_view::npos; index = line.find('=', index + 1)) {
            if (index + 1 == line.size()) {
                ++softBreaks;
                isConvinced = isConvinced || line.size() >= leastFilled;
            } else if (index + 2 < line.size() && isHex(line[index + 1]) && isHex(line[index + 2])) {
                ++escapes;
                isConvinced = isConvinced || isConvincing(line, index);
            } else {
                ++others;
            }
        }
    }
    return isConvinced && others * 10 <= softBreaks + escapes;
}

/// Whether the multipart's last boundary is there, near its beginning or at its end.
bool ends(std::string_view body, std::string_view boundary)
{
    constexpr std::size_t nearBytes = std::size_t(1024) * 1024;
    const std::string last = "\n--" + std::string(boundary) + "--";
    const std::string_view tail = body.substr(body.size() - std::min(body.size(), lookedAt));
    return tail.find(last) != std::string_view::npos || body.substr(0, nearBytes).find(last) != std::string_view::npos;
}

} // namespace

std::optional<std::string> findBoundary(std::string_view body)
{
    std::string_view rest = body.substr(0, lookedAt);
    int candidates = 0;
    while (!rest.empty()) {
        const std::string_view line = takeTrimmedLine(rest);
        if (line.size() < 3 || line.size() > boundaryLimit + 2 || line.substr(0, 2) != "--") {
            continue;
        }
        const std::string_view boundary = line.substr(2);
        std::string_view following = rest;
        const std::string_view next = takeTrimmedLine(following);
        if (isContentHeader(next)) {
            return std::string(boundary);
        }
        // A part may have no header; then its end must be there, and the boundary must not be a mere rule of dashes.
        const bool named = std::any_of(boundary.begin(), boundary.end(), [](char c) { return c != '-' && c != ' '; });
        if (next.empty() && named && candidates++ < headerlessCandidates && ends(body, boundary)) {
            return std::string(boundary);
        }
    }
    return std::nullopt;
}

std::string guessTransferEncoding(std::string_view body)
{
    if (looksLikeBase64(body)) {
        return "base64";
    }
    return looksLikeQuotedPrintable(body) ? "quoted-printable" : "";
}

} // namespace quillmate
