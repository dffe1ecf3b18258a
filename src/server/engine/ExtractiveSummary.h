#pragma once

#include <QString>
#include <QStringList>

namespace quillmate::server
{

/// The lines of a summary: the text's own sentences in their order, at most five, one a line, a short list with the
/// line that leads it in as one. A text of one or two sentences is its own summary. The first 400 sentences are looked
/// at.
QStringList extractiveSummary(const QString& text);

/// The sentence that says most; empty when none says anything.
QString mainSentence(const QString& text);

} // namespace quillmate::server
