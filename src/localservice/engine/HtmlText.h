#pragma once

#include <QString>

namespace quillmate::localservice
{

/// Whether a text of unknown type is HTML.
bool looksLikeHtml(const QString& text);

/// The text of an HTML message as lines: blocks and breaks begin new ones, scripts, styles and hidden elements are left
/// out, and what mail programs mark as the quoted message stands behind "> " on each of its lines.
QString htmlText(const QString& html);

} // namespace quillmate::localservice
