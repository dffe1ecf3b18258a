#pragma once

#include <QString>
#include <QStringList>

namespace quillmate::server
{

/// What a text asks, in its order, without a greeting before it and without repetitions: at most `count`, of many the
/// first. Questions of two words ("Kommst du?") count where there is no longer one.
QStringList questionsIn(const QString& text, qsizetype count);

/// The text cut at a word's end, with an ellipsis, where it is longer than `length` characters; a longer word is cut
/// between two characters.
QString shortened(const QString& text, qsizetype length);

} // namespace quillmate::server
