#pragma once

#include <string>
#include <string_view>

namespace quillmate
{

/// Whether the first line begins a header field: printable ASCII without colon, optional blanks, a colon (RFC 5322, 2.2
/// and 4.5).
bool beginsHeaderField(std::string_view text);

/// Whether a text begins with a mail message: a header field in its first line (a leading mbox "From " line aside) and,
/// among its fields, at least one that only mail has.
bool looksLikeMail(std::string_view source);

/// Turns every CR LF into a bare LF in place, in one pass. A CR that no LF follows stays.
void useBareLineFeeds(std::string& source);

/// Takes one ">" off every line of the form ">…>From " in place, in one pass (the mboxrd rule, which also undoes what
/// an mboxo writer did to a line that began with "From ").
void unquoteFromLines(std::string& source);

/// Drops a leading mbox "From " line, if there is one.
void dropFromLine(std::string& source);

/// `text` cut to at most `limit` bytes, never inside a UTF-8 sequence.
std::string_view cutUtf8(std::string_view text, std::size_t limit);

} // namespace quillmate
