#pragma once

#include <QString>
#include <QStringList>

namespace quillmate::server
{

/// The text as words are compared: without case and marks.
QString folded(const QString& text);

/// Whether the character belongs to a script that is written without blanks between words (Han, Hiragana, Katakana,
/// Thai …).
bool isUnspaced(QChar character);

/// The words of a text for comparing texts: folded in case, without marks and very common words; a run of a script
/// without blanks gives its pairs of characters instead. Repeated words are repeated.
QStringList contentWords(const QString& text);

} // namespace quillmate::server
