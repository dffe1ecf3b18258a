#include "platform/foundation/URL.h"

#include <QUrl>

#include <algorithm>
#include <charconv>

#include <arpa/inet.h>

namespace quillmate
{
namespace
{

// The rules of the character classes are those of RFC 3986, appendix A. Not isalpha: that one asks the locale.
constexpr bool isAlpha(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
constexpr bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}
constexpr bool isHex(char c)
{
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
constexpr bool isUnreserved(char c)
{
    return isAlpha(c) || isDigit(c) || c == '-' || c == '.' || c == '_' || c == '~';
}
constexpr bool isSubDelimiter(char c)
{
    return std::string_view("!$&'()*+,;=").find(c) != std::string_view::npos;
}

/// Only unreserved characters, sub-delimiters, percent triplets and the given extra ones.
bool consistsOf(std::string_view text, std::string_view extra)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '%') {
            if (i + 2 >= text.size() || !isHex(text[i + 1]) || !isHex(text[i + 2])) {
                return false;
            }
            i += 2;
        } else if (!isUnreserved(c) && !isSubDelimiter(c) && extra.find(c) == std::string_view::npos) {
            return false;
        }
    }
    return true;
}

bool isScheme(std::string_view text)
{
    return !text.empty() && isAlpha(text.front()) && std::all_of(text.begin(), text.end(), [](char c) {
        return isAlpha(c) || isDigit(c) || c == '+' || c == '-' || c == '.';
    });
}

bool isHost(std::string_view text)
{
    if (text.empty() || text.front() != '[') {
        return consistsOf(text, "");
    }
    if (text.size() < 3 || text.back() != ']') {
        return false;
    }
    const std::string literal(text.substr(1, text.size() - 2));
    if (literal.front() == 'v' || literal.front() == 'V') {
        const auto dot = literal.find('.');
        return dot != std::string::npos && dot > 1 &&
               std::all_of(literal.begin() + 1, literal.begin() + static_cast<std::ptrdiff_t>(dot), isHex) &&
               dot + 1 < literal.size() && literal.find('%') == std::string::npos &&
               consistsOf(std::string_view(literal).substr(dot + 1), ":");
    }
    in6_addr address{};
    return ::inet_pton(AF_INET6, literal.c_str(), &address) == 1;
}

std::string lowered(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return result;
}

std::string percentEncoded(std::string_view text)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : text) {
        if (isUnreserved(c)) {
            encoded += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            encoded += {'%', digits[byte >> 4U], digits[byte & 0x0FU]};
        }
    }
    return encoded;
}

} // namespace

void URL::split()
{
    const std::string_view text = m_text;
    const auto span = [](std::size_t begin, std::size_t end) { return Span{begin, end - begin, true}; };
    std::size_t end = text.size();
    if (const auto hash = text.find('#'); hash != std::string_view::npos) {
        m_fragment = span(hash + 1, end);
        end = hash;
    }
    if (const auto mark = text.substr(0, end).find('?'); mark != std::string_view::npos) {
        m_query = span(mark + 1, end);
        end = mark;
    }
    std::size_t begin = 0;
    const auto colon = text.substr(0, end).find_first_of(":/");
    if (colon != std::string_view::npos && text[colon] == ':') {
        m_scheme = span(0, colon);
        begin = colon + 1;
    }
    if (text.substr(begin, end - begin).starts_with("//")) {
        begin += 2;
        const auto slash = text.substr(0, end).find('/', begin);
        const std::size_t authorityEnd = slash == std::string_view::npos ? end : slash;
        if (const auto at = text.substr(0, authorityEnd).find('@', begin); at != std::string_view::npos) {
            m_userInformation = span(begin, at);
            begin = at + 1;
        }
        std::size_t hostEnd = authorityEnd;
        const auto port = text.substr(0, authorityEnd).rfind(':');
        const auto bracket = text.substr(0, authorityEnd).rfind(']');
        if (port != std::string_view::npos && port >= begin && (bracket == std::string_view::npos || port > bracket)) {
            m_port = span(port + 1, authorityEnd);
            hostEnd = port;
        }
        m_host = span(begin, hostEnd);
        begin = authorityEnd;
    }
    m_path = span(begin, end);
}

bool URL::valid() const
{
    if (m_scheme.present && !isScheme(view(m_scheme))) {
        return false;
    }
    const std::string_view digits = view(m_port);
    int number = 0;
    const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    const bool portFits = digits.empty() || (std::all_of(digits.begin(), digits.end(), isDigit) &&
                                             parsed.ec == std::errc() && number <= 65535);
    return portFits && consistsOf(view(m_userInformation), ":") && isHost(view(m_host)) &&
           consistsOf(view(m_path), ":@/") && consistsOf(view(m_query), ":@/?") && consistsOf(view(m_fragment), ":@/?");
}

std::optional<URL> URL::parse(std::string_view text)
{
    if (text.empty()) {
        return std::nullopt;
    }
    URL url;
    url.m_text = text;
    url.split();
    return url.valid() ? std::optional(std::move(url)) : std::nullopt;
}

std::optional<URL> URL::parseAbsolute(std::string_view text)
{
    auto url = parse(text);
    return url && url->m_scheme.present && url->m_host.length > 0 ? url : std::nullopt;
}

std::string URL::scheme() const
{
    return lowered(view(m_scheme));
}

std::string URL::host() const
{
    std::string host = lowered(view(m_host));
    return host.starts_with('[') ? host.substr(1, host.size() - 2) : host;
}

std::optional<int> URL::port() const
{
    const std::string_view digits = view(m_port);
    int number = 0;
    const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return parsed.ec == std::errc() ? std::optional(number) : std::nullopt;
}

std::optional<URL> URL::resolving(std::string_view reference) const
{
    const auto parsed = parse(reference);
    if (!parsed) {
        return std::nullopt;
    }
    const QUrl resolved = QUrl::fromEncoded(QByteArray::fromStdString(m_text))
                              .resolved(QUrl::fromEncoded(QByteArray::fromStdString(parsed->m_text)));
    return parse(resolved.toEncoded().toStdString());
}

URL URL::withQueryItem(std::string_view name, std::string_view value) const
{
    std::string text = m_text.substr(0, m_path.begin + m_path.length);
    text += "?" + percentEncoded(name) + "=" + percentEncoded(value);
    if (m_fragment.present) {
        text += "#" + std::string(view(m_fragment));
    }
    URL url;
    url.m_text = std::move(text);
    url.split();
    return url;
}

} // namespace quillmate
