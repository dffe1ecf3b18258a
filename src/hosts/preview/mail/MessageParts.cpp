#include "hosts/preview/mail/MessageParts.h"

#include "hosts/preview/mail/Charset.h"

#include <algorithm>

namespace quillmate
{
namespace
{

constexpr int deepestPart = 32;

bool isAttachment(GMimeObject* object)
{
    const char* disposition = g_mime_object_get_disposition(object);
    return disposition != nullptr && g_ascii_strcasecmp(disposition, GMIME_DISPOSITION_ATTACHMENT) == 0;
}

/// The library only reads through this array, whose type predates const, so the source is not copied.
GByteArray arrayOver(std::string_view source)
{
    return {reinterpret_cast<guint8*>(const_cast<char*>(source.data())), static_cast<guint>(source.size())};
}

/// The part's bytes with its transfer encoding undone, at most `limit` and a little more, so that a cut can be told.
std::string bytesOf(GMimePart* part, std::size_t limit)
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

MessageParts::Content contentOf(GMimePart* part, std::size_t limit)
{
    if (part == nullptr) {
        return {};
    }
    const std::string bytes = bytesOf(part, limit);
    const char* charset = g_mime_object_get_content_type_parameter(GMIME_OBJECT(part), "charset");
    return {utf8Of(bytes, charset == nullptr ? std::string_view() : charset), bytes.size() > limit};
}

} // namespace

MessageParts::MessageParts(std::string_view source)
    : m_bytes(arrayOver(source))
{
    prepareMimeLibrary();
    m_stream.reset(g_mime_stream_mem_new_with_byte_array(&m_bytes));
    g_mime_stream_mem_set_owner(GMIME_STREAM_MEM(m_stream.get()), FALSE);
    const ObjectPointer<GMimeParser> parser(g_mime_parser_new_with_stream(m_stream.get()));
    m_message.reset(g_mime_parser_construct_message(parser.get(), nullptr));
    if (m_message != nullptr) {
        find(g_mime_message_get_mime_part(m_message.get()), 0);
    }
}

void MessageParts::find(GMimeObject* object, int depth)
{
    if (object == nullptr || depth > deepestPart || (m_plain != nullptr && m_html != nullptr)) {
        return;
    }
    if (GMIME_IS_MULTIPART(object)) {
        GMimeMultipart* multipart = GMIME_MULTIPART(object);
        const int count = g_mime_multipart_get_count(multipart);
        for (int i = 0; i < count; ++i) {
            find(g_mime_multipart_get_part(multipart, i), depth + 1);
        }
        return;
    }
    if (!GMIME_IS_PART(object) || isAttachment(object)) {
        return;
    }
    GMimeContentType* type = g_mime_object_get_content_type(object);
    const bool isHtml = g_mime_content_type_is_type(type, "text", "html") != FALSE;
    GMimePart*& part = isHtml ? m_html : m_plain;
    if (part == nullptr && (isHtml || g_mime_content_type_is_type(type, "text", "*"))) {
        part = GMIME_PART(object);
    }
}

MessageParts::Content MessageParts::plain(std::size_t limit) const
{
    return contentOf(m_plain, limit);
}

MessageParts::Content MessageParts::html(std::size_t limit) const
{
    return contentOf(m_html, limit);
}

} // namespace quillmate
