#pragma once

#include "server/engine/PersonName.h"

#include <QString>

#include <optional>

namespace quillmate::server
{

/// The name with which the sender of a message signed it: below (or beside) the last closing formula, else alone at the
/// end, else in the signature (RFC 3676, 4.3). What is quoted does not count. Nothing where no line is a name for sure
/// enough: a wrong name is worse than none.
std::optional<PersonName> senderName(const QString& text);

} // namespace quillmate::server
