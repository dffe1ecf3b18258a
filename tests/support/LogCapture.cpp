#include "support/LogCapture.h"

#include "platform/foundation/text/print.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmate
{
namespace
{

QByteArray contents(int descriptor, qint64 from)
{
    struct stat status = {};
    ::fstat(descriptor, &status);
    QByteArray bytes(status.st_size - from, '\0');
    const auto got = ::pread(descriptor, bytes.data(), static_cast<std::size_t>(bytes.size()), from);
    bytes.truncate(got);
    return bytes;
}

QStringList splitLines(const QByteArray& bytes)
{
    auto lines = QString::fromUtf8(bytes).split(QLatin1Char('\n'));
    lines.removeLast(); // What follows the last newline: nothing.
    return lines;
}

} // namespace

LogCapture::LogCapture()
    : m_descriptor(::memfd_create("log", MFD_CLOEXEC))
{
    setPrintDescriptor(m_descriptor);
}

LogCapture::~LogCapture()
{
    setPrintDescriptor(STDOUT_FILENO);
    ::close(m_descriptor);
}

QStringList LogCapture::take()
{
    const QByteArray bytes = contents(m_descriptor, m_taken);
    m_taken += bytes.size();
    return splitLines(bytes);
}

QStringList LogCapture::lines() const
{
    return splitLines(contents(m_descriptor, m_taken));
}

QByteArray LogCapture::stream() const
{
    struct stat status = {};
    ::fstat(m_descriptor, &status);
    return QByteArray::number(qulonglong{status.st_dev}) + ':' + QByteArray::number(qulonglong{status.st_ino});
}

} // namespace quillmate
