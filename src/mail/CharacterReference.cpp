#include "mail/CharacterReference.h"

#include <QString>
#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>

namespace quillmate
{
namespace
{

constexpr std::string_view nameLetters = "#0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

struct NamedCharacter {
    std::string_view name;
    char32_t character;
};

// U+00A0 to U+00FF in their order.
constexpr std::array<std::string_view, 96> latinNames = {
    "nbsp",   "iexcl",  "cent",   "pound",  "curren", "yen",    "brvbar", "sect",   "uml",    "copy",   "ordf",
    "laquo",  "not",    "shy",    "reg",    "macr",   "deg",    "plusmn", "sup2",   "sup3",   "acute",  "micro",
    "para",   "middot", "cedil",  "sup1",   "ordm",   "raquo",  "frac14", "frac12", "frac34", "iquest", "Agrave",
    "Aacute", "Acirc",  "Atilde", "Auml",   "Aring",  "AElig",  "Ccedil", "Egrave", "Eacute", "Ecirc",  "Euml",
    "Igrave", "Iacute", "Icirc",  "Iuml",   "ETH",    "Ntilde", "Ograve", "Oacute", "Ocirc",  "Otilde", "Ouml",
    "times",  "Oslash", "Ugrave", "Uacute", "Ucirc",  "Uuml",   "Yacute", "THORN",  "szlig",  "agrave", "aacute",
    "acirc",  "atilde", "auml",   "aring",  "aelig",  "ccedil", "egrave", "eacute", "ecirc",  "euml",   "igrave",
    "iacute", "icirc",  "iuml",   "eth",    "ntilde", "ograve", "oacute", "ocirc",  "otilde", "ouml",   "divide",
    "oslash", "ugrave", "uacute", "ucirc",  "uuml",   "yacute", "thorn",  "yuml"};
constexpr std::array otherNames = std::to_array<NamedCharacter>({
    {"amp", U'&'},      {"lt", U'<'},       {"gt", U'>'},       {"quot", U'"'},  {"apos", U'\''},  {"ndash", U'–'},
    {"mdash", U'—'},    {"lsquo", U'‘'},    {"rsquo", U'’'},    {"sbquo", U'‚'}, {"ldquo", U'“'},  {"rdquo", U'”'},
    {"bdquo", U'„'},    {"bull", U'•'},     {"hellip", U'…'},   {"euro", U'€'},  {"trade", U'™'},  {"rarr", U'→'},
    {"larr", U'←'},     {"minus", U'−'},    {"OElig", U'Œ'},    {"oelig", U'œ'}, {"Scaron", U'Š'}, {"scaron", U'š'},
    {"lsaquo", U'‹'},   {"rsaquo", U'›'},   {"ensp", U' '},     {"emsp", U' '},  {"thinsp", U' '}, {"zwnj", U'\u200C'},
    {"zwj", U'\u200D'}, {"lrm", U'\u200E'}, {"rlm", U'\u200F'}, {"check", U'✓'}, {"cross", U'✗'},  {"star", U'☆'},
    {"hearts", U'♥'},   {"rArr", U'⇒'},     {"infin", U'∞'},    {"ne", U'≠'},    {"le", U'≤'},     {"ge", U'≥'},
    {"dagger", U'†'},
});
// What Windows-1252 has at 0x80 to 0x9F, where numbers mean it: there are no such characters of Unicode in a text.
constexpr std::u32string_view windowsCharacters = U"€\uFFFD‚ƒ„…†‡ˆ‰Š‹Œ\uFFFDŽ\uFFFD\uFFFD‘’“”•–—˜™š›œ\uFFFDžŸ";

std::string utf8(char32_t character)
{
    return QString::fromUcs4(&character, 1).toStdString();
}

std::string numberedCharacter(std::string_view digits)
{
    const bool hexadecimal = digits.starts_with('x') || digits.starts_with('X');
    digits.remove_prefix(hexadecimal ? 1 : 0);
    std::uint32_t value = 0;
    const auto [end, failure] =
        std::from_chars(digits.data(), digits.data() + digits.size(), value, hexadecimal ? 16 : 10);
    if (failure != std::errc() || end != digits.data() + digits.size()) {
        return {};
    }
    if (value >= 0x80 && value < 0xA0) {
        return utf8(windowsCharacters[value - 0x80]);
    }
    const bool isScalar = value >= 0x20 && value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
    return isScalar ? utf8(value) : std::string(" ");
}

/// The UTF-8 of a reference's inside, empty when it is none that is known.
std::string characterOf(std::string_view reference)
{
    if (reference.starts_with('#')) {
        return numberedCharacter(reference.substr(1));
    }
    const auto* const latin = std::find(latinNames.begin(), latinNames.end(), reference);
    if (latin != latinNames.end()) {
        return utf8(static_cast<char32_t>(0xA0 + (latin - latinNames.begin())));
    }
    const auto* const other =
        std::find_if(otherNames.begin(), otherNames.end(),
                     [reference](const NamedCharacter& entry) { return entry.name == reference; });
    return other != otherNames.end() ? utf8(other->character) : std::string();
}

} // namespace

std::string withReferencesResolved(std::string_view text)
{
    std::string resolved;
    while (!text.empty()) {
        const std::size_t plain = std::min(text.find('&'), text.size());
        resolved.append(text.substr(0, plain));
        text.remove_prefix(plain);
        if (text.empty()) {
            break;
        }
        // The semicolon may be left out, but not in "?a=1&copy=2" and "R&Dept".
        const std::size_t end = std::min(text.find_first_not_of(nameLetters, 1), text.size());
        const char behind = end < text.size() ? text[end] : '\0';
        const std::string character = behind == '=' ? std::string() : characterOf(text.substr(1, end - 1));
        resolved.append(character.empty() ? "&" : character);
        text.remove_prefix(character.empty() ? 1 : end + (behind == ';' ? 1 : 0));
    }
    return resolved;
}

} // namespace quillmate
