#pragma once

#include <string>
#include <string_view>

namespace quillmate
{

/// The text with what a terminal might obey in it shown instead: each control character (C0, DEL, C1), and each byte
/// that is no part of a UTF-8 character, as \xNN.
[[nodiscard]] std::string terminalText(std::string_view text);

/// The same where the descriptor leads to a terminal; elsewhere the text as it is.
[[nodiscard]] std::string textFor(int descriptor, std::string_view text);

} // namespace quillmate
