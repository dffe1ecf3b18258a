#include "mail/ContentFields.h"

#include "base/AsciiText.h"
#include "mail/HeaderFields.h"
#include "mail/MimeLibrary.h"

namespace quillmate
{
namespace
{

// The library takes time by the square of a field's parameters.
constexpr std::size_t longestField = 4096;

std::string field(const HeaderFields& fields, std::string_view name)
{
    return std::string(fields.first(name).value_or(std::string_view()).substr(0, longestField));
}

std::string textOf(const char* text)
{
    return text == nullptr ? std::string() : std::string(text);
}

std::string parameter(GMimeContentType* type, const char* name)
{
    return textOf(g_mime_content_type_get_parameter(type, name));
}

} // namespace

ContentFields contentFieldsOf(std::string_view header, std::size_t limit)
{
    prepareMimeLibrary();
    const HeaderFields fields = HeaderFields::parse(header, limit);
    ContentFields content;
    content.encoding = field(fields, "content-transfer-encoding");
    content.isAttachment = lowerCase(field(fields, "content-disposition")).starts_with("attachment");
    const std::string value = field(fields, "content-type");
    if (value.empty()) {
        return content;
    }
    const ObjectPointer<GMimeContentType> type(g_mime_content_type_parse(nullptr, value.c_str()));
    content.saysType = true;
    content.type = lowerCase(textOf(g_mime_content_type_get_media_type(type.get())));
    content.subtype = lowerCase(textOf(g_mime_content_type_get_media_subtype(type.get())));
    content.boundary = parameter(type.get(), "boundary");
    content.charset = parameter(type.get(), "charset");
    content.isFlowed = lowerCase(parameter(type.get(), "format")) == "flowed";
    content.deletesBlank = lowerCase(parameter(type.get(), "delsp")) == "yes";
    return content;
}

} // namespace quillmate
