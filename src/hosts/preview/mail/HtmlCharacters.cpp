#include "hosts/preview/mail/HtmlText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>

namespace quillmate
{
namespace
{

struct NamedCharacter {
    std::string_view name;
    char32_t character;
};

// The references that mail programs write; sorted by name.
constexpr std::array namedCharacters = std::to_array<NamedCharacter>({
    {"Agrave", U'À'}, {"Auml", U'Ä'},   {"Ccedil", U'Ç'}, {"Eacute", U'É'},    {"Ouml", U'Ö'},   {"Uuml", U'Ü'},
    {"aacute", U'á'}, {"acute", U'´'},  {"agrave", U'à'}, {"amp", U'&'},       {"apos", U'\''},  {"aring", U'å'},
    {"auml", U'ä'},   {"bdquo", U'„'},  {"bull", U'•'},   {"ccedil", U'ç'},    {"copy", U'©'},   {"deg", U'°'},
    {"eacute", U'é'}, {"ecirc", U'ê'},  {"egrave", U'è'}, {"emsp", U' '},      {"ensp", U' '},   {"euro", U'€'},
    {"frac12", U'½'}, {"gt", U'>'},     {"hellip", U'…'}, {"iacute", U'í'},    {"icirc", U'î'},  {"laquo", U'«'},
    {"ldquo", U'“'},  {"lsquo", U'‘'},  {"lt", U'<'},     {"mdash", U'—'},     {"middot", U'·'}, {"nbsp", U' '},
    {"ndash", U'–'},  {"ntilde", U'ñ'}, {"oacute", U'ó'}, {"ocirc", U'ô'},     {"ouml", U'ö'},   {"para", U'¶'},
    {"pound", U'£'},  {"quot", U'"'},   {"raquo", U'»'},  {"rarr", U'→'},      {"rdquo", U'”'},  {"reg", U'®'},
    {"rsquo", U'’'},  {"sect", U'§'},   {"szlig", U'ß'},  {"times", U'×'},     {"trade", U'™'},  {"uacute", U'ú'},
    {"ucirc", U'û'},  {"uuml", U'ü'},   {"yen", U'¥'},    {"zwnj", U'\u200c'},
});

std::string utf8(char32_t character)
{
    const auto byte = [](char32_t value) { return static_cast<char>(static_cast<unsigned char>(value)); };
    if (character < 0x80) {
        return {byte(character)};
    }
    if (character < 0x800) {
        return {byte(0xC0 | (character >> 6)), byte(0x80 | (character & 0x3F))};
    }
    if (character < 0x10000) {
        return {byte(0xE0 | (character >> 12)), byte(0x80 | ((character >> 6) & 0x3F)),
                byte(0x80 | (character & 0x3F))};
    }
    return {byte(0xF0 | (character >> 18)), byte(0x80 | ((character >> 12) & 0x3F)),
            byte(0x80 | ((character >> 6) & 0x3F)), byte(0x80 | (character & 0x3F))};
}

std::string numberedCharacter(std::string_view digits)
{
    const bool hexadecimal = digits.starts_with('x') || digits.starts_with('X');
    digits.remove_prefix(hexadecimal ? 1 : 0);
    std::uint32_t value = 0;
    const auto [end, failure] =
        std::from_chars(digits.data(), digits.data() + digits.size(), value, hexadecimal ? 16 : 10);
    const bool isScalar = value >= 0x20 && value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
    if (failure != std::errc() || end != digits.data() + digits.size()) {
        return {};
    }
    return isScalar ? utf8(value) : std::string(" ");
}

} // namespace

std::string characterReference(std::string_view name)
{
    if (name.starts_with('#')) {
        return numberedCharacter(name.substr(1));
    }
    const auto found =
        std::lower_bound(namedCharacters.begin(), namedCharacters.end(), name,
                         [](const NamedCharacter& entry, std::string_view wanted) { return entry.name < wanted; });
    return found != namedCharacters.end() && found->name == name ? utf8(found->character) : std::string();
}

} // namespace quillmate
