#include "hosts/preview/mail/DisplayText.h"

#include "hosts/preview/mail/Charset.h"
#include "hosts/preview/mail/HtmlText.h"
#include "hosts/preview/mail/MimeLibrary.h"
#include "hosts/preview/mail/SourceText.h"

#include <algorithm>

namespace quillmate
{
namespace
{

// Markup is mostly larger than the text it holds.
constexpr std::size_t markupPerText = 8;
constexpr int deepestPart = 32;

struct TextParts {
    GMimePart* plain = nullptr;
    GMimePart* html = nullptr;
};

bool isAttachment(GMimeObject* object)
{
    const char* disposition = g_mime_object_get_disposition(object);
    return disposition != nullptr && g_ascii_strcasecmp(disposition, GMIME_DISPOSITION_ATTACHMENT) == 0;
}

void findTextParts(GMimeObject* object, int depth, TextParts& found)
{
    if (object == nullptr || depth > deepestPart || found.plain != nullptr) {
        return;
    }
    if (GMIME_IS_MULTIPART(object)) {
        GMimeMultipart* multipart = GMIME_MULTIPART(object);
        const int count = g_mime_multipart_get_count(multipart);
        for (int i = 0; i < count; ++i) {
            findTextParts(g_mime_multipart_get_part(multipart, i), depth + 1, found);
        }
        return;
    }
    if (!GMIME_IS_PART(object) || isAttachment(object)) {
        return;
    }
    GMimeContentType* type = g_mime_object_get_content_type(object);
    if (g_mime_content_type_is_type(type, "text", "html")) {
        found.html = found.html == nullptr ? GMIME_PART(object) : found.html;
    } else if (g_mime_content_type_is_type(type, "text", "*")) {
        found.plain = GMIME_PART(object);
    }
}

/// The part's bytes with its transfer encoding undone, at most `limit` and a little more, so that a cut can be told.
std::string contentOf(GMimePart* part, std::size_t limit)
{
    GMimeDataWrapper* content = g_mime_part_get_content(part);
    if (content == nullptr) {
        return {};
    }
    GMimeStream* encoded = g_mime_data_wrapper_get_stream(content);
    g_mime_stream_reset(encoded);
    const ObjectPointer<GMimeStream> decoded(g_mime_stream_filter_new(encoded));
    const ObjectPointer<GMimeFilter> decoder(g_mime_filter_basic_new(g_mime_data_wrapper_get_encoding(content), FALSE));
    g_mime_stream_filter_add(GMIME_STREAM_FILTER(decoded.get()), decoder.get());

    constexpr std::size_t step = std::size_t{16} * 1024;
    std::string bytes;
    while (bytes.size() <= limit) {
        const std::size_t before = bytes.size();
        bytes.resize(before + step);
        const ssize_t count = g_mime_stream_read(decoded.get(), bytes.data() + before, step);
        bytes.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (count <= 0) {
            break;
        }
    }
    return bytes;
}

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

DisplayText displayTextOf(std::string_view source, std::size_t limit)
{
    prepareMimeLibrary();
    // The library only reads through this array, whose type predates const, so the source is not copied.
    GByteArray bytes{reinterpret_cast<guint8*>(const_cast<char*>(source.data())), static_cast<guint>(source.size())};
    const ObjectPointer<GMimeStream> stream(g_mime_stream_mem_new_with_byte_array(&bytes));
    g_mime_stream_mem_set_owner(GMIME_STREAM_MEM(stream.get()), FALSE);
    const ObjectPointer<GMimeParser> parser(g_mime_parser_new_with_stream(stream.get()));
    const ObjectPointer<GMimeMessage> message(g_mime_parser_construct_message(parser.get(), nullptr));
    TextParts parts;
    if (message != nullptr) {
        findTextParts(g_mime_message_get_mime_part(message.get()), 0, parts);
    }
    GMimePart* part = parts.plain != nullptr ? parts.plain : parts.html;
    if (part == nullptr) {
        return {};
    }
    const std::size_t bytesWanted = part == parts.html ? limit * markupPerText : limit;
    std::string content = contentOf(part, bytesWanted);
    const bool contentCut = content.size() > bytesWanted;
    const char* charset = g_mime_object_get_content_type_parameter(GMIME_OBJECT(part), "charset");
    std::string text = utf8Of(content, charset == nullptr ? std::string_view() : charset);
    if (part == parts.html) {
        text = textOfHtml(text);
    }
    useBareLineFeeds(text);
    text = withoutOuterBlankLines(text);
    const std::string_view shown = cutUtf8(text, limit);
    return {std::string(shown), contentCut || shown.size() < text.size()};
}

} // namespace quillmate
