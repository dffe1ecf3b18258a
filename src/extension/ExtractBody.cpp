#include "extension/ExtractBody.h"

#include "base/CharacterSet.h"

namespace quillmate
{

std::optional<std::string_view> extractBody(std::string_view rawData)
{
    const auto blankLine = rawData.find("\n\n");
    // The search ends after a few lines as a rule, so it comes before the look at every byte.
    if (blankLine == std::string_view::npos || !isValidUTF8(rawData)) {
        return std::nullopt;
    }
    return trimmingWhitespacesAndNewlines(rawData.substr(blankLine + 2));
}

} // namespace quillmate
