#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace quillmate
{

/// What MIME, HTML and HTTP call a letter's lower case: that of ASCII, whatever the locale.
constexpr char lowerCase(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

inline std::string lowerCase(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), [](char letter) { return lowerCase(letter); });
    return result;
}

/// Where `part`, which is in lower case, first stands in `text`, whatever the case there.
inline std::size_t findAnyCase(std::string_view text, std::string_view part)
{
    const auto found = std::search(text.begin(), text.end(), part.begin(), part.end(),
                                   [](char left, char right) { return lowerCase(left) == right; });
    return found == text.end() ? std::string_view::npos : static_cast<std::size_t>(found - text.begin());
}

/// `text` without the blanks at both ends.
inline std::string_view trimmed(std::string_view text, std::string_view blanks = " \t\r\n\f")
{
    const std::size_t first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// Takes the first line off `rest`, and gives it without its line end, CR LF or LF.
inline std::string_view takeLine(std::string_view& rest)
{
    const std::size_t lineFeed = std::min(rest.find('\n'), rest.size());
    std::string_view line = rest.substr(0, lineFeed);
    rest.remove_prefix(std::min(rest.size(), lineFeed + 1));
    line.remove_suffix(line.ends_with('\r') ? 1 : 0);
    return line;
}

} // namespace quillmate
