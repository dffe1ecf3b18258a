#pragma once

#include <QString>
#include <QStringList>

namespace quillmate
{

/// Collects the diagnostic lines that are printed while it lives.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// The lines printed since the last call, and forgets them.
    QStringList take();
    /// The lines printed since the last call; they stay.
    [[nodiscard]] QStringList lines() const;
    /// What JOURNAL_STREAM is where this is the system's journal.
    [[nodiscard]] QByteArray stream() const;

private:
    int m_descriptor;
    qint64 m_taken = 0;
};

} // namespace quillmate
