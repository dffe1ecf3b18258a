#include "mail/HeaderFields.h"

#include "base/AsciiText.h"
#include "mail/EncodedWords.h"
#include "mail/SourceText.h"

#include <algorithm>

namespace quillmate
{

HeaderFields HeaderFields::parse(std::string_view source, std::size_t limit)
{
    source = source.substr(0, limit);
    HeaderFields headers;
    bool inField = false;
    while (!source.empty()) {
        const std::string_view line = takeLine(source);
        if (line.empty()) {
            break;
        }
        if (line.starts_with(' ') || line.starts_with('\t')) {
            if (inField) {
                headers.m_fields.back().value.append(line);
            }
            continue;
        }
        inField = beginsHeaderField(line);
        if (inField) {
            const std::size_t colon = line.find(':');
            headers.m_fields.push_back(
                {lowerCase(trimmed(line.substr(0, colon))), std::string(line.substr(colon + 1))});
        }
    }
    for (Field& field : headers.m_fields) {
        field.value = std::string(trimmed(field.value, " \t"));
    }
    return headers;
}

std::optional<std::string_view> HeaderFields::first(std::string_view name) const
{
    const auto found =
        std::find_if(m_fields.begin(), m_fields.end(), [name](const Field& field) { return field.name == name; });
    return found == m_fields.end() ? std::nullopt : std::optional<std::string_view>(found->value);
}

std::string HeaderFields::decoded(std::string_view name) const
{
    std::string text = decodeHeaderText(first(name).value_or(std::string_view()));
    // An encoded word may smuggle in line breaks and other controls, which a one-line field has no use for.
    std::replace_if(
        text.begin(), text.end(),
        [](char letter) { return static_cast<unsigned char>(letter) < 0x20 || letter == 0x7f; }, ' ');
    return text;
}

} // namespace quillmate
