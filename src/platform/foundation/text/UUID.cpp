#include "platform/foundation/text/UUID.h"

namespace quillmate
{

std::optional<UUID> UUID::parse(std::string_view text)
{
    const UUID read(QUuid::fromString(QLatin1StringView(text.data(), static_cast<qsizetype>(text.size()))));
    // QUuid also reads other forms, and gives zeros for what is none.
    const QByteArray digits = read.m_value.toByteArray(QUuid::WithoutBraces);
    const bool isWhole =
        digits.compare(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())), Qt::CaseInsensitive) == 0;
    return isWhole ? std::optional(read) : std::nullopt;
}

std::string UUID::uuidString() const
{
    return m_value.toByteArray(QUuid::WithoutBraces).toUpper().toStdString();
}

} // namespace quillmate
