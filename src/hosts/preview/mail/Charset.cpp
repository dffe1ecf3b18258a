#include "hosts/preview/mail/Charset.h"

#include "hosts/preview/mail/MimeLibrary.h"

#include <QString>
#include <QStringDecoder>

namespace quillmate
{
namespace
{

bool isNamed(const std::string& charset, const char* name)
{
    return g_ascii_strcasecmp(charset.c_str(), name) == 0;
}

std::string utf8OfUnknown(const std::string& bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString text = utf8(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
    return utf8.hasError() ? QString::fromLatin1(bytes.data(), static_cast<qsizetype>(bytes.size())).toStdString()
                           : text.toStdString();
}

} // namespace

std::string utf8Of(const std::string& bytes, std::string_view charset)
{
    prepareMimeLibrary();
    const std::string name(charset);
    if (isNamed(name, "utf-8")) {
        return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size())).toStdString();
    }
    // Mail that calls itself US-ASCII and is not is common; without a name it is the same.
    const ObjectPointer<GMimeFilter> converter(
        name.empty() || isNamed(name, "us-ascii") ? nullptr : g_mime_filter_charset_new(name.c_str(), "utf-8"));
    if (converter == nullptr) {
        return utf8OfUnknown(bytes);
    }
    char* out = nullptr;
    std::size_t outLength = 0;
    std::size_t prespace = 0;
    std::string input = bytes; // The filter's interface takes a writable buffer.
    g_mime_filter_complete(converter.get(), input.data(), input.size(), 0, &out, &outLength, &prespace);
    return QString::fromUtf8(out, static_cast<qsizetype>(outLength)).toStdString();
}

} // namespace quillmate
