#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillmate
{

/// The boundary (RFC 2046, 5.1.1) of a multipart body whose header is not known: the first line "--X" that part headers
/// follow, or that an empty line follows and "--X--" ends. Nothing when the body is no multipart.
std::optional<std::string> findBoundary(std::string_view body);

/// The name of the transfer encoding (RFC 2045, 6) that a body without parts looks like, empty for none. The first 64
/// KiB decide.
std::string guessTransferEncoding(std::string_view body);

} // namespace quillmate
