#pragma once

#include "base/JSON.h"

#include <QByteArray>

namespace quillmate::server
{

/// A language model's server's JSON, null where it is none. A surrogate that stands alone among the escapes, as where a
/// server cut an emoji in two, becomes U+FFFD.
JSONValue readModelJson(const QByteArray& body);

/// The member of an object, or null. Refers into the object.
const JSONValue& memberOf(const JSONValue& object, std::string_view key);

/// The number under a key, 0 where there is none.
double numberAt(const JSONValue& object, std::string_view key);

/// As it is sent.
QByteArray bytesOf(const JSONValue& json);

} // namespace quillmate::server
