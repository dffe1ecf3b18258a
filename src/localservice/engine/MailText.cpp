#include "localservice/engine/MailText.h"

#include "localservice/engine/HtmlText.h"
#include "localservice/engine/TransferEncoding.h"

#include <QStringDecoder>
#include <QStringList>

// GLib's headers use "signals" as a name.
#include <gmime/gmime.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <optional>

namespace quillmate::localservice
{

namespace
{

constexpr std::size_t textLimit = std::size_t(2) * 1024 * 1024;
constexpr int nestingLimit = 32;

struct Unref {
    template<typename T>
    void operator()(T* object) const
    {
        g_object_unref(object);
    }
};
template<typename T>
using Owned = std::unique_ptr<T, Unref>;

struct Found {
    QString plain;
    QString html;
};

/// The part's bytes with the transfer encoding undone.
std::string decodedBytes(GMimePart* part)
{
    GMimeDataWrapper* content = g_mime_part_get_content(part);
    if (content == nullptr) {
        return {};
    }
    GByteArray* bytes = g_byte_array_new();
    const Owned<GMimeStream> stream(g_mime_stream_mem_new_with_byte_array(bytes));
    g_mime_stream_mem_set_owner(GMIME_STREAM_MEM(stream.get()), TRUE);
    g_mime_data_wrapper_write_to_stream(content, stream.get());
    return {reinterpret_cast<const char*>(bytes->data), std::min(static_cast<std::size_t>(bytes->len), textLimit)};
}

QString converted(const std::string& bytes, const char* charset)
{
    gsize written = 0;
    char* utf8 = g_convert_with_fallback(bytes.data(), static_cast<gssize>(bytes.size()), "UTF-8", charset,
                                         "\xEF\xBF\xBD", nullptr, &written, nullptr);
    if (utf8 == nullptr) {
        return {};
    }
    QString text = QString::fromUtf8(utf8, static_cast<qsizetype>(written));
    g_free(utf8);
    return text;
}

QString textOf(std::string bytes, const char* charset)
{
    // A cut or wrongly named text still shows its good part; a text without any name is UTF-8 when it can be.
    if (charset == nullptr &&
        (bytes.find("\x1B$B") != std::string::npos || bytes.find("\x1B$@") != std::string::npos)) {
        charset = "ISO-2022-JP";
    }
    const QByteArrayView view(bytes.data(), static_cast<qsizetype>(bytes.size()));
    const QString asUtf8 = QStringDecoder(QStringDecoder::Utf8)(view);
    const bool isUtf8 = !asUtf8.contains(QChar::ReplacementCharacter);
    const std::string_view name = charset == nullptr ? "utf-8" : charset;
    const bool named = g_ascii_strcasecmp(std::string(name).c_str(), "utf-8") != 0 &&
                       g_ascii_strcasecmp(std::string(name).c_str(), "us-ascii") != 0;
    QString text;
    if (named) {
        text = converted(bytes, charset);
    }
    if (text.isEmpty() && (isUtf8 || bytes.size() == textLimit)) {
        text = asUtf8;
    }
    return text.isEmpty() ? converted(bytes, "WINDOWS-1252") : text;
}

bool isAttachment(GMimeObject* object)
{
    const char* disposition = g_mime_object_get_disposition(object);
    return disposition != nullptr && g_ascii_strcasecmp(disposition, GMIME_DISPOSITION_ATTACHMENT) == 0;
}

/// RFC 3676, 4: a line that ends in a blank goes on in the next one.
QString unflowed(const QString& text, bool deleteBlank)
{
    QString result;
    const QStringList lines = text.split(u'\n');
    for (const QString& line : lines) {
        const bool signature = line == QStringLiteral("-- ");
        const bool soft = line.endsWith(u' ') && !signature && !line.startsWith(u'>');
        result += soft && deleteBlank ? line.chopped(1) : line;
        result += soft ? QString() : QStringLiteral("\n");
    }
    result.chop(1);
    return result;
}

void append(QString& whole, const QString& part)
{
    if (!part.trimmed().isEmpty()) {
        whole += (whole.isEmpty() ? QString() : QStringLiteral("\n\n")) + part;
    }
}

void collectText(GMimeObject* object, Found& found)
{
    GMimeContentType* type = g_mime_object_get_content_type(object);
    const bool plain = g_mime_content_type_is_type(type, "text", "plain") != FALSE;
    const bool html = g_mime_content_type_is_type(type, "text", "html") != FALSE;
    const QString& sofar = plain ? found.plain : found.html;
    if ((!plain && !html) || isAttachment(object) || sofar.size() > static_cast<qsizetype>(textLimit)) {
        return;
    }
    QString text =
        textOf(decodedBytes(GMIME_PART(object)), g_mime_object_get_content_type_parameter(object, "charset"));
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    const char* format = g_mime_object_get_content_type_parameter(object, "format");
    if (plain && format != nullptr && g_ascii_strcasecmp(format, "flowed") == 0) {
        const char* deleteBlank = g_mime_object_get_content_type_parameter(object, "delsp");
        text = unflowed(text, deleteBlank != nullptr && g_ascii_strcasecmp(deleteBlank, "yes") == 0);
    }
    append(plain ? found.plain : found.html, text);
}

void collect(GMimeObject* object, Found& found, int depth)
{
    if (object == nullptr || depth > nestingLimit) {
        return;
    }
    if (GMIME_IS_MESSAGE_PART(object)) {
        GMimeMessage* message = g_mime_message_part_get_message(GMIME_MESSAGE_PART(object));
        // A forwarded message counts where nothing was written beside it.
        if (message != nullptr && found.plain.isEmpty() && found.html.isEmpty()) {
            collect(g_mime_message_get_mime_part(message), found, depth + 1);
        }
    } else if (GMIME_IS_MULTIPART(object)) {
        GMimeMultipart* multipart = GMIME_MULTIPART(object);
        const int count = g_mime_multipart_get_count(multipart);
        for (int index = 0; index < count; ++index) {
            collect(g_mime_multipart_get_part(multipart, index), found, depth + 1);
        }
    } else if (GMIME_IS_PART(object)) {
        collectText(object, found);
    }
}

Owned<GMimeObject> parse(const std::string& body, const std::string& header)
{
    static std::once_flag started;
    std::call_once(started, [] { g_mime_init(); });
    const std::string source = header + "\n" + body;
    const Owned<GMimeStream> stream(g_mime_stream_mem_new_with_buffer(source.data(), source.size()));
    const Owned<GMimeParser> parser(g_mime_parser_new_with_stream(stream.get()));
    return Owned<GMimeObject>(g_mime_parser_construct_part(parser.get(), nullptr));
}

std::string syntheticHeader(const std::string& body)
{
    if (const auto boundary = findBoundary(body)) {
        return "Content-Type: multipart/mixed; boundary=\"" + *boundary + "\"\n";
    }
    switch (guessTransferEncoding(body)) {
    case TransferEncoding::Base64:
        return "Content-Type: text/plain\nContent-Transfer-Encoding: base64\n";
    case TransferEncoding::QuotedPrintable:
        return "Content-Type: text/plain\nContent-Transfer-Encoding: quoted-printable\n";
    case TransferEncoding::None:
        break;
    }
    return {};
}

/// Whether a person could read it: hardly any control or replacement characters.
bool isReadable(const QString& text)
{
    const auto bad = std::count_if(text.begin(), text.end(), [](QChar c) {
        return c == QChar::ReplacementCharacter || (c.category() == QChar::Other_Control && !c.isSpace());
    });
    return !text.trimmed().isEmpty() && bad * 20 <= text.size();
}

/// A plain part that only points to the HTML one.
bool isPlaceholder(const QString& plain, const QString& html)
{
    constexpr qsizetype longestNotice = 300;
    const QString text = plain.trimmed();
    return text.isEmpty() || (text.size() < longestNotice && html.size() > 20 * text.size() &&
                              text.contains(QStringLiteral("HTML"), Qt::CaseInsensitive));
}

} // namespace

QString mailText(const std::string& body)
{
    Found found;
    const std::string header = syntheticHeader(body);
    if (header.empty()) {
        found.plain = textOf(body.substr(0, textLimit), nullptr);
    } else if (const Owned<GMimeObject> message = parse(body, header)) {
        collect(message.get(), found, 0);
    }
    found.plain.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    if (found.html.isEmpty() && looksLikeHtml(found.plain)) {
        std::swap(found.plain, found.html);
    }
    if (!found.html.isEmpty() && isPlaceholder(found.plain, found.html)) {
        found.plain = htmlText(found.html);
    }
    return isReadable(found.plain) ? found.plain : QString();
}

} // namespace quillmate::localservice
