#include "hosts/preview/mail/RemoteImages.h"

#include "hosts/preview/mail/HtmlTag.h"
#include "hosts/preview/mail/HtmlText.h"

#include <QSet>
#include <QUrl>
#include <algorithm>
#include <array>

namespace quillmate
{
namespace
{

constexpr qsizetype longestAddress = 2048;
// Enough for an address of that length in which every character is a reference.
constexpr std::size_t longestValue = std::size_t{16} * 1024;
constexpr std::size_t longestReference = 10;

QString resolved(std::string_view value)
{
    std::string text;
    value = value.substr(0, longestValue);
    while (!value.empty()) {
        const std::size_t plain = std::min(value.find('&'), value.size());
        text.append(value.substr(0, plain));
        value.remove_prefix(plain);
        if (value.empty()) {
            break;
        }
        const std::size_t end = value.substr(0, longestReference).find(';');
        const std::string character =
            end == std::string_view::npos ? std::string() : characterReference(value.substr(1, end - 1));
        text.append(character.empty() ? "&" : character);
        value.remove_prefix(character.empty() ? 1 : end + 1);
    }
    return QString::fromStdString(text);
}

/// The absolute form of what an attribute says, as the rules expect it: host and scheme in lower case, without
/// fragment. Empty when it leads nowhere, or not out of the message.
QString remoteAddress(QString address)
{
    // Browsers take line ends out of addresses, which long ones need in mail.
    address.remove(u'\t').remove(u'\n').remove(u'\r');
    address = address.trimmed().left(longestAddress);
    if (address.startsWith(u"//")) {
        address.prepend(u"https:");
    }
    if (!address.startsWith(u"http://", Qt::CaseInsensitive) && !address.startsWith(u"https://", Qt::CaseInsensitive)) {
        return {};
    }
    QUrl url(address);
    if (!url.isValid() || url.host().isEmpty()) {
        return {};
    }
    url.setFragment(QString());
    if (url.path().isEmpty()) {
        url.setPath(QStringLiteral("/"));
    }
    return QString::fromLatin1(url.toEncoded());
}

/// The first candidate of a list "address width, address density, …".
QString firstCandidate(std::string_view sourceSet)
{
    const QString text = resolved(sourceSet).trimmed();
    return text.left(text.indexOf(u' ')).split(u',').constFirst();
}

/// Collects different addresses up to a limit.
class AddressCollector
{
public:
    explicit AddressCollector(std::size_t limit)
        : m_limit(static_cast<qsizetype>(limit))
    {
    }

    [[nodiscard]] bool isFull() const { return m_addresses.size() >= m_limit; }
    QStringList take() { return std::move(m_addresses); }

    void add(const QString& reference)
    {
        const QString address = remoteAddress(reference);
        if (!isFull() && !address.isEmpty() && !m_seen.contains(address)) {
            m_seen.insert(address);
            m_addresses.append(address);
        }
    }

    /// Every url(…) of a style.
    void addStyle(std::string_view style)
    {
        const QString text = resolved(style);
        const QLatin1String mark("url(");
        for (qsizetype at = text.indexOf(mark, 0, Qt::CaseInsensitive); at >= 0 && !isFull();
             at = text.indexOf(mark, at, Qt::CaseInsensitive)) {
            at += mark.size();
            const qsizetype bracket = text.indexOf(u')', at);
            const qsizetype end = bracket < 0 ? text.size() : bracket; // The style's end closes it as well.
            QString reference = text.mid(at, end - at).trimmed();
            const bool quoted = reference.size() > 1 && (reference.front() == u'"' || reference.front() == u'\'');
            add(quoted ? reference.mid(1, reference.size() - 2) : reference);
            at = end;
        }
    }

private:
    qsizetype m_limit;
    QStringList m_addresses;
    QSet<QString> m_seen;
};

std::string number(std::size_t count, bool atLeast)
{
    return (atLeast ? "at least " : "") + std::to_string(count);
}

} // namespace

QStringList remoteImageAddresses(std::string_view html, std::size_t limit)
{
    constexpr std::array<std::string_view, 3> imageTags = {"img", "image", "input"};
    AddressCollector collector(limit);
    HtmlTagReader reader(html);
    HtmlTag tag;
    while (!collector.isFull() && reader.next(tag)) {
        if (std::find(imageTags.begin(), imageTags.end(), tag.name) != imageTags.end()) {
            const std::string_view source = tag.value("src");
            collector.add(source.empty() ? firstCandidate(tag.value("srcset")) : resolved(source));
        }
        collector.add(resolved(tag.value("background")));
        collector.addStyle(tag.value("style"));
    }
    return collector.take();
}

RemoteImages countRemoteImages(std::string_view html, const ContentRules& rules)
{
    QStringList addresses = remoteImageAddresses(html, maximumRemoteImages + 1);
    RemoteImages images;
    images.more = static_cast<std::size_t>(addresses.size()) > maximumRemoteImages;
    if (images.more) {
        addresses.removeLast();
    }
    images.count = static_cast<std::size_t>(addresses.size());
    images.trackers = static_cast<std::size_t>(std::count_if(
        addresses.begin(), addresses.end(), [&rules](const QString& address) { return rules.blocksImage(address); }));
    return images;
}

std::string remoteImagesNotice(const RemoteImages& images)
{
    if (images.count == 0) {
        return {};
    }
    const bool one = images.count == 1 && !images.more;
    std::string notice = (images.more ? "More than " : "") + std::to_string(images.count) +
                         (one ? " remote image was not loaded" : " remote images were not loaded");
    if (images.trackers > 0 && one) {
        notice += "; it is a known tracker";
    } else if (images.trackers == images.count && !images.more) {
        notice += "; all of them are known trackers";
    } else if (images.trackers > 0) {
        notice += "; " + number(images.trackers, images.more) +
                  (images.trackers == 1 ? " of them is a known tracker" : " of them are known trackers");
    }
    return notice + ".";
}

} // namespace quillmate
