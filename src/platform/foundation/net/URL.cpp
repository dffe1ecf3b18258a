#include "platform/foundation/net/URL.h"

#include <algorithm>

namespace quillmate
{
namespace
{

std::string percentEncoded(std::string_view text)
{
    return QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size())).toPercentEncoding().toStdString();
}

/// What QUrl's strict mode lets pass, and RFC 3986 does not.
bool breaksTheRules(const std::string& text, const QUrl& url)
{
    const bool isASCII = std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < '\x7F'; });
    const QByteArray behindHost = url.toEncoded(QUrl::RemoveScheme | QUrl::RemoveAuthority);
    return !isASCII || behindHost.contains('[') || behindHost.contains(']') ||
           std::count(text.begin(), text.end(), '#') > 1;
}

} // namespace

std::optional<URL> URL::parse(std::string_view text)
{
    URL url(std::string(text),
            QUrl::fromEncoded(QByteArray(text.data(), static_cast<qsizetype>(text.size())), QUrl::StrictMode));
    if (!url.m_url.isValid() || breaksTheRules(url.m_text, url.m_url)) {
        return std::nullopt;
    }
    return url;
}

std::optional<URL> URL::parseAbsolute(std::string_view text)
{
    auto url = parse(text);
    return url && !url->m_url.isRelative() && !url->host().empty() ? url : std::nullopt;
}

std::string URL::scheme() const
{
    return m_url.scheme().toStdString();
}

std::string URL::host() const
{
    return m_url.host(QUrl::FullyEncoded).toStdString();
}

int URL::effectivePort() const
{
    return m_url.port(scheme() == "https" ? 443 : 80);
}

std::string URL::origin() const
{
    return scheme() + "://" + host() + ':' + std::to_string(effectivePort());
}

std::optional<URL> URL::resolving(std::string_view reference) const
{
    const auto parsed = parse(reference);
    return parsed ? parse(m_url.resolved(parsed->m_url).toEncoded().toStdString()) : std::nullopt;
}

URL URL::withQueryItem(std::string_view name, std::string_view value) const
{
    const auto fragment = std::min(m_text.find('#'), m_text.size());
    std::string text = m_text.substr(0, m_text.find_first_of("?#")) + '?' + percentEncoded(name) + '=' +
                       percentEncoded(value) + m_text.substr(fragment);
    QUrl url = QUrl::fromEncoded(QByteArray::fromStdString(text), QUrl::StrictMode);
    return {std::move(text), std::move(url)};
}

} // namespace quillmate
