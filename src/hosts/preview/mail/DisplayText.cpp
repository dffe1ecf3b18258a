#include "hosts/preview/mail/DisplayText.h"

#include "hosts/preview/mail/HtmlText.h"
#include "hosts/preview/mail/MessageParts.h"
#include "hosts/preview/mail/SourceText.h"

namespace quillmate
{
namespace
{

std::string withoutOuterBlankLines(std::string_view text)
{
    const std::size_t first = text.find_first_not_of("\r\n\t ");
    if (first == std::string_view::npos) {
        return {};
    }
    const std::size_t lineFeed = text.find_last_of('\n', first);
    text.remove_prefix(lineFeed == std::string_view::npos ? 0 : lineFeed + 1);
    return std::string(text.substr(0, text.find_last_not_of("\r\n\t ") + 1));
}

} // namespace

DisplayText displayTextOf(const MessageParts& parts, std::size_t limit)
{
    const bool isMarkup = !parts.hasPlain();
    const MessageParts::Content content = isMarkup ? parts.html(limit * markupPerText) : parts.plain(limit);
    std::string text = isMarkup ? textOfHtml(content.text) : content.text;
    useBareLineFeeds(text);
    text = withoutOuterBlankLines(text);
    const std::string_view shown = cutUtf8(text, limit);
    return {std::string(shown), content.cut || shown.size() < text.size()};
}

DisplayText displayTextOf(std::string_view source, std::size_t limit)
{
    return displayTextOf(MessageParts(source), limit);
}

} // namespace quillmate
