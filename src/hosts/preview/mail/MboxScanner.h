#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quillmate
{

/// Finds the messages of an mbox from its bytes, fed in pieces of any size. A message begins after a line "From …" that
/// stands at the very start or after an empty line and that a header field follows (RFC 4155, made safe against bodies
/// that other programs left unquoted). Keeps no text, only places; linear in the size.
class MboxScanner
{
public:
    struct Range {
        std::uint64_t offset = 0; ///< of the message's first byte, after the "From " line
        std::uint64_t length = 0; ///< without the empty line that belongs to the format

        bool operator==(const Range&) const = default;
    };

    void feed(std::string_view bytes);
    /// Ends the last message; call once, after the last feed.
    std::vector<Range> finish();

private:
    void endLine(std::uint64_t nextLineStart);
    void closeMessage(std::uint64_t end);

    std::vector<Range> m_ranges;
    std::string m_lineHead;             // the current line's first bytes, enough to tell what it is
    std::uint64_t m_position = 0;       // of the next byte to be fed
    std::uint64_t m_lineStart = 0;      // of the current line
    std::uint64_t m_separatorStart = 0; // of the last line that may be a separator
    std::uint64_t m_blankBytes = 0;     // of the empty line just before that one
    std::uint64_t m_previousBlank = 0;  // length of the line before when that was empty, else 0
    bool m_mayFollowSeparator = false;
    bool m_open = false;
};

} // namespace quillmate
