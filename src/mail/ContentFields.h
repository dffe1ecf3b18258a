#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillmate
{

/// What the header of a message or a part says of its content (RFC 2045, 2183).
struct ContentFields {
    std::string type = "text";     ///< lower case
    std::string subtype = "plain"; ///< lower case
    std::string boundary;
    std::string charset;
    std::string encoding;
    bool isFlowed = false;
    bool deletesBlank = false;
    bool isAttachment = false;
    bool saysType = false; ///< else the type is what it is without a word (RFC 2045, 5.2)

    [[nodiscard]] bool isMessage() const { return type == "message" && (subtype == "rfc822" || subtype == "global"); }
};

/// Reads at most `limit` bytes of the header block; of a field that says more than 4 KiB the beginning.
ContentFields contentFieldsOf(std::string_view header, std::size_t limit);

} // namespace quillmate
