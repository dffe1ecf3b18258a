#pragma once

#include <QString>
#include <QStringList>

namespace quillmate
{

/// What the sender of a message wrote themselves: quoted lines, the line that introduces them, an earlier message below
/// its header block, the signature (RFC 3676, 4.3) and the footers of phones are left out. A message that is nothing
/// but a quote (a bare forward) gives the quoted text instead.
QString ownText(const QString& text);

/// The same with the signature, and empty for a bare forward: nobody quoted in it signed this message.
QStringList ownLinesAndSignature(const QString& text);

/// Whether it is the line that begins a signature (RFC 3676, 4.3, its blank often lost on the way).
bool isSignatureMark(const QString& line);

} // namespace quillmate
