#include "hosts/preview/mail/ContentRules.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <optional>

namespace quillmate
{
namespace
{

using Parsing = Result<ContentRules, std::string>;

/// What is wrong with one rule, empty when nothing is.
using Problem = std::string;

bool isListOfTexts(const QJsonValue& value)
{
    const QJsonArray list = value.toArray();
    return value.isArray() && std::all_of(list.begin(), list.end(), [](const auto& entry) { return entry.isString(); });
}

/// Whether a condition that lists what it is for lets this through; one that is left out lets everything through.
bool admits(const QJsonObject& trigger, QLatin1String key, QLatin1String what)
{
    return !trigger.contains(key) || trigger.value(key).toArray().contains(QJsonValue(what));
}

/// Whether the trigger can ever be met by an image of a message. A message comes from no site, so that every image is
/// a stranger's and no condition on the page's own address holds.
bool bearsOnImages(const QJsonObject& trigger)
{
    return admits(trigger, QLatin1String("resource-type"), QLatin1String("image")) &&
           admits(trigger, QLatin1String("load-type"), QLatin1String("third-party")) &&
           !trigger.contains(QLatin1String("if-domain")) && !trigger.contains(QLatin1String("if-top-url"));
}

Problem problemOf(const QJsonObject& trigger)
{
    if (trigger.value(QLatin1String("url-filter")).toString().isEmpty()) {
        return "its trigger has no \"url-filter\"";
    }
    for (const auto key : {QLatin1String("resource-type"), QLatin1String("load-type")}) {
        if (trigger.contains(key) && !isListOfTexts(trigger.value(key))) {
            return std::string("the \"").append(key.data()).append("\" of its trigger is no list of texts");
        }
    }
    const QJsonValue caseSensitive = trigger.value(QLatin1String("url-filter-is-case-sensitive"));
    return caseSensitive.isUndefined() || caseSensitive.isBool()
               ? Problem()
               : Problem("the \"url-filter-is-case-sensitive\" of its trigger is neither true nor false");
}

QRegularExpression filterOf(const QJsonObject& trigger)
{
    const bool caseSensitive = trigger.value(QLatin1String("url-filter-is-case-sensitive")).toBool();
    return QRegularExpression(trigger.value(QLatin1String("url-filter")).toString(),
                              caseSensitive ? QRegularExpression::NoPatternOption
                                            : QRegularExpression::CaseInsensitiveOption);
}

/// Whether an action blocks, or lifts what was blocked; absent for those that load the image all the same.
const QHash<QString, std::optional<bool>>& actions()
{
    static const QHash<QString, std::optional<bool>> known = {{"block", true},
                                                              {"ignore-previous-rules", false},
                                                              {"block-cookies", std::nullopt},
                                                              {"css-display-none", std::nullopt},
                                                              {"make-https", std::nullopt}};
    return known;
}

} // namespace

Parsing ContentRules::parse(std::string_view json)
{
    ContentRules rules;
    if (json.empty()) {
        return rules;
    }
    const auto document =
        QJsonDocument::fromJson(QByteArray::fromRawData(json.data(), static_cast<qsizetype>(json.size())));
    if (!document.isArray()) {
        return Parsing::failure("the content rules are no JSON array");
    }
    const QJsonArray list = document.array();
    for (qsizetype i = 0; i < list.size(); ++i) {
        const auto wrong = [i](const Problem& problem) {
            return Parsing::failure("rule " + std::to_string(i + 1) + " of the content rules is wrong: " + problem);
        };
        const QJsonObject trigger = list.at(i)[QLatin1String("trigger")].toObject();
        if (const Problem problem = problemOf(trigger); !problem.empty()) {
            return wrong(problem);
        }
        const QRegularExpression filter = filterOf(trigger);
        if (!filter.isValid()) {
            return wrong("its \"url-filter\" is no regular expression, " + filter.errorString().toStdString());
        }
        const QString action = list.at(i)[QLatin1String("action")][QLatin1String("type")].toString();
        if (!actions().contains(action)) {
            return wrong("the \"type\" of its action is unknown");
        }
        if (const auto block = actions().value(action); block && bearsOnImages(trigger)) {
            rules.m_rules.push_back({filter, *block});
        }
    }
    return rules;
}

bool ContentRules::blocksImage(const QString& address) const
{
    const auto last = std::find_if(m_rules.rbegin(), m_rules.rend(),
                                   [&address](const Rule& rule) { return rule.filter.match(address).hasMatch(); });
    return last != m_rules.rend() && last->blocks;
}

} // namespace quillmate
