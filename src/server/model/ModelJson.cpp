#include "server/model/ModelJson.h"

#include <nlohmann/json.hpp>

#include <QChar>

namespace quillmate::server
{

namespace
{

constexpr int deepest = 64;
constexpr qsizetype escapeLength = 6; // \uXXXX

/// The code unit of an escape that begins there, or 0.
uint escapedUnit(const QByteArray& json, qsizetype at)
{
    if (json.mid(at, 2) != "\\u") {
        return 0;
    }
    bool isNumber = false;
    const uint unit = json.mid(at + 2, 4).toUInt(&isNumber, 16);
    return isNumber ? unit : 0;
}

QByteArray withoutLoneSurrogates(QByteArray json)
{
    for (qsizetype at = json.indexOf('\\'); at >= 0; at = json.indexOf('\\', at)) {
        const uint unit = escapedUnit(json, at);
        if (unit == 0) {
            at += 2; // An escape of one character, a backslash too.
        } else if (QChar::isHighSurrogate(unit) && QChar::isLowSurrogate(escapedUnit(json, at + escapeLength))) {
            at += 2 * escapeLength;
        } else {
            if (QChar::isSurrogate(unit)) {
                json.replace(at, escapeLength, "\\ufffd");
            }
            at += escapeLength;
        }
    }
    return json;
}

} // namespace

ModelJson readModelJson(const QByteArray& body)
{
    bool tooDeep = false;
    const auto keep = [&tooDeep](int depth, ModelJson::parse_event_t, const ModelJson&) {
        tooDeep = tooDeep || depth > deepest;
        return !tooDeep;
    };
    const QByteArray text = withoutLoneSurrogates(body);
    ModelJson json = ModelJson::parse(text.begin(), text.end(), keep, false);
    return tooDeep || json.is_discarded() ? ModelJson() : json;
}

const ModelJson& memberOf(const ModelJson& object, const char* key)
{
    static const ModelJson none;
    if (!object.is_object()) {
        return none;
    }
    const auto found = object.find(key);
    return found != object.end() ? *found : none;
}

QByteArray bytesOf(const ModelJson& json)
{
    return QByteArray::fromStdString(json.dump(-1, ' ', false, ModelJson::error_handler_t::replace));
}

} // namespace quillmate::server
