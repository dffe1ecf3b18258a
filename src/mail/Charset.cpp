#include "mail/Charset.h"

#include "base/AsciiText.h"
#include "mail/MimeLibrary.h"

#include <QString>
#include <QStringDecoder>
#include <algorithm>
#include <optional>
#include <utility>

namespace quillmate
{
namespace
{

/// Through the MIME library; nothing when it does not know the charset.
std::optional<std::string> converted(const std::string& bytes, const char* charset)
{
    const ObjectPointer<GMimeFilter> converter(g_mime_filter_charset_new(charset, "utf-8"));
    if (converter == nullptr) {
        return std::nullopt;
    }
    char* out = nullptr;
    std::size_t outLength = 0;
    std::size_t prespace = 0;
    std::string input = bytes; // The filter's interface takes a writable buffer.
    g_mime_filter_complete(converter.get(), input.data(), input.size(), 0, &out, &outLength, &prespace);
    return QString::fromUtf8(out, static_cast<qsizetype>(outLength)).toStdString();
}

std::string utf8OfUnknown(const std::string& bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
    // A text that was broken on its way keeps its letters; one that never was UTF-8 has hardly any.
    const auto wrong = text.count(QChar::ReplacementCharacter);
    const auto letters = std::count_if(text.begin(), text.end(), [](QChar c) { return c.unicode() >= 0x80; });
    return 2 * wrong > letters ? converted(bytes, "windows-1252").value_or(text.toStdString()) : text.toStdString();
}

} // namespace

std::string utf8Of(const std::string& bytes, std::string_view charset)
{
    prepareMimeLibrary();
    std::string name = lowerCase(charset);
    if (name.empty() && (bytes.find("\x1B$B") != std::string::npos || bytes.find("\x1B$@") != std::string::npos)) {
        name = "iso-2022-jp";
    }
    // Mail that calls itself US-ASCII or UTF-8 and is not is common.
    const bool isSaid = !name.empty() && name != "us-ascii" && name != "utf-8";
    std::optional<std::string> text = isSaid ? converted(bytes, name.c_str()) : std::nullopt;
    return text ? std::move(*text) : utf8OfUnknown(bytes);
}

} // namespace quillmate
