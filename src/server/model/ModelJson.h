#pragma once

#include <nlohmann/json_fwd.hpp>

#include <QByteArray>

namespace quillmate::server
{

using ModelJson = nlohmann::ordered_json;

/// A language model's server's JSON, null where it is none or nested more than 64 levels deep: what walks or copies a
/// value takes stack for each. A surrogate that stands alone among the escapes, as where a server cut an emoji in two,
/// becomes U+FFFD.
ModelJson readModelJson(const QByteArray& body);

/// The member of an object, or null. Refers into the object.
const ModelJson& memberOf(const ModelJson& object, const char* key);

/// As it is sent, without blanks; bytes that are no UTF-8 become U+FFFD.
QByteArray bytesOf(const ModelJson& json);

} // namespace quillmate::server
