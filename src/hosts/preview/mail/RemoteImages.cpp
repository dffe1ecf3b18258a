#include "hosts/preview/mail/RemoteImages.h"

#include "mail/CharacterReference.h"
#include "mail/HtmlMarkup.h"

#include <QRegularExpression>
#include <QSet>
#include <QStringList>
#include <QUrl>

namespace quillmate
{
namespace
{

constexpr qsizetype longestAddress = 2048;
// Enough for an address of that length in which every character is a reference.
constexpr std::size_t longestValue = std::size_t{16} * 1024;

QString resolved(std::string_view value)
{
    return QString::fromStdString(withReferencesResolved(value.substr(0, longestValue)));
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

/// The images that a start tag loads: its source, its background and those of its style.
QStringList referencesOf(const HtmlToken& tag)
{
    static const QRegularExpression styleImage(QStringLiteral("url\\(\\s*[\"']?([^)\"']*)"),
                                               QRegularExpression::CaseInsensitiveOption);
    QStringList references;
    if (tag.name == "img" || tag.name == "image" || tag.name == "input") {
        const std::string_view source = tag.value("src");
        references << (source.empty() ? firstCandidate(tag.value("srcset")) : resolved(source));
    }
    references << resolved(tag.value("background"));
    const QString style = resolved(tag.value("style"));
    for (auto found = styleImage.globalMatch(style); found.hasNext();) {
        references << found.next().captured(1);
    }
    return references;
}

std::string number(std::size_t count, bool atLeast)
{
    return (atLeast ? "at least " : "") + std::to_string(count);
}

} // namespace

RemoteImages countRemoteImages(std::string_view html, const ContentRules& rules)
{
    RemoteImages images;
    QSet<QString> seen;
    HtmlMarkup markup(html);
    HtmlToken token;
    while (!images.more && markup.next(token)) {
        const bool isStart = token.kind == HtmlToken::Kind::StartTag;
        for (const QString& reference : isStart ? referencesOf(token) : QStringList()) {
            const QString address = remoteAddress(reference);
            if (images.more || address.isEmpty() || seen.contains(address)) {
                continue;
            }
            images.more = images.count == maximumRemoteImages;
            images.count += images.more ? 0 : 1;
            images.trackers += !images.more && rules.blocksImage(address) ? 1 : 0;
            seen.insert(address);
        }
    }
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
