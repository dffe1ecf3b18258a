#include "base/UploadBody.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace quillmate
{

UploadBody::UploadBody(std::shared_ptr<const std::string> bytes)
    : m_bytes(std::move(bytes))
{
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

qint64 UploadBody::left() const
{
    return static_cast<qint64>(m_bytes->size() - m_read);
}

qint64 UploadBody::bytesAvailable() const
{
    return left() + QIODevice::bytesAvailable();
}

qint64 UploadBody::readData(char* data, qint64 maxSize)
{
    if (left() == 0) {
        return -1; // The end, and not only for now.
    }
    const qint64 count = std::min(maxSize, left());
    std::memcpy(data, m_bytes->data() + m_read, static_cast<std::size_t>(count));
    m_read += static_cast<std::size_t>(count);
    return count;
}

} // namespace quillmate
