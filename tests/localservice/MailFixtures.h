#pragma once

#include <QByteArray>
#include <QList>

namespace quillmate::localservice
{

/// The body of a multipart message, each part with its own header block.
inline QByteArray multipart(const QByteArray& boundary, const QList<QByteArray>& parts)
{
    QByteArray text;
    for (const QByteArray& part : parts) {
        text += "--" + boundary + "\n" + part + "\n";
    }
    return text + "--" + boundary + "--\n";
}

inline const QByteArray plainPart = "Content-Type: text/plain; charset=utf-8\n\nThe plain text.\n";

} // namespace quillmate::localservice
