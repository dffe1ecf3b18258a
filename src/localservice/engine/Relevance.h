#pragma once

#include <QString>
#include <QStringList>

namespace quillmate::localservice
{

/// The sentences, in their order, that are most like the question: cosine of their TF-IDF vectors over the sentences'
/// words. At most `count`; none when no sentence shares a word with the question.
QStringList relevantSentences(const QStringList& sentences, const QString& question, qsizetype count);

} // namespace quillmate::localservice
