#pragma once

#include <QDateTime>
#include <string_view>

namespace quillmate
{

/// A date as mail writes it (RFC 5322, 3.3, and what is common beside it), with the offset it was written with; invalid
/// when it cannot be read.
QDateTime parseDate(std::string_view value);

} // namespace quillmate
