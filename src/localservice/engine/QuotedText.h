#pragma once

#include <QString>

namespace quillmate::localservice
{

/// What the sender of a message wrote themselves: quoted lines, the line that introduces them, an earlier message below
/// its header block, the signature (RFC 3676, 4.3) and the footers of phones are left out. A message that is nothing
/// but a quote (a bare forward) gives the quoted text instead.
QString ownText(const QString& text);

} // namespace quillmate::localservice
