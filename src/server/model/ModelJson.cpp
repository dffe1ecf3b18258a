#include "server/model/ModelJson.h"

#include <QChar>

namespace quillmate::server
{

namespace
{

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

JSONValue readModelJson(const QByteArray& body)
{
    const QByteArray text = withoutLoneSurrogates(body);
    auto read = JSONSerialization::jsonObject({text.data(), static_cast<std::size_t>(text.size())},
                                              JSONSerialization::Fragments::Refused);
    return read ? std::move(read).value() : JSONValue();
}

const JSONValue& memberOf(const JSONValue& object, std::string_view key)
{
    static const JSONValue none;
    const JSONValue* member = object.member(key);
    return member != nullptr ? *member : none;
}

double numberAt(const JSONValue& object, std::string_view key)
{
    const JSONNumber* number = memberOf(object, key).number();
    return number != nullptr ? QByteArray::fromStdString(number->text).toDouble() : 0;
}

QByteArray bytesOf(const JSONValue& json)
{
    return QByteArray::fromStdString(JSONEncoder::encode(json).value());
}

} // namespace quillmate::server
