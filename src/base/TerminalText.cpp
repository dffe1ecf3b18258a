#include "base/TerminalText.h"

#include "base/CharacterSet.h"

#include <unistd.h>

namespace quillmate
{

std::string terminalText(std::string_view text)
{
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        const auto lead = static_cast<unsigned char>(text.front());
        const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        const std::string_view character = text.substr(0, length);
        const bool isWhole = isValidUTF8(character);
        const bool isC1 = isWhole && lead == 0xC2 && static_cast<unsigned char>(character.back()) < 0xA0;
        if (isWhole && !isC1 && lead >= 0x20 && lead != 0x7F) {
            shown += character;
        } else {
            constexpr std::string_view digits = "0123456789ABCDEF";
            const auto code = isC1 ? static_cast<unsigned char>(character.back()) : lead;
            shown += {'\\', 'x', digits[code >> 4U], digits[code & 0x0FU]};
        }
        text.remove_prefix(isWhole ? character.size() : 1);
    }
    return shown;
}

std::string textFor(int descriptor, std::string_view text)
{
    return ::isatty(descriptor) == 1 ? terminalText(text) : std::string(text);
}

} // namespace quillmate
