#include "mail/MessageDate.h"

#include "mail/MimeLibrary.h"

#include <cstdint>
#include <string>

namespace quillmate
{

QDateTime parseDate(std::string_view value)
{
    constexpr std::size_t longestDate = 256;
    constexpr std::int64_t microsecondsPerSecond = 1000000;
    prepareMimeLibrary();
    GDateTime* date =
        value.empty() ? nullptr : g_mime_utils_header_decode_date(std::string(value.substr(0, longestDate)).c_str());
    if (date == nullptr) {
        return {};
    }
    const auto offsetSeconds = static_cast<int>(g_date_time_get_utc_offset(date) / microsecondsPerSecond);
    QDateTime result = QDateTime::fromSecsSinceEpoch(g_date_time_to_unix(date), Qt::OffsetFromUTC, offsetSeconds);
    g_date_time_unref(date);
    return result;
}

} // namespace quillmate
