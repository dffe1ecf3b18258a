#include "server/UpdateOffer.h"

#include <QRegularExpression>
#include <QString>
#include <QStringList>
#include <QVersionNumber>

#include <nlohmann/json.hpp>

namespace quillmate::server
{

namespace
{

constexpr std::size_t longestVersion = 64;

/// The parts of a version that count: 1.2.0 and "rc.1" of "v1.2.0-rc.1+5".
struct Version {
    QVersionNumber core;
    QString preRelease;
};

Version readVersion(std::string_view text)
{
    QString version = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).section(u'+', 0, 0);
    if (version.startsWith(u'v', Qt::CaseInsensitive)) {
        version.remove(0, 1);
    }
    qsizetype end = 0;
    const QVersionNumber core = QVersionNumber::fromString(version, &end).normalized();
    return {core, end > 0 && end < version.size() && version[end] == u'-' ? version.mid(end + 1) : QString()};
}

/// Numbers come before words, and fewer parts before more; a release has none and comes last.
int comparePreReleases(const QString& left, const QString& right)
{
    if (left.isEmpty() || right.isEmpty()) {
        return static_cast<int>(left.isEmpty()) - static_cast<int>(right.isEmpty());
    }
    const QStringList leftParts = left.split(u'.');
    const QStringList rightParts = right.split(u'.');
    for (qsizetype index = 0; index < qMin(leftParts.size(), rightParts.size()); ++index) {
        bool leftIsNumber = false;
        bool rightIsNumber = false;
        const uint leftNumber = leftParts[index].toUInt(&leftIsNumber);
        const uint rightNumber = rightParts[index].toUInt(&rightIsNumber);
        if (leftIsNumber != rightIsNumber) {
            return leftIsNumber ? -1 : 1;
        }
        if (leftIsNumber && leftNumber != rightNumber) {
            return leftNumber < rightNumber ? -1 : 1;
        }
        if (const int order = leftIsNumber ? 0 : leftParts[index].compare(rightParts[index]); order != 0) {
            return order;
        }
    }
    return static_cast<int>(leftParts.size() - rightParts.size());
}

} // namespace

bool isNewerVersion(std::string_view candidate, std::string_view current)
{
    const Version left = readVersion(candidate);
    const Version right = readVersion(current);
    const int order = QVersionNumber::compare(left.core, right.core);
    return order > 0 || (order == 0 && comparePreReleases(left.preRelease, right.preRelease) > 0);
}

bool isVersion(std::string_view text)
{
    static const QRegularExpression shape(QRegularExpression::anchoredPattern(QStringLiteral(
        R"(\d{1,9}(\.\d{1,9})*(-[0-9A-Za-z-]+(\.[0-9A-Za-z-]+)*)?(\+[0-9A-Za-z-]+(\.[0-9A-Za-z-]+)*)?)")));
    return text.size() <= longestVersion &&
           shape.match(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()))).hasMatch();
}

std::string updateReply(const UpdateOffer& offer, std::string_view currentVersion)
{
    nlohmann::ordered_json reply = {{"current_version", nullptr}, {"download_url", nullptr}};
    if (!offer.version.empty() && !offer.url.empty() && isNewerVersion(offer.version, currentVersion)) {
        reply["current_version"] = offer.version;
        reply["download_url"] = offer.url;
    }
    return reply.dump();
}

} // namespace quillmate::server
