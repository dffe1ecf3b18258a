#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quillmate
{

/// A part of a message that holds text, its encodings not undone.
struct TextPart {
    enum class Kind { Plain, Html, Other };

    Kind kind = Kind::Plain;
    std::string_view content;  ///< the source's bytes
    std::string encoding;      ///< Content-Transfer-Encoding (RFC 2045, 6), empty when none is said
    std::string charset;       ///< empty when none is said
    bool isFlowed = false;     ///< RFC 3676
    bool deletesBlank = false; ///< RFC 3676, DelSp
    int alternative = 0;       ///< parts of one number say the same in other ways (RFC 2046, 5.1.4); 0: said once
    bool isForwarded = false;  ///< it belongs to a message within the message
};

/// Finds the text parts of messages; attachments are passed over. Bounded whatever the message is: at most 1,000 parts,
/// nested at most 32 deep, of each part's header the first 16 KiB; what is beyond is no part of its own any more. One
/// pass, linear in the size; memory for the parts found. `source` and `body` outlive them.
std::vector<TextPart> textPartsOf(std::string_view source);

/// The same for what stands after the header block where that is not known: its boundary and encoding are guessed.
std::vector<TextPart> textPartsOfBody(std::string_view body);

/// The part's bytes with its transfer encoding undone, at most `limit` of them, no UTF-8 sequence cut.
struct DecodedBytes {
    std::string bytes;
    bool isCut = false; ///< the part goes on after them
};
DecodedBytes decodedBytes(const TextPart& part, std::size_t limit);

} // namespace quillmate
