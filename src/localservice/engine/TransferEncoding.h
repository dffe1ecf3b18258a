#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillmate::localservice
{

/// The boundary (RFC 2046, 5.1.1) of a multipart body whose header is not known: the first line "--X" that part headers
/// follow, or that an empty line follows and "--X--" ends. Nothing when the body is no multipart.
std::optional<std::string> findBoundary(std::string_view body);

enum class TransferEncoding { None, Base64, QuotedPrintable };

/// The transfer encoding (RFC 2045, 6) that a body without parts looks like. The first 64 KiB decide.
TransferEncoding guessTransferEncoding(std::string_view body);

} // namespace quillmate::localservice
