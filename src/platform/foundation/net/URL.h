#pragma once

#include <QUrl>

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace quillmate
{

/// A URI reference as RFC 3986 writes it, strictly: a blank, a raw quotation mark, a bare percent sign or a character
/// outside ASCII make a text no URL. The text is kept as it was given.
class URL
{
public:
    /// Absent when the text is no URI reference. The empty text is none.
    [[nodiscard]] static std::optional<URL> parse(std::string_view text);
    /// As `parse`, and the text must have a scheme and a host, so that something can be sent there.
    [[nodiscard]] static std::optional<URL> parseAbsolute(std::string_view text);

    [[nodiscard]] const std::string& absoluteString() const { return m_text; }
    /// In lower case, empty when the reference is relative.
    [[nodiscard]] std::string scheme() const;
    /// In lower case, without the brackets of an IP literal; empty when there is none.
    [[nodiscard]] std::string host() const;
    /// The usual one of http or https when none is named.
    [[nodiscard]] int effectivePort() const;
    /// Scheme, host and port (RFC 6454, section 4), each written out.
    [[nodiscard]] std::string origin() const;
    /// The reference resolved against this URL (RFC 3986, section 5.2).
    [[nodiscard]] std::optional<URL> resolving(std::string_view reference) const;

    /// The text with its query replaced by one item, name and value percent-encoded so that only unreserved characters
    /// (RFC 3986, section 2.3) stand for themselves. A fragment stays.
    [[nodiscard]] URL withQueryItem(std::string_view name, std::string_view value) const;

    bool operator==(const URL&) const = default;

private:
    URL(std::string text, QUrl url)
        : m_text(std::move(text))
        , m_url(std::move(url))
    {
    }

    std::string m_text;
    QUrl m_url;
};

} // namespace quillmate
